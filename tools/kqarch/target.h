// The destination that a command line names.
#ifndef KQARCH_TARGET_H
#define KQARCH_TARGET_H

#include <string>

#include "arch_cfg.h"

struct target {
    std::string dest = {};    // a directory, or instance names; empty for the subscriber
    bool subscriber = false;  // its connection text, which may hold a password, need not be named

    std::string text() const;   // for the module
    std::string shown() const;  // for people, without a password
};

// The registered record, or null.
arch_cfg_t* find(const target& which) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

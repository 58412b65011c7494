// Which line of kqarch.ini a failed rule is about.
#ifndef KQARCH_PLACEMENT_H
#define KQARCH_PLACEMENT_H

#include <string>

#include "arch_cfg.h"
#include "config_file.h"

struct placement {
    std::string section = {};
    std::string key = {};
    ulint line = 1;
    std::string text = {};  // what to say of a silent rule; empty: the code's meaning
};

// A rule of one destination: the key that the message is about, or else the section's header.
placement place_in(const arch_cfg_t& arch, const std::string& said, const config_file& file);

// A rule of the whole configuration: the section or global key that it is about, or else line 1.
placement place_in_whole(kqcode_t code, const std::string& said, const config_file& file)
    KQ_REQUIRES(arch_cfg_sys.mutex);

#endif

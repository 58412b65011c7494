// Loading kqarch.ini into the process registry the way the server does, but going on past the
// lines that are refused.
#ifndef KQARCH_LOADING_H
#define KQARCH_LOADING_H

#include <vector>

#include "arch_cfg.h"
#include "config_file.h"
#include "output.h"

// In file order: the server's reader stops at the first. What is refused only because of an earlier
// refusal is left out.
struct refused_lines {
    std::vector<diagnostic> first = {};  // as many as are told of a file
    size_t more = 0;                     // each line of a file may be refused

    bool empty() const { return first.empty(); }
    size_t size() const { return first.size() + more; }
};

refused_lines load(const config_file& file) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

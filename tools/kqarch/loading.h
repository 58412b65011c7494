// Loading kqarch.ini into the process registry the way the server does, but going on past the
// lines that are refused.
#ifndef KQARCH_LOADING_H
#define KQARCH_LOADING_H

#include <vector>

#include "arch_cfg.h"
#include "config_file.h"
#include "output.h"

// The refused lines, in file order: the server's reader stops at the first. What is refused only
// because of an earlier refusal is left out.
std::vector<diagnostic> load(const config_file& file) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

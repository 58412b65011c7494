// The server's validation of a configuration that loaded without a refused line, with every
// problem that can be found in one run.
#ifndef KQARCH_VALIDATION_H
#define KQARCH_VALIDATION_H

#include <string>
#include <vector>

#include "arch_cfg.h"
#include "config_file.h"
#include "output.h"

struct validation_options {
    bool timers = true;      // timers must be in kqtimer.ini
    bool asm_paths = false;  // probe paths on ASM storage like others
};

struct validation {
    kqcode_t code = 0;  // what the server would return
    // The first failing rule of every destination, then the first of the whole.
    std::vector<diagnostic> failures;
    std::vector<std::string> log_warnings;  // the texts that were logged at level 3
};

// After a failure the dry run stays on: it is the caller who ends it.
validation validate(const config_file& file, const validation_options& options)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

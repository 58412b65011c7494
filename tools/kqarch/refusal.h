// What to tell about a line of kqarch.ini that the module refused.
#ifndef KQARCH_REFUSAL_H
#define KQARCH_REFUSAL_H

#include <string>

#include "arch_cfg.h"
#include "config_file.h"
#include "output.h"

struct refusal {
    const config_line& line;
    const arch_cfg_t* record;  // the line's section; null above the first
    kqcode_t code;
    std::string said;  // what the module printed, empty for a silent refusal
};

// The diagnostic for it. The registry holds what was loaded from the lines above.
diagnostic describe(const refusal& refused, const config_file& file)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

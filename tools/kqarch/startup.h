// Start-up without a server: what the module makes of a text of kqarch.ini. Nothing on disk is
// changed.
#ifndef KQARCH_STARTUP_H
#define KQARCH_STARTUP_H

#include <vector>

#include "arch_cfg.h"
#include "config_file.h"
#include "osfile.h"
#include "output.h"

// As long as it lives, directories and files are not created: the layer says whether they could be.
class dry_run {
  public:
    dry_run() { os_set_dry_run(1); }
    ~dry_run() { os_set_dry_run(0); }
    dry_run(const dry_run&) = delete;
    dry_run& operator=(const dry_run&) = delete;
};

struct startup {
    kqcode_t code = 0;                      // what start-up would return
    bool loads = true;                      // no line is refused
    std::vector<diagnostic> problems = {};  // the first refused lines, or else the failed rules

    // The problem that has start-up's code; there is one when the code is negative.
    const diagnostic& decisive() const;
};

// Loads the file into the process registry, in place of what that held, and validates it; the
// registry is then as in a server that has just started.
startup start_up(const config_file& file) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

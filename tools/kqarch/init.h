// kqarch init: a working instance directory to start from.
#ifndef KQARCH_INIT_H
#define KQARCH_INIT_H

#include <string>

#include "output.h"

struct init_options {
    std::string directory;
    std::string kind = "single";  // one of init_kinds()
};

exit_status run_init(const init_options& options, output& out);

#endif

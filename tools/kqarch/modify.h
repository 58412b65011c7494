// kqarch modify: changes a destination as a clause says.
#ifndef KQARCH_MODIFY_H
#define KQARCH_MODIFY_H

#include "change.h"
#include "target.h"

struct modify_options : change_options {
    target which = {};
    std::string clause = {};
};

exit_status run_modify(const modify_options& options, output& out);

#endif

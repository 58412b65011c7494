// kqarch drop: removes a destination.
#ifndef KQARCH_DROP_H
#define KQARCH_DROP_H

#include "change.h"
#include "target.h"

struct drop_options : change_options {
    target which = {};
};

exit_status run_drop(const drop_options& options, output& out);

#endif

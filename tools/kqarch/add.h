// kqarch add: a new destination from a clause.
#ifndef KQARCH_ADD_H
#define KQARCH_ADD_H

#include "change.h"

struct add_options : change_options {
    std::string clause = {};
    bool standby = false;  // the database is a standby
};

exit_status run_add(const add_options& options, output& out);

#endif

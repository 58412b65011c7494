// kqarch check: would the server start with this?
#ifndef KQARCH_CHECK_H
#define KQARCH_CHECK_H

#include <string>
#include <vector>

#include "output.h"
#include "validation.h"

struct check_options {
    std::vector<std::string> directories;
    bool probe = false;  // create directories and probe files as the server does
    validation_options rules = {};
    bool quiet = false;   // as text, faults only
    bool strict = false;  // a warning fails
};

exit_status run_check(const check_options& options, output& out);

#endif

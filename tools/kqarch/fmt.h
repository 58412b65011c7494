// kqarch fmt: the text that the server would write back.
#ifndef KQARCH_FMT_H
#define KQARCH_FMT_H

#include <string>

#include "output.h"

struct fmt_options {
    std::string directory;
    bool check = false;  // compare with the file instead of printing
};

exit_status run_fmt(const fmt_options& options, output& out);

#endif

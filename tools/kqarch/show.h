// kqarch show: an instance and its archive configuration, as a table.
#ifndef KQARCH_SHOW_H
#define KQARCH_SHOW_H

#include <string>

#include "output.h"

exit_status run_show(const std::string& directory, output& out);

#endif

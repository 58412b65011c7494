// Where kqarch.ini lives.
#ifndef ARCH_FILE_INI_FILE_H
#define ARCH_FILE_INI_FILE_H

#include "kqtype.h"

namespace arch {

// A directory, a separator and a file's name.
using file_path = schar[KQ_PATHNAME_MAX + 64];

// kqarch.ini in the configuration directory, or in the working directory when that is empty.
void config_file(file_path& path);

}  // namespace arch

#endif

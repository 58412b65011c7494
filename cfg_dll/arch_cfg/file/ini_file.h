// Where kqarch.ini and its backups live, and how the file is rewritten.
#ifndef ARCH_FILE_INI_FILE_H
#define ARCH_FILE_INI_FILE_H

#include "kqtype.h"

namespace arch {

// A directory, a separator and a file's name.
using file_path = schar[KQ_PATHNAME_MAX + 64];

// kqarch.ini in the configuration directory, or in the working directory when that is empty.
void config_file(file_path& path);

// The backup of that number, beside it.
void backup_file(file_path& path, ulint64 lsn);

}  // namespace arch

#endif

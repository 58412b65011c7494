#include "file/ini_file.h"

#include <cstdio>

#include "ini.h"

namespace arch {

void config_file(file_path& path) {
    const schar* directory = global_ini_info.config_path;
    const schar* separator = directory[0] != '\0' ? "/" : "";
    (void)std::snprintf(path, sizeof path, "%s%s%s", directory, separator, "kqarch.ini");
}

}  // namespace arch

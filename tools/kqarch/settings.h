// The settings of a loaded configuration, ready to be shown: with units, without passwords.
#ifndef KQARCH_SETTINGS_H
#define KQARCH_SETTINGS_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "arch_cfg.h"

struct setting {
    std::string name;              // for people: "file size"
    std::string field;             // for programs: "file_size_mb"
    std::string shown;             // "1024 MB"; empty when it is not configured
    nlohmann::ordered_json value;  // null when it is not configured
};

// Every global setting, by its key, in the order in which they are written.
std::vector<setting> global_settings() KQ_REQUIRES(arch_cfg_sys.mutex);

// LOCAL and REMOTE archive into a directory of this machine.
inline bool has_directory(ulint type) {
    return type == ARCH_TYPE_LOCAL || type == ARCH_TYPE_REMOTE;
}

// What ARCH_DEST says: a directory, instance names, or a connection text.
std::string destination_of(const arch_cfg_t& arch);

// Size of a file, limit and buffer of LOCAL and REMOTE; empty for the others.
std::vector<setting> sizes_of(const arch_cfg_t& arch);

// The settings that the record's type has besides these.
std::vector<setting> own_settings_of(const arch_cfg_t& arch);

#endif

// What the rules ask of the rest of the instance's configuration.
#ifndef ARCH_COMMON_SERVER_H
#define ARCH_COMMON_SERVER_H

#include "common/text.h"
#include "ini.h"

namespace arch {

inline bool archiving_is_on() {
    return ini_get_value(0, ini_index_arch_flag) != 0;
}

inline bool is_this_instance(const schar* name) {
    return same_text(name, ini_get_instance_name());
}

inline bool in_range(const other_ini_alterable_t& key, lint64 value) {
    return key.min_value <= value && value <= key.max_value;
}

// Whether the key table allows a value. `index` is one of kqarch.ini's, which the table always has.
inline bool in_key_range(ulint index, lint64 value) {
    return in_range(*ini_get_other_ini_info_by_index(index), value);
}

// Messages print bounds and unsigned settings with %d.
inline lint printable(lint64 value) {
    return static_cast<lint>(value);
}

}  // namespace arch

#endif

// Whether a new record comes back from kqarch.ini as it is.
#ifndef ARCH_ONLINE_WRITTEN_BACK_H
#define ARCH_ONLINE_WRITTEN_BACK_H

#include "arch_cfg.h"

namespace arch {

// Refuses a record that would be read back different from what is written, or whose text would
// start a line of its own. ARCH_E_INVALID_DEST for a control character or an outer blank in a text,
// for a separator in an instance name and for no name at all; ARCH_E_TOO_LONG for a text longer
// than reading accepts; ARCH_E_TOO_MANY_INSTS for several instances of SYNC; ARCH_E_INVALID_VALUE
// for a number outside its key's bounds. One log line at level 4 names the type and the key, not
// the text, which may hold a password.
kqcode_t check_written_back(const arch_cfg_t& arch);

}  // namespace arch

#endif

// The module's Raft operations, each written to kqarch.ini.
#ifndef KQARCH_RAFT_OPERATIONS_H
#define KQARCH_RAFT_OPERATIONS_H

#include "capture.h"
#include "raft.h"

// Carries the request out on the process registry and writes the file. A negative code is a
// refusal, and nothing was written; `said` tells why where the module neither prints nor logs it.
captured carry_out_raft(const raft_request& request) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

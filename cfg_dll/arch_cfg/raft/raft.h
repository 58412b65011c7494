// What the Raft entries and the membership changes share.
#ifndef ARCH_RAFT_RAFT_H
#define ARCH_RAFT_RAFT_H

#include "arch_cfg.h"
#include "common/text.h"

namespace arch {

inline bool is_member(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_RAFT || arch.type == ARCH_TYPE_LEARNER;
}

// Whether an address can stand in the file and come back from it.
inline bool is_writable_address(std::string_view ip) {
    return ip.size() <= ARCH_IP_MAX && survives_reading(ip);
}

// Empties a caller's text, where there is one, before the change that may fail.
inline void clear_record(schar* rec) {
    if (rec != nullptr) rec[0] = '\0';
}

// The configuration after a change, in the caller's text, where there is one.
inline kqcode_t write_record(schar* rec) KQ_REQUIRES(arch_cfg_sys.mutex) {
    return rec != nullptr ? arch_cfg_sys_write_to_rec(rec) : 0;
}

}  // namespace arch

#endif

// The configuration-change guard: which cluster nodes have a change under way.
//
// Bit 8 says that a change is under way, bits 0 to 7 whose; with no node bit it is exclusive. Nodes
// share the guard, an exclusive change shares it with nobody, and nobody waits.
#include "arch_cfg_hold.h"
#include "elog.h"

namespace {

constexpr usint under_way = 0x100;
constexpr usint node_bits = 0xFF;
constexpr byte exclusive_holder = 255;
constexpr byte node_count = 8;

usint node_bit(byte rac_seqno) {
    return static_cast<usint>(1u << rac_seqno);
}

bool excludes(usint guard, byte rac_seqno) {
    if ((guard & under_way) == 0) return false;
    return rac_seqno == exclusive_holder || (guard & node_bits) == 0;
}

bool names_a_holder(byte rac_seqno) {
    return rac_seqno < node_count || rac_seqno == exclusive_holder;
}

}  // namespace

kqcode_t arch_set_cfg_changing(byte rac_seqno) {
    if (!names_a_holder(rac_seqno)) return ARCH_E_INVALID_VALUE;
    const arch_cfg_hold hold;
    usint& guard = arch_cfg_sys.arch_cfg_changing;
    if (excludes(guard, rac_seqno)) {
        elog_report_ex(ELOG_CHANGE,
                       "arch_set_cfg_changing failed, dsc_seqno:%d, arch_cfg_changing:%d",
                       rac_seqno, guard);
        return ARCH_E_CFG_CHANGING;
    }
    const usint holder = rac_seqno == exclusive_holder ? usint{0} : node_bit(rac_seqno);
    guard = static_cast<usint>(guard | under_way | holder);
    return 0;
}

void arch_reset_cfg_changing(byte rac_seqno) {
    if (!names_a_holder(rac_seqno)) return;
    const arch_cfg_hold hold;
    usint& guard = arch_cfg_sys.arch_cfg_changing;
    const usint released = rac_seqno == exclusive_holder ? node_bits : node_bit(rac_seqno);
    guard = static_cast<usint>(guard & ~released);
    if ((guard & node_bits) == 0) guard = 0;
}

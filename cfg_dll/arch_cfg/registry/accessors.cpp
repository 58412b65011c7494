// Settings copied out of the registry.
#include <cstring>

#include "arch_cfg.h"
#include "os.h"

void arch_cfg_sys_get_info(kqbool* has_inited, usint* arch_count, kqbool* wait_apply,
                           usint* arch_cfg_changing, byte* self_arch_seqno, schar* xmal_ip,
                           usint* xmal_port, ulint* xmal_hb_interval, ulint* raft_hb_interval,
                           ulint* raft_vote_interval, usint* raft_cnt, ulint* arch_reserve_time,
                           kqbool* arch_local_share, kqbool* arch_local_share_check,
                           kqbool* raft_learner, byte* arch_asm_mirror, usint* arch_asm_striping,
                           usint* self_center_id) {
    const arch_cfg_sys_t* registry = arch_cfg_sys_get();
    *has_inited = registry->has_inited != 0;
    if (registry->has_inited != 0) {
        *arch_count = static_cast<usint>(registry->arch_lst.count);
        *wait_apply = registry->wait_apply;
        *arch_cfg_changing = registry->arch_cfg_changing;
        *self_arch_seqno = static_cast<byte>(registry->raft_self_id);
        std::memcpy(xmal_ip, registry->xmal_ip, sizeof registry->xmal_ip);
        *xmal_port = registry->xmal_port;
        *xmal_hb_interval = registry->xmal_hb_interval;
        *raft_hb_interval = registry->raft_hb_interval;
        *raft_vote_interval = os_interlock_read(&registry->raft_vote_interval);
        *raft_cnt = os_interlock_read(&registry->raft_cnt);
        *arch_reserve_time = registry->arch_reserve_time;
        *arch_local_share = registry->arch_local_share;
        *arch_local_share_check = registry->arch_local_share_check;
        *raft_learner = os_interlock_read(&registry->raft_learner);
        *arch_asm_mirror = registry->arch_asm_mirror;
        *arch_asm_striping = registry->arch_asm_striping;
        *self_center_id = registry->self_center_id;
    }
    arch_cfg_sys_release();
}

kqbool arch_cfg_get_wait_apply(void) {
    return os_interlock_read(&arch_cfg_sys.wait_apply);
}

ulint arch_cfg_sys_get_raft_hb_interval(void) {
    return os_interlock_read(&arch_cfg_sys.raft_hb_interval);
}

void arch_cfg_get_asm_mirror_striping(byte* asm_mirror, usint* asm_striping) {
    *asm_mirror = os_interlock_read(&arch_cfg_sys.arch_asm_mirror);
    *asm_striping = os_interlock_read(&arch_cfg_sys.arch_asm_striping);
}

usint arch_cfg_get_raft_cnt(void) {
    return os_interlock_read(&arch_cfg_sys.raft_cnt);
}

kqbool arch_cfg_check_self_is_learner(void) {
    return os_interlock_read(&arch_cfg_sys.raft_learner);
}

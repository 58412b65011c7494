// The registry checked as a whole: counts and coexistence, Raft and XMAL settings, every record,
// duplicates.
#include <array>
#include <cstdio>

#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "elog.h"
#include "os.h"
#include "registry/registry.h"
#include "utl.h"
#include "validation/rules.h"

using namespace arch;

namespace arch {
namespace {

constexpr std::size_t most_members = 18;

void default_wait_apply(arch_cfg_sys_t& registry, kqbool value) {
    if (registry.wait_apply == ARCH_UNSET_FLAG) os_interlock_write(&registry.wait_apply, value);
}

// ---- Counts and coexistence ----

kqcode_t check_sync_counts(const type_counts& counts) {
    if (counts.of(ARCH_TYPE_SYNC) > most_of_type) return ARCH_E_TOO_MANY_SYNC;
    if (counts.any(ARCH_TYPE_SYNC) && (counts.any(ARCH_TYPE_REMOTE) || counts.any(ARCH_TYPE_RAFT)))
        return refuse(ARCH_E_SYNC_CONFLICT, "SYNC archive cannot coexist with RAFT or DSC\n");
    if (counts.of(ARCH_TYPE_LOCAL) > most_of_type) return ARCH_E_TOO_MANY_LOCAL;
    if (counts.any(ARCH_TYPE_SYNC) && !counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    return 0;
}

kqcode_t check_async_counts(const type_counts& counts) {
    if (counts.of(ARCH_TYPE_ASYNC) > most_of_type) return ARCH_E_TOO_MANY_ASYNC;
    if (counts.any(ARCH_TYPE_ASYNC) && !counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    return 0;
}

kqcode_t check_realtime_counts(arch_cfg_sys_t& registry, const type_counts& counts) {
    if (!counts.any(ARCH_TYPE_REALTIME)) return 0;
    if (counts.of(ARCH_TYPE_REALTIME) > most_of_type) return ARCH_E_TOO_MANY_REALTIME;
    if (!counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    default_wait_apply(registry, 0);
    if (counts.any(ARCH_TYPE_RAFT))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Can not configure realtime and raft arch at the same time\n");
    return 0;
}

kqcode_t check_timely_counts(arch_cfg_sys_t& registry, const type_counts& counts) {
    if (!counts.any(ARCH_TYPE_TIMELY)) return 0;
    if (counts.any(ARCH_TYPE_REALTIME)) return ARCH_E_REALTIME_TIMELY_CONFLICT;
    if (counts.of(ARCH_TYPE_TIMELY) > most_of_type) return ARCH_E_TOO_MANY_TIMELY;
    if (!counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    default_wait_apply(registry, 1);
    if (counts.any(ARCH_TYPE_RAFT))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Can not configure timely and raft arch at the same time\n");
    return 0;
}

kqcode_t check_remote_counts(const type_counts& counts) {
    if (!counts.any(ARCH_TYPE_REMOTE)) return 0;
    if (counts.of(ARCH_TYPE_REMOTE) > most_of_type) return ARCH_E_TOO_MANY_LOCAL;
    if (!counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    if (counts.any(ARCH_TYPE_RAFT))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Can not configure remote and raft arch at the same time\n");
    return 0;
}

kqcode_t check_raft_intervals(const arch_cfg_sys_t& registry) {
    const auto& xmal = *ini_get_other_ini_info_by_index(ini_index_xmal_hb_interval);
    const auto& heartbeat = *ini_get_other_ini_info_by_index(ini_index_raft_hb_interval);
    const auto& vote = *ini_get_other_ini_info_by_index(ini_index_raft_vote_interval);
    if (registry.xmal_hb_interval == ARCH_UNSET_LONG)
        return refuse(
            ARCH_E_INVALID_VALUE,
            "Please check XMAL_HB_INTERVAL[%d] value, must be configured between %d and %d!\n",
            printable(registry.xmal_hb_interval), printable(xmal.min_value),
            printable(xmal.max_value));
    if (registry.raft_hb_interval == 0)
        return refuse(
            ARCH_E_INVALID_VALUE,
            "Please check RAFT_HB_INTERVAL[%d] value, must be configured between %d and %d!\n",
            printable(registry.raft_hb_interval), printable(heartbeat.min_value),
            printable(heartbeat.max_value));
    if (registry.raft_vote_interval == ARCH_UNSET_LONG)
        return refuse(
            ARCH_E_INVALID_VALUE,
            "Please check RAFT_VOTE_INTERVAL value, must be configured between %d and %d and "
            "must be at least twice as large as the RAFT_HB_INTERVAL value!\n",
            printable(vote.min_value), printable(vote.max_value));
    if (registry.raft_vote_interval != 0 &&
        registry.raft_vote_interval < 2 * registry.raft_hb_interval)
        return refuse_log_bare(
            ARCH_E_INVALID_VALUE,
            "Please check RAFT_VOTE_INTERVAL[%d] and RAFT_HB_INTERVAL[%d] value, the "
            "RAFT_VOTE_INTERVAL value must be at least twice as large as the RAFT_HB_INTERVAL "
            "value!\n",
            printable(registry.raft_vote_interval), printable(registry.raft_hb_interval));
    return 0;
}

kqcode_t check_raft_settings(const arch_cfg_sys_t& registry, const type_counts& counts) {
    if (!counts.any(ARCH_TYPE_RAFT)) return 0;
    if (!counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    const bool has_address = registry.xmal_ip[0] != '\0' && registry.xmal_port != 0;
    if (is_dpc_bp_or_mp_or_bs() == 0 && !has_address)
        return refuse(ARCH_E_INVALID_VALUE,
                      "Current database is not in BP mode, need config XMAL_IP and XMAL_PORT in "
                      "kqarch.ini!\n");
    if (const kqcode_t code = check_raft_intervals(registry); code < 0) return code;
    const auto& id = *ini_get_other_ini_info_by_index(ini_index_raft_self_id);
    if (registry.raft_self_id == ARCH_UNSET_SHORT)
        return refuse_direct(
            ARCH_E_INVALID_VALUE,
            "Please check RAFT_SELF_ID[%d] value, must be configured between %d and %d!\n",
            printable(registry.raft_self_id), printable(id.min_value), printable(id.max_value));
    return 0;
}

// Written past the console printer, and logged in words of its own.
kqcode_t refuse_learners() {
    (void)std::fputs("The number of LEARNER archive configurations cannot be more than 9.\n",
                     stderr);
    elog_report_ex(ELOG_REFUSAL,
                   "The number of LEARNER archive configurations cannot be more than 9\n");
    return ARCH_E_TOO_MANY_LEARNER;
}

kqcode_t check_learner_counts(const type_counts& counts) {
    if (counts.of(ARCH_TYPE_LEARNER) > most_learners) return refuse_learners();
    if (counts.any(ARCH_TYPE_LEARNER) && !counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    return 0;
}

kqcode_t check_subscriber_counts(const type_counts& counts) {
    if (!counts.any(ARCH_TYPE_SUBSCRIBE)) return 0;
    constexpr arch_cfg_type excluded[] = {ARCH_TYPE_ASYNC,  ARCH_TYPE_SYNC,   ARCH_TYPE_REALTIME,
                                          ARCH_TYPE_TIMELY, ARCH_TYPE_REMOTE, ARCH_TYPE_RAFT,
                                          ARCH_TYPE_LEARNER};
    for (const arch_cfg_type type : excluded)
        if (counts.any(type)) return ARCH_E_SUBSCRIBE_CONFLICT;
    if (!counts.any(ARCH_TYPE_LOCAL)) return ARCH_E_NO_LOCAL;
    if (counts.of(ARCH_TYPE_SUBSCRIBE) > 1) return ARCH_E_TOO_MANY_SUBSCRIBE;
    return 0;
}

kqcode_t check_counts(arch_cfg_sys_t& registry, const type_counts& counts) {
    if (const kqcode_t code = check_sync_counts(counts); code < 0) return code;
    if (const kqcode_t code = check_async_counts(counts); code < 0) return code;
    if (const kqcode_t code = check_realtime_counts(registry, counts); code < 0) return code;
    if (const kqcode_t code = check_timely_counts(registry, counts); code < 0) return code;
    if (const kqcode_t code = check_remote_counts(counts); code < 0) return code;
    if (const kqcode_t code = check_raft_settings(registry, counts); code < 0) return code;
    if (const kqcode_t code = check_learner_counts(counts); code < 0) return code;
    return check_subscriber_counts(counts);
}

// ---- Every record ----

// What the walk over the records collects for the checks after it.
struct walk_result {
    std::array<const arch_cfg_t*, most_members> members;  // RAFT and LEARNER, in list order
    std::size_t member_count = 0;
    bool local_seen = false;
    bool ships_to_instances = false;
};

kqcode_t check_mpp(const arch_cfg_t& arch, walk_result& result) {
    if (arch.type == ARCH_TYPE_LOCAL || arch.type == ARCH_TYPE_SUBSCRIBE) return 0;
    const bool only_without_mpp = arch.type == ARCH_TYPE_TIMELY || arch.type == ARCH_TYPE_REMOTE;
    if (only_without_mpp && ini_get_value(0, ini_index_mpp_flag) == 1)
        return ARCH_E_MPP_NOT_SUPPORTED;
    result.ships_to_instances = true;
    return 0;
}

kqcode_t check_later_paths(const arch_cfg_t& arch) {
    if (!holds_archives(arch)) return 0;
    for (const arch_cfg_t* later = arch.link.next; later != nullptr; later = later->link.next) {
        if (!holds_archives(*later)) continue;
        if (same_path(arch.dest, later->dest)) return ARCH_E_DEST_EXISTS;
        const bool both_remote = arch.type == ARCH_TYPE_REMOTE && later->type == ARCH_TYPE_REMOTE;
        if (both_remote && same_text(arch.timer_name, later->timer_name)) return ARCH_E_DEST_EXISTS;
    }
    return 0;
}

kqcode_t collect_member(const arch_cfg_t& arch, walk_result& result) {
    if (arch.type != ARCH_TYPE_RAFT && arch.type != ARCH_TYPE_LEARNER) return 0;
    if (result.member_count == most_members)
        return refuse(ARCH_E_TOO_MANY_RAFT,
                      "The number of RAFT and LEARNER archive configurations cannot be more than "
                      "18.\n");
    result.members[result.member_count++] = &arch;
    return 0;
}

kqcode_t check_waiting(const type_counts& counts, const arch_cfg_t& arch) {
    if (arch.wait_apply != 1) return 0;
    if (arch.arch_failover == 1)
        return refuse(ARCH_E_FAILOVER_WAIT_APPLY,
                      "Config error in [%s], ARCH_FAILOVER and WAIT_APPLY can not be configured "
                      "as 1 at the same time.\n",
                      arch.name);
    if (counts.any(ARCH_TYPE_REMOTE) && arch.type == ARCH_TYPE_REALTIME)
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is REALTIME type, and self is DSC cluster, not allowed to set "
                      "ARCH_WAIT_APPLY or WAIT_APPLY to 1.\n",
                      arch.name);
    return 0;
}

kqcode_t check_record(const arch_cfg_sys_t& registry, const type_counts& counts, arch_cfg_t& arch,
                      check_options options, walk_result& result) {
    if (counts.any(ARCH_TYPE_SYNC) && arch.n_inst > 1) return ARCH_E_SYNC_CONFLICT;
    const kqcode_t valid = validate_destination(registry, arch, options);
    if (valid < 0) return valid;
    if (is_this_instance(arch.dest))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Config error in [%s], ARCH_DEST cannot be self instance.\n", arch.name);
    if (const kqcode_t code = check_mpp(arch, result); code < 0) return code;
    if (const kqcode_t code = check_later_paths(arch); code < 0) return code;
    if (const kqcode_t code = collect_member(arch, result); code < 0) return code;
    if (arch.type == ARCH_TYPE_LOCAL && !result.local_seen) {
        // The first archive directory always blocks the instance when it cannot be written.
        result.local_seen = true;
        arch.hang_flag = 1;
    }
    return check_waiting(counts, arch);
}

// ---- The Raft members ----

bool same_address(const schar* left_ip, usint left_port, const schar* right_ip, usint right_port) {
    return same_text(left_ip, right_ip) && left_port == right_port;
}

kqcode_t check_member_pair(const arch_cfg_t& member, const arch_cfg_t& later, bool bp_mode) {
    if (same_text(member.dest, later.dest))
        return refuse(ARCH_E_INVALID_VALUE, "Config error,has same ARCH_DEST name %s\n",
                      member.dest);
    if (!bp_mode && same_address(member.arch_dest_ip, member.arch_dest_port, later.arch_dest_ip,
                                 later.arch_dest_port))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Config error, has same ARCH_DEST_IP(%s) and ARCH_DEST_PORT(%d)\n",
                      member.arch_dest_ip, member.arch_dest_port);
    if (member.arch_dest_id == later.arch_dest_id)
        return refuse(ARCH_E_INVALID_VALUE, "Config error, has same ARCH_DEST_ID(%d)\n",
                      member.arch_dest_id);
    return 0;
}

kqcode_t check_member_against_self(const arch_cfg_sys_t& registry, const arch_cfg_t& member,
                                   bool bp_mode) {
    if (!bp_mode && same_address(member.arch_dest_ip, member.arch_dest_port, registry.xmal_ip,
                                 registry.xmal_port))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Config error, has same XMAL_IP(%s)/XMAL_PORT(%d) with "
                      "ARCH_DEST_IP(%s)/ARCH_DEST_PORT(%d)\n",
                      registry.xmal_ip, registry.xmal_port, member.arch_dest_ip,
                      member.arch_dest_port);
    if (member.arch_dest_id == registry.raft_self_id)
        return refuse(ARCH_E_INVALID_VALUE, "Config error, has same ARCH_DEST_ID(%d)\n",
                      member.arch_dest_id);
    return 0;
}

kqcode_t check_members(const arch_cfg_sys_t& registry, const walk_result& result) {
    const bool bp_mode = is_dpc_bp_or_mp_or_bs() != 0;
    const std::span members = std::span(result.members).first(result.member_count);
    for (std::size_t i = 0; i < members.size(); ++i) {
        for (const arch_cfg_t* later : members.subspan(i + 1)) {
            const kqcode_t code = check_member_pair(*members[i], *later, bp_mode);
            if (code < 0) return code;
        }
        const kqcode_t code = check_member_against_self(registry, *members[i], bp_mode);
        if (code < 0) return code;
    }
    return 0;
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_sys_validate(kqbool timer_chk, kqbool asm_path_chk) {
    const arch_cfg_hold hold;
    arch_cfg_sys_t& registry = arch_cfg_sys;
    const type_counts counts(registry);
    if (const kqcode_t code = check_counts(registry, counts); code < 0) return code;

    walk_result result;
    const check_options options{timer_chk != 0, asm_path_chk};
    for (arch_cfg_t& arch : destinations(registry)) {
        const kqcode_t code = check_record(registry, counts, arch, options, result);
        if (code < 0) return code;
    }
    if (const kqcode_t code = check_members(registry, result); code < 0) return code;

    if (result.ships_to_instances && arch_cfg_get_raft_cnt() == 0)
        (void)mal_cfg_inst_check_in_arch();
    default_wait_apply(registry, 0);
    return 0;
}

kqcode_t arch_cfg_sys_check_low(ulint sys_mode) {
    constexpr ulint standby = 2;
    const type_counts counts(arch_cfg_sys);
    const bool applies = counts.any(ARCH_TYPE_REALTIME) || counts.any(ARCH_TYPE_TIMELY);
    if (counts.any(ARCH_TYPE_SYNC) && sys_mode == standby && !applies)
        return refuse(ARCH_E_INVALID_TYPE,
                      "Can not configure sync arch on SYNC or ASYNC standby database\n");
    return 0;
}

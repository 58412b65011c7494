// Whether a change of an existing destination may be applied.
//
// The new record comes from a clause and is completed from the stored one where the clause left a
// value out. Counts still hold the stored record under its old type.
#include "common/report.h"
#include "common/server.h"
#include "mal_cfg.h"
#include "ntimer_cfg.h"
#include "registry/registry.h"
#include "validation/rules.h"

using namespace arch;

namespace arch {
namespace {

// A change: the new record, the stored one, and what the clause named.
struct change {
    const arch_cfg_sys_t& registry;
    arch_cfg_t& wanted;
    const arch_cfg_t& stored;
    usint named;
    schar* dest;
    type_counts counts;
};

bool applies(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_REALTIME || arch.type == ARCH_TYPE_TIMELY;
}

// Whether there are as many of the type as there may be without this one.
bool is_full(const change& asked, arch_cfg_type type) {
    return asked.stored.type != type && asked.counts.of(type) >= most_of_type;
}

// The instance that a stored record names; a REMOTE record keeps it elsewhere.
const schar* instance_of(const arch_cfg_t& stored) {
    return stored.type == ARCH_TYPE_REMOTE ? stored.timer_name : stored.dest;
}

kqcode_t check_stored_instance_in_mal(const arch_cfg_t& stored) {
    if (!archiving_is_on()) return 0;
    if (global_ini_info.mail_flag == 0) return ARCH_E_MAL_NOT_CONFIGURED;
    if (mal_cfg_get_by_inst_name(instance_of(stored)) == nullptr) return ARCH_E_MAL_NOT_CONFIGURED;
    return 0;
}

// The instances of the stored record, for the type that it is to have.
kqcode_t check_instances_in_mal(const arch_cfg_t& stored, usint type) {
    if (!archiving_is_on()) return 0;
    if (stored.type == ARCH_TYPE_REMOTE) return check_stored_instance_in_mal(stored);
    const kqcode_t code = arch_cfg_inst_check_in_mal(&stored, type);
    return code < 0 ? raise(code) : 0;
}

void keep_timer(const change& asked) {
    if (asked.wanted.timer_name[0] == '\0')
        copy_text(asked.wanted.timer_name, text_in(asked.stored.timer_name));
}

bool timer_is_unknown(const change& asked) {
    return ntimer_cfg_find_by_name(asked.wanted.timer_name) == nullptr;
}

kqcode_t check_sizes(const arch_cfg_t& wanted) {
    if (wanted.space_limit != 0 && !in_key_range(ini_index_arch_space_limit, wanted.space_limit))
        return ARCH_E_INVALID_SPACE_LIMIT;
    if (!in_key_range(ini_index_arch_file_size, wanted.file_size)) return ARCH_E_INVALID_FILE_SIZE;
    return 0;
}

// ARCH_FAILOVER and WAIT_APPLY exclude one another, and ARCH_FAILOVER belongs to REALTIME and
// TIMELY. A clause that names WAIT_APPLY sets the bit for what has none of its own; without that
// bit the stored record still says whether the standby waits.
kqcode_t check_failover(const change& asked) {
    const bool by_new_record = asked.named >> 8 == 1;
    const arch_cfg_t& judged = by_new_record ? asked.wanted : asked.stored;
    if (!applies(judged) && (asked.named & ARCH_MOD_FAILOVER) != 0) return ARCH_E_PARA_NOT_ALLOWED;
    if (asked.wanted.arch_failover == 1 && judged.wait_apply == 1)
        return ARCH_E_FAILOVER_WAIT_APPLY;
    return 0;
}

kqcode_t check_to_local(const change& asked) {
    if (is_full(asked, ARCH_TYPE_LOCAL)) return ARCH_E_TOO_MANY_LOCAL;
    if (asked.stored.n_inst > 1) return ARCH_E_MULTI_INST_DEST;
    return check_sizes(asked.wanted);
}

// REALTIME and TIMELY exclude one another; a record that leaves the other type does not count.
bool meets_other(const change& asked, arch_cfg_type other) {
    const ulint leaving = asked.stored.type == other ? 1 : 0;
    return asked.counts.of(other) > leaving;
}

kqcode_t check_to_realtime(const change& asked) {
    if (meets_other(asked, ARCH_TYPE_TIMELY)) return ARCH_E_REALTIME_TIMELY_CONFLICT;
    if (is_full(asked, ARCH_TYPE_REALTIME)) return ARCH_E_TOO_MANY_REALTIME;
    return check_instances_in_mal(asked.stored, ARCH_TYPE_REALTIME);
}

kqcode_t check_to_timely(const change& asked) {
    if (meets_other(asked, ARCH_TYPE_REALTIME)) return ARCH_E_REALTIME_TIMELY_CONFLICT;
    if (is_full(asked, ARCH_TYPE_TIMELY)) return ARCH_E_TOO_MANY_TIMELY;
    return check_instances_in_mal(asked.stored, ARCH_TYPE_TIMELY);
}

kqcode_t check_to_sync(const change& asked) {
    if (is_full(asked, ARCH_TYPE_SYNC)) return ARCH_E_TOO_MANY_SYNC;
    if (asked.stored.n_inst > 1) return ARCH_E_MULTI_INST_DEST;
    return check_stored_instance_in_mal(asked.stored);
}

kqcode_t check_to_async(const change& asked) {
    if (is_full(asked, ARCH_TYPE_ASYNC)) return ARCH_E_TOO_MANY_ASYNC;
    const kqcode_t code = check_instances_in_mal(asked.stored, ARCH_TYPE_ASYNC);
    if (code < 0) return code;
    // What a REMOTE record keeps there is no timer.
    if (asked.stored.type != ARCH_TYPE_REMOTE) keep_timer(asked);
    if (asked.wanted.timer_name[0] == '\0')
        return refuse_printed(ARCH_E_NO_TIMER,
                              "Archive type is ASYNC, but not configured timer.\n");
    return timer_is_unknown(asked) ? ARCH_E_TIMER_NOT_FOUND : 0;
}

// A clause's incoming path travels in `timer_name`.
kqcode_t check_to_remote(const change& asked) {
    pathname_t& path = asked.wanted.timer_name;
    if (is_full(asked, ARCH_TYPE_REMOTE)) return ARCH_E_TOO_MANY_REMOTE;
    if (asked.stored.n_inst > 1) return ARCH_E_MULTI_INST_DEST;
    if (asked.stored.type == ARCH_TYPE_REMOTE && path[0] == '\0')
        copy_text(path, text_in(asked.stored.dest));
    if (path[0] == '\0') return ARCH_E_NO_INCOMING_PATH;
    if (const kqcode_t code = check_stored_instance_in_mal(asked.stored); code < 0) return code;
    if (asked.registry.arch_local_share == 1 && !same_path(path, asked.stored.dest))
        return ARCH_E_SHARED_PATH_CHANGED;
    if (const kqcode_t code = check_sizes(asked.wanted); code < 0) return code;
    if (!survives_reading(text_in(path)))
        return refuse_logged(ARCH_E_INVALID_DEST,
                             "REMOTE archive: ARCH_INCOMING_PATH would not be read back from "
                             "kqarch.ini as it is");
    return 0;
}

// Nothing is moved before the text is known to be short.
kqcode_t take_subscriber_text(const change& asked) {
    const std::string_view given = trimmed(asked.dest);
    const std::string_view text = given.empty() ? text_in(asked.stored.dest) : given;
    if (text.size() > KQ_SYSNAME_MAX) return ARCH_E_TOO_LONG;
    std::memmove(asked.dest, text.data(), text.size());
    asked.dest[text.size()] = '\0';
    return arch_cfg_check_subscb_dest(asked.dest);
}

void keep_subscriber_values(const change& asked) {
    arch_cfg_t& wanted = asked.wanted;
    if ((asked.named & ARCH_MOD_SEND_DELAY) == 0)
        wanted.arch_send_delay = asked.stored.arch_send_delay;
    if ((asked.named & ARCH_MOD_SUBSCRIBE_MODE) == 0)
        wanted.arch_subscb_mode = asked.stored.arch_subscb_mode;
    if ((asked.named & ARCH_MOD_THRESHOLD) == 0)
        wanted.arch_threshold_per_second = asked.stored.arch_threshold_per_second;
}

kqcode_t check_to_subscriber(const change& asked) {
    if (asked.stored.type != ARCH_TYPE_SUBSCRIBE && asked.counts.of(ARCH_TYPE_SUBSCRIBE) > 1)
        return ARCH_E_TOO_MANY_SUBSCRIBE;
    if (const kqcode_t code = take_subscriber_text(asked); code < 0) return code;
    keep_timer(asked);
    if (timer_is_unknown(asked)) return ARCH_E_TIMER_NOT_FOUND;
    keep_subscriber_values(asked);
    return check_subscriber_values(asked.wanted);
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_validate_for_modify(arch_cfg_t* arch, const arch_cfg_t* old_arch,
                                      usint mod_in_mount, schar* dest_org) {
    if (arch == nullptr) return 0;
    const change asked{arch_cfg_sys, *arch,    *old_arch,
                       mod_in_mount, dest_org, type_counts(arch_cfg_sys)};
    if (const kqcode_t code = check_failover(asked); code < 0) return code;
    switch (arch->type) {
        case ARCH_TYPE_LOCAL:
            return check_to_local(asked);
        case ARCH_TYPE_REALTIME:
            return check_to_realtime(asked);
        case ARCH_TYPE_SYNC:
            return check_to_sync(asked);
        case ARCH_TYPE_ASYNC:
            return check_to_async(asked);
        case ARCH_TYPE_TIMELY:
            return check_to_timely(asked);
        case ARCH_TYPE_REMOTE:
            return check_to_remote(asked);
        case ARCH_TYPE_SUBSCRIBE:
            return check_to_subscriber(asked);
        default:
            return ARCH_E_INVALID_TYPE;
    }
}

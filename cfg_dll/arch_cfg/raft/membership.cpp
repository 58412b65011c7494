// Membership changes: members leave, are replaced or promoted, and this node's own Raft settings.
#include <span>

#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "os.h"
#include "raft/raft.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {
namespace {

using names = std::span<const sysname_t>;

bool is_among(names list, const schar* name) {
    for (const auto& entry : list)
        if (same_text(entry, name)) return true;
    return false;
}

// Removes every record that a condition holds for, in list order.
template <typename Condition>
void discard_if(arch_cfg_sys_t& registry, Condition condition) {
    for (arch_cfg_t* arch = registry.arch_lst.start; arch != nullptr;) {
        arch_cfg_t* next = arch->link.next;
        if (condition(*arch)) discard(registry, *arch);
        arch = next;
    }
}

arch_cfg_t* find_of_type(const arch_cfg_sys_t& registry, ulint type, const schar* dest) {
    for (arch_cfg_t& arch : destinations(registry))
        if (arch.type == type && same_text(arch.dest, dest)) return &arch;
    return nullptr;
}

arch_cfg_t* find_by_dest(const arch_cfg_sys_t& registry, const schar* dest) {
    for (arch_cfg_t& arch : destinations(registry))
        if (same_text(arch.dest, dest)) return &arch;
    return nullptr;
}

void set_raft_cnt(ulint count) {
    os_interlock_write(&arch_cfg_sys.raft_cnt, static_cast<usint>(count));
}

// Where the identifiers of promoted learners go; both may be absent.
struct promoted_ids {
    usint* count;
    usint* ids;

    void add(usint id) const {
        if (count == nullptr) return;
        if (ids != nullptr) ids[*count] = id;
        ++*count;
    }
};

void promote_self() {
    if (arch_cfg_check_self_is_learner() != 1) return;
    os_interlock_write(&arch_cfg_sys.raft_learner, 0u);
    report_change("arch_cfg_change_learner_to_raft, set raft_learner to FALSE.");
}

// False when the name is nobody's.
bool promote(arch_cfg_sys_t& registry, const schar* name, const promoted_ids& promoted) {
    if (is_this_instance(name)) {
        promote_self();
        return true;
    }
    arch_cfg_t* arch = find_by_dest(registry, name);
    if (arch == nullptr) return false;
    if (arch->type == ARCH_TYPE_LEARNER) {
        arch->type = ARCH_TYPE_RAFT;
        report_change(
            "arch_cfg_change_learner_to_raft, set dest[%s]'s arch_type from LEARNER to RAFT.",
            arch->dest);
        promoted.add(arch->arch_dest_id);
    }
    return true;
}

// Promotes name by name and writes the text; `missing` is the name that is nobody's.
kqcode_t promote_all(names list, schar* rec, const promoted_ids& promoted, const schar*& missing) {
    const arch_cfg_hold hold;
    for (const auto& name : list) {
        if (promote(arch_cfg_sys, name, promoted)) continue;
        missing = name;
        return ARCH_E_DEST_NOT_FOUND;
    }
    return write_record(rec);
}

void clear_raft_settings(arch_cfg_sys_t& registry) {
    os_interlock_write(&registry.raft_hb_interval, 0u);
    os_interlock_write(&registry.raft_vote_interval, 0u);
    registry.xmal_hb_interval = ARCH_UNSET_LONG;
    registry.xmal_ip[0] = '\0';
    registry.xmal_port = 0;
    registry.raft_self_id = ARCH_UNSET_SHORT;
    registry.raft_pkg_interval = 0;
    registry.self_center_id = 0;
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_delete_learner(const schar* dest_name, usint, schar* rec) {
    clear_record(rec);
    const arch_cfg_hold hold;
    if (arch_cfg_t* arch = find_of_type(arch_cfg_sys, ARCH_TYPE_LEARNER, dest_name)) {
        report_change("arch_cfg_delete_learner, delete arch dest[%s]", arch->dest);
        discard(arch_cfg_sys, *arch);
    }
    return write_record(rec);
}

kqcode_t arch_cfg_delete_raft(const schar* dest_name) {
    const arch_cfg_hold hold;
    if (arch_cfg_t* arch = find_of_type(arch_cfg_sys, ARCH_TYPE_RAFT, dest_name)) {
        report_change("arch_cfg_delete_raft, delete arch dest[%s]", arch->dest);
        discard(arch_cfg_sys, *arch);
    }
    return 0;
}

kqcode_t arch_cfg_change_to_new(usint new_node_num, sysname_t* new_node_arr, schar* rec) {
    clear_record(rec);
    if (new_node_num == 0 || new_node_arr == nullptr) return ARCH_E_INVALID_VALUE;
    const names list(new_node_arr, new_node_num);
    const arch_cfg_hold hold;
    discard_if(arch_cfg_sys, [list](const arch_cfg_t& arch) {
        const bool leaves = arch.type == ARCH_TYPE_RAFT && !is_among(list, arch.dest);
        if (leaves) report_change("arch_cfg_change_to_new, delete arch dest[%s]", arch.dest);
        return leaves;
    });
    const kqcode_t code = write_record(rec);
    // The list names this node too, which has no destination.
    set_raft_cnt(new_node_num - 1u);
    return code;
}

kqcode_t arch_cfg_change_learner_to_raft(usint new_node_num, sysname_t* new_node_arr, schar* rec,
                                         usint* n_learner, usint* learner_id_arr) {
    clear_record(rec);
    if (n_learner != nullptr) *n_learner = 0;
    if (new_node_num > 0 && new_node_arr == nullptr) return ARCH_E_INVALID_VALUE;
    const names list(new_node_arr, new_node_num);
    const schar* missing = nullptr;
    const kqcode_t code = promote_all(list, rec, {n_learner, learner_id_arr}, missing);
    if (missing != nullptr)
        return refuse_logged(
            code, "arch_cfg_change_learner_to_raft, new node[%s] not found in arch cfg sys.",
            missing);
    return code;
}

void arch_cfg_set_raft_cnt(void) {
    const arch_cfg_hold hold;
    set_raft_cnt(count_of_type(arch_cfg_sys, ARCH_TYPE_RAFT));
}

kqcode_t arch_cfg_sys_delete_raft_info(void) {
    const arch_cfg_hold hold;
    clear_raft_settings(arch_cfg_sys);
    return 0;
}

kqcode_t arch_delete_raft_info(void) {
    set_raft_cnt(0);
    const arch_cfg_hold hold;
    discard_if(arch_cfg_sys, is_member);
    clear_raft_settings(arch_cfg_sys);
    return arch_cfg_sys_write_to_file();
}

kqcode_t arch_cfg_sys_update_raft_info(ulint raft_hb_interval, ulint raft_vote_interval,
                                       ulint xmal_hb_interval, const schar* xmal_ip,
                                       usint xmal_port, ulint raft_self_id, ulint raft_center_id) {
    schar ip[ARCH_IP_MAX + 1];
    copy_text(ip, xmal_ip != nullptr ? xmal_ip : "");
    if (!is_writable_address(ip))
        return refuse_logged(ARCH_E_INVALID_VALUE,
                             "arch_cfg_sys_update_raft_info, XMAL_IP(%s) can not stand in "
                             "kqarch.ini.",
                             ip);
    {
        const arch_cfg_hold hold;
        os_interlock_write(&arch_cfg_sys.raft_vote_interval, raft_vote_interval);
        os_interlock_write(&arch_cfg_sys.raft_hb_interval, raft_hb_interval);
        arch_cfg_sys.xmal_hb_interval = xmal_hb_interval;
        copy_text(arch_cfg_sys.xmal_ip, ip);
        arch_cfg_sys.xmal_port = xmal_port;
        arch_cfg_sys.self_center_id = static_cast<usint>(raft_center_id);
        arch_cfg_sys.raft_self_id = raft_self_id;
    }
    const kqcode_t code = arch_cfg_sys_validate(0, 0);
    if (code < 0) (void)arch_cfg_sys_delete_raft_info();
    return code;
}

void arch_cfg_sys_set_raft_vote_interval(ulint raft_vote_interval) {
    const arch_cfg_hold hold;
    os_interlock_write(&arch_cfg_sys.raft_vote_interval, raft_vote_interval);
}

// RAFT and LEARNER entries: adding one, and asking for one. Every refusal here is logged only.
#include <cstdio>
#include <cstring>

#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "os.h"
#include "raft/raft.h"
#include "registry/registry.h"
#include "utl.h"

using namespace arch;

namespace arch {
namespace {

constexpr ulint most_with_self = 9;  // what the message counts
constexpr schar name_prefix[] = "ARCHIVE_";
constexpr std::size_t longest_member = KQ_SYSNAME_MAX - (sizeof name_prefix - 1);

// A member that is to be added.
struct member {
    const schar* dest;
    const schar* ip;
    usint port;
    usint dest_id;
};

bool has_address(const member& asked, const schar* ip, usint port) {
    return same_text(ip, asked.ip) && port == asked.port;
}

arch_cfg_t* find_member(const arch_cfg_sys_t& registry, const schar* dest) {
    for (arch_cfg_t& arch : destinations(registry))
        if (is_member(arch) && same_text(arch.dest, dest)) return &arch;
    return nullptr;
}

// ---- Texts that the file can hold ----

// A separator would make two names of one.
bool is_writable_member(std::string_view dest) {
    return !dest.empty() && survives_reading(dest) && dest.find('/') == std::string_view::npos &&
           dest.find("STANDBY_ARCHIVE") == std::string_view::npos;
}

kqcode_t check_texts(const member& asked) {
    if (std::strlen(asked.dest) > longest_member)
        return refuse_logged(ARCH_E_TOO_LONG, "Add learner failed, arch_dest[%s] is too long.\n",
                             clipped(asked.dest).text());
    if (!is_writable_member(asked.dest))
        return refuse_logged(ARCH_E_INVALID_VALUE,
                             "Add learner failed, arch_dest[%s] can not stand in kqarch.ini.\n",
                             clipped(asked.dest).text());
    if (!is_writable_address(asked.ip))
        return refuse_logged(ARCH_E_INVALID_VALUE,
                             "Add learner[%s] failed, ARCH_DEST_IP(%s) can not stand in "
                             "kqarch.ini.\n",
                             asked.dest, clipped(asked.ip).text());
    return 0;
}

// ---- Rules ----

kqcode_t check_count(const arch_cfg_sys_t& registry, usint type) {
    const ulint count = count_of_type(registry, type);
    if (type == ARCH_TYPE_LEARNER && count >= most_learners)
        return refuse_logged(ARCH_E_TOO_MANY_LEARNER,
                             "Add learner failed, the number of Learner archive is over %d, "
                             "please check kqarch.ini configuration!",
                             most_learners);
    if (type == ARCH_TYPE_RAFT && count >= most_of_type)
        return refuse_logged(ARCH_E_TOO_MANY_RAFT,
                             "Add RAFT failed, the number of raft archive is over %d, please "
                             "check kqarch.ini configuration!",
                             most_with_self);
    return 0;
}

kqcode_t refuse_same_address(const member& asked) {
    return refuse_logged(ARCH_E_INVALID_VALUE,
                         "Add learner[%s] failed, has same ARCH_DEST_IP(%s) and "
                         "ARCH_DEST_PORT(%d) in kqarch.ini\n",
                         asked.dest, asked.ip, asked.port);
}

kqcode_t refuse_same_id(const member& asked) {
    return refuse_logged(ARCH_E_INVALID_VALUE,
                         "Add learner[%s] failed, has same ARCH_DEST_ID(%d) in kqarch.ini\n",
                         asked.dest, asked.dest_id);
}

// This node itself, which has no section.
kqcode_t check_against_self(const arch_cfg_sys_t& registry, const member& asked) {
    if (std::strlen(asked.dest) > KQ_SYSNAME_MAX)
        return refuse_logged(ARCH_E_TOO_LONG, "Add learner failed, arch_dest[%s] is too long.\n",
                             clipped(asked.dest).text());
    if (is_this_instance(asked.dest))
        return refuse_logged(ARCH_E_DEST_IS_SELF,
                             "Add learner failed, arch_dest[%s] can not be self instance.\n",
                             asked.dest);
    if (has_address(asked, registry.xmal_ip, registry.xmal_port)) return refuse_same_address(asked);
    if (asked.dest_id == registry.raft_self_id) return refuse_same_id(asked);
    return 0;
}

kqcode_t check_against(const arch_cfg_t& arch, const schar* name, const member& asked) {
    if (same_text(arch.name, name))
        return refuse_logged(ARCH_E_DUPLICATE_NAME,
                             "Add learner[%s] failed, has same subname(%s) in kqarch.ini\n",
                             asked.dest, name);
    if (arch.type == ARCH_TYPE_LOCAL) return 0;
    if (!is_member(arch)) return ARCH_E_INVALID_VALUE;
    if (same_text(arch.dest, asked.dest))
        return refuse_logged(ARCH_E_DEST_EXISTS,
                             "Add learner[%s] failed, has same ARCH_DEST(%s) in kqarch.ini\n",
                             asked.dest, asked.dest);
    if (has_address(asked, arch.arch_dest_ip, arch.arch_dest_port))
        return refuse_same_address(asked);
    if (arch.arch_dest_id == asked.dest_id) return refuse_same_id(asked);
    return 0;
}

kqcode_t check_member(const arch_cfg_sys_t& registry, const schar* name, const member& asked) {
    if (const kqcode_t code = check_against_self(registry, asked); code < 0) return code;
    for (const arch_cfg_t& arch : destinations(registry)) {
        const kqcode_t code = check_against(arch, name, asked);
        if (code < 0) return code;
    }
    return 0;
}

arch_cfg_t* new_member(const schar* name, const member& asked, usint center_id, usint type) {
    auto* arch = static_cast<arch_cfg_t*>(os_malloc(sizeof(arch_cfg_t)));
    if (arch == nullptr) return nullptr;
    arch_init(arch, name);
    arch->type = type;
    copy_text(arch->dest, asked.dest);
    // As start-up reads it, so that the member has its name before and after a restart. A longer
    // one is no instance's name, and part of it might be another's.
    if (std::strlen(asked.dest) <= ARCH_INST_NAME_MAX) {
        copy_text(arch->dest_insts[0], asked.dest);
        (void)kq_strupr(arch->dest_insts[0]);
    }
    copy_text(arch->arch_dest_ip, asked.ip);
    arch->arch_dest_port = asked.port;
    arch->arch_dest_id = asked.dest_id;
    arch->arch_center_id = center_id;
    return arch;
}

kqcode_t add_member(const member& asked, usint center_id, usint type, arch_cfg_t** arch_out)
    KQ_REQUIRES(arch_cfg_sys.mutex) {
    if (const kqcode_t code = check_count(arch_cfg_sys, type); code < 0) return code;
    if (const kqcode_t code = check_texts(asked); code < 0) return code;
    sysname_t name;
    (void)std::snprintf(name, sizeof name, "%s%s", name_prefix, asked.dest);
    if (const kqcode_t code = check_member(arch_cfg_sys, name, asked); code < 0) return code;

    arch_cfg_t* arch = new_member(name, asked, center_id, type);
    if (arch == nullptr)
        return refuse_logged(ARCH_E_OUT_OF_MEMORY, "Add learner failed, out of memory!");
    if (const kqcode_t code = arch_cfg_validate(arch, 0, 0); code < 0) {
        os_free(arch);
        return code;
    }
    append(arch_cfg_sys, *arch);
    *arch_out = arch;
    return 0;
}

// ---- Membership questions ----

// What a name stands for, copied while the lock is held.
struct found_member {
    bool exists;
    usint type;
    sysname_t name;
};

found_member look_up(const schar* dest) {
    found_member found{};
    const arch_cfg_hold hold;
    if (const arch_cfg_t* arch = find_destination(arch_cfg_sys, dest)) {
        found.exists = true;
        found.type = arch->type;
        copy_text(found.name, text_in(arch->name));
    }
    return found;
}

kqcode_t refuse_mismatch(kqcode_t code, const schar* name, usint type) {
    return refuse_logged(code,
                         "arch_cfg_check_raft_dest_validate, arch[%s]'s type[%s] mismatch, "
                         "code:%d!",
                         name, arch_cfg_get_arch_name_by_type(type), code);
}

kqcode_t check_found(const found_member& found, usint type) {
    const bool is_raft = found.type == ARCH_TYPE_RAFT || found.type == ARCH_TYPE_LEARNER;
    if (type == ARCH_TYPE_NONE && !is_raft)
        return refuse_logged(ARCH_E_NOT_RAFT_MEMBER,
                             "arch_cfg_check_raft_dest_validate, arch[%s]'s arch_type[%s] is "
                             "invalid, code:%d!",
                             found.name, arch_cfg_get_arch_name_by_type(found.type),
                             ARCH_E_NOT_RAFT_MEMBER);
    if (type == ARCH_TYPE_NONE || found.type == type) return 0;
    const kqcode_t code =
        type == ARCH_TYPE_LEARNER ? ARCH_E_NOT_LEARNER : ARCH_E_RAFT_TYPE_MISMATCH;
    return refuse_mismatch(code, found.name, found.type);
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_add_learner_or_raft(const schar* dest, const schar* ip, usint port, usint dest_id,
                                      usint center_id, usint arch_type, arch_cfg_t** arch_out,
                                      schar* rec) {
    *arch_out = nullptr;
    clear_record(rec);
    if (arch_type != ARCH_TYPE_RAFT && arch_type != ARCH_TYPE_LEARNER)
        return refuse_logged(ARCH_E_INVALID_TYPE, "Add learner failed, arch_type[%d] is invalid.",
                             arch_type);
    const member asked{dest != nullptr ? dest : "", ip != nullptr ? ip : "", port, dest_id};
    const arch_cfg_hold hold;
    const kqcode_t code = add_member(asked, center_id, arch_type, arch_out);
    return code < 0 ? code : write_record(rec);
}

kqcode_t arch_cfg_validate_raft_info(const schar* arch_name, const schar* dest, const schar* ip,
                                     usint port, usint dest_id) {
    const member asked{dest, ip != nullptr ? ip : "", port, dest_id};
    return check_member(arch_cfg_sys, arch_name, asked);
}

kqcode_t arch_cfg_update_raft_info(const schar* dest_name, const schar* new_xmal_ip,
                                   usint new_xmal_port) {
    const bool itself = same_text(dest_name, global_ini_info.instance_name);
    arch_cfg_t* arch = itself ? nullptr : find_member(arch_cfg_sys, dest_name);
    if (!itself && arch == nullptr) return 0;

    const std::string_view ip = new_xmal_ip != nullptr ? new_xmal_ip : "";
    if (!is_writable_address(ip)) {
        return refuse_logged(0,
                             "arch_cfg_update_raft_info, new address of [%s] can not stand in "
                             "kqarch.ini, the old one stays.",
                             dest_name);
    }
    if (itself) {
        copy_text(arch_cfg_sys.xmal_ip, ip);
        arch_cfg_sys.xmal_port = new_xmal_port;
    } else {
        copy_text(arch->arch_dest_ip, ip);
        arch->arch_dest_port = new_xmal_port;
    }
    return 0;
}

usint arch_cfg_find_dest_id_by_name(const schar* dest) {
    if (is_this_instance(dest)) return static_cast<usint>(arch_cfg_sys.raft_self_id);
    const arch_cfg_t* arch = find_member(arch_cfg_sys, dest);
    return arch != nullptr ? arch->arch_dest_id : usint{ARCH_UNSET_SHORT};
}

kqcode_t arch_cfg_check_raft_dest_validate(const schar* dest, usint arch_type) {
    if (std::strlen(dest) > KQ_SYSNAME_MAX)
        return refuse_logged(ARCH_E_RAFT_DEST_TOO_LONG,
                             "arch_cfg_check_raft_dest_validate, check dest[%s] too long, "
                             "code:%d!",
                             clipped(dest).text(), ARCH_E_RAFT_DEST_TOO_LONG);
    if (is_this_instance(dest)) {
        if (arch_type != ARCH_TYPE_LEARNER) return 0;
        return refuse_mismatch(ARCH_E_RAFT_TYPE_MISMATCH, dest, ARCH_TYPE_LEARNER);
    }
    const found_member found = look_up(dest);
    if (!found.exists)
        return refuse_logged(ARCH_E_DEST_NOT_FOUND,
                             "arch_cfg_check_raft_dest_validate, arch_dest[%s] not exist, "
                             "code:%d!",
                             dest, ARCH_E_DEST_NOT_FOUND);
    return check_found(found, arch_type);
}

// Destination texts: the check that each passes, and instance lists.
#include "common/report.h"
#include "common/server.h"
#include "registry/registry.h"
#include "utl.h"

using namespace arch;

namespace arch {
namespace {

std::size_t longest_dest(ulint type) {
    const bool is_path =
        type == ARCH_TYPE_LOCAL || type == ARCH_TYPE_REMOTE || type == ARCH_TYPE_NONE;
    return is_path ? KQ_PATHNAME_MAX : KQ_SYSNAME_MAX;
}

// The text is terminated.
kqcode_t check_dest(const arch_cfg_sys_t& registry, std::string_view dest, ulint type,
                    const arch_cfg_t* except) {
    if (dest.size() > longest_dest(type)) return ARCH_E_TOO_LONG;
    if (is_this_instance(dest.data()))
        return refuse_printed(ARCH_E_DEST_IS_SELF, "archive_dest can not be self instance!\n");
    if (destination_exists(registry, dest, except)) return ARCH_E_DEST_EXISTS;
    if (type == ARCH_TYPE_LOCAL && is_valid_pathname(dest.data(), 0) == 0)
        return refuse_printed(ARCH_E_INVALID_PATH, "%s arch dest path %s Invalid!\n", "Local",
                              dest.data());
    if (type == ARCH_TYPE_REMOTE && is_valid_pathname(dest.data(), 0) == 0)
        return refuse_printed(ARCH_E_INVALID_PATH, "%s arch dest path %s Invalid!\n", "Remote",
                              dest.data());
    return 0;
}

// An instance name of the list of `arch`. The record itself is not looked at, so that a name may be
// given twice, and an empty name is nobody's.
kqcode_t check_name(const arch_cfg_sys_t& registry, const arch_cfg_t& arch, std::string_view name) {
    if (!name.empty()) {
        const kqcode_t code = check_dest(registry, name, arch.type, &arch);
        if (code < 0) return raise(code);
    }
    if (name.size() > ARCH_INST_NAME_MAX)
        return refuse_printed(ARCH_E_INVALID_DEST, "ARCH_DEST name %s too long(max %d)\n",
                              name.data(), ARCH_INST_NAME_MAX);
    return 0;
}

kqcode_t store_instances(const arch_cfg_sys_t& registry, arch_cfg_t& arch, const schar* list) {
    sysname_t name;
    byte count = 0;
    while (list != nullptr) {
        const std::string_view piece = cut_piece(list);
        if (piece.size() > KQ_SYSNAME_MAX) return raise(ARCH_E_TOO_LONG);
        copy_characters(name, piece);
        name[piece.size()] = '\0';
        const kqcode_t code = check_name(registry, arch, {name, piece.size()});
        if (code < 0) return code;
        if (count == ARCH_INST_MAX) return ARCH_E_TOO_MANY_INSTS;
        copy_text(arch.dest_insts[count++], {kq_strupr(name), piece.size()});
    }
    arch.n_inst = count;
    if (count > 1 && arch.type == ARCH_TYPE_SYNC) return ARCH_E_TOO_MANY_INSTS;
    copy_text(arch.dest, count == 1 ? text_in(arch.dest_insts[0]) : "");
    return 0;
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_check_dest_validate(arch_cfg_sys_t* cfg_sys, const schar* dest, usint type) {
    if (dest == nullptr) return ARCH_E_INVALID_DEST;
    return check_dest(cfg_sys != nullptr ? *cfg_sys : arch_cfg_sys, dest, type, nullptr);
}

kqcode_t arch_cfg_inst_dests_validate(arch_cfg_sys_t* cfg_sys, arch_cfg_t* arch,
                                      const schar* dest) {
    if (dest == nullptr) {
        arch->n_inst = 0;
        return 0;
    }
    return store_instances(cfg_sys != nullptr ? *cfg_sys : arch_cfg_sys, *arch, dest);
}

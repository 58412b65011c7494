// Finding records by what their destination points at.
#include "arch_cfg_hold.h"
#include "registry/answers.h"

using namespace arch;

namespace arch {

arch_cfg_t* find_destination(const arch_cfg_sys_t& registry, const schar* text,
                             const arch_cfg_t* except) {
    if (text == nullptr) return nullptr;
    const folded_text sought(text);
    for (arch_cfg_t& arch : destinations(registry))
        if (&arch != except && answers_to(arch, sought)) return &arch;
    return nullptr;
}

arch_cfg_t* find_section(const arch_cfg_sys_t& registry, const schar* name) {
    if (name == nullptr) return nullptr;
    const folded_text sought(name);
    for (arch_cfg_t& arch : destinations(registry))
        if (sought.equals(arch.name)) return &arch;
    return nullptr;
}

arch_cfg_t* first_of_type(const arch_cfg_sys_t& registry, ulint type) {
    for (arch_cfg_t& arch : destinations(registry))
        if (arch.type == type) return &arch;
    return nullptr;
}

kqcode_t next_piece(const schar*& cursor, sysname_t& piece) {
    piece[0] = '\0';
    if (cursor == nullptr) return 0;
    const schar* rest = cursor;
    const std::string_view next = cut_piece(rest);
    if (next.size() > KQ_SYSNAME_MAX) return ARCH_E_TOO_LONG;
    copy_text(piece, next);
    cursor = rest;
    return 0;
}

bool can_be_searched(const schar* list) {
    sysname_t piece;
    for (int count = 0; list != nullptr; ++count)
        if (count == ARCH_INST_MAX || next_piece(list, piece) < 0) return false;
    return true;
}

}  // namespace arch

arch_cfg_t* arch_cfg_find_by_dest_low_without_enter(arch_cfg_sys_t* cfg_sys, const schar* dest) {
    return find_destination(cfg_sys != nullptr ? *cfg_sys : arch_cfg_sys, dest);
}

arch_cfg_t* arch_cfg_find_by_dest_low(const schar* dest) {
    const arch_cfg_hold hold;
    return find_destination(arch_cfg_sys, dest);
}

arch_cfg_t* arch_cfg_find_by_dest(const schar* dest_org, kqbool subscribe_flag) {
    if (subscribe_flag == 1) return arch_cfg_find_subscribe();
    return find_by_list(dest_org, arch_cfg_find_by_dest_low);
}

arch_cfg_t* arch_cfg_find_subscribe_without_enter(void) {
    return first_of_type(arch_cfg_sys, ARCH_TYPE_SUBSCRIBE);
}

arch_cfg_t* arch_cfg_find_subscribe(void) {
    const arch_cfg_hold hold;
    return arch_cfg_find_subscribe_without_enter();
}

void arch_cfg_get_arch_arr_by_type(usint arch_type, usint* num, sysname_t* dest_arr) {
    usint filled = 0;
    *num = 0;
    {
        const arch_cfg_hold hold;
        for (const arch_cfg_t& arch : destinations(arch_cfg_sys))
            if (arch.type == arch_type) copy_text(dest_arr[filled++], text_in(arch.dest));
    }
    *num = filled;
}

void arch_cfg_set_dest(arch_cfg_t* arch_cfg, const schar* dest) {
    copy_text(arch_cfg->dest, dest == nullptr ? "" : dest);
}

kqcode_t arch_cfg_calc_next_inst_dest(schar** dest_tmp, schar* dest_out) {
    const schar* cursor = *dest_tmp;
    const kqcode_t code = next_piece(cursor, *reinterpret_cast<sysname_t*>(dest_out));
    *dest_tmp = const_cast<schar*>(cursor);
    return code;
}

#include "exchange/path_lists.h"

#include "ini.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {
namespace {

void append_node(kq_lst_t& list, kq_lst_node_t& node) {
    node.prev = list.end;
    node.next = nullptr;
    (list.end != nullptr ? list.end->next : list.start) = &node;
    list.end = &node;
    ++list.count;
}

void free_parts(kqenv_t env, kq_lst_node_t* node) {
    mem_free(env, node->data);
    mem_free(env, node->flag);
    mem_free(env, node);
}

// Fills a field of a new entry; how long its text is.
template <std::size_t Size>
usint store_text(schar (&field)[Size], std::string_view text) {
    text = text.substr(0, Size - 1);
    copy_characters(field, text);
    field[text.size()] = '\0';
    return static_cast<usint>(text.size());
}

template <typename FreeNode>
void free_list(kq_lst_t& list, FreeNode free_node) {
    for (kq_lst_node_t* node = list.start; node != nullptr;) {
        kq_lst_node_t* next = node->next;
        free_node(node);
        node = next;
    }
    list = {};
}

// Appends an entry of two or three blocks.
bool append_parts(kqenv_t env, kq_lst_t& list, const arch_cfg_t& arch, bool with_name) {
    auto* node = pool_block<kq_lst_node_t>(env);
    if (node == nullptr) return false;
    *node = {};
    auto* path = pool_block<pathname_t>(env);
    node->data = path;
    auto* name = path != nullptr && with_name ? pool_block<sysname_t>(env) : nullptr;
    node->flag = name;
    if (path == nullptr || (with_name && name == nullptr)) {
        free_parts(env, node);
        return false;
    }
    copy_text(*path, text_in(arch.dest));
    if (with_name) copy_text(*name, owner_of(arch, own_name()));
    append_node(list, *node);
    return true;
}

}  // namespace

std::string_view own_name() {
    const schar* self = ini_get_instance_name();
    return self != nullptr ? self : "";
}

bool append_entry(kqenv_t env, kq_lst_t& list, std::string_view path, std::string_view name) {
    auto* entry = pool_block<path_entry>(env);
    if (entry == nullptr) return false;
    entry->path_length = store_text(entry->path, path);
    entry->name_length = store_text(entry->name, name);
    entry->node.data = entry->path;
    entry->node.flag = entry->name;
    append_node(list, entry->node);
    return true;
}

void free_entries(kqenv_t env, kq_lst_t& list) {
    free_list(list, [env](kq_lst_node_t* node) { mem_free(env, node); });
}

void free_entries_in_parts(kqenv_t env, kq_lst_t& list) {
    free_list(list, [env](kq_lst_node_t* node) { free_parts(env, node); });
}

}  // namespace arch

kqcode_t arch_cfg_get_all_remote_dest(kqenv_t env, kq_lst_t* dest_lst) {
    *dest_lst = {};
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (arch.type != ARCH_TYPE_REMOTE) continue;
        if (!append_entry(env, *dest_lst, text_in(arch.dest), text_in(arch.timer_name))) {
            free_entries(env, *dest_lst);
            return ARCH_E_OUT_OF_MEMORY;
        }
    }
    return 0;
}

kqcode_t arch_cfg_get_all_local_and_remote_dest(kqenv_t env, kq_lst_t* dest_lst,
                                                kqbool arch_local_share, kqbool get_one_local) {
    *dest_lst = {};
    bool local_seen = false;
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (!holds_archives(arch)) continue;
        const bool is_local = arch.type == ARCH_TYPE_LOCAL;
        if (is_local && local_seen && get_one_local == 1) continue;
        local_seen = local_seen || is_local;
        if (!append_parts(env, *dest_lst, arch, arch_local_share == 1)) {
            free_entries_in_parts(env, *dest_lst);
            return ARCH_E_OUT_OF_MEMORY;
        }
    }
    return 0;
}

// The configuration message: this node's archive paths, and the check of a peer's.
#include "common/server.h"
#include "exchange/path_lists.h"
#include "exchange/wire.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {
namespace {

// One entry of a peer's message; false when it is malformed.
bool read_entry(byte_reader& reader, bool with_name, std::string_view& path,
                std::string_view& name) {
    if (!reader.text(KQ_PATHNAME_MAX, path)) return false;
    return !with_name || reader.text(KQ_SYSNAME_MAX, name);
}

bool is_well_formed(std::span<const byte> body, bool with_names) {
    std::string_view path;
    std::string_view name;
    byte_reader reader(body);
    while (!reader.at_end()) {
        if (!read_entry(reader, with_names, path, name)) return false;
        if (has_control(path) || has_control(name)) return false;
    }
    return true;
}

// Whole texts with case. Paths begin alike: their ends decide most comparisons.
bool is_same(std::string_view left, std::string_view right) {
    return left.size() == right.size() && tail_of(left) == tail_of(right) && left == right;
}

// Whether one of a peer's entries has the path, with case, and the name, without.
bool has_entry(const kq_lst_t& entries, const path_entry& wanted) {
    for (const kq_lst_node_t* node = entries.start; node != nullptr; node = node->next) {
        const path_entry& entry = entry_of(*node);
        if (is_same(entry.path_text(), wanted.path_text()) &&
            same_text(entry.name_text(), wanted.name_text()))
            return true;
    }
    return false;
}

bool has_path(const kq_lst_t& entries, std::string_view path) {
    for (const kq_lst_node_t* node = entries.start; node != nullptr; node = node->next)
        if (is_same(entry_of(*node).path_text(), path)) return true;
    return false;
}

// With a shared archive the peer must have every REMOTE destination of this node.
kqcode_t check_shared(kqenv_t env, const kq_lst_t& peer) KQ_REQUIRES(arch_cfg_sys.mutex) {
    scoped_list<free_entries> own(env);
    if (const kqcode_t code = arch_cfg_get_all_remote_dest(env, &own.list); code < 0) return code;
    for (const kq_lst_node_t* node = own.list.start; node != nullptr; node = node->next)
        if (!has_entry(peer, entry_of(*node))) return ARCH_E_PEER_CFG_MISMATCH;
    return 0;
}

// Without one, no path of the peer may be a path of this node.
kqcode_t check_unshared(kqenv_t env, const kq_lst_t& peer) KQ_REQUIRES(arch_cfg_sys.mutex) {
    if (ini_get_value(0, ini_index_hpc_node) > 1) return ARCH_E_PEER_CFG_MISMATCH;
    scoped_list<free_entries_in_parts> own(env);
    const kqcode_t code = arch_cfg_get_all_local_and_remote_dest(env, &own.list, 0, 0);
    if (code < 0) return code;
    for (const kq_lst_node_t* node = own.list.start; node != nullptr; node = node->next)
        if (has_path(peer, static_cast<const schar*>(node->data))) return ARCH_E_PEER_PATH_CONFLICT;
    return 0;
}

}  // namespace
}  // namespace arch

ulint arch_cfg_info_len_calc(kqbool inst_check) {
    const std::string_view own = own_name();
    std::size_t length = body_length_size;
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (!holds_archives(arch)) continue;
        length += text_length_size + text_in(arch.dest).size();
        if (inst_check == 1) length += text_length_size + owner_of(arch, own).size();
    }
    return static_cast<ulint>(length);
}

ulint arch_cfg_info_encode(byte* msg_buf, ulint off, ulint, kqbool inst_check) {
    const std::string_view own = own_name();
    byte* const body = msg_buf + off + body_length_size;
    byte* at = body;
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (!holds_archives(arch)) continue;
        at = write_field(at, arch.dest, sizeof arch.dest);
        if (inst_check != 1) continue;
        if (arch.type == ARCH_TYPE_REMOTE)
            at = write_field(at, arch.timer_name, KQ_SYSNAME_MAX);
        else
            at = write_text(at, own.substr(0, KQ_SYSNAME_MAX));
    }
    const ulint body_length = static_cast<ulint>(at - body);
    write_number<body_length_size>(msg_buf + off, body_length);
    return body_length_size + body_length;
}

kqcode_t arch_cfg_info_decode_and_check(kqenv_t env, const byte* msg_buf, ulint msg_len,
                                        kqbool arch_local_share) {
    const bool is_shared = arch_local_share == 1;
    const std::span<const byte> body(msg_buf, msg_len);
    if (!is_well_formed(body, is_shared)) return ARCH_E_PEER_CFG_MISMATCH;

    scoped_list<free_entries> peer(env);
    byte_reader reader(body);
    while (!reader.at_end()) {
        std::string_view path;
        std::string_view name;
        (void)read_entry(reader, is_shared, path, name);
        if (!append_entry(env, peer.list, path, name)) return ARCH_E_OUT_OF_MEMORY;
    }
    return is_shared ? check_shared(env, peer.list) : check_unshared(env, peer.list);
}

kqbool arch_cfg_cmp(const arch_cfg_t* cfg1, const arch_cfg_t* cfg2) {
    return same_path(cfg1->name, cfg2->name) && cfg1->type == cfg2->type &&
           cfg1->n_inst == cfg2->n_inst && same_path(cfg1->dest, cfg2->dest) &&
           cfg1->space_limit == cfg2->space_limit && cfg1->file_size == cfg2->file_size &&
           cfg1->hang_flag == cfg2->hang_flag && cfg1->flush_buf_size == cfg2->flush_buf_size &&
           same_path(cfg1->timer_name, cfg2->timer_name) && cfg1->epno == cfg2->epno &&
           cfg1->arch_send_delay == cfg2->arch_send_delay;
}

// The other nodes of the cluster: whether each has a destination here, and what each needs of it.
#include <algorithm>
#include <array>
#include <cstdio>

#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "dcr_dll.h"
#include "elog.h"
#include "exchange/path_lists.h"
#include "mal_cfg.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {
namespace {

constexpr ulint cluster_group = 4;

// Where the text of an error goes.
struct error_text {
    lint language;
    ulint* length;
    schar* text;

    kqcode_t describe(kqcode_t code) const {
        return kqerr_get_err_desc_with_langage(code, language, length, text, 0);
    }
    kqcode_t describe(kqcode_t code, const schar* parameter) const {
        return kqerr_get_err_desc_with_langage(code, language, length, text, 1, parameter);
    }
};

using endpoint_numbers = std::array<byte, DCR_EP_MAX>;
using endpoint_query = kqcode_t (*)(usint group, byte* count, byte* endpoints, byte* sequence);

arch_cfg_t* find_remote(const arch_cfg_sys_t& registry, const schar* instance) {
    for (arch_cfg_t& arch : destinations(registry))
        if (arch.type == ARCH_TYPE_REMOTE && same_text(arch.timer_name, instance)) return &arch;
    return nullptr;
}

// Every endpoint of one list but this node's needs a REMOTE destination.
kqcode_t check_endpoints(const arch_cfg_sys_t& registry, endpoint_query query, usint group,
                         usint self, const error_text& error) {
    endpoint_numbers endpoints{};
    endpoint_numbers sequence{};
    byte count = 0;
    const kqcode_t listed = query(group, &count, endpoints.data(), sequence.data());
    if (listed < 0) return error.describe(listed);

    for (const byte endpoint : std::span(endpoints).first(std::min<byte>(count, DCR_EP_MAX))) {
        const auto number =
            static_cast<byte>(dcr3_dll_get_ep_seqno_by_dcr_seqno(endpoint, sequence.data()));
        if (number == self) continue;
        dcr_ep_t description{};
        const kqcode_t known = dcr3_dll_get_ep_info_by_type(cluster_group, endpoint, &description);
        if (known < 0) return error.describe(known);
        if (find_remote(registry, description.ep_name) != nullptr) continue;
        schar shown[4];
        (void)std::snprintf(shown, sizeof shown, "%d", number);
        return error.describe(ARCH_E_EP_NO_REMOTE, shown);
    }
    return 0;
}

// Adds a name to the next free slot of an entry that has one.
void collect_name(arch_collect_t& entry, std::string_view name) {
    if (entry.n_rac < ARCH_INST_MAX) copy_text(entry.inst_name_arr[entry.n_rac++], name);
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_remote_all_other_ep_check(lint language, ulint* err_len, schar* err_desc) {
    if (static_cast<usint>(ini_get_value(0, ini_index_hpc_node)) < 2) return 0;
    if (ini_get_value(0, ini_index_dfs_flag) == 1) return 0;

    const error_text error{language, err_len, err_desc};
    usint self = 0;
    usint group = 0;
    const kqcode_t code = dcr3_dll_get_group_seq_by_type(
        cluster_group, ini_get_str_value(ini_index_instance_name), 0, &self, &group);
    if (code < 0) return error.describe(code);

    // A failed node needs its destination as much as a healthy one.
    for (const endpoint_query query :
         {dcr3_dll_group_get_ok_ep_arr, dcr3_dll_group_get_err_ep_arr}) {
        const kqcode_t missing = check_endpoints(arch_cfg_sys, query, group, self, error);
        if (missing != 0) return missing;
    }
    return 0;
}

void arch_cfg_collect_inst_name(usint* n_arch, arch_collect_t* arch_collect) {
    usint index = *n_arch;
    {
        const arch_cfg_hold hold;
        for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
            if (arch.type == ARCH_TYPE_LOCAL) continue;
            arch_collect_t& entry = arch_collect[index++];
            if (arch.type == ARCH_TYPE_REMOTE)
                collect_name(entry, text_in(arch.timer_name));
            else
                for (const auto& name : instance_names(arch))
                    collect_name(entry, text_in(name));
        }
    }
    *n_arch = index;
}

arch_cfg_t* arch_cfg_find_remote_by_inst_name(const schar* inst_name) {
    return find_remote(arch_cfg_sys, inst_name);
}

arch_cfg_t* arch_cfg_find_remote_by_mal_seqno(usint mal_seqno) {
    if (arch_cfg_sys.has_inited != 1) return nullptr;
    return find_remote(arch_cfg_sys, mal_cfg_get_inst_name_by_site(mal_seqno));
}

void arch_cfg_sys_destroy_one_ep(usint ep_no) {
    const arch_cfg_hold hold;
    for (arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (arch.epno != ep_no) continue;
        discard(arch_cfg_sys, arch);
        return;
    }
}

kqcode_t rarch_cfg_arch_path_get(kqenv_t env, ulint* n_arch_path, pathname_t** arch_path_arr) {
    *arch_path_arr = nullptr;
    *n_arch_path = 0;
    ulint size = 0;
    bool local_seen = false;
    for (arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        if (!holds_archives(arch)) continue;
        const bool is_local = arch.type == ARCH_TYPE_LOCAL;
        if (is_local && local_seen) continue;
        local_seen = local_seen || is_local;
        const kqcode_t code =
            rarch_cfg_arch_path_arr_fill(env, &size, n_arch_path, arch_path_arr, arch.dest);
        if (code < 0) return raise(code);
    }
    if (size == 0) return refuse_logged(ARCH_E_NO_ARCH_PATH, "rarch_cfg_arch_path_get arr_size=0");
    return 0;
}

kqcode_t rarch_cfg_arch_path_arr_fill(kqenv_t env, ulint* arr_size, ulint* n_arch_path,
                                      pathname_t** arch_path_arr, const schar* arch_path) {
    constexpr ulint step = 16;
    pathname_t* paths = *arch_path_arr;
    if (*n_arch_path == *arr_size) {
        paths = pool_block<pathname_t>(env, *arr_size + step);
        if (paths == nullptr) return ARCH_E_OUT_OF_MEMORY;
        if (*n_arch_path > 0)
            std::memcpy(paths, *arch_path_arr, sizeof(pathname_t) * std::size_t{*n_arch_path});
        *arr_size += step;
    }
    // The path may lie in the old array.
    copy_text(paths[(*n_arch_path)++], arch_path != nullptr ? arch_path : "");
    if (paths != *arch_path_arr) mem_free(env, *arch_path_arr);
    *arch_path_arr = paths;
    return 0;
}

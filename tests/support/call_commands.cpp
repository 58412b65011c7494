// Commands that are functions of the module, under their names, of which "arch_cfg_" may be left
// out.
#include "support/binding.h"

#include <cstring>

#include "support/fields.h"

namespace test_support {

namespace {

using context = command_context;

std::string create(const context& call) {
    arch_cfg_t unwritten;
    arch_cfg_t* arch = &unwritten;
    kqcode_t code = arch_cfg_create(registry_of(call, 0), call.text(1), &arch);
    if (code == 0) return code_text(code);
    return code_text(code) +
           (arch == &unwritten ? ", record not written" : ", record " + name_of(arch));
}

// The value may hold what the key's own rule changes in place, so it is handed over as a copy.
std::string add_value(const context& call) {
    std::string value = call.argument(3);
    return code_text(arch_cfg_add_value(registry_of(call, 0), record_of(call, 1), call.text(2),
                                        call.text(3) ? value.data() : nullptr));
}

std::string get_name(const context& call) {
    sysname_t name = "unchanged";
    arch_cfg_hold lock;
    arch_cfg_get_name(call.number(0), name);
    return name;
}

std::string destinations_of_type(const context& call) {
    sysname_t destinations[32];
    usint count = 99;
    arch_cfg_get_arch_arr_by_type(static_cast<usint>(call.number(0)), &count, destinations);
    std::string text = std::to_string(count);
    for (usint i = 0; i < count; i++)
        text += " (" + std::string(destinations[i]) + ")";
    return text;
}

std::string split_list(const context& call) {
    std::string list = call.argument(0), pieces;
    schar* cursor = list.data();
    while (cursor != nullptr) {
        sysname_t piece = "unchanged";
        kqcode_t code = arch_cfg_calc_next_inst_dest(&cursor, piece);
        if (code != 0)
            return pieces + code_text(code) + " at " + std::to_string(cursor - list.data()) +
                   " piece (" + piece + ")";
        pieces += "(" + std::string(piece) + ") ";
    }
    if (list != call.argument(0)) pieces += "the list was changed";
    return pieces.substr(0, pieces.find_last_not_of(' ') + 1);
}

// What a writer of a section, or of the settings, appends.
template <auto Writer>
std::string appended(const context& call) {
    static schar text[ARCH_CFG_TEXT_SIZE];
    strcpy(text, file_header);
    arch_cfg_hold lock;
    if constexpr (std::is_invocable_v<decltype(Writer), schar*, schar*>)
        Writer(text, nullptr);
    else
        Writer(text, nullptr, record_of(call, 0));
    return folded(text);
}

std::string getters(const context&) {
    byte mirror = 0;
    usint striping = 0;
    arch_cfg_get_asm_mirror_striping(&mirror, &striping);
    return "wait_apply=" + std::to_string(arch_cfg_get_wait_apply()) +
           " raft_hb_interval=" + std::to_string(arch_cfg_sys_get_raft_hb_interval()) +
           " asm_mirror=" + std::to_string(mirror) + " asm_striping=" + std::to_string(striping) +
           " raft_cnt=" + std::to_string(arch_cfg_get_raft_cnt()) +
           " self_is_learner=" + std::to_string(arch_cfg_check_self_is_learner());
}

std::string whole_validate(const context& call) {
    return code_text(
        arch_cfg_sys_validate(call.option("timer_chk", 1), call.option("asm_path_chk", 1)));
}

}  // namespace

const command_table& call_commands() {
    static const command_table table = {
        BOUND(arch_cfg_get_arch_name_by_type),
        BOUND(arch_cfg_get_arch_type_by_name),
        BOUND(arch_get_name_by_status),
        BOUND(arch_cfg_get_stat_str),
        BOUND(arch_cfg_destroy_for_drs),
        BOUND(arch_cfg_sys_destroy),
        BOUND(arch_cfg_sys_destroy_one_ep),
        BOUND(arch_cfg_find_by_dest_low),
        BOUND(arch_cfg_find_by_dest),
        BOUND(arch_cfg_find_subscribe),
        BOUND(arch_cfg_check_local_path_validate),
        BOUND(arch_cfg_local_dest_check),
        BOUND(arch_cfg_has_dsc_arch_dest),
        BOUND(arch_cfg_has_local_or_sync),
        BOUND(arch_cfg_inst_check_in_mal),
        BOUND(arch_cfg_check_subscb_dest),
        BOUND(arch_cfg_check_subscb_svc),
        BOUND(arch_cfg_check_raft_dest_validate),
        BOUND(arch_cfg_delete_raft),
        BOUND(arch_cfg_sys_delete_raft_info),
        BOUND(arch_delete_raft_info),
        BOUND(arch_cfg_sys_update_raft_info),
        BOUND(arch_cfg_sys_set_raft_vote_interval),
        BOUND_LOCKED(arch_cfg_get_cnt_by_type),
        BOUND_LOCKED(arch_cfg_get_local_cnt),
        BOUND_LOCKED(arch_cfg_get_realtime_cnt),
        BOUND_LOCKED(arch_cfg_get_sync_cnt),
        BOUND_LOCKED(arch_cfg_get_async_cnt),
        BOUND_LOCKED(arch_cfg_get_timely_cnt),
        BOUND_LOCKED(arch_cfg_get_remote_cnt),
        BOUND_LOCKED(arch_cfg_find_by_dest_low_without_enter),
        BOUND_LOCKED(arch_cfg_find_subscribe_without_enter),
        BOUND_LOCKED(arch_cfg_find_remote_by_inst_name),
        BOUND_LOCKED(arch_cfg_find_remote_by_mal_seqno),
        BOUND_LOCKED(arch_cfg_validate),
        BOUND_LOCKED(arch_cfg_check_dest_validate),
        BOUND_LOCKED(arch_cfg_inst_dests_validate),
        BOUND_LOCKED(arch_cfg_sys_check_low),
        BOUND_LOCKED(arch_cfg_info_len_calc),
        BOUND_LOCKED(arch_cfg_validate_raft_info),
        BOUND_LOCKED(arch_cfg_update_raft_info),
        BOUND_LOCKED(arch_cfg_find_dest_id_by_name),
        BOUND_LOCKED(mal_cfg_inst_check_in_arch),
        {"arch_cfg_write_global_ini", appended<arch_cfg_write_global_ini>},
        {"arch_cfg_write_all_local_ini", appended<arch_cfg_write_all_local_ini>},
        {"arch_cfg_write_local_ini", appended<arch_cfg_write_local_ini>},
        {"arch_cfg_write_raft_ini", appended<arch_cfg_write_raft_ini>},
        {"arch_cfg_write_subscribe_ini", appended<arch_cfg_write_subscribe_ini>},
        {"arch_cfg_name_pre",
         [](const context& call) { return shown(arch_cfg_name_pre[call.number(0)]); }},
        {"arch_cfg_get_arch_arr_by_type", destinations_of_type},
        {"arch_cfg_set_dest",
         [](const context& call) {
             arch_cfg_set_dest(record_of(call, 0), call.text(1));
             return shown(record_of(call, 0)->dest);
         }},
        {"arch_cfg_calc_next_inst_dest", split_list},
        {"arch_cfg_create", create},
        {"arch_cfg_add_value", add_value},
        {"arch_cfg_get_name", get_name},
        {"arch_cfg_sys_validate", whole_validate},
        {"getters", getters},
    };
    return table;
}

}  // namespace test_support

// Commands that are functions of the module, under their names, with the arguments in the order of
// their declaration. A registry argument is null, process (the process registry's address) or own;
// a record argument is a section's name or null.
#include "support/fields.h"
#include "support/scenario.h"

#include <cstring>
#include <stdexcept>

namespace test_support {

namespace {

using context = command_context;

arch_cfg_sys_t* registry_of(const context& call, size_t index) {
    if (call.argument(index) == "own") return &call.own_registry;
    return call.argument(index) == "process" ? &arch_cfg_sys : nullptr;
}

arch_cfg_t* record_of(const context& call, size_t index) {
    if (call.argument(index) == "null") return nullptr;
    for (const arch_cfg_sys_t* registry : {&arch_cfg_sys, &call.own_registry}) {
        if (arch_cfg_t* arch = find_record(*registry, call.argument(index))) return arch;
    }
    throw std::runtime_error("no record " + call.argument(index));
}

std::string name_of(const arch_cfg_t* arch) {
    return arch ? arch->name : "null";
}

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
    return code_text(
        arch_cfg_add_value(registry_of(call, 0), record_of(call, 1), call.text(2), value.data()));
}

std::string get_name(const context& call) {
    sysname_t name = "unchanged";
    registry_lock lock;
    arch_cfg_get_name(call.number(0), name);
    return name;
}

std::string name_prefix(const context& call) {
    const schar* prefix = arch_cfg_name_pre[call.number(0)];
    return prefix ? prefix : "null";
}

std::string destinations_of_type(const context& call) {
    sysname_t destinations[32];
    usint count = 99;
    arch_cfg_get_arch_arr_by_type(static_cast<usint>(call.number(0)), &count, destinations);
    std::string text = std::to_string(count) + "\n";
    for (usint i = 0; i < count; i++)
        text += std::string(destinations[i]) + "\n";
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
        pieces += "(" + std::string(piece) + ")\n";
    }
    return list == call.argument(0) ? pieces : pieces + "the list was changed";
}

std::string set_dest(const context& call) {
    arch_cfg_set_dest(record_of(call, 0), call.text(1));
    return record_of(call, 0)->dest;
}

using text_writer = void (*)(schar*, schar*, arch_cfg_t*);

std::string append_section(const context& call, text_writer writer) {
    static schar text[ARCH_CFG_TEXT_SIZE];
    strcpy(text, "before\n");
    registry_lock lock;
    writer(text, nullptr, record_of(call, 0));
    return text;
}

std::string append_settings(void (*writer)(schar*, schar*)) {
    static schar text[ARCH_CFG_TEXT_SIZE];
    strcpy(text, "before\n");
    registry_lock lock;
    writer(text, nullptr);
    return text;
}

std::string locked_count(ulint (*counter)()) {
    registry_lock lock;
    return std::to_string(counter());
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

std::string validate(const context& call) {
    registry_lock lock;
    return code_text(arch_cfg_validate(record_of(call, 0), call.number(1), call.number(2)));
}

std::string whole_validate(const context& call) {
    return code_text(
        arch_cfg_sys_validate(call.option("timer_chk", 1), call.option("asm_path_chk", 1)));
}

std::string find_low_without_enter(const context& call) {
    registry_lock lock;
    return name_of(arch_cfg_find_by_dest_low_without_enter(registry_of(call, 0), call.text(1)));
}

std::string find_subscribe_without_enter(const context&) {
    registry_lock lock;
    return name_of(arch_cfg_find_subscribe_without_enter());
}

std::string check_dest(const context& call) {
    registry_lock lock;
    return code_text(arch_cfg_check_dest_validate(registry_of(call, 0), call.text(1),
                                                  static_cast<usint>(call.number(2))));
}

std::string check_instances(const context& call) {
    registry_lock lock;
    return code_text(
        arch_cfg_inst_dests_validate(registry_of(call, 0), record_of(call, 1), call.text(2)));
}

std::string check_standby(const context& call) {
    registry_lock lock;
    return code_text(arch_cfg_sys_check_low(call.number(0)));
}

std::string warn_of_missing(const context&) {
    registry_lock lock;
    return code_text(mal_cfg_inst_check_in_arch());
}

std::string count_of_type(const context& call) {
    registry_lock lock;
    return std::to_string(arch_cfg_get_cnt_by_type(call.number(0)));
}

}  // namespace

#define CALL []([[maybe_unused]] const context& call) -> std::string
#define COUNTER(function) [](const context&) { return locked_count(function); }
#define SECTION_WRITER(function) [](const context& call) { return append_section(call, function); }

const command_table& call_commands() {
    static const command_table table = {{"arch_cfg_get_arch_name_by_type",
                                         CALL{return arch_cfg_get_arch_name_by_type(call.number(0));
}
}  // namespace test_support
, {"arch_cfg_get_arch_type_by_name",
   CALL{return std::to_string(arch_cfg_get_arch_type_by_name(call.text(0)));
}
}
, {"arch_get_name_by_status",
   CALL{return arch_get_name_by_status(static_cast<byte>(call.number(0)));
}
}
, {"arch_cfg_get_stat_str", CALL{return arch_cfg_get_stat_str(static_cast<byte>(call.number(0)));
}
}
, {"arch_cfg_name_pre", name_prefix}, {"arch_cfg_get_cnt_by_type", count_of_type},
    {"arch_cfg_get_local_cnt", COUNTER(arch_cfg_get_local_cnt)},
    {"arch_cfg_get_realtime_cnt", COUNTER(arch_cfg_get_realtime_cnt)},
    {"arch_cfg_get_sync_cnt", COUNTER(arch_cfg_get_sync_cnt)},
    {"arch_cfg_get_async_cnt", COUNTER(arch_cfg_get_async_cnt)},
    {"arch_cfg_get_timely_cnt", COUNTER(arch_cfg_get_timely_cnt)},
    {"arch_cfg_get_remote_cnt", COUNTER(arch_cfg_get_remote_cnt)},
    {"arch_cfg_destroy_for_drs", CALL{arch_cfg_destroy_for_drs(record_of(call, 0));
return "ok";
}
}
, {"arch_cfg_sys_destroy", CALL{arch_cfg_sys_destroy();
return "ok";
}
}
, {"getters", getters}, {"arch_cfg_find_by_dest_low_without_enter", find_low_without_enter},
    {"arch_cfg_find_by_dest_low", CALL{return name_of(arch_cfg_find_by_dest_low(call.text(0)));
}
}
, {"arch_cfg_find_by_dest",
   CALL{return name_of(arch_cfg_find_by_dest(call.text(0), call.number(1)));
}
}
, {"arch_cfg_find_subscribe_without_enter", find_subscribe_without_enter},
    {"arch_cfg_find_subscribe", CALL{return name_of(arch_cfg_find_subscribe());
}
}
, {"arch_cfg_get_arch_arr_by_type", destinations_of_type}, {"arch_cfg_set_dest", set_dest},
    {"arch_cfg_calc_next_inst_dest", split_list}, {"arch_cfg_create", create},
    {"arch_cfg_add_value", add_value}, {"arch_cfg_get_name", get_name},
    {"arch_cfg_write_global_ini", CALL{return append_settings(arch_cfg_write_global_ini);
}
}
, {"arch_cfg_write_all_local_ini", CALL{return append_settings(arch_cfg_write_all_local_ini);
}
}
, {"arch_cfg_write_local_ini", SECTION_WRITER(arch_cfg_write_local_ini)},
    {"arch_cfg_write_raft_ini", SECTION_WRITER(arch_cfg_write_raft_ini)},
    {"arch_cfg_write_subscribe_ini", SECTION_WRITER(arch_cfg_write_subscribe_ini)},
    {"arch_cfg_validate", validate}, {"arch_cfg_check_dest_validate", check_dest},
    {"arch_cfg_inst_dests_validate", check_instances}, {"arch_cfg_sys_validate", whole_validate},
    {"arch_cfg_sys_check_low", check_standby},
    {"arch_cfg_check_local_path_validate",
     CALL{return std::to_string(arch_cfg_check_local_path_validate(call.text(0), call.number(1)));
}
}
, {"arch_cfg_local_dest_check",
   CALL{return std::to_string(arch_cfg_local_dest_check(call.text(0), call.number(1)));
}
}
, {"arch_cfg_inst_check_in_mal", CALL{return code_text(arch_cfg_inst_check_in_mal(
                                     record_of(call, 0), static_cast<usint>(call.number(1))));
}
}
, {"mal_cfg_inst_check_in_arch", warn_of_missing},
    {"arch_cfg_has_dsc_arch_dest", CALL{return std::to_string(arch_cfg_has_dsc_arch_dest());
}
}
, {"arch_cfg_has_local_or_sync", CALL{return std::to_string(arch_cfg_has_local_or_sync());
}
}
, {"arch_cfg_check_subscb_dest", CALL{return code_text(arch_cfg_check_subscb_dest(call.text(0)));
}
}
, {"arch_cfg_check_subscb_svc", CALL{return code_text(arch_cfg_check_subscb_svc(call.text(0)));
}
}
,
}
;
return table;
}

}  // namespace test_support

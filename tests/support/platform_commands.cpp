// Commands about the layer that stands in for the server: its functions under their names, and what
// it read of the files of an instance.
#include <asm3.h>
#include <conf.h>
#include <dcr_dll.h>
#include <elog.h>
#include <ini.h>
#include <kq_instance.h>
#include <mal_cfg.h>
#include <ntimer_cfg.h>
#include <os.h>
#include <osfile.h>
#include <utl.h>

#include "support/binding.h"

namespace test_support {

namespace {

using context = command_context;

// A function that changes a text in place.
template <auto Function>
std::string changed(const context& call) {
    std::string text = call.argument(0);
    Function(text.data());
    return text.c_str();
}

std::string created(os_handle_t handle) {
    os_file_close(handle);
    return handle == OS_HANDLE_INVALID ? "refused" : "ok";
}

// What kq.ini gave.
std::string kq_ini(const context&) {
    std::string text = shown(ini_get_instance_name()) + " port " +
                       std::to_string(ini_get_instance_port()) + " postfix " +
                       shown(ini_get_str_value(ini_index_logfile_postfix_name));
    for (ulint index : {ini_index_port_num, ini_index_arch_flag, ini_index_mpp_flag,
                        ini_index_hpc_node, ini_index_dfs_flag, ini_index_instance_name})
        text += " " + std::to_string(ini_get_value(0, index));
    return text + " in (" + global_ini_info.config_path + ") as " + global_ini_info.instance_name +
           " mal " + std::to_string(global_ini_info.mail_flag) + " dpc " +
           std::to_string(is_dpc_bp_or_mp_or_bs());
}

// key NAME: its index, bounds and line.
std::string key(const context& call) {
    lint index = ini_get_other_ini_array_index(call.text(0));
    if (index < 0) return std::to_string(index);
    const other_ini_alterable_t* row = ini_get_other_ini_info_by_index(static_cast<ulint>(index));
    return std::to_string(index) + " from " + std::to_string(row->min_value) + " to " +
           std::to_string(row->max_value) + (row->is_str ? " text " : " number ") +
           row->para_string;
}

std::string mal_entry(const mal_cfg_t* entry) {
    if (entry == nullptr) return "null";
    return std::string(entry->inst_name) + " " + entry->inst_ip + ":" +
           std::to_string(entry->inst_port);
}

std::string mal_all(const context&) {
    std::string text;
    mal_cfg_sys_enter();
    for (usint i = 0; i < mal_cfg_sys_get()->n_mal; i++)
        text += (i > 0 ? ", " : "") + mal_entry(&mal_cfg_sys_get()->mal_arr[i]);
    mal_cfg_sys_exit();
    return text.empty() ? "none" : text;
}

std::string endpoints(kqcode_t (*list)(usint, byte*, byte*, byte*), usint group) {
    byte count = 99, numbers[DCR_EP_MAX] = {}, map[DCR_EP_MAX] = {};
    if (kqcode_t code = list(group, &count, numbers, map); code < 0) return code_text(code);
    std::string text;
    for (byte i = 0; i < count; i++)
        text += " " + std::to_string(numbers[i]) + "=" +
                std::to_string(dcr3_dll_get_ep_seqno_by_dcr_seqno(numbers[i], map));
    return text + " 77=" + std::to_string(dcr3_dll_get_ep_seqno_by_dcr_seqno(77, map));
}

// group TYPE NAME [beside=N]: what is known of the group of an endpoint, or of the N-th behind it.
std::string group(const context& call) {
    usint self = 99, number = 99;
    kqcode_t code = dcr3_dll_get_group_seq_by_type(call.number(0), call.text(1), 0, &self, &number);
    if (code < 0) return code_text(code);
    number = static_cast<usint>(number + call.option("beside", 0));
    return "self " + std::to_string(self) +
           ", ok:" + endpoints(dcr3_dll_group_get_ok_ep_arr, number) +
           ", err:" + endpoints(dcr3_dll_group_get_err_ep_arr, number);
}

// endpoint TYPE NUMBER
std::string endpoint(const context& call) {
    dcr_ep_t found;
    kqcode_t code =
        dcr3_dll_get_ep_info_by_type(call.number(0), static_cast<byte>(call.number(1)), &found);
    if (code < 0) return code_text(code);
    return std::string(found.ep_name) + " " + std::to_string(found.dcr_seqno) + "=" +
           std::to_string(found.ep_seqno) + " " + found.ep_host + ":" +
           std::to_string(found.ep_lsnr_port);
}

std::string services(const context&) {
    kq_global_svc_conf_t conf;
    std::string text = code_text(conf_get_global_conf_value(1, &conf));
    const kq_lst_node_t* previous = nullptr;
    for (const kq_lst_node_t* node = conf.svc_nodes.start; node != nullptr; node = node->next) {
        const auto* service = static_cast<const kq_svc_node_t*>(node->data);
        text += std::string(" ") + service->name + "=(" + service->ips_str + ")";
        if (node->prev != previous) text += " linked wrongly";
        previous = node;
    }
    return text + ", " + std::to_string(conf.svc_nodes.count) +
           (previous == conf.svc_nodes.end ? "" : ", which end elsewhere");
}

kqcode_t show_line(const kq_ini_line_t* line, void* shown) {
    static const char* const kinds[] = {"section", "key", "bad"};
    *static_cast<std::string*>(shown) += std::to_string(line->number) + " " + kinds[line->kind] +
                                         "<" + line->key + "><" + line->value + ">\n";
    return std::string_view(line->key) == "stop" ? -7 : 0;
}

// walk [PATH]: the lines of an INI file; without a path of one that holds the input, whose last line
// does not end.
std::string walk(const context& call) {
    std::string shown;
    if (call.arguments.empty())
        write_file("walked.ini", call.input.substr(0, call.input.size() - 1));
    kqcode_t code =
        kq_ini_walk(call.arguments.empty() ? "walked.ini" : call.text(0), show_line, &shown);
    return shown + (code == 0 && !shown.empty() ? "" : code_text(code));
}

// description CODE [PARAMETER]
std::string description(const context& call) {
    schar text[512];
    ulint length = 0;
    bool given = call.arguments.size() > 1;
    kqcode_t code = kqerr_get_err_desc_with_langage(
        static_cast<kqcode_t>(std::stoi(call.argument(0))), 0, &length, text, given ? 1 : 0,
        given ? call.text(1) : nullptr);
    return code_text(code) + " " + text + " (" + std::to_string(length) + ")";
}

// login TEXT: user, password and server, the first two "-" where there is none.
std::string login(const context& call) {
    sysname_t user = "?", password = "?", server = "?";
    utl_euid_t parts;
    utl_init_uid_ext(&parts);
    lint result = utl_resolve_userid_low(call.text(0), user, password, server, &parts, nullptr);
    if (result != 0 && *user == '\0' && *password == '\0' && *server == '\0') return "malformed";
    return std::string(parts.has_user ? user : "-") + " " + (parts.has_password ? password : "-") +
           " " + server;
}

}  // namespace

const command_table& platform_commands() {
    static const command_table table = {
        BOUND(asm3_striping_size_is_valid),
        BOUND(elog_close),
        BOUND(elog_open),
        BOUND(ini_get_str_value),
        BOUND(ini_is_integer),
        BOUND(ini_read_other_info_for_posix),
        BOUND(ini_set_str_value),
        BOUND(ini_set_value),
        BOUND(ip_is_local_ip),
        BOUND(is_valid_pathname),
        BOUND(kq_instance_close),
        BOUND(kq_instance_open),
        BOUND(mal_cfg_get_inst_name_by_site),
        BOUND(os_dir_create),
        BOUND(os_dir_is_exist),
        BOUND(os_file_check_overflow),
        BOUND(os_file_copy),
        BOUND(os_file_delete),
        BOUND(os_file_is_exist),
        BOUND(os_file_path_is_asm),
        BOUND(os_file_path_is_dfs),
        BOUND(os_set_dry_run),
        {"kq_strupr", changed<kq_strupr>},
        {"cut_path_end_dir", changed<cut_path_end_dir>},
        {"new_file",
         [](const context& call) { return created(os_file_create_normal(call.text(0))); }},
        {"fill",  // PATH SIZE: so many zeros
         [](const context& call) {
             return created(os_file_create_with_init(call.text(0), call.number(1), 4, 1));
         }},
        {"mode", [](const context& call) { return mode_text(call.argument(0)); }},
        {"kq_ini", kq_ini},
        {"key", key},
        {"mal_find",
         [](const context& call) { return mal_entry(mal_cfg_get_by_inst_name(call.text(0))); }},
        {"mal_all", mal_all},
        {"timer_find",
         [](const context& call) {
             const ntimer_cfg_t* timer = ntimer_cfg_find_by_name(call.text(0));
             return shown(timer ? timer->name : nullptr);
         }},
        {"group", group},
        {"endpoint", endpoint},
        {"services", services},
        {"walk", walk},
        {"report",
         done<[](const context& call) { elog_report_ex(call.number(0), "%s", call.text(1)); }>},
        {"description", description},
        {"login", login},
    };
    return table;
}

}  // namespace test_support

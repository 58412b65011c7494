// Commands about files, the instance's configuration, faults and start-up.
#include <elog.h>
#include <ini.h>
#include <kq_fault.h>
#include <kq_instance.h>
#include <osfile.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "support/capture.h"
#include "support/fields.h"
#include "support/online.h"
#include "support/scenario.h"

namespace test_support {

namespace fs = std::filesystem;

std::string code_text(kqcode_t code) {
    return std::to_string(code);
}

std::string mode_text(const fs::path& path) {
    char text[8];
    snprintf(text, sizeof text, "%04o",
             static_cast<unsigned>(fs::symlink_status(path).permissions()));
    return text;
}

// The registry as start-up would have it: what is never written back is not there, the voters are
// those of the list, and the first LOCAL record hangs.
static std::string as_read_back() {
    arch_cfg_sys_t registry = arch_cfg_sys;
    registry.raft_learner = registry.raft_cnt = registry.has_inited = 0;
    if (registry.wait_apply == ARCH_UNSET_FLAG) registry.wait_apply = 0;
    std::string text, records;
    bool has_local = false;
    for (const arch_cfg_t* each = registry.arch_lst.start; each; each = each->link.next) {
        arch_cfg_t record = *each;
        record.recv_path[0] = '\0';
        if (record.type == ARCH_TYPE_LOCAL && !std::exchange(has_local, true)) record.hang_flag = 1;
        records += "\n" + std::string(record.name) + differences(record_fields(), record);
        if (record.type == ARCH_TYPE_RAFT) ++registry.raft_cnt;
    }
    return differences(registry_fields(), registry) + records;
}

std::string fault_of_start_up(const command_context& context, std::string* text) {
    if (ini_get_value(0, ini_index_arch_flag) != 1) return "";
    const std::string before = as_read_back();
    std::string fault;
    elog_close();
    os_set_dry_run(text == nullptr);
    {
        descriptor_capture quiet(STDERR_FILENO);
        kqcode_t code = start_up_aside(1, [&] {
            if (as_read_back() != before) fault = "\nstarts up as" + as_read_back();
            if (text != nullptr) *text = registry_text();
        });
        if (code != 0 && text != nullptr) fault = "\nstarts up with " + code_text(code);
    }
    os_set_dry_run(0);
    elog_open(context.instance.error_log().c_str());
    return fault;
}

namespace {

ulint key_index(const std::string& key) {
    lint index = ini_get_other_ini_array_index(key.c_str());
    if (index < 0) throw std::runtime_error("no key " + key);
    return static_cast<ulint>(index);
}

std::string remove(const command_context& context) {
    size_t removed = fs::remove_all(context.argument(0));
    return removed == 1 ? "ok" : "removed " + std::to_string(removed);
}

// What is at a path: its kind, and of a file mode and size, of a directory the number of entries.
std::string exists(const command_context& context) {
    fs::path path = context.argument(0);
    if (!fs::exists(fs::symlink_status(path))) return "nothing";
    if (fs::is_directory(path))
        return "directory of " + std::to_string(std::distance(fs::directory_iterator(path),
                                                              fs::directory_iterator()));
    return "file, mode " + mode_text(path) + ", " + std::to_string(fs::file_size(path)) + " bytes";
}

// instance KEY=VALUE... writes kq.ini and opens the instance.
std::string instance(const command_context& context) {
    std::string parameters;
    for (const std::string& each : context.arguments)
        parameters += each + "\n";
    return code_text(context.instance.open(parameters));
}

// mal NAME... writes kqmal.ini; each instance has an address, but with a "-" before its name none.
std::string mal(const command_context& context) {
    std::string text;
    for (const std::string& each : context.arguments) {
        bool without = each[0] == '-';
        std::string name = each.substr(without ? 1 : 0);
        text += "[MAL_" + name + "]\nMAL_INST_NAME = " + name + "\n";
        if (!without) text += "MAL_INST_HOST = 192.0.2.1\nMAL_INST_PORT = 5236\n";
    }
    write_file("kqmal.ini", text);
    return "ok";
}

std::string timers(const command_context& context) {
    std::string text;
    for (const std::string& each : context.arguments)
        text += "[" + each + "]\nTYPE = 2\n";
    write_file("kqtimer.ini", text);
    return "ok";
}

std::string range(const command_context& context) {
    ini_set_other_ini_range(key_index(context.argument(0)), std::stoll(context.argument(1)),
                            std::stoll(context.argument(2)));
    return "ok";
}

std::string config_path(const command_context& context) {
    context.argument(0).copy(global_ini_info.config_path, KQ_PATHNAME_MAX);
    global_ini_info.config_path[context.argument(0).size()] = '\0';
    return "ok";
}

std::string fault(const command_context& context) {
    if (context.argument(0) == "off") {
        std::string hits = "hits " + std::to_string(kq_fault_hits());
        kq_fault_disarm();
        return hits;
    }
    kq_fault_arm(context.text(0), context.number(1), context.arguments.size() > 2);
    return "ok";
}

kqcode_t start_up(const command_context& context, ulint valid_chk = 1) {
    std::optional<std::string> path = context.option("path");
    context.shown.clear();
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init_with_check(
        path ? path->c_str() : nullptr, context.option("timer_chk", 1),
        context.option("valid_chk", valid_chk), context.option("asm_path_chk", 1));
}

// start [path=PATH] [timer_chk=0] [valid_chk=0] [asm_path_chk=0] starts up from what there is.
std::string start(const command_context& context) {
    return code_text(start_up(context));
}

// What is wrong with a registry that was written and loaded again, and written once more.
std::string fault_of_rewrite(const command_context& context) {
    const std::string text = registry_text();
    write_file("kqarch.ini", text);
    std::string again = text, fault = fault_of_start_up(context, &again);
    write_file("kqarch.ini", context.input);
    return fault + (again == text ? "" : "\nwritten again as " + again);
}

// load, with the same options, writes its input to kqarch.ini first. A registry that is accepted
// without an option has to come back from the text that it is written as.
std::string load(const command_context& context) {
    write_file("kqarch.ini", context.input);
    kqcode_t code = start_up(context);
    bool has_options = !context.arguments.empty();
    return code_text(code) + (code == 0 && !has_options ? fault_of_rewrite(context) : "");
}

// read is load without the check of the whole.
std::string read(const command_context& context) {
    write_file("kqarch.ini", context.input);
    return code_text(start_up(context, 0));
}

}  // namespace

const command_table& file_commands() {
    static const command_table table = {
        {"file",
         done<[](const command_context& call) { write_file(call.argument(0), call.input); }>},
        {"cat", [](const command_context& call) { return folded(read_file(call.argument(0))); }},
        {"dir",
         done<[](const command_context& call) { fs::create_directories(call.argument(0)); }>},
        {"link", done<[](const command_context& call) {
             fs::create_symlink(call.argument(1), call.argument(0));
         }>},
        {"remove", remove},
        {"exists", exists},
        {"instance", instance},
        {"mal", mal},
        {"timers", timers},
        {"range", range},
        {"config_path", config_path},
        {"fault", fault},
        {"start", start},
        {"load", load},
        {"read", read},
        {"write", [](const command_context&) { return folded(registry_text()); }},
    };
    return table;
}

}  // namespace test_support

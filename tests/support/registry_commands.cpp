// Commands that look at a registry or change its fields directly.
#include <algorithm>
#include <cstring>
#include <utility>

#include "support/fields.h"
#include "support/scenario.h"

namespace test_support {

arch_cfg_t* find_record(const arch_cfg_sys_t& registry, const std::string& name) {
    for (arch_cfg_t* arch = registry.arch_lst.start; arch != nullptr; arch = arch->link.next) {
        if (arch->name == name) return arch;
    }
    return nullptr;
}

namespace {

using line_list = std::vector<std::string>;

// "settings", or a section's name in its brackets.
std::string home_of(const std::string& line) {
    return line.substr(0, line[0] == '[' ? line.rfind(']') + 1 : line.find(' '));
}

bool has(const line_list& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

line_list lines_of(const arch_cfg_sys_t& registry) {
    line_list lines;
    std::string settings = differences(registry_fields(), registry);
    if (!settings.empty()) lines.push_back("settings" + settings);
    for (const arch_cfg_t* arch = registry.arch_lst.start; arch != nullptr; arch = arch->link.next)
        lines.push_back("[" + std::string(arch->name) + "]" + differences(record_fields(), *arch));
    return lines;
}

// show [own]: the settings that are configured, and of each record what differs from a new one. Of
// what was shown since start-up, only that which is new, another or gone.
std::string show(const command_context& context) {
    bool own = !context.arguments.empty();
    line_list now = lines_of(own ? context.own_registry : arch_cfg_sys);
    line_list before = std::exchange(context.shown[own], now), homes;
    if (now.empty()) return "empty";
    if (now == before) return "as before";
    std::string text;
    for (const std::string& line : now) {
        homes.push_back(home_of(line));
        if (!has(before, line)) text += line + "\n";
    }
    for (const std::string& line : before)
        if (!has(homes, home_of(line))) text += "gone " + home_of(line) + "\n";
    return text;
}

// set NAME FIELD=VALUE...: NAME is a section's name, or sys for the settings.
std::string set(const command_context& context) {
    arch_cfg_t* arch = find_record(arch_cfg_sys, context.argument(0));
    for (size_t i = 1; i < context.arguments.size(); i++)
        if (arch != nullptr)
            set_field(record_fields(), *arch, context.argument(i));
        else
            set_field(registry_fields(), arch_cfg_sys, context.argument(i));
    return "ok";
}

// What stands in every field before a key is set: no key's value is among these.
void fill_with_canary(arch_cfg_t& arch, arch_cfg_sys_t& process, arch_cfg_sys_t& own) {
    for (const auto& each : record_fields())
        each.set(arch, "77");
    for (const auto& each : registry_fields()) {
        each.set(process, "77");
        each.set(own, "77");
    }
}

// stores TYPE KEY VALUE: sets a key of a record of the type with a registry of its own, every
// field holding a canary before, and prints the fields that changed, each after its home.
std::string stores(const command_context& context) {
    arch_cfg_t arch, arch_before;
    arch_init(&arch, "CANARY");
    arch_cfg_sys_t own{};
    fill_with_canary(arch, arch_cfg_sys, own);
    arch.type = static_cast<usint>(arch_cfg_get_arch_type_by_name(context.text(0)));
    std::string value = context.argument(2);
    arch_before = arch;
    static arch_cfg_sys_t process_before, own_before;
    memcpy(&process_before, &arch_cfg_sys, sizeof arch_cfg_sys);
    memcpy(&own_before, &own, sizeof own);
    kqcode_t code = arch_cfg_add_value(&own, &arch, context.text(1), value.data());
    std::string text;
    text += differences(record_fields(), arch, &arch_before);
    if (std::string changed = differences(registry_fields(), own, &own_before); !changed.empty())
        text += " registry:" + changed;
    if (std::string changed = differences(registry_fields(), arch_cfg_sys, &process_before);
        !changed.empty())
        text += " process:" + changed;
    text += std::string(arch.name) == "CANARY" ? "" : " name";
    arch_cfg_sys_init_env();
    return code == 0 ? text.substr(text.empty() ? 0 : 1) : code_text(code) + text;
}

}  // namespace

const command_table& registry_commands() {
    static const command_table table = {
        {"show", show},
        {"count",
         [](const command_context&) { return std::to_string(arch_cfg_sys.arch_lst.count); }},
        {"set", set},
        {"stores", stores}};
    return table;
}

}  // namespace test_support

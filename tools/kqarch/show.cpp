#include "show.h"

#include "config_file.h"
#include "ini.h"
#include "instance.h"
#include "loading.h"
#include "osfile.h"
#include "password.h"
#include "settings.h"
#include "table.h"
#include "text.h"
#include "utl.h"
#include "validation.h"

namespace {

using json = nlohmann::ordered_json;

std::string mode_of_instance() {
    std::vector<std::string> modes;
    if (ini_get_value(0, ini_index_mpp_flag) == 1) modes.emplace_back("MPP");
    ulint nodes = ini_get_value(0, ini_index_hpc_node);
    if (nodes > 0) modes.push_back("shared-storage cluster of " + count_of(nodes, "node"));
    if (is_dpc_bp_or_mp_or_bs() != 0) modes.emplace_back("DPC (BP, MP or BS)");
    return modes.empty() ? "single" : join(modes, ", ");
}

void show_instance(const instance& open, output& out) {
    std::string name = visible(ini_get_instance_name());
    std::string directory = visible(open.directory());
    usint port = ini_get_instance_port();
    out.set("instance", {{"name", name},
                         {"port", port},
                         {"mode", mode_of_instance()},
                         {"config_directory", directory},
                         {"archiving", open.archiving()}});
    out.print_heading("Instance " + name);
    out.print("  port              " + std::to_string(port) + "\n");
    out.print("  mode              " + mode_of_instance() + "\n");
    out.print("  configuration in  " + directory + "\n");
    out.print(std::string("  archiving         ") + (open.archiving() ? "on" : "off") + "\n");
}

void show_globals(output& out) KQ_REQUIRES(arch_cfg_sys.mutex) {
    json document = json::object();
    std::vector<table_row> rows = {{"GLOBAL SETTING", "VALUE"}};
    for (const setting& one : global_settings()) {
        document[one.field] = one.value;
        if (!one.shown.empty()) rows.push_back({one.name, one.shown});
    }
    out.set("globals", document);
    if (rows.size() == 1) return;
    out.print("\n");
    print_table(rows, out);
}

json as_document(const arch_cfg_t& arch) {
    json settings = json::object();
    for (const setting& one : own_settings_of(arch))
        settings[one.field] = one.value;
    json document = {{"name", hide_password(visible(arch.name), text_place::other)},
                     {"type", arch_cfg_get_arch_name_by_type(arch.type)},
                     {"destination", destination_of(arch)},
                     {"file_size_mb", nullptr},
                     {"space_limit_mb", nullptr},
                     {"flush_buf_size_mb", nullptr},
                     {"settings", settings}};
    for (const setting& one : sizes_of(arch))
        document[one.field] = one.value;
    return document;
}

table_row as_row(const arch_cfg_t& arch) {
    std::string destination = destination_of(arch);
    table_row row = {hide_password(visible(arch.name), text_place::other),
                     arch_cfg_get_arch_name_by_type(arch.type),
                     destination.empty() ? "-" : destination};
    std::vector<setting> sizes = sizes_of(arch);
    for (size_t i = 0; i < 3; ++i)
        row.push_back(i < sizes.size() ? sizes[i].shown : "-");
    std::vector<std::string> own;
    for (const setting& one : own_settings_of(arch))
        if (!one.shown.empty()) own.push_back(one.name + " " + one.shown);
    row.push_back(join(own, ", "));
    return row;
}

void show_destinations(output& out) KQ_REQUIRES(arch_cfg_sys.mutex) {
    json documents = json::array();
    std::vector<table_row> rows = {
        {"NAME", "TYPE", "DESTINATION", "FILE SIZE", "SPACE LIMIT", "FLUSH BUFFER", "SETTINGS"}};
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
        documents.push_back(as_document(*arch));
        rows.push_back(as_row(*arch));
    }
    out.set("destinations", documents);
    out.print("\n");
    if (rows.size() == 1)
        out.print("No destinations.\n");
    else
        print_table(rows, out);
}

// Says that what is shown is not what a server would run with.
void warn_of_refusal(const instance& open, const diagnostic& first, size_t refused_lines,
                     output& out) {
    std::string why = code_text(first.code);
    std::string shown =
        refused_lines > 0 ? "; " + count_of(refused_lines, "refused line") + " left out" : "";
    diagnostic warning = first;
    warning.level = severity::warning;
    warning.hint = "`kqarch check " + open.directory() + "` lists every problem.";
    out.report(warning);
    std::string verdict = open.archiving() ? "The server would not start with this: "
                                           : "With archiving on the server would not start: ";
    out.print("\n" + verdict + why + shown + ".\n");
}

// Validates after the settings were shown: validation fills in defaults.
void show_validity(const instance& open, const config_file& file, const refused_lines& refused,
                   output& out) {
    os_set_dry_run(1);
    validation result = refused.empty() ? validate(file, {}) : validation{};
    os_set_dry_run(0);
    bool valid = refused.empty() && result.code == 0;
    kqcode_t code = refused.empty() ? result.code : refused.first.front().code;
    out.set("valid", valid);
    out.set("code", code);
    out.set("refused_lines", refused.size());
    if (valid) return;
    // The verdict's own failure, where the destinations before it have others.
    const std::vector<diagnostic>& found = refused.empty() ? result.failures : refused.first;
    const diagnostic* first = &found.front();
    for (const diagnostic& one : found)
        if (first->code != code && one.code == code) first = &one;
    warn_of_refusal(open, *first, refused.size(), out);
}

}  // namespace

exit_status run_show(const std::string& directory, output& out) {
    for (const char* field :
         {"instance", "globals", "destinations", "valid", "code", "refused_lines"})
        out.set(field, nullptr);
    instance open(directory);
    if (open.failure()) {
        out.report(open.failure()->found);
        return open.failure()->status;
    }
    config_file file;
    bool missing = open.config_missing();
    if (kqcode_t code = missing ? 0 : file.read(open.config_file()); code < 0) {
        problem why = unreadable(file.path(), code);
        out.report(why.found);
        return why.status;
    }
    if (missing)
        out.report({.level = severity::note,
                    .file = open.config_file(),
                    .text = std::string("does not exist") +
                            (open.archiving() ? "; the server would create it empty" : "")});
    refused_lines refused = load(file);
    show_instance(open, out);
    {
        arch_cfg_hold hold;
        show_globals(out);
        show_destinations(out);
    }
    show_validity(open, file, refused, out);
    return exit_good;
}

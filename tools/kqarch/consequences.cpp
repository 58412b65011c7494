#include "consequences.h"

#include <algorithm>
#include <set>

#include "catalogue.h"
#include "instance.h"
#include "osfile.h"
#include "password.h"
#include "settings.h"
#include "text.h"

namespace {

using sentences = std::vector<std::string>;

std::vector<std::string> instances_of(const arch_cfg_t& arch) {
    if (arch.type == ARCH_TYPE_REMOTE) return {arch.timer_name};
    if (arch.type == ARCH_TYPE_LOCAL || arch.type == ARCH_TYPE_SUBSCRIBE) return {};
    std::vector<std::string> names;
    for (size_t i = 0; i < std::min<size_t>(arch.n_inst, ARCH_INST_MAX); ++i)
        names.emplace_back(arch.dest_insts[i]);
    return names;
}

destination_facts facts_of(const arch_cfg_t& arch) {
    destination_facts facts{.type = arch.type,
                            .destination = destination_of(arch),
                            .connection = arch.type == ARCH_TYPE_SUBSCRIBE ? arch.dest : "",
                            .settings = sizes_of(arch),
                            .instances = instances_of(arch),
                            .directory = has_directory(arch.type) ? arch.dest : ""};
    for (setting& one : own_settings_of(arch))
        facts.settings.push_back(std::move(one));
    return facts;
}

std::string name_of(ulint type) {
    return arch_cfg_get_arch_name_by_type(type);
}

std::string shown_name(const std::string& instance) {
    return hide_password(visible(upper_case(instance)), text_place::other);
}

std::string shown_value(const std::string& value) {
    return value.empty() ? "not set" : value;
}

void tell_change(const std::string& what, const std::string& before, const std::string& after,
                 sentences& told) {
    if (before != after)
        told.push_back(what + ": from " + shown_value(before) + " to " + shown_value(after) + ".");
}

void tell_counts(const configuration_facts& before, const configuration_facts& after,
                 sentences& told) {
    auto count = [](const configuration_facts& facts, ulint type) {
        auto found = facts.counts.find(type);
        return found != facts.counts.end() ? found->second : 0;
    };
    for (const type_entry& type : all_types())
        tell_change(std::string(type.name) + " destinations",
                    std::to_string(count(before, type.number)),
                    std::to_string(count(after, type.number)), told);
    if (count(before, ARCH_TYPE_LOCAL) > 0 && count(after, ARCH_TYPE_LOCAL) == 0)
        told.emplace_back("The last LOCAL destination goes: nothing is archived here any more.");
}

void tell_settings(const std::string& section, const std::vector<setting>& before,
                   const std::vector<setting>& after, sentences& told) {
    for (size_t i = 0; i < std::min(before.size(), after.size()); ++i)
        tell_change(section + before[i].name, before[i].shown, after[i].shown, told);
}

void tell_sections(const configuration_facts& before, const configuration_facts& after,
                   sentences& told) {
    for (const auto& [section, was] : before.destinations) {
        auto found = after.destinations.find(section);
        if (found == after.destinations.end()) continue;
        const destination_facts& is = found->second;
        std::string label = "[" + section + "] ";
        tell_change(label + "type", name_of(was.type), name_of(is.type), told);
        tell_change(label + "destination", was.destination, is.destination, told);
        if (was.destination == is.destination && was.connection != is.connection)
            told.push_back(label + "another password.");
        if (was.type == is.type) tell_settings(label, was.settings, is.settings, told);
    }
}

using instance_types = std::map<std::string, ulint>;

// The type of the destination that names each instance: of those that it gets archives by, or of
// REMOTE ones, where its archives come to.
instance_types types_of_instances(const configuration_facts& facts, bool remote) {
    instance_types types;
    for (const auto& [section, destination] : facts.destinations)
        for (const std::string& name : destination.instances)
            if ((destination.type == ARCH_TYPE_REMOTE) == remote && !name.empty())
                types.emplace(shown_name(name), destination.type);
    return types;
}

void tell_instances(const configuration_facts& before, const configuration_facts& after,
                    sentences& told) {
    instance_types was = types_of_instances(before, false);
    instance_types is = types_of_instances(after, false);
    for (const auto& [name, type] : was)
        if (!is.contains(name)) told.push_back(name + " gets no archives any more.");
    for (const auto& [name, type] : is) {
        auto found = was.find(name);
        if (found == was.end())
            told.push_back(name + " gets archives from now on.");
        else if (type == ARCH_TYPE_ASYNC && found->second != ARCH_TYPE_ASYNC)
            told.push_back(name + " no longer gets archives at once: it waits for a timer.");
    }
}

void tell_remote_instances(const configuration_facts& before, const configuration_facts& after,
                           sentences& told) {
    instance_types was = types_of_instances(before, true);
    instance_types is = types_of_instances(after, true);
    for (const auto& [name, type] : was)
        if (!is.contains(name))
            told.push_back("The archives of " + name + " are not stored here any more.");
    for (const auto& [name, type] : is)
        if (!was.contains(name))
            told.push_back("The archives of " + name + " are stored here from now on.");
}

std::set<std::string> waited_for(const configuration_facts& facts) {
    std::set<std::string> names;
    for (const auto& [section, destination] : facts.destinations)
        for (const setting& one : destination.settings)
            if (one.field == "wait_apply" && one.value == true)
                for (const std::string& name : destination.instances)
                    names.insert(shown_name(name));
    return names;
}

void tell_waiting(const configuration_facts& before, const configuration_facts& after,
                  sentences& told) {
    std::set<std::string> was = waited_for(before);
    std::set<std::string> is = waited_for(after);
    for (const std::string& name : was)
        if (!is.contains(name))
            told.push_back("The server no longer waits until " + name +
                           " has applied what it was sent.");
    for (const std::string& name : is)
        if (!was.contains(name))
            told.push_back("The server waits until " + name + " has applied what it was sent.");
}

void tell_directories(const configuration_facts& before, const configuration_facts& after,
                      sentences& told) {
    std::set<std::string> was = directories_of(before);
    std::set<std::string> is = directories_of(after);
    auto shown = [](const std::string& path) {
        return hide_password(visible(path), text_place::path);
    };
    for (const std::string& path : was)
        if (!is.contains(path) && os_dir_is_exist(path.c_str()) != 0)
            told.push_back("What is archived in " + shown(path) + " stays there.");
    for (const std::string& path : is)
        if (!was.contains(path) && os_dir_is_exist(path.c_str()) == 0)
            told.push_back("The directory " + shown(path) + " will be created.");
}

}  // namespace

configuration_facts facts_of_registry() {
    configuration_facts facts{.counts = counts_of_registry()};
    arch_cfg_hold hold;
    facts.globals = global_settings();
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        facts.destinations.emplace(hide_password(visible(arch->name), text_place::other),
                                   facts_of(*arch));
    return facts;
}

std::set<std::string> directories_of(const configuration_facts& facts) {
    std::set<std::string> paths;
    for (const auto& [section, destination] : facts.destinations)
        if (!destination.directory.empty()) paths.insert(destination.directory);
    return paths;
}

std::vector<std::string> consequences(const configuration_facts& before,
                                      const configuration_facts& after) {
    sentences told;
    tell_counts(before, after, told);
    tell_sections(before, after, told);
    tell_instances(before, after, told);
    tell_remote_instances(before, after, told);
    tell_waiting(before, after, told);
    tell_directories(before, after, told);
    tell_settings("", before.globals, after.globals, told);
    return told;
}

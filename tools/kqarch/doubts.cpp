#include "doubts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <utility>

#include "catalogue.h"
#include "osfile.h"
#include "settings.h"
#include "text.h"
#include "user_name.h"

namespace {

std::string name_or_number(uid_t user) {
    return user_name(user).value_or("#" + std::to_string(user));
}

diagnostic warning_at(const char* rule, const std::string& file, ulint line, std::string text,
                      std::string hint) {
    return {.level = severity::warning,
            .file = file,
            .line = line,
            .text = std::move(text),
            .hint = std::move(hint),
            .rule = rule};
}

// The section whose key a line sets; a global key is one wherever it stands.
ulint home_of(const config_line& line, const key_entry& entry) {
    return entry.scope == key_scope::global ? 0 : line.section_line;
}

bool is_directory_here(const arch_cfg_t& arch) {
    bool of_this_machine = !os_file_path_is_asm(arch.dest) && !os_file_path_is_dfs(arch.dest);
    return has_directory(arch.type) && of_this_machine && arch.dest[0] != '\0';
}

// Two texts that name the same directory have the same; links are followed as far as it exists.
std::string identity_of(const arch_cfg_t& arch) {
    struct stat status {};
    if (stat(arch.dest, &status) == 0)
        return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    std::error_code error;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(arch.dest, error), error);
}

const char* directory_key(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_REMOTE ? "ARCH_INCOMING_PATH" : "ARCH_DEST";
}

bool is_relative(const std::string& path) {
    return !path.empty() && !path.starts_with('/') && !path.starts_with('+') &&
           !path.starts_with("dfs:");
}

diagnostic doubt_of_path(const arch_cfg_t& arch, const config_file& file) {
    std::error_code error;
    std::string whole = std::filesystem::absolute(arch.dest, error);
    bool quoted = arch.dest[0] == '"' || arch.dest[0] == '\'';
    const char* key = directory_key(arch);
    diagnostic doubt = warning_at(
        "relative-directory", file.path(), file.key_line(arch.name, key),
        file.passwords().hide(std::string(key) + " " + arch.dest +
                              " is relative to the directory that the server is started in; from "
                              "here it is " +
                              whole),
        quoted ? "Remove the quotes: they belong to the name."
               : "Write the whole path, from / on.");
    doubt.section = file.passwords().hide(arch.name);
    doubt.key = key;
    return doubt;
}

diagnostic doubt_of_twin(const arch_cfg_t& arch, const arch_cfg_t& twin, const config_file& file) {
    const char* key = directory_key(arch);
    diagnostic doubt = warning_at(
        "same-directory", file.path(), file.key_line(arch.name, key),
        file.passwords().hide(std::string(key) + " " + arch.dest + " is the same directory as " +
                              twin.dest + " of section [" + twin.name + "]"),
        "Give each destination a directory of its own.");
    doubt.section = file.passwords().hide(arch.name);
    doubt.key = key;
    return doubt;
}

// The same path twice is refused when it is read.
std::vector<diagnostic> doubts_of_twins(const config_file& file) KQ_REQUIRES(arch_cfg_sys.mutex) {
    std::vector<diagnostic> doubts;
    std::map<std::string, const arch_cfg_t*> seen;
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
        std::string directory = is_directory_here(*arch) ? identity_of(*arch) : "";
        auto [found, is_new] = seen.emplace(directory, arch);
        bool same_path = same_text(arch->dest, found->second->dest);
        if (!is_new && !directory.empty() && !same_path)
            doubts.push_back(doubt_of_twin(*arch, *found->second, file));
    }
    return doubts;
}

bool names_subscriber(const config_file& file) {
    return std::any_of(file.lines().begin(), file.lines().end(), [](const config_line& line) {
        return line.kind == KQ_INI_KEY && same_text(line.key, "ARCH_TYPE") &&
               arch_cfg_get_arch_type_by_name(line.value.c_str()) == ARCH_TYPE_SUBSCRIBE;
    });
}

}  // namespace

std::vector<diagnostic> doubts_of_user(const instance& open) {
    struct stat status {};
    std::string path = open.config_missing() ? open.file("kq.ini") : open.config_file();
    if (stat(path.c_str(), &status) != 0) return {};
    if (status.st_uid == geteuid()) {
        // A file that root left in the server's directory.
        path = open.directory();
        if (stat(path.c_str(), &status) != 0 || status.st_uid == geteuid() || status.st_uid == 0)
            return {};
    }
    std::string owner = name_or_number(status.st_uid);
    return {warning_at(
        "other-user", path, 0,
        "belongs to " + owner + ", but files and directories were tested with the rights of " +
            name_or_number(geteuid()),
        "If the server runs as " + owner + ", check as that user: `sudo -u " + shell_word(owner) +
            " kqarch check " + shell_word(open.directory()) + "`.")};
}

std::vector<diagnostic> doubts_of_mode(const config_file& file) {
    struct stat status {};
    if (stat(file.path().c_str(), &status) != 0) return {};
    auto may = [&](mode_t rights) { return (status.st_mode & rights) != 0; };
    std::string remedy = "`chmod 600 " + shell_word(file.path()) + "`";
    std::vector<diagnostic> doubts;
    if (status.st_uid != 0 && !may(S_IWUSR))
        doubts.push_back(warning_at("not-writable", file.path(), 0,
                                    "may not be written by its owner",
                                    "Let the server's user write it: online changes fail."));
    if (may(S_IWGRP | S_IWOTH))
        doubts.push_back(warning_at("writable-by-others", file.path(), 0,
                                    "others than its owner may write it",
                                    "Who writes it says where archives go: " + remedy + "."));
    if (may(S_IRGRP | S_IROTH) && names_subscriber(file))
        doubts.push_back(warning_at(
            "readable-by-others", file.path(), 0,
            "names a subscriber, and others than its owner may read it",
            "They may read the subscriber's password: " + remedy + ", and its backups likewise."));
    return doubts;
}

std::vector<diagnostic> doubts_of_lines(const config_file& file) {
    std::vector<diagnostic> doubts;
    std::map<std::pair<ulint, const key_entry*>, ulint> seen;
    for (const config_line& line : file.lines()) {
        const key_entry* entry = line.kind == KQ_INI_KEY ? find_key(line.key) : nullptr;
        if (entry == nullptr) continue;
        ulint& before = seen[{home_of(line, *entry), entry}];
        if (before != 0) {
            std::string key = entry->name;
            doubts.push_back(warning_at(
                "key-twice", file.path(), line.number,
                key + " stands already at line " + std::to_string(before) + "; this one counts",
                "Remove one of the two lines."));
            doubts.back().section = file.passwords().hide(line.section);
            doubts.back().key = key;
        }
        before = line.number;
    }
    return doubts;
}

std::vector<diagnostic> doubts_of_registry(const instance& open, const config_file& file) {
    arch_cfg_hold hold;
    std::vector<diagnostic> doubts = doubts_of_twins(file);
    if (arch_cfg_sys.arch_lst.start == nullptr)
        doubts.push_back(warning_at("nothing-archived", open.config_file(), 0,
                                    "archiving is on, and there is no destination: nothing is "
                                    "archived",
                                    "Add a LOCAL destination, or set ARCH_FLAG = 0 in kq.ini."));
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        if (has_directory(arch->type) && is_relative(arch->dest))
            doubts.push_back(doubt_of_path(*arch, file));
    for (diagnostic& doubt : doubts_of_mode(file))
        doubts.push_back(std::move(doubt));
    return doubts;
}

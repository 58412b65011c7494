#include "instance.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "capture.h"
#include "hints.h"
#include "ini.h"
#include "kq_instance.h"
#include "osfile.h"
#include "password.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* cannot_be_read = "cannot be read";

std::string without_end_slashes(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

// "db/kq.ini:3: what is wrong" as file, line and text; a text of another form stays whole.
diagnostic parse_complaint(const std::string& said, const std::string& default_file) {
    diagnostic found{.file = default_file};
    found.text = said;
    size_t text = said.find(": ");
    if (text == said.npos) return found;
    size_t number = said.rfind(':', text - 1);
    if (text == 0 || number == said.npos) return found;
    std::string digits = said.substr(number + 1, text - number - 1);
    if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) return found;
    found.file = said.substr(0, number);
    found.line = static_cast<ulint>(std::strtoul(digits.c_str(), nullptr, 10));
    found.text = said.substr(text + 2);
    return found;
}

// A line of kqarch.ini in the wrong file may bring its password along. No key has a "/".
std::string hide_in_complaint(const std::string& text) {
    bool names_key = text.starts_with("unknown key ");
    return hide_password(text, names_key ? text_place::subscriber : text_place::other);
}

// The switches of kq.ini that make the server read a file.
struct switched_file {
    const char* name;
    const char* key;
};

constexpr switched_file switched_files[] = {
    {"kqmal.ini", "MAL_INI"},
    {"kqtimer.ini", "TIMER_INI"},
    {"kqsvc.ini", "SVC_INI"},
    {"kqdcr.ini", "DCR_INI"},
};

// The instance directories in a directory that is none itself: a group.
std::vector<std::string> instances_in(const fs::path& directory) {
    std::vector<std::string> found;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, error))
        if (fs::exists(entry.path() / "kq.ini", error)) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

std::string hint_for_missing(const std::string& path, int reason) {
    fs::path file = path;
    std::error_code error;
    if (reason == ELOOP) return "The symbolic link leads back to itself: put a file in its place.";
    if (reason != ENOENT) return "";
    if (fs::is_symlink(file, error))
        return "The symbolic link leads to nothing; the server does not start with it.";
    for (const switched_file& one : switched_files)
        if (file.filename() == one.name)
            return std::string(one.key) + " in kq.ini is 1: write the file, or set " + one.key +
                   " = 0.";
    if (file.filename() != "kq.ini") return "";
    std::vector<std::string> instances = instances_in(file.parent_path());
    return instances.empty()
               ? "Give the directory of an instance, which holds kq.ini; `kqarch init` writes one."
               : "Give an instance of the group: " + first_of(instances) + ".";
}

// What is given in the place of a directory may be a connection text.
bool looks_like_connection(const std::string& text) {
    return !text.starts_with('/') && !text.starts_with('.') && text.find('@') != text.npos;
}

}  // namespace

exit_status status_of(kqcode_t code) {
    bool impossible =
        code == ARCH_E_FILE_OPEN || code == ARCH_E_OUT_OF_MEMORY || code == ARCH_E_BACKUP;
    return impossible ? exit_failed : exit_refused;
}

problem unreadable(const std::string& path, kqcode_t code) {
    problem why{exit_failed, {.file = path, .code = code}};
    diagnostic& found = why.found;
    struct stat status {};
    if (code == ARCH_E_OUT_OF_MEMORY) {
        found.text = "there is no memory to read it";
    } else if (stat(path.c_str(), &status) != 0) {
        found.text = std::string(cannot_be_read) + ": " + std::strerror(errno);
        found.hint = hint_for_missing(path, errno);
    } else if (!S_ISREG(status.st_mode)) {
        why.stops_server = true;
        found.text = "is no regular file";
        found.hint = "Put a regular file in its place: the server does not start with this one.";
    } else {
        bool readable = faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
        found.text = cannot_be_read + (readable ? "" : std::string(": ") + std::strerror(errno));
    }
    if (found.hint.empty()) found.hint = hint_for(code, "");
    return why;
}

instance::instance(const std::string& directory) : directory_(without_end_slashes(directory)) {
    failure_ = why_not_openable();
    if (failure_ && looks_like_connection(directory_))
        directory_ = failure_->found.file = hide_password(directory_, text_place::other);
    if (failure_) return;
    captured opening = capture([this] { return kq_instance_open(directory_.c_str()); });
    if (opening.code < 0) {
        diagnostic found = parse_complaint(opening.said, file("kq.ini"));
        found.text = hide_in_complaint(found.text);
        found.code = opening.code;
        found.hint = "Correct the line: the server reads no further.";
        failure_ = problem{status_of(opening.code), found};
        if (opening.code == ARCH_E_FILE_OPEN) failure_ = unreadable(found.file, opening.code);
        if (failure_->found.text == cannot_be_read) failure_->found.text = found.text;
        return;
    }
    arch_cfg_sys_init_env();
}

instance::~instance() {
    if (failure_) return;
    arch_cfg_sys_destroy();
    kq_instance_close();
}

std::optional<problem> instance::why_not_openable() const {
    struct stat status {};
    diagnostic found{.file = directory_, .rule = "no-instance"};
    if (stat(directory_.c_str(), &status) != 0) {
        found.text = std::strerror(errno);
        found.hint = "Give the configuration directory of an instance.";
        return problem{exit_failed, found};
    }
    if (S_ISDIR(status.st_mode)) return std::nullopt;
    found.text = "is no directory";
    found.hint = "Give the directory that holds kq.ini and kqarch.ini.";
    return problem{exit_failed, found};
}

std::string instance::file(const std::string& name) const {
    return directory_ + (directory_.ends_with('/') ? "" : "/") + name;
}

bool instance::archiving() const {
    return ini_get_value(0, ini_index_arch_flag) != 0;
}

bool instance::config_missing() const {
    return os_file_is_exist(config_file().c_str()) == 0;
}

bool instance::config_creatable() const {
    struct stat status {};
    // A symbolic link to nothing is in the way: the server creates exclusively.
    if (lstat(config_file().c_str(), &status) == 0) return false;
    return faccessat(AT_FDCWD, directory_.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

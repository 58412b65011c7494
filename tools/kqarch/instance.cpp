#include "instance.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "capture.h"
#include "hints.h"
#include "ini.h"
#include "kq_instance.h"
#include "osfile.h"
#include "text.h"

namespace {

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

}  // namespace

exit_status status_of(kqcode_t code) {
    bool impossible =
        code == ARCH_E_FILE_OPEN || code == ARCH_E_OUT_OF_MEMORY || code == ARCH_E_BACKUP;
    return impossible ? exit_failed : exit_refused;
}

problem unreadable(const std::string& path, kqcode_t code) {
    diagnostic found{.file = path, .code = code};
    struct stat status {};
    if (code == ARCH_E_OUT_OF_MEMORY) {
        found.text = "there is no memory to read it";
    } else if (stat(path.c_str(), &status) != 0) {
        found.text = std::string(cannot_be_read) + ": " + std::strerror(errno);
    } else if (!S_ISREG(status.st_mode)) {
        found.text = "is no regular file";
    } else {
        bool readable = faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
        found.text = cannot_be_read + (readable ? "" : std::string(": ") + std::strerror(errno));
    }
    found.hint = hint_for(code, "");
    return {exit_failed, found};
}

instance::instance(const std::string& directory) : directory_(without_end_slashes(directory)) {
    failure_ = why_not_openable();
    if (failure_) return;
    captured opening = capture([this] { return kq_instance_open(directory_.c_str()); });
    if (opening.code < 0) {
        diagnostic found = parse_complaint(opening.said, file("kq.ini"));
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
    diagnostic found{.file = directory_};
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

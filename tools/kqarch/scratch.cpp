#include "scratch.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace {

std::string temporary_directory() {
    const char* chosen = std::getenv("TMPDIR");
    return chosen != nullptr && *chosen == '/' ? chosen : "/tmp";
}

}  // namespace

scratch_directory::scratch_directory(const std::string& text)
    : path_(temporary_directory() + "/kqarch.XXXXXX") {
    config_.fill(text);
    errno = ENAMETOOLONG;
    bool made = path_.size() < sizeof original_ && mkdtemp(path_.data()) != nullptr;
    if (!made || symlink(config_.path().c_str(), (path_ + "/kqarch.ini").c_str()) != 0) {
        int reason = errno;
        if (made) remove();
        throw std::system_error(reason, std::generic_category(), temporary_directory());
    }
    std::memcpy(original_, global_ini_info.config_path, sizeof original_);
    path_.copy(global_ini_info.config_path, path_.size());
    global_ini_info.config_path[path_.size()] = '\0';
}

scratch_directory::~scratch_directory() {
    std::memcpy(global_ini_info.config_path, original_, sizeof original_);
    remove();
}

std::string scratch_directory::explained(std::string message) const {
    std::string name = path_ + "/kqarch.ini";
    for (size_t at = message.find(name); at != message.npos; at = message.find(name))
        message.replace(at, name.size(), "a scratch copy");
    return message;
}

void scratch_directory::remove() const {
    (void)unlink((path_ + "/kqarch.ini").c_str());
    (void)rmdir(path_.c_str());
}

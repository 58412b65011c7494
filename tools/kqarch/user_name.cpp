#include "user_name.h"

#include <pwd.h>

#include <cstdio>
#include <memory>

namespace {

constexpr auto close_file = [](FILE* file) { (void)std::fclose(file); };
constexpr auto close_command = [](FILE* command) { (void)pclose(command); };

std::optional<std::string> name_in(FILE* entries, uid_t user) {
    if (entries == nullptr) return std::nullopt;
    while (const passwd* entry = fgetpwent(entries))
        if (entry->pw_uid == user) return entry->pw_name;
    return std::nullopt;
}

}  // namespace

std::optional<std::string> user_name(uid_t user) {
    std::unique_ptr<FILE, decltype(close_file)> file(std::fopen("/etc/passwd", "re"));
    if (std::optional<std::string> found = name_in(file.get(), user)) return found;
    std::string command = "getent passwd " + std::to_string(user) + " 2>/dev/null";
    std::unique_ptr<FILE, decltype(close_command)> answer(popen(command.c_str(), "re"));
    return name_in(answer.get(), user);
}

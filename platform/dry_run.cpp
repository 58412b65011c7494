#include "dry_run.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <new>
#include <set>
#include <string>

#include "posix_file.h"

using namespace platform;

namespace {

std::atomic<bool> dry_run_on{false};
std::mutex created_mutex;
std::set<std::string, std::less<>> created_files;

// Nothing is there, and nothing but the missing directories keeps it from being made.
bool is_absent(const std::string& path) {
    struct stat status;
    std::size_t name = path.find_last_of('/') + 1;
    return path.size() - name <= NAME_MAX && lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

bool can_make(std::string path) {
    path.erase(path.find_last_not_of('/') + 1);
    if (path.empty()) return false;
    while (is_absent(path)) {
        path = std::string(parent_of(path));
        if (is_directory(path.c_str())) {
            return faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
        }
    }
    return false;
}

}  // namespace

bool platform::dry_run_is_on() noexcept {
    return dry_run_on.load();
}

bool platform::dry_run_can_make(const schar* path) noexcept {
    try {
        return can_make(path);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool platform::dry_run_create_file(const schar* path) noexcept {
    try {
        std::lock_guard hold(created_mutex);
        return can_make(path) && created_files.emplace(path).second;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool platform::dry_run_delete_file(const schar* path) noexcept {
    if (!dry_run_is_on()) return false;
    std::lock_guard hold(created_mutex);
    auto found = created_files.find(std::string_view(path));
    if (found == created_files.end()) return false;
    created_files.erase(found);
    return true;
}

void os_set_dry_run(kqbool on) {
    std::lock_guard hold(created_mutex);
    created_files.clear();
    dry_run_on.store(on != 0);
}

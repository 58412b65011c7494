#include "osfile.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <new>
#include <string>

#include "dry_run.h"
#include "fault.h"
#include "posix_file.h"

using namespace platform;

namespace {

// Makes a directory with its missing parents, one component after the other.
bool make_directories(std::string path) {
    for (std::size_t end = 1; end <= path.size(); ++end) {
        if (end < path.size() && path[end] != '/') continue;
        char cut = std::exchange(path[end], '\0');
        bool there = is_directory(path.c_str()) || mkdir(path.c_str(), 0750) == 0 ||
                     (errno == EEXIST && is_directory(path.c_str()));
        path[end] = cut;
        if (!there) return false;
    }
    return !path.empty();
}

bool fill_with_zeros(int descriptor, ulint size) {
    static constexpr char zeros[65536] = {};
    while (size > 0) {
        ulint part = std::min<ulint>(size, sizeof(zeros));
        if (!write_all(descriptor, zeros, part)) return false;
        size -= part;
    }
    return true;
}

}  // namespace

kqbool os_file_is_exist(const schar* path) {
    std::string buffer;
    const schar* real = real_path(path, buffer);
    struct stat status;
    return real != nullptr && (lstat(real, &status) == 0 || (errno != ENOENT && errno != ENOTDIR));
}

os_handle_t os_file_create_normal(const schar* path) {
    std::string buffer;
    const schar* real = real_path(path, buffer);
    return real != nullptr ? create_file(AT_FDCWD, real).release() : OS_HANDLE_INVALID;
}

void os_file_close_normal(os_handle_t handle) {
    if (handle >= 0 && handle != dry_run_handle) close_file(handle);
}

os_handle_t os_file_create_with_init(const schar* path, ulint size, ulint, ulint) {
    std::string buffer;
    const schar* real = real_path(path, buffer);
    if (real == nullptr) return OS_HANDLE_INVALID;
    if (dry_run_is_on()) {
        bool could = !fault_here(fault_point::file_create, EACCES) && dry_run_create_file(real);
        return could ? dry_run_handle : OS_HANDLE_INVALID;
    }
    unique_fd file = create_file(AT_FDCWD, real);
    if (file && !fill_with_zeros(file.get(), size)) {
        unlink(real);
        return OS_HANDLE_INVALID;
    }
    return file.release();
}

void os_file_close(os_handle_t handle) {
    os_file_close_normal(handle);
}

kqbool os_file_delete(const schar* path) {
    if (fault_here(fault_point::file_delete, EACCES)) return 0;
    std::string buffer;
    const schar* real = real_path(path, buffer);
    return real != nullptr && (dry_run_delete_file(real) || unlink(real) == 0);
}

lint os_file_check_overflow(const schar* path, byte, ulint64 bytes) {
    if (path == nullptr || os_file_path_is_asm(path) != 0) return 0;
    try {
        std::string above(parent_of(path));
        while (!is_directory(above.c_str())) {
            std::string_view next = parent_of(above);
            if (next == above) break;
            above.assign(next);
        }
        struct statvfs space;
        if (statvfs(above.c_str(), &space) != 0) return 1;
        ulint64 unit = std::max<ulint64>(space.f_frsize, 1);
        return space.f_bavail < bytes / unit + (bytes % unit != 0 ? 1 : 0);
    } catch (const std::bad_alloc&) {
        return 1;
    }
}

kqbool os_file_path_is_asm(const schar* path) {
    return path != nullptr && path[0] == '+';
}

kqbool os_file_path_is_dfs(const schar* path) {
    return path != nullptr && std::string_view(path).substr(0, 4) == "dfs:";
}

kqbool os_dir_is_exist(const schar* path) {
    std::string buffer;
    const schar* real = real_path(path, buffer);
    return real != nullptr && is_directory(real);
}

kqbool os_dir_create(const schar* path) {
    if (fault_here(fault_point::dir_create, EACCES)) return 0;
    std::string buffer;
    const schar* real = os_file_path_is_dfs(path) != 0 ? nullptr : real_path(path, buffer);
    // Too long for the system: refused before the first of its parents is made.
    if (real == nullptr || std::string_view(real).size() >= PATH_MAX) return 0;
    if (dry_run_is_on()) return is_directory(real) || dry_run_can_make(real);
    try {
        return make_directories(real);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

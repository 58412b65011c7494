#include "posix_file.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>

#include "fault.h"
#include "main_settings.h"
#include "own_calls.h"

namespace platform {
namespace {

template <class operation>
auto carry_on_when_interrupted(operation call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

bool climbs(std::string_view path) {
    for (std::size_t begin = 0; begin <= path.size();) {
        std::size_t end = std::min(path.find('/', begin), path.size());
        if (path.substr(begin, end - begin) == "..") return true;
        begin = end + 1;
    }
    return false;
}

}  // namespace

unique_fd::~unique_fd() {
    if (descriptor_ >= 0) own_close(descriptor_);
}

const schar* real_path(const schar* path, std::string& buffer) noexcept {
    if (path == nullptr || path[0] != '+') return path;
    try {
        const std::string& root = main_settings().asm_root;
        if (root.empty() || climbs(path + 1)) return nullptr;
        buffer = root;
        buffer += '/';
        buffer += path + 1;
        return buffer.c_str();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::string_view parent_of(std::string_view path) {
    std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) return path.empty() ? "." : "/";
    std::size_t slash = path.find_last_of('/', last);
    if (slash == std::string_view::npos) return ".";
    last = path.find_last_not_of('/', slash);
    return last == std::string_view::npos ? "/" : path.substr(0, last + 1);
}

bool is_directory(const schar* path) {
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

unique_fd open_regular_file(const schar* path, struct stat& status) {
    if (fault_here(fault_point::file_open, EMFILE)) return unique_fd();
    unique_fd file(carry_on_when_interrupted(
        [=] { return own_open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (!file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return unique_fd();
    return file;
}

unique_fd open_directory(const schar* path) {
    return unique_fd(carry_on_when_interrupted(
        [=] { return own_open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
}

unique_fd create_file(int directory, const schar* path) {
    if (fault_here(fault_point::file_create, EACCES)) return unique_fd();
    return unique_fd(carry_on_when_interrupted([=] {
        return openat(directory, path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    }));
}

ssize_t read_some(int descriptor, void* data, std::size_t size) {
    if (fault_here(fault_point::file_read, EIO)) return -1;
    return carry_on_when_interrupted([=] { return read(descriptor, data, size); });
}

bool write_all(int descriptor, const void* data, std::size_t size) {
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        if (fault_here(fault_point::file_write, ENOSPC)) return false;
        ssize_t written =
            carry_on_when_interrupted([=] { return own_write(descriptor, next, size); });
        if (written <= 0) return false;
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

bool sync_file(int descriptor) {
    if (fault_here(fault_point::file_sync, EIO)) return false;
    return carry_on_when_interrupted([=] { return own_fsync(descriptor); }) == 0;
}

bool close_file(int descriptor) {
    bool fails = fault_here(fault_point::file_close, EIO);
    return own_close(descriptor) == 0 && !fails;
}

}  // namespace platform

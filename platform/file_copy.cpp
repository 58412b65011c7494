// os_file_copy: the copy is made under a name of its own beside the target and takes its place in
// one step, so that nobody ever sees a part of it.
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "fault.h"
#include "osfile.h"
#include "posix_file.h"

using namespace platform;

namespace {

// A name that nobody else has or can foresee.
std::string make_private_name() {
    unsigned long long number = 0;
    if (getrandom(&number, sizeof(number), 0) != static_cast<ssize_t>(sizeof(number))) return {};
    char name[32];
    std::snprintf(name, sizeof(name), ".kqcopy_%016llx.tmp", number);
    return name;
}

// A file system that cannot sync a directory says EINVAL; its renames are as durable as they get.
bool sync_directory(int directory) {
    return sync_file(directory) || errno == EINVAL;
}

bool copy_contents(int source, int target) {
    constexpr std::size_t part = 65536;
    std::unique_ptr<char[]> buffer(new char[part]);
    for (;;) {
        ssize_t length = read_some(source, buffer.get(), part);
        if (length <= 0) return length == 0;
        if (!write_all(target, buffer.get(), static_cast<std::size_t>(length))) return false;
    }
}

bool write_copy(int source, unique_fd& target, mode_t mode) {
    return copy_contents(source, target.get()) && fchmod(target.get(), mode) == 0 &&
           sync_file(target.get()) && close_file(target.release());
}

// A target that appears in the meantime is not touched: a link does not replace.
bool put_in_free_place(int directory, const schar* made, const schar* name) {
    if (linkat(directory, made, directory, name, 0) != 0) return false;
    if (!sync_directory(directory)) {
        unlinkat(directory, name, 0);
        return false;
    }
    unlinkat(directory, made, 0);
    return true;
}

// The old target keeps a second name until the new one is known to be on disk: a replacement that
// does not get there is taken back.
bool put_in_place(int directory, const schar* made, const schar* name) {
    std::string spare = make_private_name();
    if (spare.empty()) return false;
    bool has_spare = linkat(directory, name, directory, spare.c_str(), 0) == 0;
    bool was_absent = !has_spare && errno == ENOENT;
    bool placed = renameat(directory, made, directory, name) == 0;
    bool durable = placed && sync_directory(directory);
    if (placed && !durable && has_spare) {
        renameat(directory, spare.c_str(), directory, name);
    } else if (has_spare) {
        unlinkat(directory, spare.c_str(), 0);
    } else if (placed && !durable && was_absent) {
        unlinkat(directory, name, 0);
    }
    return durable;
}

bool copy_file(const schar* source, const schar* target, bool replace) {
    mode_t mode = 0;
    unique_fd from = open_regular_file(source, nullptr, &mode);
    std::string parent(parent_of(target));
    std::string name(std::string_view(target).substr(std::string_view(target).rfind('/') + 1));
    if (!from || name.empty()) return false;

    unique_fd directory(open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::string made = make_private_name();
    if (!directory || made.empty()) return false;
    unique_fd to = create_file(directory.get(), made.c_str());
    if (!to) return false;

    auto put = replace ? put_in_place : put_in_free_place;
    bool copied =
        write_copy(from.get(), to, mode) && put(directory.get(), made.c_str(), name.c_str());
    if (!copied) unlinkat(directory.get(), made.c_str(), 0);
    return copied;
}

}  // namespace

kqbool os_file_copy(const schar* source, const schar* target, kqbool replace) {
    if (fault_here(fault_point::file_copy, EIO)) return 0;
    std::string source_buffer;
    std::string target_buffer;
    const schar* from = real_path(source, source_buffer);
    const schar* to = real_path(target, target_buffer);
    if (from == nullptr || to == nullptr) return 0;
    try {
        return copy_file(from, to, replace != 0);
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

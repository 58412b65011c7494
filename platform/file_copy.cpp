// os_file_copy: the copy is made under a name of its own beside the target and takes its place in
// one step, so that nobody ever sees a part of it.
#include <sys/random.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <string>

#include "fault.h"
#include "os.h"
#include "osfile.h"
#include "posix_file.h"

using namespace platform;

namespace {

// A name in a directory that nobody else has or can foresee. What bears it at the end is removed.
class private_name {
  public:
    explicit private_name(int directory) : directory_(directory) {
        unsigned long long number = 0;
        if (getrandom(&number, sizeof(number), 0) < 0) number = kq_get_tick_count();
        (void)std::snprintf(text_, sizeof(text_), ".kqcopy_%016llx.tmp", number);
    }
    ~private_name() { unlinkat(directory_, text_, 0); }
    private_name(const private_name&) = delete;
    private_name& operator=(const private_name&) = delete;

    const schar* text() const { return text_; }

  private:
    int directory_;
    schar text_[32];
};

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

// In another group, the source's mode for its group and for the others is about neither: both get
// what it gives to both.
mode_t mode_in_other_group(mode_t mode) {
    mode_t both = mode >> 3 & mode & 07;
    return (mode & 0700) | both << 3 | both;
}

// The group where this process may give it, then the mode, and the owner at last: who has given a
// file away may not be allowed to change its mode. A copy is never readable by more than its source.
bool take_rights(const struct stat& source, int target) {
    (void)!fchown(target, static_cast<uid_t>(-1), source.st_gid);
    struct stat made;
    if (fstat(target, &made) != 0) return false;
    mode_t mode = source.st_mode & 07777;
    if (made.st_gid != source.st_gid) mode = mode_in_other_group(mode);
    if (fchmod(target, mode & 0777) != 0) return false;
    const bool is_owners = fchown(target, source.st_uid, static_cast<gid_t>(-1)) == 0;
    // Giving it away took these bits from it.
    if (is_owners && (mode & 07000) != 0) (void)!fchmod(target, mode);
    return true;
}

bool write_copy(int source, const struct stat& status, unique_fd& target) {
    return copy_contents(source, target.get()) && take_rights(status, target.get()) &&
           sync_file(target.get()) && close_file(target.release());
}

// A target that appears in the meantime is not touched: a link does not replace.
bool put_in_free_place(int directory, const schar* made, const schar* name) {
    if (linkat(directory, made, directory, name, 0) != 0) return false;
    bool durable = sync_directory(directory);
    if (!durable) unlinkat(directory, name, 0);
    return durable;
}

// The old target keeps a second name until the new one is known to be on disk: a replacement that
// does not get there is taken back.
bool put_in_place(int directory, const schar* made, const schar* name) {
    private_name spare(directory);
    bool has_spare = linkat(directory, name, directory, spare.text(), 0) == 0;
    bool was_absent = !has_spare && errno == ENOENT;
    if (renameat(directory, made, directory, name) != 0) return false;
    bool durable = sync_directory(directory);
    if (!durable && has_spare) renameat(directory, spare.text(), directory, name);
    if (!durable && was_absent) unlinkat(directory, name, 0);
    return durable;
}

bool copy_file(const schar* source, const schar* target, bool replace) {
    struct stat status;
    unique_fd from = open_regular_file(source, status);
    std::string parent(parent_of(target));
    std::string name(std::string_view(target).substr(std::string_view(target).rfind('/') + 1));
    if (!from || name.empty()) return false;

    unique_fd directory = open_directory(parent.c_str());
    if (!directory) return false;
    private_name made(directory.get());
    unique_fd to = create_file(directory.get(), made.text());
    if (!to || !write_copy(from.get(), status, to)) return false;
    auto put = replace ? put_in_place : put_in_free_place;
    return put(directory.get(), made.text(), name.c_str());
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

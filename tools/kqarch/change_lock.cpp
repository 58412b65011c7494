#include "change_lock.h"

#include <sys/file.h>

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <vector>

#include "snapshot.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* lock_name = ".kqarch.lock";

bool lock(int file) {
    while (flock(file, LOCK_EX | LOCK_NB) != 0)
        if (errno != EINTR) return false;
    return true;
}

// The name that os_file_copy gives to what it has not finished: .kqcopy_0123456789abcdef.tmp
bool is_unfinished_copy(const fs::directory_entry& entry) {
    constexpr std::string_view before = ".kqcopy_";
    constexpr size_t digits = 16;
    std::string name = entry.path().filename();
    std::error_code error;
    return name.starts_with(before) && name.ends_with(".tmp") &&
           name.find_first_not_of("0123456789abcdef", before.size()) == before.size() + digits &&
           name.size() == before.size() + digits + 4 &&
           entry.symlink_status(error).type() == fs::file_type::regular;
}

// A killed process leaves the backup that it was writing, with the passwords of kqarch.ini.
void remove_unfinished_copies(const std::string& directory) {
    std::error_code error;
    std::vector<fs::path> found;
    for (fs::directory_iterator at(directory, error), end; !error && at != end; at.increment(error))
        if (is_unfinished_copy(*at)) found.push_back(at->path());
    for (const fs::path& path : found)
        fs::remove(path, error);
}

std::string hint_for_lock(int reason) {
    if (reason == ENOSPC || reason == EDQUOT) return "Free some space on its disk.";
    return "A change is made by who may write to the directory.";
}

}  // namespace

change_lock::change_lock(const instance& open) : file_(open_private(open.directory(), lock_name)) {
    bool locked = file_ && lock(file_.get());
    int reason = errno;
    if (locked)
        remove_unfinished_copies(open.directory());
    else if (file_ && reason == EWOULDBLOCK)
        failure_ = problem{exit_refused,
                           {.file = open.directory(),
                            .code = ARCH_E_CFG_CHANGING,
                            .text = "another kqarch is changing this directory",
                            .hint = "Try again when it has ended."}};
    else
        failure_ = problem{exit_failed,
                           {.file = open.file(lock_name),
                            .text = "cannot be locked: " + reason_text(),
                            .hint = hint_for_lock(reason)}};
}

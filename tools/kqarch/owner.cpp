#include "owner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "osfile.h"

namespace {

namespace fs = std::filesystem;

// Each holds a descriptor. A configuration with more than 8 LOCAL and 8 REMOTE destinations is
// refused before a directory is made.
constexpr size_t most_watched = 256;

bool is_root() {
    return geteuid() == 0;
}

// Somebody else may have put something in its place meanwhile: another name of a file of root, say.
bool is_own_thing(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) return false;
    return S_ISDIR(status.st_mode) || (S_ISREG(status.st_mode) && status.st_nlink == 1);
}

}  // namespace

instance_owner::instance_owner(const std::string& directory) {
    struct stat status {};
    known_ = stat(directory.c_str(), &status) == 0;
    if (known_ && status.st_uid == 0 && (status.st_mode & S_IWOTH) == 0)
        known_ = stat((directory + "/kqarch.ini").c_str(), &status) == 0;
    if (!known_) return;
    user_ = status.st_uid;
    group_ = status.st_gid;
}

// A directory's access list is not asked: then root's is less generous than it may be.
bool instance_owner::may_make_in(int directory) const {
    struct stat status {};
    if (!known_ || fstat(directory, &status) != 0) return false;
    if (status.st_uid == user_) return true;
    return (status.st_mode & S_IWOTH) != 0 ||
           (status.st_gid == group_ && (status.st_mode & S_IWGRP) != 0);
}

void instance_owner::take_over(int made) const {
    if (is_root() && known_) (void)!fchown(made, user_, group_);
}

handed_over::handed_over(const std::string& instance_directory, const std::set<std::string>& paths,
                         named_by who)
    : owner_(instance_directory), who_(who) {
    if (!is_root()) return;
    for (const std::string& path : paths)
        if (!os_file_path_is_asm(path.c_str()) && !os_file_path_is_dfs(path.c_str()))
            watch_all_of(path);
}

handed_over::~handed_over() {
    for (const absent_path& path : absent_)
        hand_over(path);
}

// Of a/../b both a and b are made.
void handed_over::watch_all_of(const std::string& path) {
    std::error_code error;
    fs::path part;
    for (const fs::path& name : fs::absolute(path, error))
        watch(part /= name);
}

void handed_over::watch(const std::string& path) {
    if (absent_.size() == most_watched) return;
    std::error_code error;
    fs::path above = fs::weakly_canonical(path, error);
    absent_path absent;
    for (; !error && above.has_relative_path(); above = above.parent_path()) {
        if (fs::symlink_status(above, error).type() != fs::file_type::not_found) break;
        error.clear();
        if (above.has_filename()) absent.names.push_back(above.filename());
    }
    if (error || absent.names.empty()) return;
    std::reverse(absent.names.begin(), absent.names.end());
    absent.above = open_file(open(above.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    // Nobody gets through root what he asked for himself and could not have made.
    bool may_be_his = who_ == named_by::root || owner_.may_make_in(absent.above.get());
    if (absent.above && may_be_his) absent_.push_back(std::move(absent));
}

// From the directory that was there, name by name: what has been handed over may already be moved.
void handed_over::hand_over(const absent_path& path) const {
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    open_file last;
    const open_file* at = &path.above;
    for (const std::string& name : path.names) {
        open_file next(openat(at->get(), name.c_str(), flags));
        if (!next || !is_own_thing(next.get())) return;
        owner_.take_over(next.get());
        last = std::move(next);
        at = &last;
    }
}

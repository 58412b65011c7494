#include "directory_fault.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

bool is_there(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

// What of the path exists: the path itself, or else the last directory above that does.
fs::path existing_part(const std::string& path) {
    std::error_code error;
    fs::path part = fs::absolute(path, error);
    while (!is_there(part) && part != part.parent_path())
        part = part.parent_path();
    return part;
}

}  // namespace

std::string hint_for_directory(const std::string& path) {
    // Neither is a path of this machine's file system.
    if (path.empty() || path.starts_with('+') || path.starts_with("dfs:")) return "";
    fs::path part = existing_part(path);
    struct stat status {};
    if (stat(part.c_str(), &status) != 0)
        return part.string() + " cannot be looked at: " + std::strerror(errno) + ".";
    if (!S_ISDIR(status.st_mode))
        return part.string() + " is no directory: remove it, or choose another path.";
    if (faccessat(AT_FDCWD, part.c_str(), W_OK | X_OK, AT_EACCESS) == 0) return "";
    if (errno == EROFS)
        return part.string() +
               " is on a read-only file system: mount it for writing, or choose "
               "another path.";
    return "The user who runs this may not write in " + part.string() + ": " +
           std::strerror(errno) + ".";
}

std::string hint_for_space(const std::string& path) {
    struct statvfs space {};
    fs::path part = existing_part(path);
    bool stores = statvfs(part.c_str(), &space) != 0 || space.f_blocks > 0;
    return stores ? "" : part.string() + " is on a file system that stores no files.";
}

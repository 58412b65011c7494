#include "snapshot.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

bool read_whole(int file, std::string& bytes) {
    char block[65536];
    for (;;) {
        ssize_t count = read(file, block, sizeof block);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        bytes.append(block, static_cast<size_t>(count));
    }
}

bool read_regular(int file, file_snapshot& snapshot) {
    struct stat status {};
    if (fstat(file, &status) != 0) return false;
    errno = EINVAL;
    if (!S_ISREG(status.st_mode)) return false;
    snapshot.exists = true;
    snapshot.device = status.st_dev;
    snapshot.number = status.st_ino;
    return read_whole(file, snapshot.bytes);
}

}  // namespace

std::optional<file_snapshot> take_snapshot(const std::string& path) {
    file_snapshot snapshot;
    // A pipe in the file's place must not hold the reader up.
    int file = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status {};
    // A symbolic link to nothing is not an absent file.
    if (file < 0 && errno == ENOENT && lstat(path.c_str(), &status) != 0) return snapshot;
    if (file < 0) return std::nullopt;
    bool good = read_regular(file, snapshot);
    int reason = errno;
    close(file);
    errno = reason;
    if (!good) return std::nullopt;
    return snapshot;
}

std::string reason_text() {
    return errno == EINVAL ? "is no regular file" : std::strerror(errno);
}

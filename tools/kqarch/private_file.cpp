#include "private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "owner.h"

namespace {

constexpr int flags = O_RDWR | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

bool is_regular(int file) {
    struct stat status {};
    if (fstat(file, &status) != 0) return false;
    errno = EINVAL;
    return S_ISREG(status.st_mode);
}

}  // namespace

open_file::open_file(open_file&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

open_file& open_file::operator=(open_file&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

open_file::~open_file() {
    if (descriptor_ >= 0) close(descriptor_);
}

open_file open_private(const std::string& directory, const std::string& name) {
    std::string path = directory + "/" + name;
    open_file made(open(path.c_str(), flags | O_CREAT | O_EXCL, 0600));
    if (made) {
        instance_owner(directory).take_over(made.get());
        return made;
    }
    if (errno != EEXIST) return made;
    open_file existing(open(path.c_str(), flags));
    if (existing && !is_regular(existing.get())) return open_file();
    return existing;
}

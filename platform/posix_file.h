// Files of the operating system: handles that close themselves, interrupted and short calls
// carried on, and the fault points of opening, reading, writing, syncing and closing.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "kqtype.h"

namespace platform {

class unique_fd {
  public:
    explicit unique_fd(int descriptor = -1) : descriptor_(descriptor) {}
    unique_fd(unique_fd&& other) noexcept : descriptor_(other.release()) {}
    unique_fd& operator=(unique_fd&&) = delete;
    ~unique_fd();

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }
    int release() { return std::exchange(descriptor_, -1); }

  private:
    int descriptor_;
};

// Where a path of the server lies: the path itself, or for `+NAME/x` the place under ASM_ROOT,
// which is put together in `buffer`. Null where nothing can be: no path, no ASM_ROOT, a `..`
// that would leave it, or no memory.
const schar* real_path(const schar* path, std::string& buffer) noexcept;

// What stands above a path: `.` for a bare name, `/` for the root itself.
std::string_view parent_of(std::string_view path);

bool is_directory(const schar* path);

// Opens a regular file for reading, and says what it is. Anything else, a pipe that nobody writes
// above all, is refused without waiting for it.
unique_fd open_regular_file(const schar* path, struct stat& status);

unique_fd open_directory(const schar* path);

// Creates a file for writing, mode 0600, exclusively and never through a symbolic link.
unique_fd create_file(int directory, const schar* path);

// At most `size` bytes; 0 at the end, negative on failure.
ssize_t read_some(int descriptor, void* data, std::size_t size);

bool write_all(int descriptor, const void* data, std::size_t size);
bool sync_file(int descriptor);

// Closes in any case; false when the file system reported a loss.
bool close_file(int descriptor);

}  // namespace platform

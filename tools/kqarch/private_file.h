// The files that changes leave beside kqarch.ini.
#ifndef KQARCH_PRIVATE_FILE_H
#define KQARCH_PRIVATE_FILE_H

#include <string>

// A descriptor that closes itself.
class open_file {
  public:
    explicit open_file(int descriptor = -1) : descriptor_(descriptor) {}
    open_file(open_file&& other) noexcept;
    open_file& operator=(open_file&& other) noexcept;
    ~open_file();

    explicit operator bool() const { return descriptor_ >= 0; }
    int get() const { return descriptor_; }

  private:
    int descriptor_;
};

// Opens a regular file for appending, never through a symbolic link; creates it with mode 0600,
// for the owner of the instance in the directory.
// Not open, with errno, when that is impossible.
open_file open_private(const std::string& directory, const std::string& name);

#endif

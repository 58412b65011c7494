// The layer's own calls of the operating system.
//
// A program that links this layer has its calls of open, write, fsync and close led through
// module_calls.cpp, where those of the module can be made to fail. The layer counts its fault
// points at a higher level, so that its own calls are marked and go straight through.
#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace platform {

class own_call {
  public:
    own_call() { ++depth; }
    ~own_call() { --depth; }
    own_call(const own_call&) = delete;
    own_call& operator=(const own_call&) = delete;

    static bool under_way() { return depth > 0; }

  private:
    static inline thread_local int depth = 0;
};

inline int own_open(const char* path, int flags, mode_t mode = 0) {
    const own_call mark;
    return open(path, flags, mode);
}

inline ssize_t own_write(int descriptor, const void* data, size_t size) {
    const own_call mark;
    return write(descriptor, data, size);
}

inline int own_fsync(int descriptor) {
    const own_call mark;
    return fsync(descriptor);
}

inline int own_close(int descriptor) {
    const own_call mark;
    return close(descriptor);
}

}  // namespace platform

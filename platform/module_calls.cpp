// The fault points of the module's own file calls. The linker leads every call of these functions
// here (--wrap, which the target of this layer asks for), so that the module needs no hook.
#include <cerrno>
#include <cstdarg>

#include "fault.h"
#include "own_calls.h"

using namespace platform;

extern "C" {

int __real_open(const char* path, int flags, ...);
ssize_t __real_write(int descriptor, const void* data, size_t size);
int __real_fsync(int descriptor);
int __real_close(int descriptor);

int __wrap_open(const char* path, int flags, ...);
ssize_t __wrap_write(int descriptor, const void* data, size_t size);
int __wrap_fsync(int descriptor);
int __wrap_close(int descriptor);

}  // extern "C"

namespace {

bool fails(fault_point point, int error_number) {
    return !own_call::under_way() && fault_here(point, error_number);
}

// The layer's own calls are interrupted too.
bool is_interrupted() {
    return fault_here(fault_point::interrupted, EINTR);
}

}  // namespace

int __wrap_open(const char* path, int flags, ...) {
    mode_t mode = 0;
    if ((flags & O_CREAT) != 0) {
        va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (is_interrupted() || fails(fault_point::file_open, EACCES)) return -1;
    return __real_open(path, flags, mode);
}

ssize_t __wrap_write(int descriptor, const void* data, size_t size) {
    if (is_interrupted() || fails(fault_point::file_write, ENOSPC)) return -1;
    return __real_write(descriptor, data, size);
}

int __wrap_fsync(int descriptor) {
    if (is_interrupted() || fails(fault_point::file_sync, EIO)) return -1;
    return __real_fsync(descriptor);
}

// A close that fails has closed the file all the same.
int __wrap_close(int descriptor) {
    const bool lost = fails(fault_point::file_close, EIO);
    const bool interrupted = !own_call::under_way() && is_interrupted();
    const int result = __real_close(descriptor);
    if (lost || interrupted) errno = lost ? EIO : EINTR;
    return lost || interrupted ? -1 : result;
}

// kqarch: an administrator's view of an instance's archive configuration.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>

#include "arguments.h"

namespace {

// A program started with a standard descriptor closed would write into the next file that it
// opens. What stands in for standard output takes nothing, so that lost data is noticed.
void complete_descriptors() {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            (void)open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
}

// A destructor may need memory too: what it throws nobody catches.
[[noreturn]] void end_uncaught() {
    try {
        if (std::exception_ptr thrown = std::current_exception()) std::rethrow_exception(thrown);
    } catch (const std::bad_alloc&) {
        (void)std::fputs("kqarch: error: out of memory\n", stderr);
        std::_Exit(exit_failed);
    } catch (...) {  // a fault of this program
    }
    std::abort();
}

}  // namespace

int main(int count, char** words) {
    complete_descriptors();
    // A write beyond the limit of file sizes is told by its result.
    (void)std::signal(SIGXFSZ, SIG_IGN);
    std::set_terminate(end_uncaught);
    try {
        return command_line().run(count, words);
    } catch (const std::bad_alloc&) {
        end_uncaught();
    }
}

#include "os.h"

#include <time.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "dry_run.h"
#include "fault.h"

using namespace platform;

static_assert(sizeof(std::size_t) == sizeof(ulint64), "a size of a block must fit size_t");

void* os_malloc(ulint64 size) {
    if (fault_here(fault_point::os_malloc, ENOMEM)) return nullptr;
    return std::malloc(size > 0 ? size : 1);
}

void os_free(void* block) {
    std::free(block);
}

void os_thread_sleep_low(ulint milliseconds) {
    if (dry_run_is_on()) return;
    timespec remaining{static_cast<time_t>(milliseconds / 1000),
                       static_cast<long>(milliseconds % 1000) * 1000000L};
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &remaining, &remaining) == EINTR) {
    }
}

ulint64 kq_get_tick_count(void) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<ulint64>(now.tv_sec) * 1000 + static_cast<ulint64>(now.tv_nsec) / 1000000;
}

void kq_sys_halt(const schar* text, lint) {
    std::fprintf(stderr, "%s\n", text != nullptr ? text : "");
    std::fflush(stderr);
    std::abort();
}

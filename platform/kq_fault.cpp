#include "kq_fault.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "fault.h"

std::atomic<unsigned> platform::armed_fault_points{0};

using namespace platform;

namespace {

struct point_name {
    const schar* name;
    unsigned points;
};

constexpr unsigned bit_of(fault_point point) {
    return 1u << static_cast<unsigned>(point);
}

constexpr point_name point_names[] = {
    {"os_malloc", bit_of(fault_point::os_malloc)},
    {"mem_malloc_ex", bit_of(fault_point::mem_malloc_ex)},
    {"file_open", bit_of(fault_point::file_open)},
    {"file_read", bit_of(fault_point::file_read)},
    {"file_write", bit_of(fault_point::file_write)},
    {"file_sync", bit_of(fault_point::file_sync)},
    {"file_close", bit_of(fault_point::file_close)},
    {"file_create", bit_of(fault_point::file_create)},
    {"file_delete", bit_of(fault_point::file_delete)},
    {"file_copy", bit_of(fault_point::file_copy)},
    {"dir_create", bit_of(fault_point::dir_create)},
    {"interrupted", bit_of(fault_point::interrupted)},
    // Who is interrupted carries on: for good it would not end.
    {"any", ~bit_of(fault_point::interrupted)},
};

// Calls still to come until the one that fails; 64 bits, so that it never wraps round.
std::atomic<lint64> calls_to_go{0};
std::atomic<bool> fails_for_good{false};
std::atomic<ulint> fault_hits{0};

}  // namespace

bool platform::take_fault(fault_point point, int error_number) noexcept {
    if ((armed_fault_points.load(std::memory_order_acquire) & bit_of(point)) == 0) {
        return false;
    }
    lint64 remaining = calls_to_go.fetch_sub(1) - 1;
    if (remaining > 0 || (remaining < 0 && !fails_for_good.load())) return false;
    fault_hits.fetch_add(1);
    errno = error_number;
    return true;
}

void kq_fault_arm(const schar* what, ulint nth, kqbool for_good) {
    kq_fault_disarm();
    fault_hits.store(0);
    calls_to_go.store(nth);
    fails_for_good.store(for_good != 0);
    for (const point_name& entry : point_names) {
        if (what != nullptr && nth > 0 && std::strcmp(entry.name, what) == 0) {
            armed_fault_points.store(entry.points, std::memory_order_release);
            return;
        }
    }
    // A test that arms nothing by mistake would pass for the wrong reason.
    std::fprintf(stderr, "kq_fault_arm: nothing to arm: %s, call %u\n",
                 what != nullptr ? what : "(null)", nth);
}

void kq_fault_disarm(void) {
    armed_fault_points.store(0);
}

ulint kq_fault_hits(void) {
    return fault_hits.load();
}

// The check that each fault point of the layer calls.
#pragma once

#include <atomic>

namespace platform {

// In the order of the names that kq_fault_arm knows.
enum class fault_point : unsigned {
    os_malloc,
    mem_malloc_ex,
    file_open,
    file_read,
    file_write,
    file_sync,
    file_close,
    file_create,
    file_delete,
    file_copy,
    dir_create,
    interrupted,
};

// A bit for each point that is armed.
extern std::atomic<unsigned> armed_fault_points;

bool take_fault(fault_point point, int error_number) noexcept;

// True when this call is to fail; errno is then `error_number`.
inline bool fault_here(fault_point point, int error_number) noexcept {
    return armed_fault_points.load(std::memory_order_relaxed) != 0 &&
           take_fault(point, error_number);
}

}  // namespace platform

// The dry run: what could be created, without creating it; see os_set_dry_run.
#pragma once

#include <climits>

#include "osfile.h"

namespace platform {

// Stands for a file that was not really created; no descriptor has this number.
constexpr os_handle_t dry_run_handle = INT_MAX;

bool dry_run_is_on() noexcept;

// Whether something could be made at `path`, where nothing may be yet: the nearest thing above it
// that exists is a directory that can be written and searched.
bool dry_run_can_make(const schar* path) noexcept;

// The same for a file, which then counts as being there until it is deleted.
bool dry_run_create_file(const schar* path) noexcept;

// True when that file was only created so, and is now forgotten.
bool dry_run_delete_file(const schar* path) noexcept;

}  // namespace platform

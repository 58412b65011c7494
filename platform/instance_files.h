// What each file of an instance directory is read into. `read_...` takes the place of what was
// there only when the whole file is good; `forget_...` leaves what an instance without the file
// has. All may throw std::bad_alloc.
#pragma once

#include <string>

#include "kqtype.h"

namespace platform {

kqcode_t read_main_settings(const std::string& path, const schar* config_dir);
void forget_main_settings();

kqcode_t read_mal_registry(const std::string& path);
void forget_mal_registry();

kqcode_t read_timer_registry(const std::string& path);
void forget_timer_registry();

kqcode_t read_cluster_registry(const std::string& path);
void forget_cluster_registry();

kqcode_t read_services(const std::string& path);
void forget_services();

void restore_key_bounds();

}  // namespace platform

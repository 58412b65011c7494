// How many destinations of each type there are, ready to be shown.
#ifndef KQARCH_COUNTS_H
#define KQARCH_COUNTS_H

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "arch_cfg.h"

using type_counts = std::map<ulint, size_t>;

type_counts counts_of_registry() KQ_EXCLUDES(arch_cfg_sys.mutex);

// "1 LOCAL, 2 REALTIME"
std::string counts_text(const type_counts& counts);

// Every type by its name.
nlohmann::ordered_json counts_document(const type_counts& counts);

#endif

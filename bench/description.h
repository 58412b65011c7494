// What the measured instances consist of.
#ifndef BENCH_DESCRIPTION_H
#define BENCH_DESCRIPTION_H

#include <string>
#include <string_view>
#include <vector>

#include "arch_cfg.h"

namespace bench {

// One section of kqarch.ini.
struct destination {
    std::string section;
    arch_cfg_type type;
    std::vector<std::string> instances;  // what it names; none for LOCAL
    std::string directory;               // LOCAL, REMOTE: where its archives are
    ulint number;                        // among those of its type, from 1
};

struct description {
    std::string settings;  // lines of the first section, because not every peer reads any before
    std::vector<destination> destinations;
};

// 1 LOCAL, 2 REALTIME.
description small_instance();

// As many of each type as can stand together: 8 LOCAL, 8 REALTIME of 2 to 16 instances, 8 ASYNC,
// 8 REMOTE, and the 14 settings that are written back.
description full_instance();

// 1 LOCAL, 8 RAFT, 9 LEARNER and the Raft settings.
description raft_instance();

// 50 destinations of one name each: 10 LOCAL, 20 REALTIME, 10 ASYNC, 10 REMOTE. More than
// validation allows.
description fifty_destinations();

// More LOCAL than validation allows.
description local_sections(ulint count);

// Sections without a line.
description section_headers(ulint count);

// ARCH_DEST of a destination as kqarch.ini has it.
std::string dest_text(const destination& dest);

std::string kqarch_text(const description& instance);
std::string kqmal_text(const description& instance);
std::string kqtimer_text(const description& instance);

inline constexpr std::string_view own_name = "BENCHED";

}  // namespace bench

#endif

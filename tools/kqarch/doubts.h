// What lets a server start and is a mistake all the same, or what a check cannot know: warnings.
#ifndef KQARCH_DOUBTS_H
#define KQARCH_DOUBTS_H

#include <vector>

#include "config_file.h"
#include "instance.h"
#include "output.h"

// The check ran with other rights than the owner of the instance's files has, or the server could
// not write what it reads.
std::vector<diagnostic> doubts_of_rights(const instance& open);

// Keys that stand twice, of which the last counts.
std::vector<diagnostic> doubts_of_lines(const config_file& file);

// Of what was loaded: directories that depend on where the server is started, or are another's under
// another name; nothing to archive to.
std::vector<diagnostic> doubts_of_registry(const instance& open, const config_file& file)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

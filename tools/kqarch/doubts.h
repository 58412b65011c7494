// What lets a server start and is a mistake all the same, or what a check cannot know: warnings.
#ifndef KQARCH_DOUBTS_H
#define KQARCH_DOUBTS_H

#include <vector>

#include "config_file.h"
#include "instance.h"
#include "output.h"

// What was tested was tested with other rights than the owner of the instance's files has.
std::vector<diagnostic> doubts_of_user(const instance& open);

// Who may read and write kqarch.ini: too few, when its owner may not write it, or too many.
std::vector<diagnostic> doubts_of_mode(const config_file& file);

// Keys that stand twice, of which the last counts.
std::vector<diagnostic> doubts_of_lines(const config_file& file);

// Of what was loaded: directories that depend on where the server is started, or are another's under
// another name; nothing to archive to. And of the file's mode.
std::vector<diagnostic> doubts_of_registry(const instance& open, const config_file& file)
    KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

// When a change of the Raft group is too dangerous to be made without --force.
#ifndef KQARCH_RAFT_DANGER_H
#define KQARCH_RAFT_DANGER_H

#include <optional>
#include <string>

#include "raft_group.h"

struct danger {
    std::string text;
    std::string hint;
};

// Of one group becoming the other at once.
std::optional<danger> danger_of_step(const raft_group& before, const raft_group& after);

// Of the node `self` leaving its group.
std::optional<danger> danger_of_leaving(const raft_group& group, const std::string& self);

#endif

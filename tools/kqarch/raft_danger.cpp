#include "raft_danger.h"

#include "text.h"

namespace {

// One voter a step: the quorums of two groups that differ in one voter always overlap.
std::string safe_steps(const raft_group& before, const raft_group& after) {
    std::vector<std::string> steps;
    for (const std::string& name : after.voters)
        if (!before.voters.contains(name))
            steps.push_back((before.learners.contains(name) ? "promote " : "add ") + name);
    for (const std::string& name : before.voters)
        if (!after.voters.contains(name)) steps.push_back("remove " + name);
    return "One voter a step, at every node before the next: " + join(steps, ", then ") + ".";
}

// The other voters, when this one leaves.
bool leaves_others_without_quorum(const raft_group& group, const std::string& self) {
    size_t others = group.voters.size() - group.voters.count(self);
    return group.voters.contains(self) && others > 0 && others < quorum_of(group.voters.size());
}

}  // namespace

std::optional<danger> danger_of_step(const raft_group& before, const raft_group& after) {
    if (quorums_overlap(before, after)) return std::nullopt;
    return danger{"voters from " + std::to_string(before.voters.size()) + " to " +
                      std::to_string(after.voters.size()) +
                      " in one step: a quorum of the old group and one of the new need have no "
                      "voter in common, and both could decide",
                  safe_steps(before, after)};
}

std::optional<danger> danger_of_leaving(const raft_group& group, const std::string& self) {
    if (!leaves_others_without_quorum(group, upper_case(self))) return std::nullopt;
    return danger{"without this node the other voters are no quorum: they cannot even remove it",
                  "Remove " + self + " at the other nodes first; then it is safe."};
}

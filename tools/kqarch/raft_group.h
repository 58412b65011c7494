// A Raft group as one node has it: who votes, and what that many voters can bear.
#ifndef KQARCH_RAFT_GROUP_H
#define KQARCH_RAFT_GROUP_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cluster_node.h"

// Names in upper case, this node's among them.
struct raft_group {
    std::set<std::string> voters = {};
    std::set<std::string> learners = {};

    bool operator==(const raft_group&) const = default;
};

raft_group group_of(const cluster_node& node);

// How many voters must agree, and how many may fail while the others still can.
size_t quorum_of(size_t voters);
size_t tolerated_failures(size_t voters);

// Whether each quorum of the one group has a voter in common with each of the other: else both
// could decide, each for itself, while the members learn of the change.
bool quorums_overlap(const raft_group& before, const raft_group& after);

// What becomes of the group, in sentences: of what it is only, where what it was is not known.
std::vector<std::string> group_consequences(const std::optional<raft_group>& before,
                                            const raft_group& after);

// Every member, this node first; none outside a group:
// [{"name": "KQ1", "self": true, "role": "voter", "id": 1, "address": "10.0.0.1", "port": 5336,
//   "section": null}]
nlohmann::ordered_json members_document(const cluster_node& node);

// {"voters": 3, "learners": 0, "quorum": 2, "tolerated_failures": 1}
nlohmann::ordered_json as_document(const raft_group& group);

#endif

// The nodes of a cluster or Raft group, held against each other: what the servers would tell one
// another, and what their messages cannot say.
#ifndef KQARCH_CLUSTER_H
#define KQARCH_CLUSTER_H

#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cluster_node.h"

// Something in which nodes disagree. `node` has the line; of a disagreement that concerns no other
// node, `other` is `node`.
struct disagreement {
    size_t node;
    size_t other;
    std::string about;  // the section that it is about, of `node`; empty: the node itself
    diagnostic found;
};

struct cluster {
    std::vector<cluster_node> nodes = {};
    // What node `receiver` answers to the message of node `sender`: codes[receiver][sender].
    std::vector<std::vector<kqcode_t>> codes = {};
    std::vector<disagreement> disagreements = {};
    // Pairs, the smaller number first, that have the Raft group differently. A line is not said for
    // each: what a node says of a member is held against one other node.
    std::set<std::pair<size_t, size_t>> different_groups = {};

    // The node's name; with its directory where two have the same name.
    std::string label(size_t node) const;

    // Whether two nodes differ in something, in either direction.
    bool disagree(size_t one, size_t other) const;

    // The node of that name, or none.
    std::optional<size_t> find(const std::string& name) const;
};

// Reads every directory and compares. What cannot be read or loaded is reported and left out;
// `status` is then its exit status, else exit_good.
cluster examine(const std::vector<std::string>& directories, exit_status& status, output& out);

// The rules, in files of their own. Each adds what it finds.
void compare_archives(cluster& all);
void compare_raft_groups(cluster& all);

#endif

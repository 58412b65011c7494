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

struct destination {
    size_t node;
    std::string section;
};

// Something in which nodes disagree, said once: at the node whose file most of the others
// contradict.
struct disagreement {
    size_t node;                          // has the line
    std::vector<size_t> others;           // with which it disagrees; none: it is about `node` alone
    std::vector<destination> about = {};  // none: the node as a whole
    diagnostic found = {};
};

struct cluster {
    std::vector<cluster_node> nodes = {};
    std::vector<unread_node> unread = {};
    // What node `receiver` answers to the message of node `sender`: codes[receiver][sender].
    std::vector<std::vector<kqcode_t>> codes = {};
    std::vector<disagreement> disagreements = {};
    // Pairs, the smaller number first, that have the Raft group differently. A line is not said for
    // each: what a node says of a member is held against one other node.
    std::set<std::pair<size_t, size_t>> different_groups = {};

    // The node's name; with its directory where two have the same name.
    std::string label(size_t node) const;

    // "KQ1", "KQ1 and KQ2", "KQ1, KQ2 and 6 others".
    std::string labels(const std::vector<size_t>& nodes) const;

    // Whether two nodes differ in something, in either direction.
    bool disagree(size_t one, size_t other) const;

    // Whether something is told of a node's destination.
    bool tells_of(size_t node, const std::string& section) const;

    // The node of that name, or none.
    std::optional<size_t> find(const std::string& name) const;
};

// Reads every directory and compares. What cannot be read or loaded is reported and left out;
// `status` is then its exit status, else exit_good.
cluster examine(const std::vector<std::string>& directories, exit_status& status, output& out);

// The rules, in files of their own. Each adds what it finds, and leaves out what follows from what
// an earlier one has found.
std::set<size_t> compare_settings(cluster& all);  // the nodes that are out of the others' sight
void compare_archives(cluster& all, const std::set<size_t>& apart);
void compare_directories(cluster& all);
void compare_raft_groups(cluster& all);

#endif

// What a picture of a cluster or Raft group shows: instances, the places and instances that their
// archives go to, and an edge for each destination. What disagrees is marked in the model, so that
// every format shows it.
#ifndef KQARCH_GRAPH_MODEL_H
#define KQARCH_GRAPH_MODEL_H

#include <string>
#include <vector>

#include "cluster.h"

enum class box_kind { instance, remote, directory, standby, subscriber, raft_group };

// Texts are ready to be shown: UTF-8, without control characters and passwords.
struct box {
    box_kind kind;
    std::string name;
    std::vector<std::string> details = {};
    std::vector<size_t> problems = {};  // what of it disagrees: numbers from 1
};

struct edge {
    size_t from;  // an instance, or a remote one
    size_t to;    // something else
    std::string label;
    bool incoming = false;  // of a REMOTE destination
    std::vector<size_t> problems = {};
};

struct graph {
    std::vector<box> boxes = {};
    std::vector<edge> edges = {};
    std::vector<std::string> problems = {};
    size_t faults = 0;  // the first of them: what is wrong with a node alone

    std::string title() const;

    // "FAULT [1]  DISAGREES [2] [3]", or nothing.
    std::string mark_of(const std::vector<size_t>& problems) const;
};

graph graph_of(const cluster& all);

bool is_source(const box& drawn);

const char* kind_name(box_kind kind);
#endif

// kqarch raft: the Raft group as a node has it, and changes of it.
#ifndef KQARCH_RAFT_H
#define KQARCH_RAFT_H

#include <optional>
#include <string>
#include <vector>

#include "change.h"
#include "output.h"

enum class raft_action { status, add, learner, remove, promote, replace, address, settings, clear };

// What was given; which of it an action has, the command line decides.
struct raft_request {
    raft_action action = raft_action::status;
    std::vector<std::string> names = {};
    std::optional<std::string> address = {};
    std::optional<usint> port = {};
    std::optional<usint> id = {};
    std::optional<usint> centre = {};
    std::optional<ulint> heartbeat = {};
    std::optional<ulint> vote = {};
    std::optional<ulint> link_heartbeat = {};
};

exit_status run_raft_status(const std::string& directory, output& out);

exit_status run_raft_change(const change_options& options, const raft_request& request,
                            output& out);

#endif

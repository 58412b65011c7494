#include "cluster_node.h"
#include "raft.h"
#include "raft_group.h"
#include "table.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

json number_or_null(ulint value, ulint unset) {
    return value == unset ? json(nullptr) : json(value);
}

// Passwords stand anywhere in a file that is not as it should be.
std::string shown(const std::string& text, const cluster_node& node) {
    return node.file.passwords().hide(visible(text));
}

std::string role_of(const raft_member& member) {
    return member.learner ? "learner" : "voter";
}

void print_member(const raft_member& member, const cluster_node& node,
                  std::vector<table_row>& rows) {
    bool self = member.section.empty();
    rows.push_back({shown(member.name, node) + (self ? " (this node)" : ""), role_of(member),
                    member.id == ARCH_UNSET_SHORT ? "-" : std::to_string(member.id),
                    member.address.empty() ? "-" : shown(member.address, node),
                    member.port == 0 ? "-" : std::to_string(member.port),
                    self ? "-" : shown(member.section, node)});
}

json as_document(const raft_member& member, const cluster_node& node) {
    bool self = member.section.empty();
    return {{"name", shown(member.name, node)},
            {"self", self},
            {"role", role_of(member)},
            {"id", number_or_null(member.id, ARCH_UNSET_SHORT)},
            {"address", member.address.empty() ? json(nullptr) : json(shown(member.address, node))},
            {"port", number_or_null(member.port, 0)},
            {"section", self ? json(nullptr) : json(shown(member.section, node))}};
}

void show_group(const cluster_node& node, output& out) {
    raft_group group = group_of(node);
    size_t voters = group.voters.size();
    out.set("group", as_document(group));
    if (voters == 0) return out.print("\nNobody votes: the group cannot decide anything.\n");
    out.print("\n" + count_of(voters, "voter") + ", " + count_of(group.learners.size(), "learner") +
              ": a quorum is " + std::to_string(quorum_of(voters)) + ", failures tolerated " +
              std::to_string(tolerated_failures(voters)) + ".\n");
    if (voters % 2 == 0)
        out.print("An even number of voters tolerates no more failures than " +
                  std::to_string(voters - 1) + " do.\n");
    if (node.self->learner)
        out.print(
            "This node is a learner (RAFT_LEARNER = 1). The next write of kqarch.ini drops "
            "that key.\n");
}

}  // namespace

exit_status run_raft_status(const std::string& directory, output& out) {
    for (const char* field : {"instance", "learner", "members", "group"})
        out.set(field, nullptr);
    exit_status status = exit_good;
    std::optional<cluster_node> node = read_node(directory, status, out);
    if (!node) return status;
    json documents = json::array();
    out.set("instance", visible(node->name));
    out.set("members", documents);
    if (!node->self) {
        out.print(visible(node->name) + " is in no Raft group.\n");
        return exit_good;
    }
    std::vector<table_row> rows = {{"MEMBER", "ROLE", "ID", "ADDRESS", "PORT", "SECTION"}};
    std::vector<raft_member> members = node->members;
    members.insert(members.begin(), *node->self);
    for (const raft_member& member : members) {
        print_member(member, *node, rows);
        documents.push_back(as_document(member, *node));
    }
    print_table(rows, out);
    out.set("learner", node->self->learner);
    out.set("members", documents);
    show_group(*node, out);
    return exit_good;
}

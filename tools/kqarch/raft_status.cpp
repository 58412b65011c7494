#include "cluster_node.h"
#include "raft.h"
#include "raft_group.h"
#include "table.h"
#include "text.h"

namespace {

// Passwords stand anywhere in a file that is not as it should be.
std::string shown(const std::string& text, const cluster_node& node) {
    return node.file.passwords().hide(visible(text));
}

void print_member(const raft_member& member, const cluster_node& node,
                  std::vector<table_row>& rows) {
    bool self = member.section.empty();
    rows.push_back({shown(member.name, node) + (self ? " (this node)" : ""),
                    member.learner ? "learner" : "voter",
                    member.id == ARCH_UNSET_SHORT ? "-" : std::to_string(member.id),
                    member.address.empty() ? "-" : shown(member.address, node),
                    member.port == 0 ? "-" : std::to_string(member.port),
                    self ? "-" : shown(member.section, node)});
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
    const auto [status, node, unread] = read_node(directory, out);
    if (!node) return status;
    out.set("instance", visible(node->name));
    out.set("members", members_document(*node));
    if (!node->self) {
        out.print(visible(node->name) + " is in no Raft group.\n");
        return exit_good;
    }
    std::vector<table_row> rows = {{"MEMBER", "ROLE", "ID", "ADDRESS", "PORT", "SECTION"}};
    print_member(*node->self, *node, rows);
    for (const raft_member& member : node->members)
        print_member(member, *node, rows);
    print_table(rows, out);
    out.set("learner", node->self->learner);
    show_group(*node, out);
    return exit_good;
}

// Who is a member of the Raft group, as each node has it.
#include "cluster.h"
#include "text.h"

namespace {

std::string role_of(const raft_member& member) {
    return member.learner ? "a learner" : "a voter";
}

std::string address_of(const raft_member& member) {
    std::string address = member.address.empty() ? "no address" : member.address;
    return member.port == 0 ? address : address + ":" + std::to_string(member.port);
}

std::string id_of(const raft_member& member) {
    return member.id == ARCH_UNSET_SHORT ? "no id" : "id " + std::to_string(member.id);
}

// One way in which two views of a member can differ: how each has it, and the key of a member's
// section and of the member's own file.
struct view_row {
    std::string (*shown)(const raft_member&);
    const char* key;
    const char* own_key;
    const char* hint;
};

constexpr view_row view_rows[] = {
    {id_of, "ARCH_DEST_ID", "RAFT_SELF_ID",
     "A member's ARCH_DEST_ID is its RAFT_SELF_ID, at every node."},
    {address_of, "ARCH_DEST_IP", "XMAL_IP",
     "A member's ARCH_DEST_IP and ARCH_DEST_PORT are its XMAL_IP and XMAL_PORT, at every node."},
    {role_of, "ARCH_TYPE", "RAFT_LEARNER",
     "A member is LEARNER with the others while it has RAFT_LEARNER = 1, and RAFT when it votes."},
};

// The whole group as a node has it, comparable.
std::set<std::string> view_of(const cluster_node& node) {
    std::vector<raft_member> members = node.members;
    members.push_back(*node.self);
    std::set<std::string> view;
    for (const raft_member& member : members)
        view.insert(upper_case(member.name) + ", " + id_of(member) + ", " + address_of(member) +
                    ", " + role_of(member));
    return view;
}

class group_rules {
  public:
    explicit group_rules(cluster& all) : all_(all) {}

    void compare() {
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            if (all_.nodes[node].self) compare_views_of(node);
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            for (size_t other = node + 1; other < all_.nodes.size(); ++other)
                compare_whole(node, other);
    }

  private:
    // What a node says of each member is held against what that member says of itself; of a member
    // that is not here, against the first node that has it.
    void compare_views_of(size_t node) {
        for (const raft_member& member : all_.nodes[node].members) {
            std::optional<size_t> reference = reference_for(member.name);
            if (reference && *reference != node) compare_view(node, member, *reference);
        }
        for (size_t other = 0; other < all_.nodes.size(); ++other)
            if (other != node) find_missing(node, other);
    }

    void compare_whole(size_t node, size_t other) {
        const cluster_node& left = all_.nodes[node];
        const cluster_node& right = all_.nodes[other];
        if (left.self && right.self && view_of(left) != view_of(right))
            all_.different_groups.emplace(node, other);
    }

    std::optional<size_t> reference_for(const std::string& name) const {
        if (std::optional<size_t> itself = all_.find(name)) return itself;
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            if (all_.nodes[node].find_member(name) != nullptr) return node;
        return std::nullopt;
    }

    void compare_view(size_t node, const raft_member& member, size_t reference) {
        const cluster_node& other = all_.nodes[reference];
        const raft_member* theirs = other.find_member(member.name);
        if (theirs == nullptr)
            return add(node, reference, member, "",
                       all_.label(node) + " lists " + member.name + " as a member, but " +
                           all_.label(reference) + " has no Raft settings",
                       "Set RAFT_SELF_ID, XMAL_IP and XMAL_PORT there, or remove the member with "
                       "`kqarch raft DIR remove`.");
        for (const view_row& row : view_rows) {
            std::string here = row.shown(member);
            std::string there = row.shown(*theirs);
            if (here != there) add_difference(node, member, reference, *theirs, row);
        }
    }

    void add_difference(size_t node, const raft_member& member, size_t reference,
                        const raft_member& theirs, const view_row& row) {
        const cluster_node& other = all_.nodes[reference];
        bool itself = theirs.section.empty();
        ulint line = itself ? other.file.key_line(row.own_key)
                            : other.file.key_line(theirs.section, row.key);
        add(node, reference, member, row.key,
            all_.label(node) + " has " + member.name + " as " + row.shown(member) + ", " +
                (itself ? "itself it is " : all_.label(reference) + " as ") + row.shown(theirs) +
                " (" + other.place_of(line) + ")",
            row.hint);
    }

    // A member that another node is or lists, and this one does not.
    void find_missing(size_t node, size_t other) {
        const cluster_node& theirs = all_.nodes[other];
        if (theirs.self && all_.nodes[node].find_member(theirs.name) == nullptr)
            add_missing(node, other, *theirs.self);
        for (const raft_member& member : theirs.members) {
            bool here = all_.nodes[node].find_member(member.name) != nullptr;
            bool is_a_node = all_.find(member.name).has_value();
            if (!here && !is_a_node && reference_for(member.name) == other)
                add_missing(node, other, member);
        }
    }

    void add_missing(size_t node, size_t other, const raft_member& member) {
        bool itself = member.section.empty();
        const cluster_node& theirs = all_.nodes[other];
        add(node, other, {}, "",
            all_.label(node) + " does not list " + member.name + ", " +
                (itself ? "which is a member of the group ("
                        : "which " + all_.label(other) + " has as a member (") +
                theirs.place_of(itself ? theirs.file.key_line("RAFT_SELF_ID")
                                       : theirs.file.section_line(member.section)) +
                ")",
            "Add it with `kqarch raft DIR add` or `learner`, or remove it from the others.");
    }

    void add(size_t node, size_t other, const raft_member& member, const std::string& key,
             const std::string& text, const std::string& hint) {
        const config_file& file = all_.nodes[node].file;
        ulint line = key.empty() ? 0 : file.key_line(member.section, key);
        if (line == 0 && !member.section.empty()) line = file.section_line(member.section);
        all_.disagreements.push_back({node,
                                      other,
                                      member.section,
                                      {.file = all_.nodes[node].place_of(0),
                                       .line = line,
                                       .section = member.section,
                                       .key = key,
                                       .text = text,
                                       .hint = hint}});
    }

    cluster& all_;
};

}  // namespace

void compare_raft_groups(cluster& all) {
    group_rules(all).compare();
}

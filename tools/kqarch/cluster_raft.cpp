// Who is a member of the Raft group, as each node has it. What most of the nodes say is held to be
// right, and the member's own word where it is a tie.
#include "cluster.h"
#include "poll.h"
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
        for (const std::string& name : names_in_group()) {
            compare_membership(name);
            for (const view_row& row : view_rows)
                compare_views(name, row);
        }
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            for (size_t other = node + 1; other < all_.nodes.size(); ++other)
                compare_whole(node, other);
    }

  private:
    // Every member, the nodes themselves first.
    std::vector<std::string> names_in_group() const {
        std::vector<std::string> names;
        auto add = [&](const raft_member& member) {
            for (const std::string& one : names)
                if (same_text(one, member.name)) return;
            names.push_back(member.name);
        };
        for (const cluster_node& node : all_.nodes)
            if (node.self) add(*node.self);
        for (const cluster_node& node : all_.nodes)
            for (const raft_member& member : node.members)
                add(member);
        return names;
    }

    void compare_whole(size_t node, size_t other) {
        const cluster_node& left = all_.nodes[node];
        const cluster_node& right = all_.nodes[other];
        if (left.self && right.self && view_of(left) != view_of(right))
            all_.different_groups.emplace(node, other);
    }

    const raft_member* view(size_t node, const std::string& name) const {
        return all_.nodes[node].find_member(name);
    }

    // The member itself, where it is a node here, and then the nodes that are in the group.
    std::vector<size_t> witnesses_of(const std::string& name) const {
        std::vector<size_t> witnesses;
        std::optional<size_t> itself = all_.find(name);
        if (itself) witnesses.push_back(*itself);
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            if (all_.nodes[node].self && node != itself) witnesses.push_back(node);
        return witnesses;
    }

    // ---- Who is a member ----

    void compare_membership(const std::string& name) {
        std::vector<size_t> having;
        std::vector<size_t> lacking;
        std::vector<size_t> witnesses = witnesses_of(name);
        for (size_t node : witnesses)
            (view(node, name) != nullptr ? having : lacking).push_back(node);
        if (lacking.empty()) return;
        bool itself_lacks = all_.find(name) == lacking[0];
        bool is_member = having.size() + (itself_lacks ? 0 : 1) > lacking.size();
        for (size_t node : is_member ? lacking : having) {
            const raft_member* seen = view(node, name);
            if (!is_member)
                add_stranger(node, *seen, lacking);
            else if (all_.find(name) == node)
                add_without_settings(node, having);
            else
                add_missing(node, name, having);
        }
    }

    void add_stranger(size_t node, const raft_member& member, const std::vector<size_t>& lacking) {
        bool itself = member.section.empty();
        bool no_settings = all_.find(member.name) == lacking[0];
        std::string text =
            itself ? " is a member of the group by its own file, but " + all_.labels(lacking) +
                         (lacking.size() == 1 ? " does" : " do") + " not list it"
                   : " lists " + member.name + " as a member, but " + all_.labels(lacking) +
                         (no_settings           ? " has no Raft settings"
                          : lacking.size() == 1 ? " does not"
                                                : " do not");
        add(node, lacking, member, "", all_.label(node) + text,
            no_settings ? "Set RAFT_SELF_ID, XMAL_IP and XMAL_PORT there, or remove the member "
                          "with `kqarch raft DIR remove`."
                        : "Add it at the others with `kqarch raft DIR add` or `learner`, or take "
                          "it out here with `remove` or `clear`.");
    }

    void add_without_settings(size_t node, const std::vector<size_t>& having) {
        add(node, having, {}, "",
            all_.label(node) + " has no Raft settings, but " + all_.labels(having) +
                " list it as a member",
            "Set RAFT_SELF_ID, XMAL_IP and XMAL_PORT here, or remove the member at the others "
            "with `kqarch raft DIR remove`.");
    }

    void add_missing(size_t node, const std::string& name, const std::vector<size_t>& having) {
        const raft_member& member = *view(having[0], name);
        bool itself = member.section.empty();
        const cluster_node& theirs = all_.nodes[having[0]];
        add(node, having, {}, "",
            all_.label(node) + " does not list " + name + ", " +
                (itself ? "which is a member of the group ("
                        : "which " + all_.labels(having) + (having.size() == 1 ? " has" : " have") +
                              " as a member (") +
                theirs.place_of(itself ? theirs.file.key_line("RAFT_SELF_ID")
                                       : theirs.file.section_line(member.section)) +
                ")",
            "Add it with `kqarch raft DIR add` or `learner`, or remove it from the others.");
    }

    // ---- What a member is ----

    void compare_views(const std::string& name, const view_row& row) {
        poll views;
        std::vector<size_t> witnesses = witnesses_of(name);
        for (size_t node : witnesses)
            if (const raft_member* member = view(node, name)) views.vote(row.shown(*member), node);
        for (size_t node : witnesses)
            if (const raft_member* member = view(node, name))
                if (row.shown(*member) != views.winner())
                    add_difference(node, *member, views.majority(), row);
    }

    void add_difference(size_t node, const raft_member& member, const std::vector<size_t>& others,
                        const view_row& row) {
        const cluster_node& other = all_.nodes[others[0]];
        const raft_member& theirs = *other.find_member(member.name);
        bool own_view = member.section.empty();
        bool of_itself = theirs.section.empty();
        ulint line = of_itself ? other.file.key_line(row.own_key)
                               : other.file.key_line(theirs.section, row.key);
        std::string here = own_view ? " is " + row.shown(member) + " by its own file"
                                    : " has " + member.name + " as " + row.shown(member);
        std::string there =
            of_itself
                ? "itself it is "
                : all_.labels(others) +
                      (own_view ? (others.size() == 1 ? " has it as " : " have it as ") : " as ");
        add(node, others, member, own_view ? row.own_key : row.key,
            all_.label(node) + here + ", " + there + row.shown(theirs) + " (" +
                other.place_of(line) + ")",
            row.hint);
    }

    void add(size_t node, const std::vector<size_t>& others, const raft_member& member,
             const std::string& key, const std::string& text, const std::string& hint) {
        const config_file& file = all_.nodes[node].file;
        bool own = member.section.empty();
        ulint line = key.empty() ? 0
                     : own       ? file.key_line(key)
                                 : file.key_line(member.section, key);
        if (line == 0 && !own) line = file.section_line(member.section);
        all_.disagreements.push_back({.node = node,
                                      .others = others,
                                      .about = {},
                                      .found = {.file = all_.nodes[node].place_of(0),
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

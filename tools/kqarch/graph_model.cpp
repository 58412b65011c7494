#include "graph_model.h"

#include <map>

#include "raft_group.h"
#include "text.h"

namespace {

// The bytes that a character of UTF-8 takes, from its first; 0 where none begins.
size_t character_size(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first < 0xe0) return 2;
    if (first >= 0xe0 && first < 0xf0) return 3;
    return first >= 0xf0 && first < 0xf5 ? 4 : 0;
}

bool is_character(std::string_view text) {
    for (size_t i = 1; i < text.size(); ++i)
        if ((text[i] & '\xc0') != '\x80') return false;
    auto second = static_cast<unsigned char>(text.size() > 1 ? text[1] : 0);
    switch (static_cast<unsigned char>(text[0])) {
        case 0xe0:
            return second >= 0xa0;
        case 0xed:
            return second < 0xa0;  // no surrogates
        case 0xef:
            return text < "\xef\xbf\xbe";  // the last two characters are none
        case 0xf0:
            return second >= 0x90;
        case 0xf4:
            return second < 0x90;
        default:
            return true;
    }
}

// A path may be any bytes; a picture is UTF-8.
std::string as_characters(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        size_t size = character_size(static_cast<unsigned char>(text[0]));
        bool valid = size > 0 && size <= text.size() && is_character(text.substr(0, size));
        shown += valid ? text.substr(0, size) : "\xef\xbf\xbd";
        text.remove_prefix(valid ? size : 1);
    }
    return shown;
}

class graph_maker {
  public:
    explicit graph_maker(const cluster& all) : all_(all) {
        for (const cluster_node& node : all.nodes)
            passwords_.learn(node.file.passwords());
    }

    graph make() {
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            add_instance(node);
        for (const unread_node& node : all_.unread)
            add_unread(node);
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            add_destinations(node);
        add_raft_group();
        made_.faults = made_.problems.size();
        for (const disagreement& one : all_.disagreements)
            mark(one);
        gather_incoming_edges();
        return std::move(made_);
    }

  private:
    std::string shown(const std::string& text) const {
        return as_characters(passwords_.hide(visible(text)));
    }

    size_t add_box(box_kind kind, const std::string& key, const std::string& name,
                   std::vector<std::string> details = {}) {
        auto [found, added] = by_key_.emplace(std::pair(kind, key), made_.boxes.size());
        if (added) made_.boxes.push_back({kind, shown(name), std::move(details), {}});
        return found->second;
    }

    // An instance that is no node here, but that a node names.
    size_t source_box(const std::string& name) {
        std::optional<size_t> node = all_.find(name);
        if (node) return *node;
        return add_box(box_kind::remote, upper_case(name), name);
    }

    void add_instance(size_t at) {
        const cluster_node& node = all_.nodes[at];
        std::vector<std::string> details = {shown(node.directory),
                                            "port " + std::to_string(node.port)};
        if (!node.archiving) details.emplace_back("archiving is off");
        if (node.shares) details.emplace_back("shares its archives");
        add_box(box_kind::instance, std::to_string(at), node.name, std::move(details));
        bool nowhere = node.places.empty() && node.standbys.empty() && node.members.empty();
        if (!node.fault.empty()) add_fault(at, node.name, node.fault);
        if (node.archiving && nowhere)
            add_fault(at, node.name,
                      "archiving is on, and there is no destination: nothing is archived");
    }

    // Others may name it: what goes to it leads to this box.
    void add_unread(const unread_node& node) {
        const std::string& name = node.name.empty() ? node.directory : node.name;
        size_t at = made_.boxes.size();
        made_.boxes.push_back(
            {box_kind::instance, shown(name), {shown(node.directory), "not loaded"}, {}});
        by_key_.emplace(std::pair(box_kind::remote, upper_case(node.name)), at);
        add_fault(at, name, "not loaded: " + node.why);
    }

    void add_fault(size_t box, const std::string& name, const std::string& text) {
        made_.problems.push_back(shown(name + ": " + text));
        made_.boxes[box].problems.push_back(made_.problems.size());
    }

    void add_edge(size_t from, size_t to, const std::string& label, size_t node,
                  const std::string& section) {
        if (!section.empty()) by_section_[{node, upper_case(section)}] = made_.edges.size();
        made_.edges.push_back({from, to, shown(label)});
    }

    void add_destinations(size_t at) {
        const cluster_node& node = all_.nodes[at];
        for (const archive_place& place : node.places) {
            size_t to = add_box(box_kind::directory, place.real_path, place.path);
            bool local = place.type == ARCH_TYPE_LOCAL;
            add_edge(at, to, local ? "LOCAL" : "REMOTE " + place.owner, at, place.section);
            made_.edges.back().incoming = !local;
            if (!local && !all_.find(place.owner)) add_archives_of(place.owner, to);
        }
        for (const standby& one : node.standbys)
            add_standby(at, one);
    }

    void add_archives_of(const std::string& owner, size_t directory) {
        size_t from = source_box(owner);
        for (const edge& drawn : made_.edges)
            if (drawn.from == from && drawn.to == directory) return;
        add_edge(from, directory, "archives", 0, "");
    }

    void add_standby(size_t at, const standby& one) {
        std::string label = arch_cfg_get_arch_name_by_type(one.type);
        if (!one.timer.empty()) label += " at " + one.timer;
        if (one.type == ARCH_TYPE_SUBSCRIBE) {
            size_t to = add_box(box_kind::subscriber, one.label, one.label);
            return add_edge(at, to, label, at, one.section);
        }
        for (const std::string& name : one.names)
            add_edge(at, add_box(box_kind::standby, upper_case(name), name), label, at,
                     one.section);
    }

    void add_raft_group() {
        std::optional<size_t> group;
        for (size_t node = 0; node < all_.nodes.size(); ++node) {
            const cluster_node& one = all_.nodes[node];
            if (!one.self) continue;
            if (!group) group = add_box(box_kind::raft_group, "", "Raft group", group_details(one));
            add_member(node, *one.self, *group);
            for (const raft_member& member : one.members)
                add_member(node, member, *group);
        }
    }

    static std::vector<std::string> group_details(const cluster_node& node) {
        raft_group group = group_of(node);
        size_t voters = group.voters.size();
        std::vector<std::string> details = {count_of(voters, "voter"),
                                            count_of(group.learners.size(), "learner")};
        if (voters == 0) return details;
        details.push_back("quorum " + std::to_string(quorum_of(voters)) + " of " +
                          std::to_string(voters));
        details.push_back("tolerates " + count_of(tolerated_failures(voters), "failure"));
        return details;
    }

    // One edge for a member, whoever names it: as it has itself, or as the first that names it.
    void add_member(size_t node, const raft_member& member, size_t group) {
        size_t from = source_box(member.name);
        if (!drawn_members_.insert(from).second) return;
        bool is_node = from < all_.nodes.size();
        const raft_member* view =
            is_node && all_.nodes[from].self ? &*all_.nodes[from].self : &member;
        std::string label = view->learner ? "LEARNER" : "RAFT";
        if (view->id != ARCH_UNSET_SHORT) label += " id " + std::to_string(view->id);
        if (!view->address.empty()) label += " " + view->address + ":" + std::to_string(view->port);
        add_edge(from, group, label, node, "");
    }

    // At the destinations that it is about, or at the node: also where a node has a member wrongly,
    // because the member's own edge is right.
    void mark(const disagreement& one) {
        made_.problems.push_back(as_characters(visible(one.found.text)));
        size_t number = made_.problems.size();
        if (one.about.empty()) made_.boxes[one.node].problems.push_back(number);
        for (const destination& about : one.about) {
            auto drawn = by_section_.find({about.node, upper_case(about.section)});
            std::vector<size_t>& problems = drawn != by_section_.end()
                                                ? made_.edges[drawn->second].problems
                                                : made_.boxes[about.node].problems;
            problems.push_back(number);
        }
    }

    // In a large cluster everybody names everybody's directory: where several agree on one, it says
    // how many, and has no edge for each.
    void gather_incoming_edges() {
        std::map<std::pair<size_t, std::string>, size_t> agreeing;
        auto gathered = [&](const edge& one) { return one.incoming && one.problems.empty(); };
        for (const edge& one : made_.edges)
            if (gathered(one)) ++agreeing[{one.to, one.label}];
        std::erase_if(agreeing, [](const auto& entry) { return entry.second <= most_drawn; });
        std::erase_if(made_.edges, [&](const edge& one) {
            return gathered(one) && agreeing.contains({one.to, one.label});
        });
        for (const auto& [target, count] : agreeing)
            made_.boxes[target.first].details.push_back(target.second + " at " +
                                                        count_of(count, "node"));
    }

    static constexpr size_t most_drawn = 2;

    const cluster& all_;
    password_list passwords_;
    graph made_;
    std::map<std::pair<box_kind, std::string>, size_t> by_key_;
    std::map<std::pair<size_t, std::string>, size_t> by_section_;  // edges
    std::set<size_t> drawn_members_;                               // their boxes
};

}  // namespace

std::string graph::title() const {
    size_t instances = 0;
    for (const box& one : boxes)
        if (one.kind == box_kind::instance) ++instances;
    std::vector<std::string> verdict;
    if (faults > 0) verdict.push_back(count_of(faults, "fault"));
    if (problems.size() > faults)
        verdict.push_back(count_of(problems.size() - faults, "disagreement"));
    if (verdict.empty())
        verdict.emplace_back(instances > 1 ? "nothing disagrees" : "nothing is wrong");
    return "Where archives go: " + count_of(instances, "instance") + ", " + join(verdict, ", ");
}

std::string graph::mark_of(const std::vector<size_t>& numbers) const {
    std::string marks[2];
    for (size_t number : numbers)
        marks[number <= faults ? 0 : 1] += " [" + std::to_string(number) + "]";
    std::vector<std::string> words;
    if (!marks[0].empty()) words.push_back("FAULT" + marks[0]);
    if (!marks[1].empty()) words.push_back("DISAGREES" + marks[1]);
    return join(words, "  ");
}

graph graph_of(const cluster& all) {
    return graph_maker(all).make();
}

bool is_source(const box& drawn) {
    return drawn.kind == box_kind::instance || drawn.kind == box_kind::remote;
}

const char* kind_name(box_kind kind) {
    constexpr const char* names[] = {"instance", "remote node", "directory",
                                     "standby",  "subscriber",  "members"};
    return names[static_cast<size_t>(kind)];
}

// What every node of a cluster has to have before archives can be compared: archiving switched on,
// a name of its own, and ARCH_LOCAL_SHARE as the others have it.
#include <algorithm>

#include "cluster.h"
#include "text.h"

namespace {

std::string share_text(const cluster_node& node) {
    return node.share == ARCH_UNSET_FLAG ? "not configured" : std::to_string(node.share);
}

bool in_cluster(const cluster_node& node) {
    return node.archiving && node.cluster_nodes > 1;
}

class setting_rules {
  public:
    explicit setting_rules(cluster& all) : all_(all) {}

    std::set<size_t> compare() {
        compare_archiving();
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            compare_name(node);
        compare_shares();
        return apart_;
    }

  private:
    template <typename predicate>
    std::vector<size_t> nodes_that(predicate holds) const {
        std::vector<size_t> found;
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            if (holds(all_.nodes[node])) found.push_back(node);
        return found;
    }

    void add(size_t node, const std::vector<size_t>& others, const diagnostic& found) {
        all_.disagreements.push_back({.node = node, .others = others, .about = {}, .found = found});
        apart_.insert(node);
    }

    void compare_archiving() {
        auto archives = [](const cluster_node& node) { return node.archiving; };
        std::vector<size_t> on = nodes_that(archives);
        for (size_t node : nodes_that(std::not_fn(archives)))
            if (!on.empty())
                add(node, on,
                    {.file = all_.nodes[node].directory + "/kq.ini",
                     .key = "ARCH_FLAG",
                     .text = "archiving is off at " + all_.label(node) + " and on at " +
                             all_.labels(on),
                     .hint = "Set ARCH_FLAG = 1: until then this node tells the others nothing."});
    }

    // Of nodes of one name, the one whose archives the others look for under it has it rightly.
    void compare_name(size_t first) {
        const std::string& name = all_.nodes[first].name;
        std::vector<size_t> named =
            nodes_that([&](const cluster_node& node) { return same_text(node.name, name); });
        if (named.size() < 2 || named[0] != first) return;
        size_t owner = *std::max_element(
            named.begin(), named.end(),
            [&](size_t left, size_t right) { return backers_of(left) < backers_of(right); });
        for (size_t node : named)
            if (node != owner)
                add(node, {owner},
                    {.file = all_.nodes[node].directory + "/kq.ini",
                     .key = "INSTANCE_NAME",
                     .text = all_.nodes[owner].directory + " has the name " +
                             all_.nodes[owner].name + " too",
                     .hint = "Give every node a name of its own; names ignore case."});
    }

    size_t backers_of(size_t owner) const {
        auto backs = [&](const cluster_node& node) {
            return std::any_of(node.places.begin(), node.places.end(),
                               [&](const archive_place& place) {
                                   return place.is_incoming_of(all_.nodes[owner].name) &&
                                          all_.nodes[owner].local_at(place.path) != nullptr;
                               });
        };
        return nodes_that(backs).size();
    }

    // Nodes of a cluster have to share, whatever most do.
    void compare_shares() {
        auto shares = [](const cluster_node& node) { return node.archiving && node.shares; };
        auto keeps = [](const cluster_node& node) { return node.archiving && !node.shares; };
        std::vector<size_t> sharing = nodes_that(shares);
        std::vector<size_t> keeping = nodes_that(keeps);
        std::vector<size_t> cluster_nodes = nodes_that(in_cluster);
        if (sharing.empty() && !cluster_nodes.empty()) return add_nobody_shares(cluster_nodes);
        if (sharing.empty() || keeping.empty()) return;
        bool ought_to = !cluster_nodes.empty() || sharing.size() >= keeping.size();
        for (size_t node : ought_to ? keeping : sharing)
            add_share(node, ought_to ? sharing : keeping);
    }

    void add_share(size_t node, const std::vector<size_t>& others) {
        const cluster_node& own = all_.nodes[node];
        const cluster_node& other = all_.nodes[others[0]];
        ulint their_line = other.file.key_line("ARCH_LOCAL_SHARE");
        add(node, others,
            share_found(own,
                        "ARCH_LOCAL_SHARE is " + share_text(own) + " at " + all_.label(node) +
                            " and " + share_text(other) + " at " + all_.labels(others) + " (" +
                            other.place_of(their_line) + ")",
                        own.shares ? "Remove the line, as there: any value of it shares, 0 too."
                                   : "Set ARCH_LOCAL_SHARE = 1, as there."));
    }

    void add_nobody_shares(const std::vector<size_t>& nodes) {
        const cluster_node& first = all_.nodes[nodes[0]];
        diagnostic found =
            share_found(first,
                        "ARCH_LOCAL_SHARE is 1 at no node (" + share_text(first) + " at " +
                            all_.label(nodes[0]) + "), and HPC_NODE is " +
                            std::to_string(first.cluster_nodes) + ": no node agrees with another",
                        "Set ARCH_LOCAL_SHARE = 1 at every node of the cluster.");
        found.code = ARCH_E_PEER_CFG_MISMATCH;
        add(nodes[0], {nodes.begin() + 1, nodes.end()}, found);
    }

    static diagnostic share_found(const cluster_node& node, const std::string& text,
                                  const std::string& hint) {
        return {.file = node.place_of(0),
                .line = node.file.key_line("ARCH_LOCAL_SHARE"),
                .key = "ARCH_LOCAL_SHARE",
                .text = text,
                .hint = hint};
    }

    cluster& all_;
    std::set<size_t> apart_;
};

}  // namespace

std::set<size_t> compare_settings(cluster& all) {
    return setting_rules(all).compare();
}

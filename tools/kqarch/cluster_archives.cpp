// Where the nodes of a cluster archive to, compared.
#include <algorithm>

#include "cluster.h"
#include "text.h"

namespace {

bool is_local(const archive_place& place) {
    return place.type == ARCH_TYPE_LOCAL;
}

bool same_place(const archive_place& left, const archive_place& right) {
    return left.path == right.path || left.real_path == right.real_path;
}

std::string what_is(const archive_place& place) {
    return is_local(place) ? "archives to" : "has as the incoming path of " + place.owner;
}

// "/b, /c", or "no directory".
std::string local_paths(const cluster_node& node) {
    std::vector<std::string> paths;
    for (const archive_place& place : node.places)
        if (is_local(place)) paths.push_back(place.path);
    return paths.empty() ? "no directory" : join(paths, ", ");
}

const archive_place* local_at(const cluster_node& node, const std::string& path) {
    for (const archive_place& place : node.places)
        if (is_local(place) && place.path == path) return &place;
    return nullptr;
}

const archive_place* remote_for(const cluster_node& node, const std::string& owner) {
    for (const archive_place& place : node.places)
        if (!is_local(place) && same_text(place.owner, owner)) return &place;
    return nullptr;
}

bool has_remote(const cluster_node& node) {
    return std::any_of(node.places.begin(), node.places.end(),
                       [](const archive_place& place) { return !is_local(place); });
}

std::string share_text(const cluster_node& node) {
    return node.share == ARCH_UNSET_FLAG ? "not configured" : std::to_string(node.share);
}

// Two nodes, one of which has something to say about the other.
class pair_rules {
  public:
    pair_rules(cluster& all, size_t node, size_t other)
        : all_(all),
          at_(node),
          other_at_(other),
          node_(all.nodes[node]),
          other_(all.nodes[other]) {}

    // Of rules that are the same from both sides.
    void compare_once() {
        compare_names();
        compare_shares();
        for (const archive_place& place : node_.places)
            for (const archive_place& theirs : other_.places)
                compare_places(place, theirs);
    }

    void compare_one_way() {
        for (const archive_place& place : node_.places) {
            if (is_local(place)) continue;
            if (owner_has_other_name(place)) continue;
            if (node_.shares && other_.shares) find_at_other(place);
        }
        check_listed();
    }

  private:
    void add(const archive_place& place, const std::string& text, const std::string& hint) {
        all_.disagreements.push_back({at_,
                                      other_at_,
                                      place.section,
                                      {.file = node_.place_of(0),
                                       .line = place.line,
                                       .section = place.section,
                                       .key = is_local(place) ? "ARCH_DEST" : "ARCH_INCOMING_PATH",
                                       .text = text,
                                       .hint = hint}});
    }

    void add(const std::string& key, const std::string& text, const std::string& hint) {
        all_.disagreements.push_back({at_,
                                      other_at_,
                                      "",
                                      {.file = node_.place_of(0),
                                       .line = node_.file.key_line(key),
                                       .key = key,
                                       .text = text,
                                       .hint = hint}});
    }

    void compare_names() {
        if (!same_text(node_.name, other_.name)) return;
        all_.disagreements.push_back(
            {at_,
             other_at_,
             "",
             {.file = node_.directory + "/kq.ini",
              .key = "INSTANCE_NAME",
              .text = other_.directory + " has the name " + other_.name + " too",
              .hint = "Give every node a name of its own; names ignore case."}});
    }

    void compare_shares() {
        if (node_.shares == other_.shares) return;
        add("ARCH_LOCAL_SHARE",
            "ARCH_LOCAL_SHARE is " + share_text(node_) + " here and " + share_text(other_) +
                " at " + all_.label(other_at_) + " (" +
                other_.place_of(other_.file.key_line("ARCH_LOCAL_SHARE")) + ")",
            "Give ARCH_LOCAL_SHARE the same value at every node: it decides what a message holds.");
    }

    // One directory for the archives of two nodes; where the archives are shared, a node may well
    // have the directory of another as its incoming path.
    void compare_places(const archive_place& place, const archive_place& theirs) {
        if (!same_place(place, theirs)) return;
        bool sharing = node_.shares || other_.shares;
        if (sharing && same_text(place.owner, theirs.owner)) return;
        if (sharing && is_local(place) != is_local(theirs)) return;  // a name that differs
        bool linked = place.path != theirs.path;
        add(place,
            all_.label(at_) + " " + what_is(place) + " " + place.path + ", which " +
                all_.label(other_at_) + " " + what_is(theirs) +
                (linked ? " under the name " + theirs.path : "") + " (" +
                other_.place_of(theirs.line) + ")",
            sharing ? "Give each node a directory of its own for its archives."
                    : "Give each node directories of its own, or share them with ARCH_LOCAL_SHARE "
                      "= 1 at every node.");
    }

    bool owner_has_other_name(const archive_place& place) {
        if (!node_.shares || !other_.shares || same_text(place.owner, other_.name)) return false;
        const archive_place* theirs = local_at(other_, place.path);
        if (theirs == nullptr) return false;
        add(place,
            place.path + " is given as the incoming path of " + place.owner + ", but " +
                all_.label(other_at_) + " archives there (" + other_.place_of(theirs->line) + ")",
            "Set ARCH_DEST = " + other_.name + " in [" + place.section + "], or correct the path.");
        return true;
    }

    // As the servers look: this node's REMOTE destination has to stand in the other's message.
    void find_at_other(const archive_place& place) {
        if (same_text(place.owner, other_.name)) {
            if (local_at(other_, place.path) == nullptr) add_unowned_path(place);
        } else if (!someone_owns(place)) {
            const archive_place* theirs = remote_for(other_, place.owner);
            if (theirs == nullptr || theirs->path != place.path) add_missing_there(place, theirs);
        }
    }

    // Another node archives there under another name: said once, where that node is compared.
    bool someone_owns(const archive_place& place) const {
        return std::any_of(all_.nodes.begin(), all_.nodes.end(), [&](const cluster_node& one) {
            return !same_text(one.name, place.owner) && local_at(one, place.path) != nullptr;
        });
    }

    void add_unowned_path(const archive_place& place) {
        add(place,
            "the incoming path of " + all_.label(other_at_) + " is " + place.path + ", but " +
                all_.label(other_at_) + " archives to " + local_paths(other_),
            "Set ARCH_INCOMING_PATH to a directory of a LOCAL destination of " + other_.name +
                ", with the same case.");
    }

    void add_missing_there(const archive_place& place, const archive_place* theirs) {
        std::string there =
            theirs == nullptr ? " has no REMOTE destination for it"
                              : " has " + theirs->path + " (" + other_.place_of(theirs->line) + ")";
        add(place,
            "the incoming path of " + place.owner + " is " + place.path + " here, but " +
                all_.label(other_at_) + there,
            "Every node needs the same incoming path for " + place.owner +
                ": the directory that it archives to.");
    }

    void check_listed() {
        bool in_cluster = node_.cluster_nodes > 1 && other_.cluster_nodes > 1;
        if (!in_cluster || node_.endpoints != 0 || !has_remote(other_)) return;
        if (remote_for(node_, other_.name) != nullptr) return;
        add("",
            all_.label(at_) + " has no REMOTE destination for " + all_.label(other_at_) +
                ", which is a node of the cluster",
            "Add one with ARCH_DEST = " + other_.name + " and its archive directory.");
    }

    cluster& all_;
    size_t at_;
    size_t other_at_;
    const cluster_node& node_;
    const cluster_node& other_;
};

void check_alone(cluster& all, size_t at) {
    const cluster_node& node = all.nodes[at];
    if (node.endpoints < 0)
        all.disagreements.push_back(
            {at,
             at,
             "",
             {.file = node.place_of(0),
              .code = node.endpoints,
              .text = node.name + ": " + node.endpoint_text,
              .hint = "Every other endpoint of kqdcr.ini needs a REMOTE destination, and this "
                      "instance has to be an endpoint."}});
    bool somebody_shares = std::any_of(all.nodes.begin(), all.nodes.end(),
                                       [](const cluster_node& one) { return one.shares; });
    if (somebody_shares || node.cluster_nodes < 2 || !node.archiving) return;
    all.disagreements.push_back(
        {at,
         at,
         "",
         {.file = node.place_of(0),
          .line = node.file.key_line("ARCH_LOCAL_SHARE"),
          .code = ARCH_E_PEER_CFG_MISMATCH,
          .key = "ARCH_LOCAL_SHARE",
          .text = "ARCH_LOCAL_SHARE is " + share_text(node) + " and HPC_NODE " +
                  std::to_string(node.cluster_nodes) + ": " + node.name +
                  " agrees with no other node",
          .hint = "Set ARCH_LOCAL_SHARE = 1 at every node of the cluster."}});
}

}  // namespace

void compare_archives(cluster& all) {
    for (size_t node = 0; node < all.nodes.size(); ++node) {
        check_alone(all, node);
        for (size_t other = 0; other < all.nodes.size(); ++other) {
            if (other == node) continue;
            pair_rules rules(all, node, other);
            if (node < other) rules.compare_once();
            rules.compare_one_way();
        }
    }
}

// Where the nodes that share their archives look for those of each other. What most of the nodes
// say of an owner's archives is held to be right, and the owner's own word where it is a tie.
#include "cluster.h"
#include "hints.h"
#include "poll.h"
#include "text.h"

namespace {

// "/b, /c", or "no directory".
std::string local_paths(const cluster_node& node) {
    std::vector<std::string> paths;
    for (const archive_place& place : node.places)
        if (place.is_local()) paths.push_back(place.path);
    return paths.empty() ? "no directory" : join(paths, ", ");
}

const archive_place* incoming_of(const cluster_node& node, const std::string& owner) {
    for (const archive_place& place : node.places)
        if (place.is_incoming_of(owner)) return &place;
    return nullptr;
}

// A REMOTE destination for the owner that is asked about.
struct claim {
    size_t node;
    const archive_place* place;
};

class archive_rules {
  public:
    archive_rules(cluster& all, const std::set<size_t>& apart) : all_(all) {
        for (size_t node = 0; node < all.nodes.size(); ++node)
            if (all.nodes[node].shares && !apart.contains(node)) sharing_.push_back(node);
    }

    void compare(const std::set<size_t>& apart) {
        std::vector<std::string> owners = owners_named();
        for (const std::string& owner : owners)
            if (!sharing_node(owner)) compare_names(owner);
        for (const std::string& owner : owners) {
            compare_paths(owner);
            find_missing(owner);
        }
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            if (all_.nodes[node].endpoints < 0 && !apart.contains(node) && !told_.contains(node))
                add_endpoints(node);
    }

  private:
    // Everybody who archives or is said to, each once.
    std::vector<std::string> owners_named() const {
        std::vector<std::string> owners;
        auto add = [&](const std::string& name) {
            for (const std::string& one : owners)
                if (same_text(one, name)) return;
            owners.push_back(name);
        };
        for (size_t node : sharing_) {
            add(all_.nodes[node].name);
            for (const archive_place& place : all_.nodes[node].places)
                add(place.owner);
        }
        return owners;
    }

    std::optional<size_t> sharing_node(const std::string& name) const {
        for (size_t node : sharing_)
            if (same_text(all_.nodes[node].name, name)) return node;
        return std::nullopt;
    }

    std::vector<claim> claims_of(const std::string& owner) const {
        std::vector<claim> claims;
        for (size_t node : sharing_)
            if (const archive_place* place = incoming_of(all_.nodes[node], owner))
                claims.push_back({node, place});
        return claims;
    }

    void add(size_t node, const std::vector<size_t>& others, const archive_place* place,
             const std::string& text, const std::string& hint) {
        told_.insert(node);
        diagnostic found{.file = all_.nodes[node].place_of(0), .text = text, .hint = hint};
        if (place == nullptr) return all_.disagreements.push_back({node, others, {}, found});
        found.line = place->line;
        found.section = place->section;
        found.key = place->is_local() ? "ARCH_DEST" : "ARCH_INCOMING_PATH";
        all_.disagreements.push_back({node, others, {{node, place->section}}, found});
    }

    // ---- An owner that is none of the nodes, while one of them archives there ----

    void compare_names(const std::string& owner) {
        for (size_t node : sharing_) {
            std::vector<claim> wrong;
            for (const claim& one : claims_of(owner))
                if (all_.nodes[node].local_at(one.place->path) != nullptr) wrong.push_back(one);
            if (!wrong.empty()) add_other_name(owner, node, wrong);
        }
    }

    void add_other_name(const std::string& owner, size_t node, const std::vector<claim>& claims) {
        const cluster_node& there = all_.nodes[node];
        std::vector<size_t> claimants;
        for (const claim& one : claims) {
            claimants.push_back(one.node);
            excused_.insert({one.node, upper_case(there.name)});
            told_.insert(one.node);
        }
        const archive_place* local = there.local_at(claims[0].place->path);
        excused_.insert({node, upper_case(owner)});
        if (claims.size() > 1 + backers_of(node))
            return add(node, claimants, local,
                       all_.label(node) + " archives to " + local->path + ", which " +
                           all_.labels(claimants) + " have as the incoming path of " + owner,
                       "Set INSTANCE_NAME = " + owner + " in kq.ini, or ARCH_DEST = " + there.name +
                           " at the others.");
        for (const claim& one : claims)
            add(one.node, {node}, one.place,
                one.place->path + " is given as the incoming path of " + owner + ", but " +
                    all_.label(node) + " archives there (" + there.place_of(local->line) + ")",
                "Set ARCH_DEST = " + there.name + " in [" + one.place->section +
                    "], or correct the path.");
    }

    size_t backers_of(size_t owner) const {
        size_t count = 0;
        for (const claim& one : claims_of(all_.nodes[owner].name))
            if (all_.nodes[owner].local_at(one.place->path) != nullptr) ++count;
        return count;
    }

    bool is_told(const claim& one) const { return all_.tells_of(one.node, one.place->section); }

    // ---- Paths ----

    void compare_paths(const std::string& owner) {
        std::optional<size_t> own = sharing_node(owner);
        poll paths;
        if (own)
            for (const archive_place& place : all_.nodes[*own].places)
                if (place.is_local()) paths.vote(place.path, *own);
        std::vector<claim> claims = claims_of(owner);
        for (const claim& one : claims)
            if (!is_told(one)) paths.vote(one.place->path, one.node);
        if (paths.empty()) return;
        const std::string& right = paths.winner();
        bool own_is_right = own && all_.nodes[*own].local_at(right) != nullptr;
        if (own && !own_is_right) add_moved_owner(*own, right, paths.majority());
        for (const claim& one : claims)
            if (one.place->path != right && !is_told(one)) {
                if (own_is_right)
                    add_unowned_path(one, *own);
                else
                    add_other_path(one, paths.majority(), right);
            }
    }

    void add_moved_owner(size_t own, const std::string& right, const std::vector<size_t>& others) {
        const cluster_node& node = all_.nodes[own];
        const archive_place* local = nullptr;
        for (const archive_place& place : node.places)
            if (local == nullptr && place.is_local()) local = &place;
        add(own, others, local,
            all_.label(own) + " archives to " + local_paths(node) + ", but " + all_.labels(others) +
                (others.size() == 1 ? " has " : " have ") + right + " as its incoming path",
            "Archive to " + right + ", or correct ARCH_INCOMING_PATH at the others.");
    }

    void add_unowned_path(const claim& one, size_t own) {
        add(one.node, {own}, one.place,
            "the incoming path of " + all_.label(own) + " is " + one.place->path + ", but " +
                all_.label(own) + " archives to " + local_paths(all_.nodes[own]),
            "Set ARCH_INCOMING_PATH to a directory of a LOCAL destination of " +
                all_.nodes[own].name + ", with the same case.");
    }

    void add_other_path(const claim& one, const std::vector<size_t>& others,
                        const std::string& right) {
        const archive_place* theirs = incoming_of(all_.nodes[others[0]], one.place->owner);
        bool tie = others.size() == 1;
        add(one.node, others, one.place,
            "the incoming path of " + one.place->owner + " is " + one.place->path + " at " +
                all_.label(one.node) + ", but " + all_.labels(others) + (tie ? " has " : " have ") +
                right +
                (theirs == nullptr ? ""
                                   : " (" + all_.nodes[others[0]].place_of(theirs->line) + ")"),
            "Every node needs the same incoming path for " + one.place->owner +
                ": the directory that it archives to.");
        // Nobody knows which of the two is right.
        if (tie && theirs != nullptr)
            all_.disagreements.back().about.push_back({others[0], theirs->section});
    }

    // ---- Nodes without a REMOTE destination that others have ----

    void find_missing(const std::string& owner) {
        std::optional<size_t> own = sharing_node(owner);
        std::vector<size_t> having;
        std::vector<size_t> lacking;
        for (size_t node : sharing_) {
            if (same_text(all_.nodes[node].name, owner)) continue;
            if (incoming_of(all_.nodes[node], owner) != nullptr)
                having.push_back(node);
            else if (!excused_.contains({node, upper_case(owner)}))
                lacking.push_back(node);
        }
        bool member = own && all_.nodes[*own].cluster_nodes > 1;
        if (having.empty() && lacking.size() > 1 && member) return add_unknown_owner(*own, lacking);
        bool blame_lacking = member || having.size() >= lacking.size();
        if (lacking.empty() || (having.empty() && !member)) return;
        if (!blame_lacking) return add_superfluous(owner, having, lacking);
        for (size_t node : lacking)
            add_missing(node, owner, having.empty() ? std::vector{*own} : having);
    }

    void add_missing(size_t node, const std::string& owner, const std::vector<size_t>& having) {
        add(node, having, nullptr,
            all_.label(node) + " has no REMOTE destination for " + owner +
                (sharing_node(owner)
                     ? ", which is a node of the cluster"
                     : ", as " + all_.labels(having) + (having.size() == 1 ? " has" : " have")),
            "Add one with ARCH_DEST = " + owner + " and its archive directory.");
        if (all_.nodes[node].endpoints == ARCH_E_EP_NO_REMOTE)
            all_.disagreements.back().found.code = ARCH_E_EP_NO_REMOTE;
    }

    void add_unknown_owner(size_t own, const std::vector<size_t>& lacking) {
        if (incoming_count(own) == 0) return;
        told_.insert(lacking.begin(), lacking.end());
        add(own, lacking, nullptr, "no other node has a REMOTE destination for " + all_.label(own),
            "Add one with ARCH_DEST = " + all_.nodes[own].name +
                " and its archive directory at every other node.");
    }

    void add_superfluous(const std::string& owner, const std::vector<size_t>& having,
                         const std::vector<size_t>& lacking) {
        for (size_t node : having) {
            const archive_place* place = incoming_of(all_.nodes[node], owner);
            if (!is_told({node, place}))
                add(node, lacking, place,
                    all_.label(node) + " has a REMOTE destination for " + owner + ", and " +
                        all_.labels(lacking) + " have none",
                    "Remove it, or add it at the others.");
        }
    }

    size_t incoming_count(size_t node) const {
        size_t count = 0;
        for (const archive_place& place : all_.nodes[node].places)
            if (!place.is_local()) ++count;
        return count;
    }

    void add_endpoints(size_t at) {
        const cluster_node& node = all_.nodes[at];
        add(at, {}, nullptr, node.name + ": " + node.endpoint_text,
            hint_for(node.endpoints, node.endpoint_text));
        all_.disagreements.back().found.code = node.endpoints;
    }

    cluster& all_;
    std::vector<size_t> sharing_;
    std::set<size_t> told_;                             // nodes of which something is told
    std::set<std::pair<size_t, std::string>> excused_;  // they have the owner under another name
};

}  // namespace

void compare_archives(cluster& all, const std::set<size_t>& apart) {
    archive_rules(all, apart).compare(apart);
}

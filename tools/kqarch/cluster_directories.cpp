// Directories in which the archives of more than one node would lie.
#include <map>

#include "cluster.h"
#include "text.h"

namespace {

struct user {
    size_t node;
    const archive_place* place;
};

using users_of_places = std::map<std::string, std::vector<user>>;

std::string what_is(const archive_place& place) {
    return place.is_local() ? "archives to" : "has as the incoming path of " + place.owner;
}

class directory_rules {
  public:
    explicit directory_rules(cluster& all) : all_(all) {
        for (const cluster_node& node : all.nodes)
            sharing_ = sharing_ || node.shares || (node.archiving && node.cluster_nodes > 1);
    }

    void compare() {
        users_of_places by_place;
        for (size_t node = 0; node < all_.nodes.size(); ++node)
            for (const archive_place& place : all_.nodes[node].places)
                if (!all_.tells_of(node, place.section))
                    by_place[place.real_path].push_back({node, &place});
        for (const auto& [path, users] : by_place)
            if (std::vector<user> distinct = distinct_users(users);
                distinct.size() > 1 && !in_one_node(users))
                add(distinct);
    }

  private:
    // What one node does with itself alone, start-up refuses.
    static bool in_one_node(const std::vector<user>& users) {
        return users.front().node == users.back().node;
    }

    // Where archives are shared, a directory may well be that of another: then it counts whose
    // archives lie there, and those who write them know best. Else it counts who uses it at all.
    std::vector<user> distinct_users(const std::vector<user>& users) const {
        std::map<std::string, user> distinct;
        bool local = false;
        for (const user& one : users)
            local = local || one.place->is_local();
        for (const user& one : users)
            if (!sharing_)
                distinct.emplace(std::to_string(one.node), one);
            else if (one.place->is_local() == local)
                distinct.emplace(upper_case(one.place->owner), one);
        std::vector<user> found;
        for (const user& one : users)
            for (const auto& [name, chosen] : distinct)
                if (chosen.place == one.place) found.push_back(one);
        return found;
    }

    std::string uses_of(const user& one, const std::string& path) const {
        const archive_place& place = *one.place;
        return all_.label(one.node) + " " + what_is(place) +
               (place.path == path ? "" : " under the name " + place.path) + " (" +
               all_.nodes[one.node].place_of(place.line) + ")";
    }

    void add(const std::vector<user>& users) {
        const archive_place& place = *users[0].place;
        const cluster_node& node = all_.nodes[users[0].node];
        disagreement made{.node = users[0].node, .others = {}};
        std::vector<std::string> uses;
        for (const user& one : users) {
            made.about.push_back({one.node, one.place->section});
            if (&one == &users[0]) continue;
            if (one.node != made.node) made.others.push_back(one.node);
            uses.push_back(uses_of(one, place.path));
        }
        made.found = {.file = node.place_of(0),
                      .line = place.line,
                      .section = place.section,
                      .key = place.is_local() ? "ARCH_DEST" : "ARCH_INCOMING_PATH",
                      .text = all_.label(made.node) + " " + what_is(place) + " " + place.path +
                              ", which " + join(uses, " and "),
                      .hint = sharing_
                                  ? "Give each node a directory of its own for its archives."
                                  : "Give each node directories of its own, or share them with "
                                    "ARCH_LOCAL_SHARE = 1 at every node."};
        all_.disagreements.push_back(std::move(made));
    }

    cluster& all_;
    bool sharing_ = false;
};

}  // namespace

void compare_directories(cluster& all) {
    directory_rules(all).compare();
}

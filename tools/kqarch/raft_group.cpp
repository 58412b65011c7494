#include "raft_group.h"

#include "text.h"

namespace {

using json = nlohmann::ordered_json;

std::string from_to(std::optional<size_t> before, size_t after) {
    if (!before) return std::to_string(after);
    if (before == after) return std::to_string(after) + " as before";
    return "from " + std::to_string(*before) + " to " + std::to_string(after);
}

json number_or_null(ulint value, ulint unset) {
    return value == unset ? json(nullptr) : json(value);
}

json as_document(const raft_member& member, const cluster_node& node) {
    auto shown = [&](const std::string& text) {
        return text.empty() ? json(nullptr) : json(node.file.passwords().hide(visible(text)));
    };
    return {{"name", shown(member.name)},
            {"self", member.section.empty()},
            {"role", member.learner ? "learner" : "voter"},
            {"id", number_or_null(member.id, ARCH_UNSET_SHORT)},
            {"address", shown(member.address)},
            {"port", number_or_null(member.port, 0)},
            {"section", shown(member.section)}};
}

}  // namespace

raft_group group_of(const cluster_node& node) {
    raft_group group;
    if (!node.self) return group;
    (node.self->learner ? group.learners : group.voters).insert(upper_case(node.name));
    for (const raft_member& member : node.members)
        (member.learner ? group.learners : group.voters).insert(upper_case(member.name));
    return group;
}

size_t quorum_of(size_t voters) {
    return voters / 2 + 1;
}

size_t tolerated_failures(size_t voters) {
    return voters == 0 ? 0 : voters - quorum_of(voters);
}

bool quorums_overlap(const raft_group& before, const raft_group& after) {
    if (before.voters.empty() || after.voters.empty()) return true;
    std::set<std::string> both = before.voters;
    both.insert(after.voters.begin(), after.voters.end());
    return quorum_of(before.voters.size()) + quorum_of(after.voters.size()) > both.size();
}

std::vector<std::string> group_consequences(const std::optional<raft_group>& before,
                                            const raft_group& after) {
    std::optional<size_t> old_count;
    std::optional<size_t> old_tolerated;
    std::optional<size_t> old_learners;
    if (before) {
        old_count = before->voters.size();
        old_tolerated = tolerated_failures(*old_count);
        old_learners = before->learners.size();
    }
    size_t count = after.voters.size();
    std::vector<std::string> told = {"Voters: " + from_to(old_count, count) +
                                     ", this node included where it votes."};
    if (count > 0)
        told.push_back(
            "A quorum is " + std::to_string(quorum_of(count)) + " of " + std::to_string(count) +
            "; failures tolerated: " + from_to(old_tolerated, tolerated_failures(count)) + ".");
    if (count > 0 && tolerated_failures(count) == 0)
        told.emplace_back("No failure is tolerated: when one voter fails, nothing is decided.");
    if (old_learners.value_or(0) != after.learners.size())
        told.push_back("Learners: " + from_to(old_learners, after.learners.size()) +
                       "; they receive the log and do not vote.");
    if (count > 0 && count % 2 == 0)
        told.push_back("An even number of voters tolerates no more failures than " +
                       std::to_string(count - 1) + " do: plan for one more or one fewer.");
    return told;
}

json members_document(const cluster_node& node) {
    json documents = json::array();
    if (!node.self) return documents;
    documents.push_back(as_document(*node.self, node));
    for (const raft_member& member : node.members)
        documents.push_back(as_document(member, node));
    return documents;
}

json as_document(const raft_group& group) {
    size_t count = group.voters.size();
    return {{"voters", count},
            {"learners", group.learners.size()},
            {"quorum", count == 0 ? 0 : quorum_of(count)},
            {"tolerated_failures", tolerated_failures(count)}};
}

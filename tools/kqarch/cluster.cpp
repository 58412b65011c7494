#include "cluster.h"

#include <algorithm>

#include "capture.h"
#include "text.h"

namespace {

void exchange_messages(cluster& all) {
    size_t count = all.nodes.size();
    all.codes.assign(count, std::vector<kqcode_t>(count, 0));
    for (size_t receiver = 0; receiver < count; ++receiver) {
        loaded_node loaded(all.nodes[receiver]);
        for (size_t sender = 0; sender < count; ++sender)
            if (sender != receiver)
                all.codes[receiver][sender] = check_message(all.nodes[sender].message);
    }
}

bool has(const std::vector<size_t>& nodes, size_t node) {
    return std::find(nodes.begin(), nodes.end(), node) != nodes.end();
}

bool is_told(const cluster& all, size_t one, size_t other) {
    return std::any_of(all.disagreements.begin(), all.disagreements.end(),
                       [=](const disagreement& found) {
                           return (found.node == one && has(found.others, other)) ||
                                  (found.node == other && has(found.others, one));
                       });
}

// A mistake of one node can make every other refuse its message, and it theirs.
bool explains(const disagreement& found, size_t receiver, size_t sender) {
    if (found.node == receiver || found.node == sender) return true;
    return has(found.others, receiver) && has(found.others, sender);
}

// A refused message that no rule explains must not go unsaid.
void explain_the_rest(cluster& all) {
    for (size_t receiver = 0; receiver < all.nodes.size(); ++receiver)
        for (size_t sender = 0; sender < all.nodes.size(); ++sender) {
            kqcode_t code = all.codes[receiver][sender];
            bool told = std::any_of(
                all.disagreements.begin(), all.disagreements.end(),
                [&](const disagreement& found) { return explains(found, receiver, sender); });
            if (code == 0 || told) continue;
            all.disagreements.push_back(
                {.node = receiver,
                 .others = {sender},
                 .found = {
                     .file = all.nodes[receiver].place_of(0),
                     .code = code,
                     .text = all.label(receiver) + " refuses the message of " + all.label(sender),
                     .hint = "Compare the LOCAL and REMOTE destinations of both, `kqarch "
                             "graph` draws them."}});
        }
}

// The servers report a code; the line that explains it has the same one.
void add_codes(cluster& all) {
    for (disagreement& one : all.disagreements)
        for (size_t other : one.others) {
            kqcode_t own = all.codes[one.node][other];
            if (one.found.code == 0) one.found.code = own != 0 ? own : all.codes[other][one.node];
        }
}

void hide_passwords(cluster& all) {
    password_list passwords;
    for (const cluster_node& node : all.nodes)
        passwords.learn(node.file.passwords());
    for (disagreement& one : all.disagreements) {
        one.found.text = passwords.hide(one.found.text);
        one.found.hint = passwords.hide(one.found.hint);
        one.found.section = passwords.hide(one.found.section);
    }
}

}  // namespace

std::string cluster::label(size_t node) const {
    const cluster_node& asked = nodes[node];
    auto same_name = [&](const cluster_node& one) { return same_text(one.name, asked.name); };
    bool unique = std::count_if(nodes.begin(), nodes.end(), same_name) == 1;
    return unique ? asked.name : asked.name + " (" + asked.directory + ")";
}

std::string cluster::labels(const std::vector<size_t>& some) const {
    std::vector<std::string> named;
    for (size_t node : some)
        named.push_back(label(node));
    if (named.size() > 3) named = {named[0], named[1], count_of(some.size() - 2, "other")};
    std::string last = named.back();
    named.pop_back();
    return named.empty() ? last : join(named, ", ") + " and " + last;
}

bool cluster::disagree(size_t one, size_t other) const {
    return different_groups.contains(std::minmax(one, other)) || is_told(*this, one, other);
}

bool cluster::tells_of(size_t node, const std::string& section) const {
    for (const disagreement& one : disagreements)
        for (const destination& about : one.about)
            if (about.node == node && same_text(about.section, section)) return true;
    return false;
}

std::optional<size_t> cluster::find(const std::string& name) const {
    for (size_t i = 0; i < nodes.size(); ++i)
        if (same_text(nodes[i].name, name)) return i;
    return std::nullopt;
}

cluster examine(const std::vector<std::string>& directories, exit_status& status, output& out) {
    cluster all;
    status = exit_good;
    for (const std::string& directory : directories) {
        node_reading read = read_node(directory, out);
        if (read.node)
            all.nodes.push_back(*std::move(read.node));
        else
            all.unread.push_back(std::move(read.unread));
        status = std::max(status, read.status);
    }
    exchange_messages(all);
    compare_archives(all, compare_settings(all));
    compare_directories(all);
    compare_raft_groups(all);
    explain_the_rest(all);
    add_codes(all);
    hide_passwords(all);
    return all;
}

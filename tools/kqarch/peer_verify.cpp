#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "cluster.h"
#include "peer_message.h"
#include "peer_parcel.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

struct wire_entry {
    std::string path;
    std::string owner;  // empty in a message without names
};

// Reads what the check has taken: nothing when it is malformed.
class entry_reader {
  public:
    entry_reader(const std::vector<byte>& message, bool names)
        : message_(message),
          names_(names),
          at_(std::min<size_t>(message_length_size, message.size())) {}

    std::optional<std::vector<wire_entry>> read() {
        std::vector<wire_entry> entries;
        if (!says_its_length(message_)) return std::nullopt;
        while (at_ < message_.size()) {
            wire_entry entry;
            if (!read_text(entry.path) || (names_ && !read_text(entry.owner))) return std::nullopt;
            entries.push_back(std::move(entry));
        }
        return entries;
    }

  private:
    bool read_text(std::string& text) {
        if (message_.size() - at_ < 2) return false;
        size_t length = message_[at_] | static_cast<size_t>(message_[at_ + 1]) << 8;
        at_ += 2;
        if (message_.size() - at_ < length) return false;
        text.assign(reinterpret_cast<const char*>(&message_[0]) + at_, length);
        at_ += length;
        return true;
    }

    const std::vector<byte>& message_;
    bool names_;
    size_t at_;
};

// All of standard input, but no more than one byte beyond what is allowed. Nothing, with errno, on
// an error.
std::optional<std::string> read_input() {
    std::string text;
    char block[65536];
    while (text.size() <= longest_parcel) {
        ssize_t count = read(STDIN_FILENO, block, sizeof block);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return std::nullopt;
        if (count == 0) return text;
        text.append(block, static_cast<size_t>(count));
    }
    return text;
}

class verifier {
  public:
    verifier(const cluster_node& node, parcel received, output& out)
        : node_(node), received_(std::move(received)), sender_(received_.sender), out_(out) {}

    exit_status run() {
        if (!received_.problem.empty()) {
            refuse(0, ARCH_E_PEER_CFG_MISMATCH, received_.problem, "");
            return end(ARCH_E_PEER_CFG_MISMATCH);
        }
        look_at_sender();
        kqcode_t code = 0;
        {
            loaded_node loaded(node_);
            code = check_message(sender_.message);
        }
        if (code != 0) explain(code);
        return end(code);
    }

  private:
    std::string sender() const { return sender_.name.empty() ? "the sender" : sender_.name; }

    // What the servers' check does not see.
    void look_at_sender() {
        bool same_name = received_.is_envelope && same_text(sender_.name, node_.name);
        if (same_name)
            refuse(0, 0, "the message comes from an instance of the same name, " + node_.name,
                   "If it is this node's own, send that of another; else give each node a name of "
                   "its own.");
        else if (sender_.message == node_.message && sender_.message.size() > message_length_size)
            warn("the message is the one that " + node_.name +
                     " sends itself: it may be its own, and then nothing is compared",
                 "Send that of another node: ssh node2 kqarch peer-export DIR | kqarch peer-verify "
                 "DIR");
        if (received_.is_envelope && sender_.cluster_nodes != node_.cluster_nodes)
            warn("HPC_NODE is " + std::to_string(node_.cluster_nodes) + " here and " +
                     std::to_string(sender_.cluster_nodes) + " at " + sender(),
                 "Give HPC_NODE in kq.ini the same number at every node.");
        if (received_.tells_members && !same_name)
            compare_groups();
        else if (node_.self && !same_name)
            out_.report({.level = severity::note,
                         .file = node_.place_of(0),
                         .text = "the message says nothing of the Raft group",
                         .hint = "Send it with --envelope: then the members are compared too."});
    }

    void compare_groups() {
        cluster both;
        both.nodes = {node_, sender_};
        compare_raft_groups(both);
        for (const disagreement& one : both.disagreements) {
            diagnostic found = one.found;
            found.text = node_.file.passwords().hide(found.text);
            out_.report(found);
            ++refusals_;
        }
    }

    void warn(const std::string& text, const std::string& hint) {
        out_.report({.level = severity::warning,
                     .file = node_.place_of(0),
                     .text = node_.file.passwords().hide(text),
                     .hint = hint});
    }

    void refuse(ulint line, kqcode_t code, const std::string& text, const std::string& hint) {
        out_.report({.file = node_.place_of(0),
                     .line = line,
                     .code = code,
                     .text = node_.file.passwords().hide(text),
                     .hint = hint});
        ++refusals_;
    }

    void explain(kqcode_t code) {
        size_t before = refusals_;
        ulint share_line = node_.file.key_line("ARCH_LOCAL_SHARE");
        std::optional<std::vector<wire_entry>> entries =
            entry_reader(sender_.message, node_.shares).read();
        if (received_.is_envelope && sender_.shares != node_.shares)
            refuse(
                share_line, code,
                std::string("the archives are ") + (node_.shares ? "" : "not ") +
                    "shared here (ARCH_LOCAL_SHARE), and " + (node_.shares ? "not " : "") + "at " +
                    sender(),
                "Set ARCH_LOCAL_SHARE = 1 at every node, or remove the line at each: any value of "
                "it shares, 0 too.");
        else if (!node_.shares && node_.cluster_nodes > 1)
            refuse(share_line, code,
                   "ARCH_LOCAL_SHARE is not 1, and HPC_NODE " +
                       std::to_string(node_.cluster_nodes) + ": no other node can agree",
                   "Set ARCH_LOCAL_SHARE = 1 at every node of the cluster.");
        else if (entries)
            explain_entries(code, *entries);
        if (refusals_ > before) return;
        refuse(0, code, "the message is malformed",
               "It may have been cut short, or made with another ARCH_LOCAL_SHARE: export it "
               "again, or use --envelope.");
    }

    void explain_entries(kqcode_t code, const std::vector<wire_entry>& entries) {
        for (const archive_place& place : node_.places) {
            bool remote = place.type == ARCH_TYPE_REMOTE;
            if (code == ARCH_E_PEER_PATH_CONFLICT && stands_in(entries, place, false))
                refuse(place.line, code, place.path + " is used by " + sender() + " too",
                       "Give each node directories of its own.");
            if (code == ARCH_E_PEER_CFG_MISMATCH && remote && !stands_in(entries, place, true))
                refuse(place.line, code,
                       "the incoming path of " + place.owner + " is " + place.path + " here; " +
                           sender() + " has " + paths_of(entries, place.owner) + " for it",
                       "Every node needs the same incoming path for " + place.owner +
                           ": the directory that it archives to.");
        }
    }

    static bool stands_in(const std::vector<wire_entry>& entries, const archive_place& place,
                          bool with_owner) {
        return std::any_of(entries.begin(), entries.end(), [&](const wire_entry& entry) {
            return entry.path == place.path && (!with_owner || same_text(entry.owner, place.owner));
        });
    }

    static std::string paths_of(const std::vector<wire_entry>& entries, const std::string& owner) {
        std::vector<std::string> paths;
        for (const wire_entry& entry : entries)
            if (same_text(entry.owner, owner)) paths.push_back(entry.path);
        return paths.empty() ? "nothing" : join(paths, ", ");
    }

    exit_status end(kqcode_t code) {
        bool agree = code == 0 && refusals_ == 0;
        out_.set("sender", sender_.name.empty() ? json(nullptr) : json(visible(sender_.name)));
        out_.set("code", code);
        out_.set("agree", agree);
        out_.print_heading(
            visible(node_.name + (agree ? " agrees with " : " does not agree with ") + sender()) +
            (code == 0 ? "" : ": " + code_text(code)));
        if (code != 0) return status_of(code);
        return agree ? exit_good : exit_refused;
    }

    const cluster_node& node_;
    parcel received_;
    const cluster_node& sender_;
    output& out_;
    size_t refusals_ = 0;
};

}  // namespace

exit_status run_peer_verify(const std::string& directory, output& out) {
    for (const char* field : {"instance", "sender", "code", "agree"})
        out.set(field, nullptr);
    const auto [status, node, unread] = read_node(directory, out);
    if (!node) return status;
    out.set("instance", visible(node->name));
    if (isatty(STDIN_FILENO) == 1)
        return out.fail(exit_usage, "standard input is a terminal", "",
                        "Pipe the message in: kqarch peer-export DIR | kqarch peer-verify DIR");
    std::optional<std::string> input = read_input();
    if (!input) return out.fail(exit_failed, std::strerror(errno), "standard input");
    parcel received = unpack(*input);
    if (received.nothing_sent)
        return out.fail(exit_failed, received.problem, "standard input",
                        "Nothing was compared. The sender's own messages tell why.");
    return verifier(*node, std::move(received), out).run();
}

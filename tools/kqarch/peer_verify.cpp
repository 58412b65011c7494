#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "cluster_node.h"
#include "peer_message.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

constexpr size_t length_size = 4;
constexpr size_t longest_input = size_t{1} << 20;  // a message of all destinations has some 6 KB

struct wire_entry {
    std::string path;
    std::string owner;  // empty in a message without names
};

// Whether a message is as long as its first bytes say.
bool says_its_length(const byte* bytes, size_t size) {
    if (size < length_size) return false;
    ulint body = 0;
    for (size_t i = length_size; i-- > 0;)
        body = body << 8 | bytes[i];
    return body == size - length_size;
}

// Reads what the check has taken: nothing when it is malformed.
class entry_reader {
  public:
    entry_reader(const std::vector<byte>& message, bool names)
        : message_(message), names_(names), at_(std::min(length_size, message.size())) {}

    std::optional<std::vector<wire_entry>> read() {
        std::vector<wire_entry> entries;
        if (!says_its_length(message_.data(), message_.size())) return std::nullopt;
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

// What came in: the message, and what an envelope says of its sender.
struct parcel {
    std::vector<byte> message = {};
    std::string sender = {};           // empty without an envelope
    std::optional<kqbool> share = {};  // of the sender; null is not configured
    std::string problem = {};          // why there is no message
};

bool is_wire_message(const std::string& bytes) {
    return bytes[0] != '{' ||
           says_its_length(reinterpret_cast<const byte*>(bytes.data()), bytes.size());
}

std::optional<std::vector<byte>> from_hexadecimal(const std::string& text) {
    static const std::string digits = "0123456789abcdef";
    std::vector<byte> bytes;
    if (text.size() % 2 != 0) return std::nullopt;
    for (size_t i = 0; i < text.size(); i += 2) {
        size_t high = digits.find(static_cast<char>(std::tolower(static_cast<byte>(text[i]))));
        size_t low = digits.find(static_cast<char>(std::tolower(static_cast<byte>(text[i + 1]))));
        if (high == digits.npos || low == digits.npos) return std::nullopt;
        bytes.push_back(static_cast<byte>(high << 4 | low));
    }
    return bytes;
}

parcel open_envelope(const std::string& text) {
    json document = json::parse(text, nullptr, false);
    if (!document.is_object()) return {.problem = "the envelope is no JSON document"};
    if (document.value("schema_version", json()) != 1)
        return {.problem = "the envelope's schema_version is not 1"};
    json message = document.value("message", json());
    json sender = document.value("instance", json());
    json share = document.value("arch_local_share", json());
    if (!message.is_string() || !sender.is_string())
        return {.problem = "the envelope has no instance or no message"};
    std::optional<std::vector<byte>> bytes = from_hexadecimal(message);
    if (!bytes) return {.problem = "the envelope's message is not hexadecimal"};
    if (sender.get<std::string>().size() > KQ_SYSNAME_MAX)
        return {.problem = "the envelope's instance has more than 128 characters"};
    bool is_flag = share.is_number_unsigned() && share <= ARCH_UNSET_FLAG;
    return {*std::move(bytes), sender, is_flag ? share.get<kqbool>() : kqbool{ARCH_UNSET_FLAG}};
}

parcel unpack(const std::string& bytes) {
    if (bytes.empty()) return {.problem = "standard input is empty"};
    if (bytes.size() > longest_input) return {.problem = "the message is longer than 1 MB"};
    if (!is_wire_message(bytes)) return open_envelope(bytes);
    return {.message = {bytes.begin(), bytes.end()}};
}

// All of standard input, but no more than one byte beyond what is allowed. Nothing, with errno, on
// an error.
std::optional<std::string> read_input() {
    std::string text;
    char block[65536];
    while (text.size() <= longest_input) {
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
        : node_(node), received_(std::move(received)), out_(out) {}

    exit_status run() {
        if (!received_.problem.empty()) {
            refuse(0, ARCH_E_PEER_CFG_MISMATCH, received_.problem, "");
            return end(ARCH_E_PEER_CFG_MISMATCH);
        }
        if (same_text(received_.sender, node_.name))
            out_.report({.level = severity::warning,
                         .file = node_.directory,
                         .text = "the message comes from an instance of the same name"});
        kqcode_t code = 0;
        {
            loaded_node loaded(node_);
            code = check_message(received_.message);
        }
        if (code != 0) explain(code);
        return end(code);
    }

  private:
    std::string sender() const {
        return received_.sender.empty() ? "the sender" : received_.sender;
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
        ulint share_line = node_.file.key_line("ARCH_LOCAL_SHARE");
        std::optional<std::vector<wire_entry>> entries =
            entry_reader(received_.message, node_.shares).read();
        if (received_.share && (*received_.share == 1) != node_.shares)
            refuse(share_line, code,
                   std::string("the archives are ") + (node_.shares ? "" : "not ") +
                       "shared here (ARCH_LOCAL_SHARE), and " + (node_.shares ? "not " : "") +
                       "at " + sender(),
                   "Give ARCH_LOCAL_SHARE the same value at every node.");
        else if (!node_.shares && node_.cluster_nodes > 1)
            refuse(share_line, code,
                   "ARCH_LOCAL_SHARE is not 1, and HPC_NODE " +
                       std::to_string(node_.cluster_nodes) + ": no other node can agree",
                   "Set ARCH_LOCAL_SHARE = 1 at every node of the cluster.");
        else if (entries)
            explain_entries(code, *entries);
        if (refusals_ > 0) return;
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
        out_.set("sender",
                 received_.sender.empty() ? json(nullptr) : json(visible(received_.sender)));
        out_.set("code", code);
        out_.set("agree", code == 0);
        out_.print_heading(visible(node_.name +
                                   (code == 0 ? " agrees with " : " does not agree with ") +
                                   sender()) +
                           (code == 0 ? "" : ": " + code_text(code)));
        return code == 0 ? exit_good : status_of(code);
    }

    const cluster_node& node_;
    parcel received_;
    output& out_;
    size_t refusals_ = 0;
};

}  // namespace

exit_status run_peer_verify(const std::string& directory, output& out) {
    for (const char* field : {"instance", "sender", "code", "agree"})
        out.set(field, nullptr);
    exit_status status = exit_good;
    std::optional<cluster_node> node = read_node(directory, status, out);
    if (!node) return status;
    out.set("instance", visible(node->name));
    if (isatty(STDIN_FILENO) == 1)
        return out.fail(exit_usage, "standard input is a terminal", "",
                        "Pipe the message in: kqarch peer-export DIR | kqarch peer-verify DIR");
    std::optional<std::string> input = read_input();
    if (!input) return out.fail(exit_failed, std::strerror(errno), "standard input");
    return verifier(*node, unpack(*input), out).run();
}

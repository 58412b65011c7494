#include "peer_parcel.h"

#include <cctype>

#include "text.h"

namespace {

using json = nlohmann::ordered_json;

constexpr size_t most_members = 64;

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

// A short text or null, else nothing.
std::optional<std::string> text_in(const json& object, const char* field) {
    json value = object.value(field, json());
    if (value.is_null()) return "";
    if (!value.is_string() || value.get<std::string>().size() > KQ_SYSNAME_MAX) return std::nullopt;
    return value.get<std::string>();
}

// A number of two bytes; `unset` for null.
std::optional<ulint> number_in(const json& object, const char* field, ulint unset) {
    json value = object.value(field, json());
    if (value.is_null()) return unset;
    if (!value.is_number_unsigned() || value > ARCH_UNSET_SHORT) return std::nullopt;
    return value.get<ulint>();
}

std::optional<raft_member> member_in(const json& object) {
    if (!object.is_object()) return std::nullopt;
    std::optional<std::string> name = text_in(object, "name");
    std::optional<std::string> address = text_in(object, "address");
    std::optional<std::string> section = text_in(object, "section");
    std::optional<ulint> id = number_in(object, "id", ARCH_UNSET_SHORT);
    std::optional<ulint> port = number_in(object, "port", 0);
    json role = object.value("role", json());
    bool self = object.value("self", json()) == true;
    if (!name || name->empty() || !address || !section || !id || !port) return std::nullopt;
    if (role != "learner" && role != "voter") return std::nullopt;
    return raft_member{*name,
                       *id,
                       *address,
                       *port,
                       role == "learner",
                       self ? "" : section->empty() ? *name : *section};
}

// Whether the members are told as they should be.
bool take_members(const json& members, cluster_node& sender) {
    if (!members.is_array() || members.size() > most_members) return false;
    for (const json& object : members) {
        std::optional<raft_member> member = member_in(object);
        if (!member || (member->section.empty() && sender.self)) return false;
        if (member->section.empty())
            sender.self = std::move(member);
        else
            sender.members.push_back(*std::move(member));
    }
    return members.empty() || sender.self;
}

parcel open_envelope(const std::string& text) {
    json document = json::parse(text, nullptr, false);
    if (!document.is_object()) return {.problem = "the envelope is no JSON document"};
    if (document.value("schema_version", json()) != 1)
        return {.problem = "the envelope's schema_version is not 1"};
    json message = document.value("message", json());
    json sender = document.value("instance", json());
    json share = document.value("arch_local_share", json());
    json members = document.value("members", json());
    if (message.is_null() && document.contains("exit_code"))
        return {.nothing_sent = true, .problem = "the sender sent nothing"};
    if (!message.is_string() || !sender.is_string())
        return {.problem = "the envelope has no instance or no message"};
    std::optional<std::vector<byte>> bytes = from_hexadecimal(message);
    if (!bytes) return {.problem = "the envelope's message is not hexadecimal"};
    parcel received{.is_envelope = true, .tells_members = !members.is_null()};
    if (sender.get<std::string>().size() > KQ_SYSNAME_MAX)
        return {.problem = "the envelope's instance has more than 128 characters"};
    received.sender.name = sender;
    received.sender.message = *std::move(bytes);
    received.sender.shares = share == 1;
    received.sender.cluster_nodes = number_in(document, "hpc_node", 0).value_or(0);
    if (received.tells_members && !take_members(members, received.sender))
        received.problem = "the envelope's members are not what peer-export writes";
    return received;
}

}  // namespace

parcel unpack(const std::string& bytes) {
    if (bytes.empty()) return {.nothing_sent = true, .problem = "the sender sent nothing"};
    if (bytes.size() > longest_parcel) return {.problem = "the message is longer than 1 MB"};
    parcel received;
    received.sender.message = {bytes.begin(), bytes.end()};
    if (bytes[0] == '{' && !says_its_length(received.sender.message)) return open_envelope(bytes);
    return received;
}

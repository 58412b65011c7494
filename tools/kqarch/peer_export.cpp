#include <unistd.h>

#include "cluster_node.h"
#include "peer_message.h"
#include "raft_group.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

std::string hexadecimal(const std::vector<byte>& bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (byte one : bytes)
        text += {digits[one >> 4], digits[one & 15]};
    return text;
}

json envelope_of(const cluster_node& node) {
    return {{"schema_version", 1},
            {"instance", visible(node.name)},
            {"arch_local_share", node.share == ARCH_UNSET_FLAG ? json(nullptr) : json(node.share)},
            {"hpc_node", node.cluster_nodes},
            {"members", members_document(node)},
            {"message", hexadecimal(node.message)}};
}

}  // namespace

exit_status run_peer_export(const std::string& directory, bool envelope, output& out) {
    for (const char* field : {"instance", "arch_local_share", "hpc_node", "members", "message"})
        out.set(field, nullptr);
    if (!envelope && out.as_text() && isatty(STDOUT_FILENO) == 1)
        return out.fail(exit_usage, "the message is binary, and standard output is a terminal", "",
                        "Redirect it into a file or a pipe, or write it as text with --envelope.");
    const auto [status, node, unread] = read_node(directory, out);
    if (!node) return status;
    json document = envelope_of(*node);
    for (const auto& [field, value] : document.items())
        if (field != "schema_version") out.set(field, value);
    if (envelope)
        out.print_data(document.dump(2, ' ', false, json::error_handler_t::replace) + "\n");
    else
        out.print_data({reinterpret_cast<const char*>(node->message.data()), node->message.size()});
    return exit_good;
}

#include <memory>

#include "arguments.h"
#include "peer_check.h"

namespace {

constexpr const char* peer_check_footer =
    "\nEach node's message is encoded as its server does and checked by every other node as its\n"
    "server does. A column FROM A tells what each node answers to the message of A; ENDPOINTS,\n"
    "whether every other endpoint of kqdcr.ini has a REMOTE destination. \"differs\" is what the\n"
    "messages do not show: directories shared by mistake, Raft members that nodes have\n"
    "differently. Nothing is changed.\n"
    "\nExamples:\n"
    "  kqarch peer-check node1 node2\n"
    "  kqarch peer-check --json node1 node2 node3 | jq .pairs\n";

void add_peer_check(command_line& commands) {
    auto directories = std::make_shared<std::vector<std::string>>();
    CLI::App& check = commands.add(
        "peer-check", "Say whether nodes of a cluster or Raft group agree", peer_check_footer,
        [directories](output& out) { return run_peer_check(*directories, out); });
    check.add_option("DIR", *directories, "Instance directories, at least two")
        ->required()
        ->expected(2, CLI::detail::expected_max_vector_size);
}

}  // namespace

void add_cluster_commands(command_line& commands) {
    add_peer_check(commands);
}

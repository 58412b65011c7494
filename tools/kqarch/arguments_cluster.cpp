#include <memory>

#include "arguments.h"
#include "graph.h"
#include "peer_check.h"
#include "peer_message.h"
#include "raft.h"
#include "text.h"

namespace {

constexpr const char* peer_check_footer =
    "\nEach node's message is encoded as its server does and checked by every other node as its\n"
    "server does. A column FROM A tells what each node answers to the message of A; ENDPOINTS,\n"
    "whether every other endpoint of kqdcr.ini has a REMOTE destination. \"differs\" is what the\n"
    "messages do not show: directories shared by mistake, Raft members that nodes have\n"
    "differently. A mistake is told once, at the node that most others contradict. Nothing is\n"
    "changed.\n"
    "\nExamples:\n"
    "  kqarch peer-check node1 node2\n"
    "  kqarch peer-check --json node1 node2 node3 | jq .pairs\n";

constexpr const char* peer_export_footer =
    "\nWrites the bytes that the server would send to its peers; never to a terminal. --envelope\n"
    "writes a JSON document instead, which also says who sent it, with which settings, and who is\n"
    "in its Raft group.\n"
    "\nExamples:\n"
    "  ssh node2 kqarch peer-export /data | kqarch peer-verify /data\n"
    "  kqarch peer-export --envelope /data >node1.json\n";

constexpr const char* peer_verify_footer =
    "\nReads what peer-export wrote, in either form, and checks it as this node's server does. "
    "The\n"
    "members of a Raft group are compared where an envelope tells them. When the sender has sent\n"
    "nothing, nothing is compared, and the exit status is 3.\n"
    "\nExamples:\n"
    "  ssh node2 kqarch peer-export /data | kqarch peer-verify /data\n"
    "  kqarch peer-verify /data <node1.json\n";

constexpr const char* raft_footer =
    "\nEach change shows the difference of kqarch.ini, what becomes of voters, quorum and "
    "failures\n"
    "tolerated, and whether the server would start with the result; takes a backup; and asks. It\n"
    "is refused without --force when a quorum of the old group and one of the new need have no\n"
    "voter in common (one voter more or fewer keeps one), or when RAFT_LEARNER would be lost,\n"
    "which is never written back.\n"
    "`kqarch raft DIR ACTION --help` shows what an action takes.\n"
    "\nExamples:\n"
    "  kqarch raft db status\n"
    "  kqarch raft db learner KQ4 --address 10.0.0.4 --port 5339 --id 4\n"
    "  kqarch raft db promote KQ4 --dry-run\n"
    "  kqarch raft db remove KQ2 --yes\n"
    "  kqarch raft db replace KQ1 KQ3 KQ4\n"
    "  kqarch raft db address KQ3 --address 10.0.0.33 --port 5338\n"
    "  kqarch raft db settings --vote 10\n";

constexpr const char* graph_footer =
    "\nDraws instances, the directories, standbys and subscriber that their archives go to, nodes\n"
    "that are not among the directories, and the Raft group. What peer-check finds is red, says\n"
    "DISAGREES, and is listed; so is a FAULT: a node that does not load, would not start or\n"
    "archives nothing. REMOTE destinations of several nodes that agree are a line in the box of\n"
    "their directory. SVG needs no other program; DOT and Mermaid are texts for programs that\n"
    "draw. There is no --json: `kqarch peer-check --json` tells the same. Passwords are shown as\n"
    "***. The exit status is 1 where something drawn is wrong.\n"
    "\nExamples:\n"
    "  kqarch graph db\n"
    "  kqarch graph --format svg node1 node2 >cluster.svg\n"
    "  kqarch graph --format dot node* | dot -Tpng >cluster.png\n";

void add_peer_check(command_line& commands) {
    auto directories = std::make_shared<std::vector<std::string>>();
    CLI::App& check = commands.add(
        "peer-check", "Say whether nodes of a cluster or Raft group agree", peer_check_footer,
        [directories](output& out) { return run_peer_check(*directories, out); });
    check.add_option("DIR", *directories, "Instance directories, at least two")
        ->required()
        ->expected(2, CLI::detail::expected_max_vector_size);
}

void add_peer_export(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    auto envelope = std::make_shared<bool>(false);
    CLI::App& made = commands.add(
        "peer-export", "Write the message that a node's server sends", peer_export_footer,
        [=](output& out) { return run_peer_export(*directory, *envelope, out); });
    made.add_option("DIR", *directory, "An instance directory")->required();
    made.add_flag("--envelope", *envelope, "A JSON document around the message");
}

void add_peer_verify(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    CLI::App& verify =
        commands.add("peer-verify", "Check a message of another node", peer_verify_footer,
                     [directory](output& out) { return run_peer_verify(*directory, out); });
    verify.add_option("DIR", *directory, "An instance directory")->required();
}

struct raft_arguments {
    change_options change = {};
    raft_request request = {};
    std::string action = {};
    bool json = false;  // shown in the --help of an action; the command line looks for it itself
};

using raft_given = std::shared_ptr<raft_arguments>;

// The directory stands in front of the action, whose own usage does not know of it.
class action_formatter : public CLI::Formatter {
  public:
    std::string make_usage(const CLI::App* action, std::string name) const override {
        size_t at = name.rfind(action->get_name());
        return CLI::Formatter::make_usage(action, name.insert(at, "DIR "));
    }
};

CLI::App& add_action(CLI::App& raft, const raft_given& given, raft_action action,
                     const std::string& name, const std::string& what) {
    CLI::App& command = *raft.add_subcommand(name, what);
    command.fallthrough();
    command.formatter(std::make_shared<action_formatter>());
    command.add_flag("--json", given->json, "Write one JSON document to standard output");
    command.callback([given, action, name] {
        given->request.action = action;
        given->action = name;
    });
    if (action == raft_action::status) return command;
    command.add_flag("--dry-run", given->change.dry_run,
                     "Show what would become of it, and stop there");
    command.add_flag("--yes", given->change.yes, "Do not ask");
    command.add_flag("--force", given->change.force,
                     "Even when it is not safe, or the server would not start with the result");
    add_backup_number(command, given->change.lsn, given->change.replace_backup);
    return command;
}

void add_name(CLI::App& command, const raft_given& given) {
    command.add_option("NAME", given->request.names, "The member's instance name")
        ->required()
        ->expected(1);
}

void add_names(CLI::App& command, const raft_given& given) {
    command.add_option("NAME", given->request.names, "Instance names")->required();
}

// Address, port, id and centre of a member or of this node.
void add_identity(CLI::App& command, const raft_given& given, bool required) {
    raft_request& request = given->request;
    command.add_option("--address", request.address, "Where it is reached")->required(required);
    command.add_option("--port", request.port)->check(CLI::Range(1, 65535))->required(required);
    command.add_option("--id", request.id)->check(CLI::Range(0, 65534))->required(required);
    command.add_option("--centre", request.centre)->check(CLI::Range(0, 65534));
}

void add_members(CLI::App& raft, const raft_given& given) {
    for (raft_action action : {raft_action::add, raft_action::learner}) {
        bool votes = action == raft_action::add;
        CLI::App& command =
            add_action(raft, given, action, votes ? "add" : "learner",
                       votes ? "Add a voter" : "Add a learner, which does not vote");
        add_name(command, given);
        add_identity(command, given, true);
    }
}

void add_settings(CLI::App& raft, const raft_given& given) {
    CLI::App& command = add_action(raft, given, raft_action::settings, "settings",
                                   "Change this node's Raft settings; the others stay");
    raft_request& request = given->request;
    add_identity(command, given, false);
    command.add_option("--heartbeat", request.heartbeat, "RAFT_HB_INTERVAL, in seconds");
    command.add_option("--vote", request.vote, "RAFT_VOTE_INTERVAL, in seconds");
    command.add_option("--link-heartbeat", request.link_heartbeat, "XMAL_HB_INTERVAL, in seconds");
}

void add_address(CLI::App& raft, const raft_given& given) {
    CLI::App& command = add_action(raft, given, raft_action::address, "address",
                                   "Change the address of a member or of this node");
    add_name(command, given);
    command.add_option("--address", given->request.address, "Where it is reached")->required();
    command.add_option("--port", given->request.port)->check(CLI::Range(1, 65535))->required();
}

std::optional<std::string> named_twice(const std::vector<std::string>& names) {
    for (size_t i = 0; i < names.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (names[i] == names[j]) return names[i];
    return std::nullopt;
}

exit_status run_raft(raft_arguments& given, output& out) {
    raft_request& request = given.request;
    out.set("action", given.action);
    if (request.action == raft_action::status) return run_raft_status(given.change.directory, out);
    // Start-up reads names in upper case.
    for (std::string& name : request.names)
        name = upper_case(name);
    if (std::optional<std::string> name = named_twice(request.names))
        return out.fail(exit_usage, *name + " is named twice", "",
                        "Name each member once; names ignore case.");
    return run_raft_change(given.change, request, out);
}

void add_raft(command_line& commands) {
    auto given = std::make_shared<raft_arguments>();
    CLI::App& raft =
        commands.add("raft", "Show and change the Raft group as a node has it", raft_footer,
                     [given](output& out) { return run_raft(*given, out); });
    raft.add_option("DIR", given->change.directory, "An instance directory")->required();
    raft.require_subcommand(1);
    add_action(raft, given, raft_action::status, "status", "Show members, roles and quorum");
    add_members(raft, given);
    add_names(add_action(raft, given, raft_action::remove, "remove", "Remove members"), given);
    add_names(add_action(raft, given, raft_action::promote, "promote",
                         "Make learners voters, this node too when it is named"),
              given);
    add_names(add_action(raft, given, raft_action::replace, "replace",
                         "Remove every voter that is not named; this node has to be"),
              given);
    add_address(raft, given);
    add_settings(raft, given);
    add_action(raft, given, raft_action::clear, "clear",
               "Remove every member and this node's Raft settings");
}

void add_graph(command_line& commands) {
    auto given = std::make_shared<graph_options>();
    CLI::App& made = commands.add("graph", "Draw where archives go", graph_footer,
                                  [given](output& out) { return run_graph(*given, out); });
    made.add_option("DIR", given->directories, "Instance directories")->required();
    made.add_option("--format", given->format, "How to draw")
        ->check(CLI::IsMember(graph_formats()))
        ->capture_default_str();
    // It is there to be refused with the reason.
    made.get_option("--json")->group("");
}

}  // namespace

void offer_cluster_commands(command_line& commands) {
    commands.offer("peer-check", add_peer_check);
    commands.offer("peer-export", add_peer_export);
    commands.offer("peer-verify", add_peer_verify);
    commands.offer("raft", add_raft);
    commands.offer("graph", add_graph);
}

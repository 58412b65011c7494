#include "init_plan.h"

#include <utility>

namespace {

using settings = std::vector<std::pair<std::string, std::string>>;

constexpr unsigned private_mode = 0600;  // a kqarch.ini may hold a password
constexpr unsigned shared_mode = 0640;
constexpr int first_port = 5236;
constexpr int first_link_port = 5336;

std::string lines_of(const settings& rows) {
    std::string text;
    for (const auto& [key, value] : rows)
        text += key + " = " + value + "\n";
    return text;
}

std::string section_text(const std::string& name, const settings& rows) {
    return "[" + name + "]\n" + lines_of(rows) + "\n";
}

std::string number(int value) {
    return std::to_string(value);
}

std::string instance_name(int node) {
    return "KQ" + number(node);
}

std::string main_file(int node, const settings& more) {
    settings rows = {{"INSTANCE_NAME", instance_name(node)},
                     {"PORT_NUM", number(first_port + node - 1)},
                     {"ARCH_FLAG", "1"}};
    rows.insert(rows.end(), more.begin(), more.end());
    return "# The main configuration of the instance.\n" + lines_of(rows);
}

std::string archive_header(const settings& globals) {
    std::string text = "#Velkor Database Archive Configuration file\n#this is comments\n\n";
    for (const auto& [key, value] : globals)
        text += key + " = " + value + "\n\n";
    return text;
}

settings directory_rows(const std::string& type, const std::string& key,
                        const std::string& directory) {
    settings rows = {{"ARCH_TYPE", type},
                     {key, directory + "/arch"},
                     {"ARCH_FILE_SIZE", "128"},
                     {"ARCH_SPACE_LIMIT", "8192"},
                     {"ARCH_FLUSH_BUF_SIZE", "0"}};
    return rows;
}

std::string local_section(const std::string& directory) {
    settings rows = directory_rows("LOCAL", "ARCH_DEST", directory);
    rows.emplace_back("ARCH_HANG_FLAG", "1");
    return section_text("ARCHIVE_LOCAL1", rows);
}

// The nodes share their archives: what another node archives to is its incoming path here.
std::string remote_section(int peer, const std::string& directory) {
    settings rows = directory_rows("REMOTE", "ARCH_INCOMING_PATH", directory);
    rows.emplace(rows.begin() + 1, "ARCH_DEST", instance_name(peer));
    return section_text("ARCH_REMOTE1", rows);
}

std::string raft_section(int peer) {
    return section_text("RAFT_" + instance_name(peer),
                        {{"ARCH_TYPE", "RAFT"},
                         {"ARCH_DEST", instance_name(peer)},
                         {"ARCH_DEST_IP", "127.0.0.1"},
                         {"ARCH_DEST_PORT", number(first_link_port + peer - 1)},
                         {"ARCH_DEST_ID", number(peer)}});
}

// The server writes an empty line behind the destination of a standby.
std::string realtime_section(int standby) {
    return "[ARCHIVE_REALTIME1]\n" +
           lines_of({{"ARCH_TYPE", "REALTIME"}, {"ARCH_DEST", instance_name(standby)}}) + "\n" +
           lines_of({{"WAIT_APPLY", "0"}, {"ARCH_FAILOVER", "0"}}) + "\n";
}

std::string async_section(int standby) {
    return section_text("ARCHIVE_ASYNC1", {{"ARCH_TYPE", "ASYNC"},
                                           {"ARCH_DEST", instance_name(standby)},
                                           {"ARCH_TIMER_NAME", "NIGHTLY"},
                                           {"ARCH_SEND_DELAY", "0"}});
}

std::string mal_file(int instances) {
    std::string text = "# The instances that talk to each other.\n";
    for (int node = 1; node <= instances; ++node)
        text += section_text("MAL_INST" + number(node),
                             {{"MAL_INST_NAME", instance_name(node)},
                              {"MAL_INST_HOST", "127.0.0.1"},
                              {"MAL_INST_PORT", number(first_port + node - 1)},
                              {"MAL_HOST", "127.0.0.1"},
                              {"MAL_PORT", number(first_link_port + node - 1)}});
    return text;
}

std::string cluster_file(int nodes) {
    std::string text = "# The nodes of the shared-storage cluster.\n";
    for (int node = 1; node <= nodes; ++node)
        text +=
            section_text(instance_name(node), {{"DCR_SEQNO", number(node - 1)},
                                               {"EP_SEQNO", number(node - 1)},
                                               {"STATE", "OK"},
                                               {"EP_HOST", "127.0.0.1"},
                                               {"EP_LSNR_PORT", number(first_port + node - 1)}});
    return text;
}

void add_instance(init_plan& plan, const std::string& directory, const std::string& main_text,
                  const std::string& archive_text) {
    std::string prefix = directory.empty() ? "" : directory + "/";
    plan.instances.push_back(directory);
    if (!directory.empty()) plan.directories.push_back(directory);
    plan.directories.push_back(prefix + "arch");
    plan.files.push_back({prefix + "kq.ini", main_text, shared_mode});
    plan.files.push_back({prefix + "kqarch.ini", archive_text, private_mode});
}

init_plan plan_single(const std::string& root) {
    init_plan plan;
    add_instance(plan, "", main_file(1, {}),
                 archive_header({{"ARCH_WAIT_APPLY", "0"}}) + local_section(root));
    return plan;
}

init_plan plan_standby(const std::string& root) {
    init_plan plan;
    add_instance(plan, "", main_file(1, {{"MAL_INI", "1"}, {"TIMER_INI", "1"}}),
                 archive_header({{"ARCH_WAIT_APPLY", "0"}}) + local_section(root) +
                     realtime_section(2) + async_section(3));
    plan.files.push_back({"kqmal.ini", mal_file(3), shared_mode});
    plan.files.push_back({"kqtimer.ini",
                          "# The timers, one section each, with the server's keys for when it "
                          "fires.\n[NIGHTLY]\n",
                          shared_mode});
    return plan;
}

init_plan plan_raft(const std::string& root) {
    constexpr int nodes = 3;
    init_plan plan;
    for (int node = 1; node <= nodes; ++node) {
        std::string directory = "node" + number(node);
        std::string text = archive_header({{"ARCH_WAIT_APPLY", "0"},
                                           {"XMAL_HB_INTERVAL", "10"},
                                           {"RAFT_HB_INTERVAL", "1"},
                                           {"RAFT_VOTE_INTERVAL", "5"},
                                           {"XMAL_IP", "127.0.0.1"},
                                           {"XMAL_PORT", number(first_link_port + node - 1)},
                                           {"RAFT_SELF_ID", number(node)}});
        text += local_section(root + "/" + directory);
        for (int peer = 1; peer <= nodes; ++peer)
            if (peer != node) text += raft_section(peer);
        add_instance(plan, directory, main_file(node, {}), text);
    }
    return plan;
}

init_plan plan_cluster(const std::string& root) {
    constexpr int nodes = 2;
    init_plan plan;
    for (int node = 1; node <= nodes; ++node) {
        std::string directory = "node" + number(node);
        int peer = nodes + 1 - node;
        settings switches = {{"HPC_NODE", number(nodes)}, {"MAL_INI", "1"}, {"DCR_INI", "1"}};
        add_instance(plan, directory, main_file(node, switches),
                     archive_header({{"ARCH_WAIT_APPLY", "0"}, {"ARCH_LOCAL_SHARE", "1"}}) +
                         local_section(root + "/" + directory) +
                         remote_section(peer, root + "/node" + number(peer)));
        plan.files.push_back({directory + "/kqmal.ini", mal_file(nodes), shared_mode});
        plan.files.push_back({directory + "/kqdcr.ini", cluster_file(nodes), shared_mode});
    }
    return plan;
}

}  // namespace

std::vector<std::string> init_kinds() {
    return {"single", "standby", "raft", "cluster"};
}

init_plan plan_init(const std::string& kind, const std::string& root) {
    if (kind == "standby") return plan_standby(root);
    if (kind == "raft") return plan_raft(root);
    if (kind == "cluster") return plan_cluster(root);
    return plan_single(root);
}

#include "peer_check.h"

#include "catalogue.h"
#include "cluster.h"
#include "table.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

std::string cell(const cluster& all, size_t receiver, size_t sender) {
    kqcode_t code = all.codes[receiver][sender];
    if (receiver == sender) return "-";
    // With many nodes the names would make the table too wide.
    if (code != 0) return all.nodes.size() > 3 ? std::to_string(code) : code_text(code);
    return all.disagree(receiver, sender) ? "differs" : "agrees";
}

std::string endpoint_cell(const cluster_node& node) {
    if (node.endpoints != 0) return code_text(node.endpoints);
    return node.cluster_nodes > 1 && node.archiving ? "complete" : "-";
}

void print_pairs(const cluster& all, output& out) {
    std::vector<table_row> rows = {{"NODE", "DIRECTORY"}};
    for (size_t node = 0; node < all.nodes.size(); ++node)
        rows[0].push_back("FROM " + visible(all.label(node)));
    rows[0].push_back("ENDPOINTS");
    for (size_t receiver = 0; receiver < all.nodes.size(); ++receiver) {
        const cluster_node& node = all.nodes[receiver];
        table_row row = {visible(node.name), visible(node.directory)};
        for (size_t sender = 0; sender < all.nodes.size(); ++sender)
            row.push_back(cell(all, receiver, sender));
        row.push_back(endpoint_cell(node));
        rows.push_back(std::move(row));
    }
    print_table(rows, out);
}

json documents_of_nodes(const cluster& all) {
    json documents = json::array();
    for (const cluster_node& node : all.nodes)
        documents.push_back(
            {{"directory", visible(node.directory)},
             {"name", visible(node.name)},
             {"archiving", node.archiving},
             {"arch_local_share", node.share == ARCH_UNSET_FLAG ? json(nullptr) : json(node.share)},
             {"hpc_node", node.cluster_nodes},
             {"endpoints_code", node.endpoints}});
    return documents;
}

json documents_of_pairs(const cluster& all) {
    json documents = json::array();
    for (size_t receiver = 0; receiver < all.nodes.size(); ++receiver)
        for (size_t sender = 0; sender < all.nodes.size(); ++sender)
            if (receiver != sender)
                documents.push_back({{"receiver", visible(all.nodes[receiver].directory)},
                                     {"sender", visible(all.nodes[sender].directory)},
                                     {"code", all.codes[receiver][sender]},
                                     {"agree", all.codes[receiver][sender] == 0 &&
                                                   !all.disagree(receiver, sender)}});
    return documents;
}

}  // namespace

exit_status run_peer_check(const std::vector<std::string>& directories, output& out) {
    exit_status status = exit_good;
    cluster all = examine(directories, status, out);
    for (const disagreement& one : all.disagreements)
        out.report(one.found);
    print_pairs(all, out);
    size_t count = all.disagreements.size();
    out.set("nodes", documents_of_nodes(all));
    out.set("pairs", documents_of_pairs(all));
    out.set("disagreements", count);
    out.set("agree", count == 0 && status == exit_good);
    std::string verdict = count == 0 ? "nothing disagrees" : count_of(count, "disagreement");
    size_t missing = directories.size() - all.nodes.size();
    if (missing > 0) verdict += "; " + std::to_string(missing) + " could not be compared";
    out.print_heading(count_of(all.nodes.size(), "node") + ": " + verdict);
    if (status == exit_failed) return status;
    return count > 0 ? exit_refused : status;
}

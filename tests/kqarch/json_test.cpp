// What --json promises: one document, every field present, errors in it and nothing beside it.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <vector>

#include "program.h"

namespace {

using json = nlohmann::json;
using names = std::vector<std::string>;

names keys_of(const json& object) {
    names keys;
    for (const auto& [key, value] : object.items())
        keys.push_back(key);
    return keys;
}

struct row {
    const char* command;
    int status;
    names fields;  // beside the four of every document
};

const names check_fields = {"directories", "summary"};
const names show_fields = {"code", "destinations", "globals", "instance", "refused_lines", "valid"};
const names fmt_fields = {"diff", "differs", "lost", "text"};
const names init_fields = {"files", "instances", "kind", "next"};
const names explain_fields = {"codes", "findings", "keys", "topic", "types"};
const names peer_check_fields = {"agree", "disagreements", "nodes", "pairs"};
const names export_fields = {"arch_local_share", "hpc_node", "instance", "members", "message"};
const names verify_fields = {"agree", "code", "instance", "sender"};
const names status_fields = {"action", "group", "instance", "learner", "members"};
const names change_fields = {"backup", "consequences", "diff",       "lost",
                             "made",   "start_code",   "would_start"};

const names raft_fields = {"action",       "backup", "consequences", "diff",       "group_after",
                           "group_before", "lost",   "made",         "start_code", "would_start"};

const row rows[] = {
    {"init --json new", 0, init_fields},
    {"init --json good", 1, init_fields},
    {"check --json good bad missing", 3, check_fields},
    {"check --json bad", 1, check_fields},
    {"--json check good", 0, check_fields},
    {"show --json good", 0, show_fields},
    {"show --json bad", 0, show_fields},
    {"show --json missing", 3, show_fields},
    {"fmt --json good", 0, fmt_fields},
    {"fmt --json bad", 1, fmt_fields},
    {"fmt --json --check good", 0, fmt_fields},
    {"fmt --json missing", 3, fmt_fields},
    {"explain --json ARCH_DEST", 0, explain_fields},
    {"explain --json", 0, explain_fields},
    {"explain --json nothing_such", 1, explain_fields},
    {"peer-check --json good other", 0, peer_check_fields},
    {"peer-check --json good bad", 1, peer_check_fields},
    {"peer-export --json good", 0, export_fields},
    {"peer-export --json missing", 3, export_fields},
    {"peer-verify --json good </dev/null", 3, verify_fields},
    {"peer-verify --json bad", 1, verify_fields},
    {"raft --json good status", 0, status_fields},
    {"raft bad status --json", 1, status_fields},
    {"raft group/node1 --json remove KQ2 --dry-run", 0, raft_fields},
    {"raft group/node1 --json remove KQ2 KQ3", 1, raft_fields},
    {"raft missing clear --json", 3, raft_fields},
    {"add --json good 'TYPE=LOCAL, DEST={dir}/two' --dry-run", 0, change_fields},
    {"add --json good TYPE=LOCAL", 1, change_fields},
    {"drop --json bad KQ2 --yes", 1, change_fields},
    {"modify --json missing KQ2 FILE_SIZE=64", 3, change_fields},
    {"modify --json good KQ2", 2, {}},
    {"backup --json good", 0, {"backup"}},
    {"backups --json good", 0, {"archiving", "backups"}},
    {"restore --json good 1", 0, change_fields},
    {"restore --json good 9", 3, change_fields},
    {"backup-delete --json good 1", 0, {"deleted"}},
    {"backup-delete --json good 1", 3, {"deleted"}},
    {"journal --json good", 0, {"changes"}},
    {"journal --json missing", 3, {"changes"}},
    {"graph --json good", 2, {}},
    {"chek --json", 2, {}},
    {"check --json --nonsense good", 2, {}},
};

class kqarch_json : public testing::Test {
  protected:
    kqarch_json() {
        place.run("kqarch init good && cp -r good bad && kqarch init other");
        place.run("sed -i s/KQ1/KQ2/ other/kq.ini && kqarch init --kind raft group");
        place.write("bad/kqarch.ini", "[A\xff]\nARCH_TYPE = LOCAL\nARCH_FILE_SIZE = 1\nX = 2\n");
    }

    json run(const std::string& arguments) {
        run_result result = place.run("kqarch " + arguments);
        EXPECT_EQ(result.errors, "") << arguments;
        return json::parse(result.output);
    }

    workplace place;
};

TEST_F(kqarch_json, is_one_document_with_every_field) {
    for (const row& one : rows) {
        json document = run(one.command);
        names expected = {"command", "diagnostics", "exit_code", "schema_version"};
        expected.insert(expected.end(), one.fields.begin(), one.fields.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(keys_of(document), expected) << one.command;
        EXPECT_EQ(document["exit_code"], one.status) << one.command;
        EXPECT_EQ(document["schema_version"], 1);
        bool good = one.status == 0 && std::string(one.command).find("bad") == std::string::npos;
        EXPECT_EQ(document["diagnostics"].empty(), good) << one.command;
    }
}

}  // namespace

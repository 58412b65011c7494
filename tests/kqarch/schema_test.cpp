// What `kqarch check` writes has the form that its schema promises, whatever it finds; and the
// schema promises each member that it writes: a document without it is refused.
#include <gtest/gtest.h>

#include <fstream>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include "program.h"

namespace {

using json = nlohmann::json;
using place = json::json_pointer;

class form {
  public:
    explicit form(const char* file) {
        std::ifstream stream(file);
        json text = json::parse(stream);
        valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(text),
                                                schema_);
    }

    bool takes(const json& document) const {
        valijson::adapters::NlohmannJsonAdapter adapted(document);
        return valijson::Validator().validate(schema_, adapted, nullptr);
    }

  private:
    valijson::Schema schema_;
};

void collect(const json& part, const place& at, std::vector<place>& all) {
    for (const auto& [key, value] : part.items()) {
        all.push_back(at / key);
        if (value.is_structured()) collect(value, at / key, all);
    }
}

void expect_form(const form& promised, const json& document, const std::string& command) {
    EXPECT_TRUE(promised.takes(document)) << command << "\n" << document.dump(2);
    std::vector<place> places;
    collect(document, place(), places);
    for (const place& at : places) {
        json changed = document;
        changed[at] = json::array({7});
        EXPECT_FALSE(promised.takes(changed)) << command << ": no list belongs at " << at;
        json& parent = changed[at.parent_pointer()];
        if (!parent.is_object() || at.back() == "region") continue;
        parent.erase(at.back());
        EXPECT_FALSE(promised.takes(changed)) << command << ": nothing at " << at;
    }
}

// Each result names a rule of the list.
void expect_rules(const json& document, const std::string& command) {
    const json& run = document["runs"][0];
    for (const json& result : run["results"])
        EXPECT_EQ(run["tool"]["driver"]["rules"].at(result["ruleIndex"].get<size_t>())["id"],
                  result["ruleId"])
            << command;
}

constexpr const char* commands[] = {
    "good",
    "warned --strict",
    "bad",
    "missing",
    "broken",
    "hostile",
    "--quiet good warned bad missing hostile broken other",
    "--probe {dir}/warned",
    "--nonsense good",
    "good ''",
    "",
};

TEST(schema, holds_what_check_writes) {
    workplace place;
    place.run("kqarch init good; for d in warned bad broken other hostile; do cp -r good $d; done");
    place.run(
        "rm other/kqarch.ini; echo x >>broken/kq.ini; head -c 200 /dev/zero >hostile/kqarch.ini");
    place.write("bad/kqarch.ini",
                "[A\xff\x1b]\nARCH_TYPE = LOCAL\nARCH_FILE_SIZE = 1\nX|\x7f = 2\n");
    place.write("warned/kqarch.ini",
                "[A]\nARCH_TYPE = LOCAL\nARCH_DEST = a b\nARCH_FILE_SIZE = 64\n");
    form promised(KQARCH_SCHEMA);
    form essential(SARIF_SCHEMA);
    for (const std::string command : commands) {
        run_result as_json = place.run("kqarch check -o json " + command);
        expect_form(promised, json::parse(as_json.output), command);
        run_result as_sarif = place.run("kqarch check -o sarif " + command);
        json log = json::parse(as_sarif.output);
        expect_form(essential, log, command);
        expect_rules(log, command);
        EXPECT_EQ(as_json.errors + as_sarif.errors, "") << command;
        EXPECT_EQ(as_sarif.status, log["runs"][0]["invocations"][0]["exitCode"]) << command;
    }
}

}  // namespace

// What kqarch explain answers.
#include "explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ini.h>

#include "catalogue.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

struct answer {
    int status;
    std::string data;
    std::string diagnostics;
};

answer explained(const std::string& topic, bool as_json = false) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    output out("explain", as_json ? json_form : text_form);
    const int status = out.finish(run_explain(out, topic));
    return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

TEST(explain, reads_bounds_when_it_is_asked) {
    const other_ini_alterable_t before = *ini_get_other_ini_info_by_index(ini_index_xmal_port);
    EXPECT_THAT(explained("XMAL_PORT").data, HasSubstr("1 to 65535"));
    ini_set_other_ini_range(ini_index_xmal_port, 1000, 2000);
    EXPECT_THAT(explained("XMAL_PORT").data, HasSubstr("1000 to 2000"));
    const json key = json::parse(explained("XMAL_PORT", true).data)["keys"][0];
    EXPECT_EQ(key["minimum"], 1000);
    EXPECT_EQ(key["maximum"], 2000);
    ini_set_other_ini_range(ini_index_xmal_port, before.min_value, before.max_value);
}

TEST(explain, lists_everything_without_a_topic) {
    const answer got = explained("");
    EXPECT_EQ(got.status, exit_good);
    for (const type_entry& type : all_types())
        EXPECT_THAT(got.data, HasSubstr(type.name));
    for (const key_entry& key : all_keys())
        EXPECT_THAT(got.data, HasSubstr(key.name));
    for (const code_entry& entry : all_codes())
        EXPECT_THAT(got.data, HasSubstr(std::to_string(entry.code)));
}

TEST(explain, as_json_has_the_same_fields_for_every_topic) {
    const struct {
        const char* topic;
        size_t codes, keys, types;
        int status;
    } cases[] = {
        {"-808", 1, 0, 0, exit_good},
        {"ARCH_DEST", 0, 1, 0, exit_good},
        {"LOCAL", 0, 0, 1, exit_good},
        {"nothing such", 0, 0, 0, exit_refused},
        {"", all_codes().size(), all_keys().size(), all_types().size(), exit_good},
    };
    for (const auto& [topic, codes, keys, types, status] : cases) {
        const answer got = explained(topic, true);
        const json document = json::parse(got.data);
        EXPECT_EQ(got.status, status) << topic;
        EXPECT_EQ(got.diagnostics, "") << topic;
        EXPECT_EQ(document["schema_version"], 1) << topic;
        EXPECT_EQ(document["exit_code"], status) << topic;
        EXPECT_EQ(document["diagnostics"].empty(), status == exit_good) << topic;
        EXPECT_EQ(document["topic"].is_null(), *topic == '\0') << topic;
        EXPECT_EQ(document["codes"].size(), codes) << topic;
        EXPECT_EQ(document["keys"].size(), keys) << topic;
        EXPECT_EQ(document["types"].size(), types) << topic;
    }
}

TEST(explain, no_name_means_two_things) {
    for (const code_entry& entry : all_codes()) {
        const std::string_view bare = std::string_view(entry.name).substr(7);
        EXPECT_EQ(find_key(bare), nullptr) << bare;
        EXPECT_EQ(find_type(bare), nullptr) << bare;
    }
    for (const key_entry& key : all_keys())
        EXPECT_EQ(find_type(key.name), nullptr) << key.name;
}

}  // namespace

// What kqarch explain answers.
#include "explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ini.h>

#include "catalogue.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

std::string explained(const std::string& topic, bool as_json = false) {
    testing::internal::CaptureStdout();
    output out("explain", as_json ? json_form : text_form);
    EXPECT_EQ(out.finish(run_explain(out, topic)), exit_good);
    return testing::internal::GetCapturedStdout();
}

TEST(explain, reads_bounds_when_it_is_asked) {
    const other_ini_alterable_t before = *ini_get_other_ini_info_by_index(ini_index_xmal_port);
    EXPECT_THAT(explained("XMAL_PORT"), HasSubstr("1 to 65535"));
    ini_set_other_ini_range(ini_index_xmal_port, 1000, 2000);
    EXPECT_THAT(explained("XMAL_PORT"), HasSubstr("1000 to 2000"));
    const json key = json::parse(explained("XMAL_PORT", true))["keys"][0];
    EXPECT_EQ(key["minimum"], 1000);
    EXPECT_EQ(key["maximum"], 2000);
    ini_set_other_ini_range(ini_index_xmal_port, before.min_value, before.max_value);
}

TEST(explain, lists_everything_without_a_topic) {
    std::string got = explained("");
    for (const type_entry& type : all_types())
        EXPECT_THAT(got, HasSubstr(type.name));
    for (const key_entry& key : all_keys())
        EXPECT_THAT(got, HasSubstr(key.name));
    for (const code_entry& entry : all_codes())
        EXPECT_THAT(got, HasSubstr(std::to_string(entry.code)));
    json document = json::parse(explained("", true));
    EXPECT_EQ(document["codes"].size(), all_codes().size());
    EXPECT_EQ(document["keys"].size(), all_keys().size());
    EXPECT_EQ(document["types"].size(), all_types().size());
    EXPECT_EQ(document["findings"].size(), all_doubts().size());
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

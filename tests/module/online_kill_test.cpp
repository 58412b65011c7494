// A process that is killed between any two system calls of a change: what it leaves on disk.
#include <gtest/gtest.h>

#include <string>

#include "support/killed.h"
#include "support/online.h"

namespace {

using namespace test_support;

const char* const beginning =
    "[L1]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n[L2]\nARCH_TYPE = LOCAL\nARCH_DEST = arch2\n";

// A backup and then a change, as a careful caller does.
int back_up_and_add() {
    arch_cfg_t* added = nullptr;
    return arch_file_gen_bak(1) | arch_cfg_add_local("arch3", 0, 64, 1, 0, &added);
}

int back_up_and_drop() {
    return arch_file_gen_bak(1) | arch_cfg_drop("arch1");
}

struct kill_case {
    const char* name;
    int (*change)();
    bool has_older_backup;
};

class killed_change : public testing::TestWithParam<kill_case> {
  protected:
    void reset() {
        std::filesystem::remove("kqarch_bak_1.log");
        if (GetParam().has_older_backup) write_file("kqarch_bak_1.log", "older");
        std::filesystem::remove_all("arch3");
        write_file("kqarch.ini", old_text);
    }

    std::string without_change() { return GetParam().has_older_backup ? "older" : "none"; }
    std::string backup_text() {
        bool exists = std::filesystem::exists("kqarch_bak_1.log");
        return exists ? read_file("kqarch_bak_1.log") : "none";
    }

    online_instance instance;
    std::string old_text;
};

TEST_P(killed_change, leaves_the_backup_whole_and_the_file_old_short_or_new) {
    ASSERT_EQ(start_from(beginning), 0);
    old_text = registry_text();
    reset();
    int how = kill_at_stop(-1, GetParam().change);
    if (how == may_not_trace) GTEST_SKIP() << "this process may not trace another";
    ASSERT_EQ(how, 0);
    std::string new_text = read_file("kqarch.ini");

    int stops = 0, olds = 0, shorts = 0, news = 0;
    for (how = killed; how == killed; stops++) {
        ASSERT_LT(stops, 2000);
        SCOPED_TRACE("killed at stop " + std::to_string(stops));
        reset();
        how = kill_at_stop(stops, GetParam().change);
        std::string text = read_file("kqarch.ini");
        bool is_old = text == old_text, is_new = text == new_text;
        EXPECT_TRUE(is_old || new_text.rfind(text, 0) == 0) << text;
        olds += is_old;
        news += is_new;
        shorts += !is_old && !is_new;
        std::string backup = backup_text();
        EXPECT_TRUE(backup == old_text || (is_old && backup == without_change())) << backup;
        if (backup != old_text) continue;
        EXPECT_EQ(arch_cfg_sys_write_by_rec(backup.c_str(), 1), 0);
        EXPECT_EQ(read_file("kqarch.ini"), old_text);
    }
    EXPECT_EQ(how, 0);
    EXPECT_GT(stops, 20) << "the process was not killed in the middle";
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
    EXPECT_GT(shorts, 0) << "no kill came while the file was empty";
}

std::string name_of(const testing::TestParamInfo<kill_case>& info) {
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(in, killed_change,
                         testing::Values(kill_case{"add", back_up_and_add, false},
                                         kill_case{"drop", back_up_and_drop, true}),
                         name_of);

}  // namespace

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

class killed_change : public testing::Test {
  protected:
    void reset() {
        std::filesystem::remove("kqarch_bak_1.log");
        if (older_backup != nullptr) write_file("kqarch_bak_1.log", older_backup);
        std::filesystem::remove_all("arch3");
        write_file("kqarch.ini", old_text);
    }

    // What is on disk after a kill, wherever it came.
    void judge(const std::string& text, const std::string& new_text) {
        EXPECT_TRUE(text == old_text || new_text.rfind(text, 0) == 0) << text;
        olds += text == old_text;
        news += text == new_text;
        shorts += text != old_text && text != new_text;
        bool exists = std::filesystem::exists("kqarch_bak_1.log");
        std::string backup = exists ? read_file("kqarch_bak_1.log") : "";
        bool is_before = backup == (older_backup != nullptr ? older_backup : "");
        EXPECT_TRUE(backup == old_text || (text == old_text && is_before)) << backup;
        if (backup != old_text) return;
        EXPECT_EQ(arch_cfg_sys_write_by_rec(backup.c_str(), 1), 0);
        EXPECT_EQ(read_file("kqarch.ini"), old_text);
    }

    void kill_everywhere(int (*change)()) {
        ASSERT_EQ(start_from(beginning), 0);
        old_text = registry_text();
        reset();
        int how = kill_at_stop(-1, change);
        if (how == may_not_trace) GTEST_SKIP() << "this process may not trace another";
        ASSERT_EQ(how, 0);
        std::string new_text = read_file("kqarch.ini");
        int stops = 0;
        for (how = killed; how == killed; stops++) {
            ASSERT_LT(stops, 2000);
            SCOPED_TRACE("killed at stop " + std::to_string(stops));
            reset();
            how = kill_at_stop(stops, change);
            judge(read_file("kqarch.ini"), new_text);
        }
        EXPECT_EQ(how, 0);
        EXPECT_GT(stops, 20) << "the process was not killed in the middle";
        EXPECT_GT(olds, 0);
        EXPECT_GT(news, 0);
        EXPECT_GT(shorts, 0) << "no kill came while the file was empty";
    }

    online_instance instance;
    const char* older_backup = nullptr;
    std::string old_text;
    int olds = 0, shorts = 0, news = 0;
};

TEST_F(killed_change, adds_or_leaves_backup_and_file_whole) {
    kill_everywhere(back_up_and_add);
}

TEST_F(killed_change, drops_or_leaves_an_older_backup_and_the_file_whole) {
    older_backup = "older";
    kill_everywhere(back_up_and_drop);
}

}  // namespace

// kqarch killed between any two system calls that change something: what it leaves on disk, and
// that `kqarch restore` brings the old bytes back.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cstdlib>
#include <filesystem>

#include "change_support.h"
#include "support/killed.h"

namespace {

using namespace test_support;

constexpr const char* backup = "kqarch_bak_1.log";

const std::set<long> changing_calls = {SYS_openat, SYS_write,    SYS_fsync,    SYS_fchmod,
                                       SYS_linkat, SYS_renameat, SYS_unlinkat, SYS_flock,
                                       SYS_close,  SYS_ftruncate};

TEST(killed_change, is_undone_by_a_restore) {
    changed_instance instance;
    // What killed processes leave of their scratch directories goes with the instance.
    std::string scratch = instance.beside("scratch");
    std::filesystem::create_directory(scratch);
    setenv("TMPDIR", scratch.c_str(), 1);
    auto change = [&] { return instance.add(instance.local_clause()); };
    int how = kill_at_stop(-1, change, changing_calls);
    if (how == may_not_trace) GTEST_SKIP() << "this process may not trace another";
    ASSERT_EQ(how, exit_good);
    std::string changed = instance.config();

    int olds = 0, shorts = 0, news = 0;
    how = killed;
    for (int stop = 0; how == killed; ++stop) {
        ASSERT_LT(stop, 20000);
        SCOPED_TRACE("killed at stop " + std::to_string(stop));
        instance.reset();
        how = kill_at_stop(stop, change, changing_calls);
        std::string text = instance.config();
        EXPECT_TRUE(changed.starts_with(text) || text == instance.original()) << text;
        EXPECT_TRUE(!instance.has(backup) || instance.read(backup) == instance.original());
        olds += text == instance.original();
        news += text == changed;
        shorts += text != instance.original() && text != changed;
        if (text == instance.original()) continue;
        EXPECT_EQ(instance.restore(1), exit_good);
        EXPECT_EQ(instance.config(), instance.original());
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(how, exit_good);
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
    EXPECT_GT(shorts, 0) << "no kill came while the file was empty";
}

}  // namespace

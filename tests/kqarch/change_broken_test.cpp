// A change whose calls fail, one after the other, or that is killed between any two system calls
// that change something: what it leaves on disk, and that `kqarch restore` brings the old bytes back.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cstdlib>
#include <filesystem>

#include "change_support.h"
#include "kq_fault.h"
#include "support/killed.h"

namespace {

using namespace test_support;

class broken_change : public testing::Test {
  protected:
    exit_status change() const { return instance.add(instance.local_clause()); }

    // The old file is there, or a backup that brings it back.
    void expect_a_way_back() {
        constexpr const char* backup = "kqarch_bak_1.log";
        std::string text = instance.config();
        EXPECT_TRUE(!instance.has(backup) || instance.read(backup) == instance.original());
        bool is_old = text == instance.original(), is_new = text == changed;
        olds += is_old;
        news += is_new;
        shorts += !is_old && !is_new;
        if (is_old) return;
        EXPECT_TRUE(changed.starts_with(text)) << text;
        EXPECT_EQ(instance.restore(1), exit_good);
        EXPECT_EQ(instance.config(), instance.original());
    }

    changed_instance instance;
    std::string changed;
    int olds = 0, shorts = 0, news = 0;
};

struct fault_case {
    const char* what;
    bool for_good;
    bool stays_short;  // else the old bytes are written back
};

class failing_change : public broken_change, public testing::WithParamInterface<fault_case> {};

TEST_P(failing_change, leaves_a_way_back) {
    const auto& [what, for_good, stays_short] = GetParam();
    ASSERT_EQ(change(), exit_good);
    changed = instance.config();
    bool reached = true;
    int failures = 0;
    for (ulint nth = 1; reached; ++nth) {
        SCOPED_TRACE(std::string(what) + " " + std::to_string(nth));
        instance.reset();
        kq_fault_arm(what, nth, for_good);
        exit_status status = change();
        reached = kq_fault_hits() > 0;
        kq_fault_disarm();
        EXPECT_TRUE(status == exit_good ? instance.config() == changed : reached);
        failures += status == exit_good ? 0 : 1;
        expect_a_way_back();
        ASSERT_LT(nth, 2000U);
    }
    EXPECT_GT(failures, 0) << what;
    EXPECT_EQ(shorts > 0, stays_short) << what;
}

INSTANTIATE_TEST_SUITE_P(, failing_change,
                         testing::ValuesIn<fault_case>({{"file_open", false, false},
                                                        {"file_open", true, false},
                                                        {"file_write", false, false},
                                                        {"file_write", true, true},
                                                        {"file_sync", true, false},
                                                        {"file_close", false, false},
                                                        {"file_copy", false, false},
                                                        {"file_create", false, false},
                                                        {"os_malloc", false, false},
                                                        {"any", true, true}}));

const std::set<long> changing_calls = {SYS_openat, SYS_write,    SYS_fsync,    SYS_fchmod,
                                       SYS_linkat, SYS_renameat, SYS_unlinkat, SYS_flock,
                                       SYS_close,  SYS_ftruncate};

TEST_F(broken_change, is_undone_by_a_restore_when_it_was_killed) {
    // What killed processes leave of their scratch directories goes with the instance.
    std::string scratch = instance.beside("scratch");
    std::filesystem::create_directory(scratch);
    setenv("TMPDIR", scratch.c_str(), 1);
    int how = kill_at_stop(
        -1, [this] { return change(); }, changing_calls);
    if (how == may_not_trace) GTEST_SKIP() << "this process may not trace another";
    ASSERT_EQ(how, exit_good);
    changed = instance.config();
    how = killed;
    for (int stop = 0; how == killed; ++stop) {
        ASSERT_LT(stop, 20000);
        SCOPED_TRACE("killed at stop " + std::to_string(stop));
        instance.reset();
        how = kill_at_stop(
            stop, [this] { return change(); }, changing_calls);
        expect_a_way_back();
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(how, exit_good);
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
    EXPECT_GT(shorts, 0) << "no kill came while the file was empty";
}

}  // namespace

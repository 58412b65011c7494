// A change while calls fail, one after the other: what is on disk afterwards.
#include <gtest/gtest.h>

#include "change_support.h"
#include "kq_fault.h"

namespace {

constexpr const char* backup = "kqarch_bak_1.log";

struct fault_case {
    const char* what;
    bool for_good;
};

class change_faults : public testing::TestWithParam<fault_case> {
  protected:
    // Makes the n-th call of the kind fail during the change; how many failed.
    ulint change_with_fault(ulint nth) {
        kq_fault_arm(GetParam().what, nth, GetParam().for_good);
        status = instance.add(instance.local_clause());
        ulint hits = kq_fault_hits();
        kq_fault_disarm();
        return hits;
    }

    void expect_a_way_back() {
        std::string text = instance.config();
        bool is_old = text == instance.original();
        bool is_new = text == changed;
        EXPECT_TRUE(is_new || status != exit_good) << text;
        EXPECT_TRUE(!instance.has(backup) || instance.read(backup) == instance.original());
        if (is_old) return;
        ASSERT_TRUE(instance.has(backup));
        short_files += is_new ? 0 : 1;
        EXPECT_EQ(instance.restore(1), exit_good);
        EXPECT_EQ(instance.config(), instance.original());
    }

    changed_instance instance;
    std::string changed;
    exit_status status = exit_good;
    int short_files = 0;
};

TEST_P(change_faults, leave_a_way_back) {
    ASSERT_EQ(instance.add(instance.local_clause()), exit_good);
    changed = instance.config();
    int failures = 0;
    for (ulint nth = 1;; ++nth) {
        SCOPED_TRACE(std::string(GetParam().what) + " " + std::to_string(nth));
        instance.reset();
        bool reached = change_with_fault(nth) > 0;
        failures += status == exit_good ? 0 : 1;
        expect_a_way_back();
        if (!reached) break;
        ASSERT_LT(nth, 2000U);
    }
    EXPECT_EQ(status, exit_good);
    EXPECT_EQ(failures > 0, std::string(GetParam().what) != "file_read");
    // Else the old bytes are written back.
    std::string what = GetParam().what;
    bool stays_short = GetParam().for_good && (what == "file_write" || what == "any");
    EXPECT_EQ(short_files > 0, stays_short);
}

std::string name_of(const testing::TestParamInfo<fault_case>& info) {
    return std::string(info.param.what) + (info.param.for_good ? "_for_good" : "_once");
}

INSTANTIATE_TEST_SUITE_P(
    , change_faults,
    testing::Values(fault_case{"file_open", false}, fault_case{"file_open", true},
                    fault_case{"file_write", false}, fault_case{"file_write", true},
                    fault_case{"file_sync", true}, fault_case{"file_close", false},
                    fault_case{"file_copy", false}, fault_case{"file_create", false},
                    fault_case{"os_malloc", false}, fault_case{"any", true}),
    name_of);

}  // namespace

// Start-up with each call of the operating system failing in turn.
#include <gtest/gtest.h>
#include <kq_fault.h>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

const char* const good_file =
    "ARCH_WAIT_APPLY = 0\n[L1]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n"
    "[L2]\nARCH_TYPE = LOCAL\nARCH_DEST = arch2\n";

std::string registry_text() {
    static schar text[ARCH_CFG_TEXT_SIZE];
    registry_lock lock;
    return arch_cfg_sys_write_to_rec(text) == 0 ? text : "";
}

// What start-up finds: no directory, and kqarch.ini or none.
kqcode_t start_anew(bool with_file) {
    for (const char* left : {"kqarch.ini", "arch1", "arch2"})
        std::filesystem::remove_all(left);
    if (with_file) write_file("kqarch.ini", good_file);
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init(nullptr, 1, 1);
}

struct fault_case {
    const char* what;
    bool with_file;
    bool fires;  // whether start-up makes such a call at all
};

class startup_faults : public testing::TestWithParam<fault_case> {
  protected:
    instance_directory instance;
};

// Whether the directories are as a start-up leaves them: without a probe file.
bool no_probe_stays() {
    for (const char* directory : {"arch1", "arch2"})
        if (std::filesystem::exists(directory) && !std::filesystem::is_empty(directory))
            return false;
    return true;
}

// The n-th call fails, then the one after it, until none was left to fail.
TEST_P(startup_faults, leave_a_registry_that_starts_again) {
    ASSERT_EQ(instance.open(), 0);
    const fault_case& fault = GetParam();
    ASSERT_EQ(start_anew(fault.with_file), 0);
    std::string good = registry_text();
    descriptor_capture quiet(2);
    ulint nth = 0, hits = 1;
    while (hits > 0 && ++nth < 100) {
        kq_fault_arm(fault.what, nth, 0);
        kqcode_t code = start_anew(fault.with_file);
        hits = kq_fault_hits();
        kq_fault_disarm();
        EXPECT_EQ(list_fault(arch_cfg_sys), "") << nth;
        if (code == 0) {
            EXPECT_EQ(registry_text(), good) << nth;
        } else {
            EXPECT_LT(code, 0) << nth;
            EXPECT_GT(hits, 0u) << "it failed without a fault at " << nth;
            EXPECT_EQ(arch_cfg_sys.arch_lst.count, 0u) << nth;
        }
        bool deletes = std::string(fault.what) != "any";
        EXPECT_TRUE(no_probe_stays() || !deletes) << "a probe file stays at " << nth;
        EXPECT_EQ(start_anew(fault.with_file), 0) << nth;
    }
    EXPECT_LT(nth, 100u);
    EXPECT_EQ(nth > 1, fault.fires);
}

std::string name_of(const testing::TestParamInfo<fault_case>& info) {
    return std::string(info.param.what) + (info.param.with_file ? "_with_file" : "_without_file");
}

INSTANTIATE_TEST_SUITE_P(
    each, startup_faults,
    testing::Values(fault_case{"os_malloc", true, true}, fault_case{"file_open", true, true},
                    fault_case{"file_read", true, true}, fault_case{"file_write", true, true},
                    fault_case{"file_create", true, true}, fault_case{"file_create", false, true},
                    fault_case{"dir_create", true, true}, fault_case{"dir_create", false, false},
                    fault_case{"any", true, true}, fault_case{"any", false, true}),
    name_of);

}  // namespace

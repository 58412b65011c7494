// A LOCAL destination needs room for one archive file of its size in megabytes.
#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

kqcode_t validate_with_size(std::uintmax_t megabytes) {
    arch_cfg_t arch;
    arch_init(&arch, "L");
    arch.type = ARCH_TYPE_LOCAL;
    arch_cfg_set_dest(&arch, "arch");
    arch.file_size = static_cast<ulint>(megabytes);
    descriptor_capture quiet(2);
    arch_cfg_hold lock;
    return arch_cfg_validate(&arch, 1, 1);
}

// The sizes are far from what is free, which may change meanwhile, and out of the key's range,
// which is looked at later.
TEST(space, is_counted_in_megabytes) {
    instance_directory instance;
    ASSERT_EQ(instance.open(), 0);
    std::uintmax_t free_megabytes = std::filesystem::space(".").available >> 20;
    if (free_megabytes < 4096) GTEST_SKIP() << "the disk is nearly full";
    EXPECT_EQ(validate_with_size(free_megabytes * 2 / 3), ARCH_E_INVALID_FILE_SIZE);
    EXPECT_EQ(validate_with_size(free_megabytes * 3 / 2), ARCH_E_OUT_OF_SPACE);
}

}  // namespace

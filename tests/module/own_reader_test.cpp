// A reader of kqarch.ini that does not stay with the section it handed over last.
#include <gtest/gtest.h>
#include <kq_instance.h>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

arch_cfg_t *first, *second;

arch_cfg_t* section(const char* name, const char* type) {
    arch_cfg_t* made = nullptr;
    std::string text = type;
    EXPECT_EQ(arch_cfg_create(&arch_cfg_sys, name, &made), 0);
    EXPECT_EQ(arch_cfg_add_value(&arch_cfg_sys, made, "ARCH_TYPE", text.data()), 0);
    return made;
}

kqcode_t set_destination(arch_cfg_t* arch, std::string text) {
    return arch_cfg_add_value(&arch_cfg_sys, arch, "ARCH_DEST", text.data());
}

// What a section has is in use for every other one, whichever was handed over last.
TEST(own_reader, goes_back_to_an_earlier_section) {
    instance_directory instance;
    ASSERT_EQ(instance.open(), 0);
    descriptor_capture quiet(2);
    kq_ini_read_arch_by(
        [](void*) {
            first = section("A", "REALTIME");
            EXPECT_EQ(set_destination(first, "INST1"), 0);
            second = section("B", "REALTIME");
            schar own[] = "INST1";
            EXPECT_EQ(arch_cfg_inst_dests_validate(&arch_cfg_sys, first, own), 0);
            EXPECT_EQ(set_destination(second, "inst1"), ARCH_E_DEST_EXISTS);
            EXPECT_EQ(set_destination(first, "INST2"), 0);
            EXPECT_EQ(set_destination(second, "inst2"), ARCH_E_DEST_EXISTS);
            return set_destination(second, "INST1");
        },
        nullptr);
    EXPECT_EQ(arch_cfg_sys_init_with_check(nullptr, 1, 0, 0), 0);
    kq_ini_read_arch_by(nullptr, nullptr);
    EXPECT_STREQ(first->dest, "INST2");
    EXPECT_STREQ(second->dest, "INST1");
    arch_cfg_sys_destroy();
}

}  // namespace

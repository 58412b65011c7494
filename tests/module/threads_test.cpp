// The registry lock between threads.
#include <elog.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <thread>
#include <vector>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

class threads : public testing::Test {
  protected:
    instance_directory instance;
};

void enter_and_end() KQ_NO_THREAD_ANALYSIS {
    arch_cfg_sys_enter();
}
void enter_twice() KQ_NO_THREAD_ANALYSIS {
    arch_cfg_sys_enter();
    arch_cfg_sys_enter();
}
void create_under_the_lock(void* cfg_sys) {
    registry_lock lock;
    std::string value = "7";
    arch_cfg_t* arch = nullptr;
    EXPECT_EQ(arch_cfg_create(cfg_sys, "A", &arch), 0);
    EXPECT_EQ(arch_cfg_add_value(cfg_sys, arch, "XMAL_PORT", value.data()), 0);
}

void exit_unheld() KQ_NO_THREAD_ANALYSIS {
    arch_cfg_sys_exit();
}
void release_unheld() KQ_NO_THREAD_ANALYSIS {
    arch_cfg_sys_release();
}

TEST_F(threads, one_that_ends_with_the_lock_does_not_stop_the_others) {
    output_capture capture(instance.error_log());
    for (int round = 0; round < 2; round++) {
        std::thread(enter_and_end).join();
        std::thread([] { registry_lock lock; }).join();
        EXPECT_EQ(arch_cfg_sys_get(), &arch_cfg_sys);
        EXPECT_EQ(arch_cfg_sys.mutex.owner, ~0u);
        arch_cfg_sys_release();
    }
    std::string line = "log 2: os_mutex2_enter return EOWNERDEAD\n";
    EXPECT_EQ(capture.lines(), line + line);
}

TEST_F(threads, the_registry_is_used_as_the_ended_one_left_it) {
    std::thread([]() KQ_NO_THREAD_ANALYSIS {
        arch_cfg_create(nullptr, "A", nullptr);
        arch_cfg_sys_enter();
        arch_cfg_sys.xmal_port = 7;
    }).join();
    EXPECT_EQ(arch_cfg_create(nullptr, "a", nullptr), ARCH_E_DUPLICATE_NAME);
    registry_lock lock;
    EXPECT_EQ(arch_cfg_sys.xmal_port, 7);
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
}

TEST_F(threads, a_registry_that_is_given_is_not_locked) {
    create_under_the_lock(&arch_cfg_sys);
    EXPECT_EQ(arch_cfg_sys.arch_lst.count, 1u);
    EXPECT_EQ(arch_cfg_sys.xmal_port, 7);
}

using threads_death = threads;

TEST_F(threads_death, misuse_of_the_lock_halts) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    // A process that halts cleans nothing up: its directory goes where this one's is removed.
    setenv("TMPDIR", std::filesystem::current_path().c_str(), 1);
    EXPECT_DEATH(enter_twice(), "os_mutex_enter failure, code = 35");
    EXPECT_DEATH(create_under_the_lock(nullptr), "os_mutex_enter failure, code = 35");
    EXPECT_DEATH(exit_unheld(), "os_mutex_exit failure, code = 1");
    EXPECT_DEATH(release_unheld(), "os_mutex_exit failure, code = 1");
    arch_cfg_sys_destroy();
    EXPECT_DEATH(enter_and_end(), "os_mutex_enter failure, code = 22");
    unsetenv("TMPDIR");
}

// Every function that may be called while others change the registry.
void read_everything() {
    byte mirror = 0;
    usint striping = 0, count = 0;
    sysname_t destinations[16];
    arch_cfg_get_wait_apply();
    arch_cfg_sys_get_raft_hb_interval();
    arch_cfg_get_asm_mirror_striping(&mirror, &striping);
    arch_cfg_get_raft_cnt();
    arch_cfg_check_self_is_learner();
    arch_cfg_has_local_or_sync();
    arch_cfg_find_by_dest("/none/A2", 0);
    arch_cfg_find_by_dest_low("a2");
    arch_cfg_find_subscribe();
    arch_cfg_get_arch_arr_by_type(ARCH_TYPE_LOCAL, &count, destinations);
    EXPECT_LE(count, 2);
    registry_lock lock;
    EXPECT_LE(arch_cfg_get_local_cnt(), 2u);
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
}

void change_everything(const std::string& name) {
    static const char* const settings[][2] = {
        {"ARCH_WAIT_APPLY", "1"},    {"RAFT_HB_INTERVAL", "5"}, {"ARCH_ASM_MIRROR", "2"},
        {"ARCH_ASM_STRIPING", "64"}, {"RAFT_LEARNER", "1"},     {"RAFT_VOTE_INTERVAL", "9"}};
    for (const auto& [key, value] : settings) {
        std::string text = value;
        EXPECT_EQ(arch_cfg_add_value(nullptr, nullptr, key, text.data()), 0);
    }
    arch_cfg_t* arch = nullptr;
    std::string type = "LOCAL", raft = "RAFT", dest = name;
    ASSERT_EQ(arch_cfg_create(nullptr, name.c_str(), &arch), 0);
    EXPECT_EQ(arch_cfg_add_value(nullptr, arch, "ARCH_TYPE", raft.data()), 0);
    EXPECT_EQ(arch_cfg_add_value(nullptr, arch, "ARCH_TYPE", type.data()), 0);
    EXPECT_EQ(arch_cfg_add_value(nullptr, arch, "ARCH_DEST", dest.data()), 0);
    arch_cfg_destroy_for_drs(arch);
}

TEST_F(threads, reading_while_others_change) {
    std::atomic<int> changers = 2;
    std::vector<std::thread> all;
    for (int i = 1; i <= 2; i++) {
        all.emplace_back([i, &changers] {
            for (int round = 0; round < 200; round++)
                change_everything("A" + std::to_string(i));
            changers--;
        });
    }
    for (int i = 0; i < 3; i++) {
        all.emplace_back([&changers] {
            do
                read_everything();
            while (changers > 0);
        });
    }
    for (std::thread& each : all)
        each.join();
    EXPECT_EQ(arch_cfg_sys.arch_lst.count, 0u);
    EXPECT_EQ(arch_cfg_get_raft_cnt(), 400);
    EXPECT_EQ(arch_cfg_check_self_is_learner(), 1u);
}

}  // namespace

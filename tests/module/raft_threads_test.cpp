// Membership changes, the guard of configuration changes, peers' messages and look-ups at once.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

class raft_threads : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(instance.open("INSTANCE_NAME = ME\nDPC_MODE = BP\n"), 0);
        arch_cfg_t* local = nullptr;
        ASSERT_EQ(arch_cfg_create(nullptr, "L", &local), 0);
        local->type = ARCH_TYPE_LOCAL;
        arch_cfg_set_dest(local, "+DATA/arch");
    }
    instance_directory instance;
};

void change_members(int self) {
    thread_local std::vector<schar> rec(ARCH_CFG_TEXT_SIZE);
    std::string name = "N" + std::to_string(self);
    auto id = static_cast<usint>(self);
    sysname_t list[2] = {"ME", ""};
    name.copy(list[1], KQ_SYSNAME_MAX);
    usint promoted = 0, promoted_id = 0;
    arch_cfg_t* added = nullptr;
    arch_cfg_add_learner_or_raft(name.c_str(), "h", id, id, 0, ARCH_TYPE_LEARNER, &added,
                                 rec.data());
    arch_cfg_change_learner_to_raft(2, list, rec.data(), &promoted, &promoted_id);
    arch_cfg_set_raft_cnt();
    {
        registry_lock lock;
        arch_cfg_update_raft_info(name.c_str(), "h2", id);
    }
    arch_cfg_delete_learner(name.c_str(), id, rec.data());
    if (self % 2)
        arch_cfg_delete_raft(name.c_str());
    else
        arch_cfg_change_to_new(1, list, rec.data());
    arch_cfg_sys_update_raft_info(5, 10, 5, "me", 1, 100, 0);
    arch_cfg_sys_set_raft_vote_interval(20);
    arch_cfg_sys_delete_raft_info();
    arch_cfg_sys_destroy_one_ep(9);
}

// No two exclude one another and go on all the same: who has the guard alone is alone.
std::atomic<int> exclusive_holders{0}, node_holders{0}, refusals{0};

void hold_guard(int self) {
    bool exclusive = self % 2;
    byte holder = exclusive ? byte{255} : static_cast<byte>(self);
    if (arch_set_cfg_changing(holder) != 0) {
        refusals++;
        return;
    }
    (exclusive ? exclusive_holders : node_holders)++;
    EXPECT_TRUE(exclusive_holders <= 1 && (exclusive_holders == 0 || node_holders == 0));
    (exclusive ? exclusive_holders : node_holders)--;
    arch_reset_cfg_changing(holder);
}

void look_up(int) {
    usint index = 0;
    std::vector<arch_collect_t> entries(32);
    arch_cfg_collect_inst_name(&index, entries.data());
    EXPECT_LE(index, 8);
    EXPECT_LE(arch_cfg_get_raft_cnt(), 8);
    EXPECT_LE(arch_cfg_check_self_is_learner(), 1u);
    arch_cfg_check_raft_dest_validate("N1", ARCH_TYPE_RAFT);
    registry_lock lock;
    std::vector<byte> message(arch_cfg_info_len_calc(1));
    EXPECT_EQ(arch_cfg_info_encode(message.data(), 0, 0, 1), message.size());
    kqenv_t env = mem_env_create(0);
    EXPECT_EQ(
        arch_cfg_info_decode_and_check(env, &message[4], static_cast<ulint>(message.size() - 4), 1),
        0);
    EXPECT_EQ(mem_env_destroy(env), 0u);
    arch_cfg_find_dest_id_by_name("N1");
    arch_cfg_find_remote_by_inst_name("N1");
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
}

void end_group(int) {
    EXPECT_EQ(arch_delete_raft_info(), 0);
}

// Each of the tasks again and again in a thread of its own, for two seconds.
void at_once(const std::vector<std::function<void(int)>>& tasks) {
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < tasks.size(); i++)
        threads.emplace_back([&tasks, end, i] {
            while (std::chrono::steady_clock::now() < end)
                tasks[i](static_cast<int>(i));
        });
    for (std::thread& each : threads)
        each.join();
}

TEST_F(raft_threads, change_and_look_up_at_once) {
    output_capture capture(instance.error_log());
    at_once({change_members, change_members, look_up, end_group});
    EXPECT_EQ(arch_cfg_sys.arch_lst.start->type, ARCH_TYPE_LOCAL);
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
}

TEST_F(raft_threads, the_guard_excludes) {
    exclusive_holders = node_holders = refusals = 0;
    at_once({hold_guard, hold_guard, hold_guard, hold_guard});
    registry_lock lock;
    EXPECT_GT(refusals, 0);
}

}  // namespace

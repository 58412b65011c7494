// Membership changes, the guard of configuration changes, peers' messages and look-ups at once; and
// that no call keeps the lock, whatever it returns.
#include <gtest/gtest.h>
#include <kq_fault.h>

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

// A call that fails, with its code; the lock must be free afterwards.
struct failing_call {
    const char* name;
    kqcode_t code;
    std::function<kqcode_t()> call;
};

void expect_lock_free(const char* after) {
    bool is_free = false;
    std::thread([&is_free]() KQ_NO_THREAD_ANALYSIS {
        is_free = pthread_mutex_trylock(&arch_cfg_sys.mutex.the_mutex) == 0;
        if (is_free) pthread_mutex_unlock(&arch_cfg_sys.mutex.the_mutex);
    }).join();
    EXPECT_TRUE(is_free) << after;
    if (!is_free) abort();
}

TEST_F(raft_threads, no_failure_keeps_the_lock) {
    static schar rec[ARCH_CFG_TEXT_SIZE];
    static arch_cfg_t* added;
    static sysname_t nobody[1] = {"NOBODY"};
    auto add = [](const char* dest, usint id, usint type) {
        return arch_cfg_add_learner_or_raft(dest, "h", 1, id, 0, type, &added, rec);
    };
    const failing_call calls[] = {
        {"type", ARCH_E_INVALID_TYPE, [&] { return add("N", 1, 1); }},
        {"long", ARCH_E_TOO_LONG, [&] { return add(std::string(121, 'n').c_str(), 1, 7); }},
        {"empty", ARCH_E_INVALID_VALUE, [&] { return add("", 1, 7); }},
        {"self", ARCH_E_DEST_IS_SELF, [&] { return add("ME", 1, 7); }},
        {"identifier", ARCH_E_INVALID_VALUE, [&] { return add("N", 65535, 7); }},
        {"memory", ARCH_E_OUT_OF_MEMORY,
         [&] {
             kq_fault_arm("os_malloc", 1, 0);
             kqcode_t code = add("N", 1, 7);
             kq_fault_disarm();
             return code;
         }},
        {"no such member", ARCH_E_DEST_NOT_FOUND,
         [] { return arch_cfg_check_raft_dest_validate("N", 0); }},
        {"promotion", ARCH_E_DEST_NOT_FOUND,
         [] { return arch_cfg_change_learner_to_raft(1, nobody, rec, nullptr, nullptr); }},
        {"no voters", ARCH_E_INVALID_VALUE, [] { return arch_cfg_change_to_new(0, nobody, rec); }},
        {"guard", ARCH_E_CFG_CHANGING,
         [] { return arch_set_cfg_changing(255), arch_set_cfg_changing(0); }},
        {"file", ARCH_E_FILE_OPEN,
         [] {
             kq_fault_arm("file_write", 1, 1);
             kqcode_t code = arch_delete_raft_info();
             kq_fault_disarm();
             return code;
         }},
        {"settings", ARCH_E_INVALID_VALUE,
         [&] {
             EXPECT_EQ(add("V", 2, 7), 0);
             return arch_cfg_sys_update_raft_info(5, 9, 5, "me", 1, 1, 0);
         }},
    };
    output_capture capture(instance.error_log());
    for (const failing_call& each : calls) {
        EXPECT_EQ(each.call(), each.code) << each.name;
        expect_lock_free(each.name);
    }
}

}  // namespace

// Online changes, look-ups and rewriting from several threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

#include "support/capture.h"
#include "support/online.h"

namespace {

using namespace test_support;

constexpr auto duration = std::chrono::seconds(2);

class changing_threads : public testing::Test {
  protected:
    // Runs each function again and again, in a thread of its own.
    void run(const std::vector<std::function<void(int)>>& all) {
        std::atomic<bool> over = false;
        std::vector<std::thread> threads;
        for (const auto& each : all)
            threads.emplace_back([&each, &over] {
                for (int round = 0; !over; round++)
                    each(round);
            });
        std::this_thread::sleep_for(duration);
        over = true;
        for (std::thread& each : threads)
            each.join();
    }

    online_instance instance;
    std::atomic<int> changes = 0;
};

// Adds and drops what is this thread's own; nobody else's add or drop gets in its way.
void change_directory(int round, std::atomic<int>& changes) {
    std::string path = "arch" + std::to_string(round % 3);
    arch_cfg_t* added = nullptr;
    ASSERT_EQ(arch_cfg_add_local(path.c_str(), 0, 64, 1, 0, &added), 0);
    ASSERT_NE(added, nullptr);
    ASSERT_EQ(arch_cfg_drop(path.c_str()), 0);
    changes += 2;
}

void change_standby(int round, std::atomic<int>& changes) {
    std::string name = "INST" + std::to_string(1 + round % 9);
    arch_cfg_t asked, *added = nullptr;
    arch_init(&asked, "");
    asked.type = ARCH_TYPE_TIMELY;
    memcpy(asked.dest_insts[0], name.c_str(), name.size() + 1);
    arch_cfg_set_dest(&asked, name.c_str());
    ASSERT_EQ(arch_cfg_add_timely(&asked, &added), 0);
    ASSERT_EQ(arch_cfg_drop_low(added), 0);
    changes += 2;
}

void look_up(int) {
    sysname_t destinations[16];
    usint count = 0;
    arch_cfg_find_by_dest("none/INST3", 0);
    arch_cfg_find_by_dest_low("arch1");
    arch_cfg_get_arch_arr_by_type(ARCH_TYPE_LOCAL, &count, destinations);
    EXPECT_LE(count, 2);
    registry_lock lock;
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
}

void write_and_back_up(int round) {
    static schar text[ARCH_CFG_TEXT_SIZE];
    {
        registry_lock lock;
        EXPECT_EQ(arch_cfg_sys_write_to_file(), 0);
        EXPECT_EQ(arch_cfg_sys_write_to_rec(text), 0);
        EXPECT_EQ(arch_cfg_sys_write_by_rec(text, 0), 0);
        EXPECT_EQ(read_file("kqarch.ini"), text);
    }
    EXPECT_EQ(arch_file_gen_bak(static_cast<ulint64>(round % 2)), 0);
    EXPECT_EQ(arch_cfg_drop("nobody"), ARCH_E_DEST_NOT_FOUND);
}

TEST_F(changing_threads, leave_a_sound_list_and_the_file_of_it) {
    ASSERT_EQ(start_from("[L]\nARCH_TYPE = LOCAL\nARCH_DEST = first\n"), 0);
    std::string before = registry_text();
    run({[this](int round) { change_directory(round, changes); },
         [this](int round) { change_standby(round, changes); }, look_up, write_and_back_up});
    EXPECT_GT(changes, 20);
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
    EXPECT_EQ(registry_text(), before);
    EXPECT_EQ(read_file("kqarch.ini"), before);
}

// Two threads that want the same: each destination is added once, and dropped by one of them.
TEST_F(changing_threads, never_do_the_same_change_twice) {
    ASSERT_EQ(start_from("[L]\nARCH_TYPE = LOCAL\nARCH_DEST = first\n"), 0);
    auto fight = [this](int) {
        arch_cfg_t* added = nullptr;
        kqcode_t code = arch_cfg_add_local("arch1", 0, 64, 1, 0, &added);
        EXPECT_TRUE(code == 0 || code == ARCH_E_DEST_EXISTS) << code;
        changes += code == 0;
        code = arch_cfg_drop("arch1");
        EXPECT_TRUE(code == 0 || code == ARCH_E_DEST_NOT_FOUND) << code;
        changes -= code == 0;
        registry_lock lock;
        EXPECT_LE(arch_cfg_sys.arch_lst.count, 2u);
    };
    run({fight, fight, fight, look_up});
    EXPECT_EQ(changes, 0);
    EXPECT_EQ(arch_cfg_sys.arch_lst.count, 1u);
    EXPECT_EQ(read_file("kqarch.ini"), registry_text());
}

}  // namespace

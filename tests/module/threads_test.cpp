// The registry lock between threads, and threads that do everything at once.
#include <elog.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

#include "module/led_calls.h"
#include "support/capture.h"
#include "support/online.h"

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
    arch_cfg_hold lock;
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
    EXPECT_EQ(lock_level(), 4294967245u);
    output_capture capture(instance.error_log());
    for (int round = 0; round < 2; round++) {
        std::thread(enter_and_end).join();
        std::thread([] { arch_cfg_hold lock; }).join();
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
    arch_cfg_hold lock;
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

// ---- Everything at once, and again one after the other ----

constexpr ulint threads_at_once = 8, calls_of_each = 60;

std::string numbered(const char* name, ulint number) {
    return name + std::to_string(number % 9);
}

void copy_name(schar* to, const std::string& from) {
    memcpy(to, from.c_str(), from.size() + 1);
}

template <auto Adder, usint Type>
kqcode_t add_standby(ulint number) {
    arch_cfg_t asked, *added = nullptr;
    arch_init(&asked, "");
    asked.type = Type;
    strcpy(asked.timer_name, "T1");
    copy_name(asked.dest_insts[0], numbered("INST1", number));
    return Adder(&asked, &added);
}

kqcode_t add_directory(ulint number) {
    arch_cfg_t* added = nullptr;
    return arch_cfg_add_local(numbered("arch", number).c_str(), 0, 64, 1, 0, &added);
}

template <usint Type>
kqcode_t add_member(ulint number) {
    std::vector<schar> text(ARCH_CFG_TEXT_SIZE);
    arch_cfg_t* added = nullptr;
    auto id = static_cast<usint>(number % 9);
    return arch_cfg_add_learner_or_raft(numbered("N", number).c_str(), "h", id, id, 0, Type, &added,
                                        text.data());
}

kqcode_t promote(ulint number) {
    std::vector<schar> text(ARCH_CFG_TEXT_SIZE);
    usint count = 0, ids[2];
    sysname_t names[2] = {"KQSERVER", ""};
    copy_name(names[1], numbered("N", number));
    return arch_cfg_change_learner_to_raft(2, names, text.data(), &count, ids);
}

kqcode_t replace_voters(ulint number) {
    sysname_t names[3] = {"KQSERVER", "", ""};
    copy_name(names[1], numbered("N", number));
    copy_name(names[2], numbered("N", number + 1));
    return arch_cfg_change_to_new(3, names, nullptr);
}

// Address and port go together.
kqcode_t change_address(ulint number) {
    arch_cfg_hold lock;
    return arch_cfg_update_raft_info("KQSERVER", numbered("h", number).c_str(),
                                     static_cast<usint>(number % 9));
}

byte holder(ulint number) {
    return number % 9 == 8 ? byte{255} : static_cast<byte>(number % 9);
}

kqcode_t write_the_file(ulint) {
    arch_cfg_hold lock;
    return arch_cfg_sys_write_to_file();
}

kqcode_t change_setting(ulint number) {
    static const char* const keys[] = {"RAFT_HB_INTERVAL", "RAFT_VOTE_INTERVAL",
                                       "XMAL_HB_INTERVAL"};
    std::string value = std::to_string(5 + number % 9);
    return arch_cfg_add_value(nullptr, nullptr, keys[number % 3], value.data());
}

void copy_settings() {
    kqbool has_inited, wait, share, share_check, learner;
    usint count, changing, port, voters, striping, center;
    byte seqno, mirror;
    ulint xmal_hb, raft_hb, vote, reserve;
    schar ip[ARCH_IP_MAX + 1];
    arch_cfg_sys_get_info(&has_inited, &count, &wait, &changing, &seqno, ip, &port, &xmal_hb,
                          &raft_hb, &vote, &voters, &reserve, &share, &share_check, &learner,
                          &mirror, &striping, &center);
    EXPECT_EQ(has_inited, 1u);
    EXPECT_LE(count, 8 * ARCH_TYPE_COUNT);
    // An address says the port that was set with it.
    EXPECT_EQ(port, ip[0] == 'h' ? ip[1] - '0' : ip[0] == 'm') << ip;
}

// What a reader sees is whole, whatever others do meanwhile.
kqcode_t look_up(ulint number) {
    byte mirror = 0;
    usint count = 0;
    sysname_t destinations[40];
    std::vector<arch_collect_t> entries(48);
    arch_cfg_get_wait_apply();
    arch_cfg_sys_get_raft_hb_interval();
    arch_cfg_get_asm_mirror_striping(&mirror, &count);
    arch_cfg_get_raft_cnt();
    arch_cfg_check_self_is_learner();
    arch_cfg_has_local_or_sync();
    arch_cfg_find_by_dest(numbered("none/INST1", number).c_str(), 0);
    arch_cfg_find_by_dest_low(numbered("N", number).c_str());
    arch_cfg_find_subscribe();
    copy_settings();
    arch_cfg_get_arch_arr_by_type(ARCH_TYPE_RAFT, &count, destinations);
    for (usint i = 0; i < count; i++)
        EXPECT_TRUE(destinations[i][0] == 'N' && strlen(destinations[i]) == 2);
    count = 0;
    arch_cfg_collect_inst_name(&count, entries.data());
    EXPECT_EQ(arch_file_gen_bak(number), 0);
    EXPECT_EQ(arch_file_delete_bak(number), 0);
    arch_cfg_hold lock;
    EXPECT_EQ(list_fault(arch_cfg_sys), "");
    std::vector<byte> message(arch_cfg_info_len_calc(1));
    EXPECT_EQ(arch_cfg_info_encode(message.data(), 0, 0, 1), message.size());
    return 0;
}

// A record that nobody else knows, and the calls that take the lock several times.
kqcode_t change_step_by_step(ulint number) {
    arch_cfg_t* arch = nullptr;
    std::string name = "own" + std::to_string(number), type = "LOCAL", dest = name;
    EXPECT_EQ(arch_cfg_create(nullptr, name.c_str(), &arch), 0);
    EXPECT_EQ(arch_cfg_add_value(nullptr, arch, "ARCH_TYPE", type.data()), 0);
    EXPECT_EQ(arch_cfg_add_value(nullptr, arch, "ARCH_DEST", dest.data()), 0);
    arch_cfg_sys_update_raft_info(5, 10, 5, "me", 1, 100, 0);
    arch_cfg_sys_validate(1, 1);
    arch_cfg_destroy_for_drs(arch);
    return arch_delete_raft_info();
}

struct operation {
    kqcode_t (*make)(ulint number);
    bool is_one_step;  // one critical section: its place in lock order says what comes of it
};

const operation operations[] = {
    {look_up, false},
    {change_step_by_step, false},
    {add_directory, true},
    {add_standby<arch_cfg_add_march, ARCH_TYPE_REALTIME>, true},
    {add_standby<arch_cfg_add_timely, ARCH_TYPE_TIMELY>, true},
    {add_standby<arch_cfg_add_timer, ARCH_TYPE_ASYNC>, true},
    {add_member<ARCH_TYPE_LEARNER>, true},
    {add_member<ARCH_TYPE_RAFT>, true},
    {promote, true},
    {replace_voters, true},
    {change_address, true},
    {write_the_file, true},
    {change_setting, true},
    {[](ulint number) { return arch_cfg_drop(numbered("arch", number).c_str()); }, true},
    {[](ulint number) { return arch_cfg_drop(numbered("INST1", number).c_str()); }, true},
    {[](ulint number) { return arch_cfg_drop(numbered("N", number).c_str()); }, true},
    {[](ulint number) {
         return arch_cfg_check_raft_dest_validate(numbered("N", number).c_str(), ARCH_TYPE_RAFT);
     },
     true},
    {[](ulint number) {
         std::vector<schar> text(ARCH_CFG_TEXT_SIZE);
         return arch_cfg_delete_learner(numbered("N", number).c_str(), 0, text.data());
     },
     true},
    {[](ulint number) { return arch_cfg_delete_raft(numbered("N", number).c_str()); }, true},
    {[](ulint number) { return arch_set_cfg_changing(holder(number)); }, true},
    {[](ulint number) { return arch_reset_cfg_changing(holder(number)), kqcode_t{}; }, true},
    {[](ulint number) { return arch_cfg_sys_set_raft_vote_interval(number), kqcode_t{}; }, true},
    {[](ulint) { return arch_cfg_set_raft_cnt(), kqcode_t{}; }, true},
    {[](ulint) { return arch_cfg_sys_delete_raft_info(); }, true},
};

struct history_entry {
    const operation* what;
    ulint number;
    ulint end_at;  // the point at which its thread ends, if it comes there
    kqcode_t code = 0;
    watched_call seen = {};

    void perform() {
        seen = {};
        seen.end_at = end_at;
        auto run = [this] {
            watch(&seen);
            kqcode_t result = what->make(number);
            watch(nullptr);
            code = result;
        };
        if (end_at > 0)
            std::thread(run).join();
        else
            run();
    }
};

using history = std::vector<history_entry>;

history choose_calls(ulint seed, bool one_step_only) {
    std::minstd_rand random(seed);
    history chosen;
    while (chosen.size() < calls_of_each) {
        const operation& what = operations[random() % std::size(operations)];
        if (one_step_only && !what.is_one_step && what.make != look_up) continue;
        ulint number = static_cast<ulint>(random() % 1000) + 1000 * seed;
        bool ends = what.is_one_step && random() % 4 == 0;
        chosen.push_back({&what, number, ends ? static_cast<ulint>(1 + random() % 12) : 0});
    }
    return chosen;
}

class at_once : public testing::Test {
  protected:
    void begin() {
        ASSERT_EQ(start_from("RAFT_SELF_ID = 99\n[L]\nARCH_TYPE = LOCAL\nARCH_DEST = first\n"), 0);
        arch_cfg_sys.has_inited = 1;
    }

    // The calls of a round, in lock order.
    history perform_at_once(ulint round, bool one_step_only) {
        std::vector<history> all;
        for (ulint i = 0; i < threads_at_once; i++)
            all.push_back(choose_calls(round * threads_at_once + i + 1, one_step_only));
        std::vector<std::thread> threads;
        for (history& own : all)
            threads.emplace_back([&own] {
                for (history_entry& entry : own)
                    entry.perform();
            });
        for (std::thread& each : threads)
            each.join();
        history ordered;
        for (const history& own : all)
            ordered.insert(ordered.end(), own.begin(), own.end());
        std::sort(ordered.begin(), ordered.end(),
                  [](auto& one, auto& other) { return one.seen.order < other.seen.order; });
        return ordered;
    }

    std::string state() {
        // Recovers the lock from a thread that ended last.
        std::string text = registry_text();
        EXPECT_EQ(list_fault(arch_cfg_sys), "");
        return text + registry_fields_text() + read_file("kqarch.ini");
    }

    void replay(history all, const std::string& left) {
        begin();
        for (history_entry& entry : all) {
            if (!entry.what->is_one_step) continue;
            history_entry seen = entry;
            entry.perform();
            ASSERT_EQ(entry.seen.ended, seen.seen.ended);
            ASSERT_TRUE(seen.seen.ended || entry.code == seen.code)
                << "operation " << entry.what - operations << ": " << seen.code << " at once, "
                << entry.code << " alone";
            ended += entry.seen.ended;
            succeeded += !entry.seen.ended && entry.code >= 0;
        }
        EXPECT_EQ(state(), left);
    }

    online_instance instance;
    int ended = 0, succeeded = 0;
};

TEST_F(at_once, is_as_one_after_the_other) {
    using clock = std::chrono::steady_clock;
    const char* asked = getenv("THREADS_SECONDS");
    const std::chrono::seconds wanted(asked != nullptr ? atoi(asked) : 2);
    descriptor_capture quiet(STDERR_FILENO);
    clock::duration spent{};
    ulint round = 0;
    for (; spent < wanted; round++) {
        SCOPED_TRACE(round);
        begin();
        bool one_step_only = round % 4 != 3;
        auto started = clock::now();
        history all = perform_at_once(round, one_step_only);
        spent += clock::now() - started;
        std::string left = state();
        if (one_step_only) replay(all, left);
        if (HasFailure()) return;
    }
    printf("%u rounds, %d calls that changed or asked, %d threads ended with the lock\n", round,
           succeeded, ended);
    EXPECT_GT(succeeded, 100);
    EXPECT_GT(ended, 20);
}

}  // namespace

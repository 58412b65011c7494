// Mutexes, memory, the pool of a caller and the fault points.
#include <errno.h>
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <mem.h>
#include <os.h>
#include <osmutex.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <thread>
#include <vector>

namespace {

// The analysis cannot follow a lock that is taken through the member, as its lockers do.
int lock(os_mutex_t& mutex) KQ_NO_THREAD_ANALYSIS {
    return pthread_mutex_lock(&mutex.the_mutex);
}
int unlock(os_mutex_t& mutex) KQ_NO_THREAD_ANALYSIS {
    return pthread_mutex_unlock(&mutex.the_mutex);
}

// The thread sanitizer reports the very misuse that these tests are about.
bool misuse_is_reported() {
#if defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
    return __has_feature(thread_sanitizer);
#else
    return false;
#endif
}

TEST(mutex, reports_misuse_and_is_refused_once_freed) {
    if (misuse_is_reported()) GTEST_SKIP();
    os_mutex_t mutex;
    std::memset(static_cast<void*>(&mutex), 0, sizeof mutex);
    os_mutex2_free(&mutex);
    EXPECT_EQ(lock(mutex), EINVAL) << "it was never created";
    for (int round = 0; round < 2; ++round) {
        os_mutex2_create(&mutex);
        os_mutex2_set_level(&mutex, 4294967245u);
        EXPECT_EQ(mutex.owner, 4294967295u);
        EXPECT_EQ(unlock(mutex), EPERM);
        EXPECT_EQ(lock(mutex), 0);
        EXPECT_EQ(lock(mutex), EDEADLK);
        std::thread([&] { EXPECT_EQ(unlock(mutex), EPERM); }).join();
        EXPECT_EQ(unlock(mutex), 0);
        os_mutex2_free(&mutex);
        os_mutex2_free(&mutex);
        EXPECT_EQ(lock(mutex), EINVAL);
    }
}

TEST(mutex, survives_its_holder) {
    os_mutex_t mutex;
    os_mutex2_create(&mutex);
    std::thread([&] { EXPECT_EQ(lock(mutex), 0); }).join();
    EXPECT_EQ(lock(mutex), EOWNERDEAD);
    EXPECT_EQ(pthread_mutex_consistent(&mutex.the_mutex), 0);
    EXPECT_EQ(unlock(mutex), 0);
    EXPECT_EQ(lock(mutex), 0);
    EXPECT_EQ(unlock(mutex), 0);
    os_mutex2_free(&mutex);
}

TEST(interlocked, access_has_the_width_of_the_field) {
    usint fields[] = {0xffff, 0, 0xffff};
    os_interlock_write(&fields[1], 0x1234);
    EXPECT_EQ(os_interlock_read(&fields[1]), 0x1234);
    EXPECT_EQ(fields[0] & fields[2], 0xffff);
}

TEST(halting, prints_and_aborts) {
    EXPECT_DEATH(kq_sys_halt("stopped: 5%", -1), "stopped: 5%");
}

void* take(kqenv_t env, ulint64 size) {
    return mem_malloc_ex(env, size, __FILE__, __LINE__);
}

TEST(pool, counts_blocks_and_keeps_its_limit_to_the_byte) {
    kqenv_t env = mem_env_create(100);
    void *first = take(env, 60), *second = take(env, 40);
    ASSERT_TRUE(first != nullptr && second != nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(second) % alignof(std::max_align_t), 0u);
    std::memset(first, 1, 60);
    for (ulint64 size : {ulint64{1}, ~ulint64{0}})
        EXPECT_EQ(take(env, size), nullptr);
    mem_free(env, first);
    mem_free(env, nullptr);
    EXPECT_EQ(take(env, 61), nullptr);
    EXPECT_NE(take(env, 60), nullptr);
    EXPECT_EQ(mem_env_destroy(env), 2u);
    EXPECT_EQ(mem_env_destroy(nullptr), 0u);
    EXPECT_EQ(take(nullptr, 1), nullptr);
    env = mem_env_create(0);
    kq_fault_arm("mem_malloc_ex", 1, 0);
    EXPECT_EQ(take(env, 1), nullptr);
    kq_fault_disarm();
    EXPECT_EQ(take(env, ~ulint64{0}), nullptr);
    void* block = take(env, 1000000);
    EXPECT_NE(block, nullptr);
    mem_free(env, block);
    EXPECT_EQ(mem_env_destroy(env), 0u);
}

TEST(pool, hands_out_again_only_what_is_as_large) {
    kqenv_t env = mem_env_create(1024);
    void* given_back = take(env, 100);
    mem_free(env, given_back);
    for (ulint64 size : {96u, 99u, 101u, 111u, 512u, 513u}) {
        void* block = take(env, size);
        EXPECT_NE(block, given_back) << size;
        std::memset(block, 1, size);
        mem_free(env, block);
    }
    void* all = take(env, 1024);
    EXPECT_NE(all, nullptr);
    mem_free(env, all);
    EXPECT_EQ(mem_env_destroy(env), 0u);
}

void by_four_threads(const std::function<void()>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
}

TEST(pool, is_shared_by_threads) {
    kqenv_t env = mem_env_create(1 << 20);
    by_four_threads([env] {
        for (int round = 0; round < 1000; ++round)
            mem_free(env, take(env, 100));
        take(env, 100);
    });
    EXPECT_EQ(mem_env_destroy(env), 4u);
}

// Which of five allocations failed.
std::string failing_allocations() {
    std::string shown;
    for (int i = 0; i < 5; ++i) {
        void* block = os_malloc(0);
        shown += block != nullptr ? '.' : 'x';
        os_free(block);
    }
    return shown;
}

TEST(faults, hit_the_calls_that_were_armed) {
    const struct {
        const char* what;
        ulint nth;
        kqbool for_good;
        std::string expected;
    } cases[] = {
        {"os_malloc", 1, 0, "x...."},     {"os_malloc", 3, 0, "..x.."},
        {"os_malloc", 3, 1, "..xxx"},     {"any", 5, 1, "....x"},
        {"mem_malloc_ex", 1, 1, "....."}, {"os_malloc", 6, 1, "....."},
    };
    for (const auto& [what, nth, for_good, expected] : cases) {
        kq_fault_arm(what, nth, for_good);
        EXPECT_EQ(failing_allocations(), expected) << what << nth;
        kq_fault_disarm();
        EXPECT_EQ(kq_fault_hits(), std::count(expected.begin(), expected.end(), 'x'))
            << what << nth;
        EXPECT_EQ(failing_allocations(), ".....");
    }
}

TEST(faults, count_every_call_once_with_many_threads) {
    kq_fault_arm("os_malloc", 101, 1);
    by_four_threads([] {
        for (int call = 0; call < 100; ++call)
            os_free(os_malloc(8));
    });
    EXPECT_EQ(kq_fault_hits(), 300u);
    kq_fault_disarm();
}

}  // namespace

#include "module/led_calls.h"

#include <arch_cfg.h>
#include <ini.h>
#include <os.h>
#include <osfile.h>

#include <atomic>

extern "C" {
void* __real_os_malloc(ulint64 size);
void __real_os_free(void* block);
kqbool __real_os_dir_is_exist(const schar* path);
other_ini_alterable_t* __real_ini_get_other_ini_info_by_index(ulint index);
void __real_arch_cfg_sys_enter();
void __real_arch_cfg_sys_exit();
int __real_pthread_mutex_consistent(pthread_mutex_t* mutex);

// The thread sanitizer does not know that the system gives on what an ended thread held.
__attribute__((weak)) void __tsan_release(void* address);
__attribute__((weak)) void __tsan_acquire(void* address);
}

namespace test_support {
namespace {

std::atomic<ulint> blocks{0};
ulint level = 0;
ulint64 last_order = 0;  // guarded by the registry lock
thread_local watched_call* watched = nullptr;

bool is_linked(const void* block) {
    const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start;
    while (arch != nullptr && arch != block)
        arch = arch->link.next;
    return arch != nullptr;
}

// A numbered point: ends the thread, with the lock, if it is the one. A block that is not linked
// yet goes with it.
void point() {
    watched_call* call = watched;
    if (call == nullptr || !call->inside || call->end_at == 0 || --call->end_at > 0) return;
    call->order = ++last_order;
    call->ended = true;
    if (call->block != nullptr && !is_linked(call->block)) os_free(call->block);
    watched = nullptr;
    if (__tsan_release != nullptr) __tsan_release(&arch_cfg_sys.mutex.the_mutex);
    pthread_exit(nullptr);
}

}  // namespace

ulint lock_level() {
    return level;
}

ulint blocks_held() {
    return blocks;
}

void watch(watched_call* call) {
    watched = call;
}

}  // namespace test_support

using namespace test_support;

extern "C" {

void* __wrap_os_malloc(ulint64 size) {
    point();
    void* block = __real_os_malloc(size);
    if (block != nullptr) ++blocks;
    if (watched != nullptr) watched->block = block;
    return block;
}

void __wrap_os_free(void* block) {
    if (block != nullptr) --blocks;
    __real_os_free(block);
    if (watched != nullptr) watched->block = nullptr;
    point();
}

void __wrap_os_mutex2_set_level(os_mutex_t*, ulint given) {
    level = given;
}

void __wrap_os_thread_sleep_low(ulint) {}

kqbool __wrap_os_dir_is_exist(const schar* path) {
    point();
    return __real_os_dir_is_exist(path);
}

other_ini_alterable_t* __wrap_ini_get_other_ini_info_by_index(ulint index) {
    point();
    return __real_ini_get_other_ini_info_by_index(index);
}

void __wrap_arch_cfg_sys_enter() {
    __real_arch_cfg_sys_enter();
    if (watched != nullptr) watched->inside = true;
}

void __wrap_arch_cfg_sys_exit() {
    if (watched != nullptr) watched->inside = false;
    if (watched != nullptr) watched->order = ++last_order;
    __real_arch_cfg_sys_exit();
}

int __wrap_pthread_mutex_consistent(pthread_mutex_t* mutex) {
    if (__tsan_acquire != nullptr) __tsan_acquire(mutex);
    return __real_pthread_mutex_consistent(mutex);
}

}  // extern "C"

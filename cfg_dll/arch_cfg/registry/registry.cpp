// The registry's life, its lock, and its list of records.
#include "registry/registry.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "arch_cfg_hold.h"
#include "elog.h"
#include "os.h"
#include "registry/reading.h"

using namespace arch;

arch_cfg_sys_t arch_cfg_sys;

namespace arch {

void append(arch_cfg_sys_t& registry, arch_cfg_t& arch, std::string_view name) {
    arch_cfg_lst_t& list = registry.arch_lst;
    arch.link = {list.end, nullptr};
    (list.end != nullptr ? list.end->link.next : list.start) = &arch;
    list.end = &arch;
    ++list.count;
    if (reading_index* index = reading_index::of(registry)) index->append(arch, name);
}

void unlink(arch_cfg_sys_t& registry, arch_cfg_t& arch) {
    arch_cfg_lst_t& list = registry.arch_lst;
    const arch_cfg_link_t link = arch.link;
    --list.count;
    (link.next != nullptr ? link.next->link.prev : list.end) = link.prev;
    (link.prev != nullptr ? link.prev->link.next : list.start) = link.next;
    arch.link = {};
    if (reading_index* index = reading_index::of(registry)) index->give_up();
}

void discard(arch_cfg_sys_t& registry, arch_cfg_t& arch) {
    unlink(registry, arch);
    (void)arch_cfg_destroy(&arch);
    os_free(&arch);
}

type_counts::type_counts(const arch_cfg_sys_t& registry) {
    for (const arch_cfg_t& arch : destinations(registry))
        if (arch.type < ARCH_TYPE_COUNT) ++counts_[arch.type];
}

ulint count_of_type(const arch_cfg_sys_t& registry, ulint type) {
    ulint count = 0;
    for (const arch_cfg_t& arch : destinations(registry))
        if (arch.type == type) ++count;
    return count;
}

}  // namespace arch

namespace {

// The registry lock is taken before nearly every other lock of the server.
constexpr ulint lock_level = 4294967295u - 50;

// The holder's thread is not recorded.
constexpr ulint no_owner = 4294967295u;

void halt_on_lock(const schar* what, int code) {
    schar text[64];
    (void)std::snprintf(text, sizeof text, "%s failure, code = %d", what, code);
    kq_sys_halt(text, -1);
}

}  // namespace

void arch_cfg_sys_init_env(void) {
    std::memset(&arch_cfg_sys, 0, sizeof arch_cfg_sys);
    os_mutex2_create(&arch_cfg_sys.mutex);
    os_mutex2_set_level(&arch_cfg_sys.mutex, lock_level);
    arch_cfg_sys.wait_apply = ARCH_UNSET_FLAG;
    arch_cfg_sys.xmal_hb_interval = ARCH_UNSET_LONG;
    arch_cfg_sys.raft_vote_interval = ARCH_UNSET_LONG;
    arch_cfg_sys.raft_self_id = ARCH_UNSET_SHORT;
    arch_cfg_sys.arch_reserve_time = ARCH_UNSET_LONG;
    arch_cfg_sys.arch_local_share = ARCH_UNSET_FLAG;
    arch_cfg_sys.arch_local_share_check = ARCH_UNSET_FLAG;
    arch_cfg_sys.arch_asm_mirror = ARCH_UNSET_FLAG;
    arch_cfg_sys.arch_asm_striping = ARCH_UNSET_SHORT;
    os_interlock_write(&arch_cfg_sys.raft_learner, 0u);
}

void arch_cfg_sys_destroy(void) {
    os_mutex2_free(&arch_cfg_sys.mutex);
    os_interlock_write(&arch_cfg_sys.raft_cnt, usint{0});
    while (arch_cfg_sys.arch_lst.start != nullptr)
        discard(arch_cfg_sys, *arch_cfg_sys.arch_lst.start);
}

void arch_cfg_destroy_for_drs(arch_cfg_t* arch) {
    if (arch == nullptr) return;
    {
        const arch_cfg_hold hold;
        unlink(arch_cfg_sys, *arch);
    }
    os_free(arch);
}

void arch_cfg_sys_enter(void) KQ_NO_THREAD_ANALYSIS {
    const int code = pthread_mutex_lock(&arch_cfg_sys.mutex.the_mutex);
    if (code == EOWNERDEAD) {
        elog_report_ex(ELOG_CHANGE, "os_mutex2_enter return EOWNERDEAD");
        (void)pthread_mutex_consistent(&arch_cfg_sys.mutex.the_mutex);
    } else if (code != 0) {
        halt_on_lock("os_mutex_enter", code);
    }
    arch_cfg_sys.mutex.owner = no_owner;
}

void arch_cfg_sys_exit(void) KQ_NO_THREAD_ANALYSIS {
    arch_cfg_sys.mutex.owner = no_owner;
    const int code = pthread_mutex_unlock(&arch_cfg_sys.mutex.the_mutex);
    if (code != 0) halt_on_lock("os_mutex_exit", code);
}

void arch_cfg_sys_release(void) {
    arch_cfg_sys_exit();
}

arch_cfg_sys_t* arch_cfg_sys_get(void) {
    arch_cfg_sys_enter();
    return &arch_cfg_sys;
}

// The type catalogue, the states, and the values of a new record.
#include <cstring>

#include "arch_cfg.h"
#include "common/folded_text.h"
#include "registry/registry.h"

using namespace arch;

const schar* const arch_cfg_name_pre[ARCH_TYPE_COUNT] = {
    nullptr,         "ARCHIVE_LOCAL",     "ARCHIVE_REALTIME", "ARCHIVE_SYNC",
    "ARCHIVE_ASYNC", "ARCH_TIMELY",       "ARCH_REMOTE",      nullptr,
    nullptr,         "ARCHIVE_SUBSCRIBE",
};

namespace {

struct type_name {
    ulint type;
    std::string_view name;
};

// The first name of a type is the one that is written.
constexpr type_name type_names[] = {
    {ARCH_TYPE_LOCAL, "LOCAL"},     {ARCH_TYPE_REALTIME, "REALTIME"},
    {ARCH_TYPE_REALTIME, "MARCH"},  {ARCH_TYPE_SYNC, "SYNC"},
    {ARCH_TYPE_ASYNC, "ASYNC"},     {ARCH_TYPE_TIMELY, "TIMELY"},
    {ARCH_TYPE_REMOTE, "REMOTE"},   {ARCH_TYPE_RAFT, "RAFT"},
    {ARCH_TYPE_LEARNER, "LEARNER"}, {ARCH_TYPE_SUBSCRIBE, "SUBSCRIBE"},
};

constexpr byte state_invalid = 1;

// The documented results are plain `schar*`; nobody writes to them.
schar* constant_text(const schar* text) {
    return const_cast<schar*>(text);
}

}  // namespace

schar* arch_cfg_get_arch_name_by_type(ulint arch_type) {
    for (const type_name& row : type_names)
        if (row.type == arch_type) return constant_text(row.name.data());
    return constant_text("NONE");
}

ulint arch_cfg_get_arch_type_by_name(const schar* type_name) {
    if (type_name == nullptr) return ARCH_TYPE_NONE;
    const std::string_view sought = type_name;
    for (const auto& row : type_names)
        if (same_text(row.name, sought)) return row.type;
    return ARCH_TYPE_NONE;
}

schar* arch_get_name_by_status(byte rstat) {
    constexpr const schar* names[] = {"VALID", "INVALID", "ASYNC_SEND"};
    return constant_text(rstat < std::size(names) ? names[rstat] : "UNKNOWN");
}

schar* arch_cfg_get_stat_str(byte rstat) {
    return arch_get_name_by_status(rstat);
}

void arch_init(arch_cfg_t* arch, const schar* name) {
    std::memset(arch, 0, sizeof *arch);
    copy_text(arch->name, name == nullptr ? "" : name);
    arch->n_inst = 1;
    arch->file_size = 1024;
    arch->hang_flag = 1;
    arch->status = state_invalid;
    arch->arch_dest_id = ARCH_UNSET_SHORT;
    arch->arch_recover_time = 1;
    arch->wait_apply = ARCH_UNSET_FLAG;
    arch->arch_failover = ARCH_UNSET_FLAG;
}

// A record owns nothing besides its block.
kqcode_t arch_cfg_destroy(arch_cfg_t*) {
    return 0;
}

ulint arch_cfg_get_cnt_by_type(ulint type) {
    return count_of_type(arch_cfg_sys, type);
}

ulint arch_cfg_get_local_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_LOCAL);
}

ulint arch_cfg_get_realtime_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_REALTIME);
}

ulint arch_cfg_get_sync_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_SYNC);
}

ulint arch_cfg_get_async_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_ASYNC);
}

ulint arch_cfg_get_timely_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_TIMELY);
}

ulint arch_cfg_get_remote_cnt(void) {
    return arch_cfg_get_cnt_by_type(ARCH_TYPE_REMOTE);
}

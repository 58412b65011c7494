// Adding destinations.
//
// An adder holds the registry lock from its first rule to the rewritten file, so that counts, the
// generated name and the link are one step. Which types may stand beside a new one, and how many of
// it, are rows: each a condition and the code it fails with, in order.
#include <cstdio>
#include <cstdlib>
#include <span>

#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "ntimer_cfg.h"
#include "online/written_back.h"
#include "os.h"
#include "registry/registry.h"
#include "utl.h"

using namespace arch;

namespace arch {
namespace {

// ---- Coexistence and counts ----

// A rule's view of the registry and of what is to be added.
struct addition {
    const type_counts& counts;
    const arch_cfg_t* asked;  // null where the record is built from arguments
};

struct add_rule {
    bool (*broken)(const addition&);
    kqcode_t code;
};

template <arch_cfg_type Type>
bool exists(const addition& adding) {
    return adding.counts.any(Type);
}

template <arch_cfg_type Type>
bool is_full(const addition& adding) {
    return adding.counts.of(Type) >= most_of_type;
}

bool no_local(const addition& adding) {
    return !adding.counts.any(ARCH_TYPE_LOCAL);
}

bool several_beside_sync(const addition& adding) {
    return adding.counts.any(ARCH_TYPE_SYNC) && adding.asked->n_inst > 1;
}

bool timer_is_unknown(const addition& adding) {
    return ntimer_cfg_find_by_name(adding.asked->timer_name) == nullptr;
}

bool excluded_by_others(const addition& adding) {
    constexpr arch_cfg_type others[] = {ARCH_TYPE_REALTIME, ARCH_TYPE_SYNC,   ARCH_TYPE_ASYNC,
                                        ARCH_TYPE_TIMELY,   ARCH_TYPE_REMOTE, ARCH_TYPE_RAFT,
                                        ARCH_TYPE_LEARNER};
    for (const arch_cfg_type type : others)
        if (adding.counts.any(type)) return true;
    return false;
}

constexpr add_rule timely_rules[] = {
    {several_beside_sync, ARCH_E_SYNC_CONFLICT},
    {no_local, ARCH_E_NO_LOCAL},
    {exists<ARCH_TYPE_REALTIME>, ARCH_E_REALTIME_TIMELY_CONFLICT},
    {exists<ARCH_TYPE_SUBSCRIBE>, ARCH_E_SUBSCRIBE_CONFLICT},
    {is_full<ARCH_TYPE_TIMELY>, ARCH_E_TOO_MANY_TIMELY},
};

constexpr add_rule realtime_rules[] = {
    {several_beside_sync, ARCH_E_SYNC_CONFLICT},
    {no_local, ARCH_E_NO_LOCAL},
    {exists<ARCH_TYPE_TIMELY>, ARCH_E_REALTIME_TIMELY_CONFLICT},
    {exists<ARCH_TYPE_SUBSCRIBE>, ARCH_E_SUBSCRIBE_CONFLICT},
    {is_full<ARCH_TYPE_REALTIME>, ARCH_E_TOO_MANY_REALTIME},
};

constexpr add_rule async_rules[] = {
    {several_beside_sync, ARCH_E_SYNC_CONFLICT},
    {no_local, ARCH_E_NO_LOCAL},
    {exists<ARCH_TYPE_SUBSCRIBE>, ARCH_E_SUBSCRIBE_CONFLICT},
    {timer_is_unknown, ARCH_E_TIMER_NOT_FOUND},
    {is_full<ARCH_TYPE_ASYNC>, ARCH_E_TOO_MANY_ASYNC},
};

constexpr add_rule sync_rules[] = {
    {no_local, ARCH_E_NO_LOCAL},
    {is_full<ARCH_TYPE_SYNC>, ARCH_E_TOO_MANY_SYNC},
};

constexpr add_rule subscriber_rules[] = {
    {no_local, ARCH_E_NO_LOCAL},
    {excluded_by_others, ARCH_E_SUBSCRIBE_CONFLICT},
    {exists<ARCH_TYPE_SUBSCRIBE>, ARCH_E_TOO_MANY_SUBSCRIBE},
};

constexpr add_rule remote_rules[] = {
    {exists<ARCH_TYPE_SYNC>, ARCH_E_SYNC_CONFLICT},
    {no_local, ARCH_E_NO_LOCAL},
    {is_full<ARCH_TYPE_REMOTE>, ARCH_E_TOO_MANY_LOCAL},
    {exists<ARCH_TYPE_SUBSCRIBE>, ARCH_E_SUBSCRIBE_CONFLICT},
};

kqcode_t check_rules(const arch_cfg_sys_t& registry, std::span<const add_rule> rules,
                     const arch_cfg_t* asked) {
    const type_counts counts(registry);
    for (const add_rule& rule : rules)
        if (rule.broken({counts, asked})) return rule.code;
    return 0;
}

template <std::size_t Size>
void terminate(schar (&field)[Size]) {
    field[Size - 1] = '\0';
}

// No text of a caller's record runs past its field, whatever the record holds.
void terminate_texts(arch_cfg_t& asked) {
    for (auto& name : asked.dest_insts)
        terminate(name);
    for (auto& address : asked.dest_ip_arr)
        terminate(address);
    terminate(asked.dest);
    terminate(asked.recv_path);
    terminate(asked.timer_name);
    terminate(asked.arch_dest_ip);
}

// What a caller may hand in wrong, whatever the type.
kqcode_t check_asked(const arch_cfg_t& asked, arch_cfg_type type) {
    if (asked.n_inst > ARCH_INST_MAX) return ARCH_E_TOO_MANY_INSTS;
    if (asked.type != type) return ARCH_E_INVALID_TYPE;
    return 0;
}

// ---- Naming ----

// A name that differs from a section's only in case counts as no number in use, but would be
// refused when the file is read: the next number that is free in any case is taken.
void name_new_section(ulint type, sysname_t& name) KQ_REQUIRES(arch_cfg_sys.mutex) {
    arch_cfg_get_name(type, name);
    const std::string_view prefix = arch_cfg_name_pre[type];
    ulint number = static_cast<ulint>(std::strtoll(name + prefix.size(), nullptr, 10));
    while (find_section(arch_cfg_sys, name) != nullptr)
        (void)std::snprintf(name, sizeof name, "%s%d", prefix.data(), static_cast<lint>(++number));
}

// ---- Linking ----

arch_cfg_t* new_block() {
    return static_cast<arch_cfg_t*>(os_malloc(sizeof(arch_cfg_t)));
}

// Registers a block that is ready, or gives it back. From here on a failing write undoes nothing.
kqcode_t link_and_rewrite(arch_cfg_t& arch, arch_cfg_t** arch_out) KQ_REQUIRES(arch_cfg_sys.mutex) {
    if (const kqcode_t code = check_written_back(arch); code < 0) {
        os_free(&arch);
        return code;
    }
    append(arch_cfg_sys, arch);
    *arch_out = &arch;
    return arch_cfg_sys_write_to_file();
}

// The destination text of a record that names instances.
void set_dest_from_instances(arch_cfg_t& arch) {
    if (arch.n_inst == 1) copy_text(arch.dest, text_in(arch.dest_insts[0]));
    if (arch.n_inst > 1) arch.dest[0] = '\0';
}

// Names, validates, copies and links a record that the caller has prepared.
kqcode_t register_copy(arch_cfg_t& asked, arch_cfg_t** arch_out) KQ_REQUIRES(arch_cfg_sys.mutex) {
    name_new_section(asked.type, asked.name);
    if (const kqcode_t code = arch_cfg_validate(&asked, 1, 1); code < 0) return code;
    arch_cfg_t* copy = new_block();
    if (copy == nullptr) return ARCH_E_OUT_OF_MEMORY;
    *copy = asked;
    if (copy->type != ARCH_TYPE_SUBSCRIBE) set_dest_from_instances(*copy);
    return link_and_rewrite(*copy, arch_out);
}

kqcode_t add_standby(arch_cfg_t& asked, arch_cfg_type type, std::span<const add_rule> rules,
                     arch_cfg_t** arch_out) {
    *arch_out = nullptr;
    terminate_texts(asked);
    const arch_cfg_hold hold;
    if (const kqcode_t code = check_rules(arch_cfg_sys, rules, &asked); code < 0) return code;
    if (const kqcode_t code = check_asked(asked, type); code < 0) return code;
    return register_copy(asked, arch_out);
}

// ---- SYNC ----

kqcode_t check_beside_sync(const arch_cfg_sys_t& registry, ulint sys_mode) {
    constexpr ulint standby = 2;
    const type_counts counts(registry);
    for (const arch_cfg_t& arch : destinations(registry)) {
        if (arch.n_inst > 1) return ARCH_E_SYNC_CONFLICT;
        if (counts.any(ARCH_TYPE_SUBSCRIBE)) return ARCH_E_SUBSCRIBE_CONFLICT;
        if (arch.type == ARCH_TYPE_REMOTE || arch.type == ARCH_TYPE_RAFT)
            return ARCH_E_SYNC_CONFLICT;
    }
    const bool applies = counts.any(ARCH_TYPE_REALTIME) || counts.any(ARCH_TYPE_TIMELY);
    if (!applies && sys_mode == standby)
        return refuse(ARCH_E_INVALID_TYPE,
                      "Can not configure sync arch on SYNC or ASYNC standby database\n");
    return 0;
}

// ---- SUBSCRIBE ----

// The subscriber's text goes into the record that is to be added.
kqcode_t take_subscriber_text(arch_cfg_t& asked, schar* text) {
    if (text == nullptr) return ARCH_E_INVALID_DEST;
    if (trimmed(text).size() > KQ_SYSNAME_MAX) return ARCH_E_TOO_LONG;
    trim_in_place(text);
    if (const kqcode_t code = arch_cfg_check_subscb_dest(text); code < 0) return code;
    copy_text(asked.dest, text);
    return 0;
}

// ---- LOCAL and REMOTE ----

// The sizes of a destination that holds archive files, as they are handed in.
struct archive_sizes {
    ulint space_limit;
    usint file_size;
    usint hang_flag;
    ulint flush_buf_size;
};

// A path as it is compared and stored: without separators at its end.
kqcode_t take_path(const schar* path, pathname_t& stored) {
    if (path == nullptr) return ARCH_E_INVALID_DEST;
    std::string_view text = path;
    while (text.size() > KQ_PATHNAME_MAX && text.back() == '/')
        text.remove_suffix(1);
    if (text.size() > KQ_PATHNAME_MAX) return ARCH_E_TOO_LONG;
    copy_text(stored, text);
    cut_path_end_dir(stored);
    return 0;
}

arch_cfg_t* new_archive(ulint type, const schar* path, const archive_sizes& sizes)
    KQ_REQUIRES(arch_cfg_sys.mutex) {
    sysname_t name;
    name_new_section(type, name);
    arch_cfg_t* arch = new_block();
    if (arch == nullptr) return nullptr;
    arch_init(arch, name);
    arch->type = static_cast<usint>(type);
    copy_text(arch->dest, path);
    arch->space_limit = sizes.space_limit;
    arch->file_size = sizes.file_size;
    arch->hang_flag = sizes.hang_flag;
    arch->flush_buf_size = sizes.flush_buf_size;
    return arch;
}

kqcode_t register_archive(arch_cfg_t* arch, arch_cfg_t** arch_out) KQ_REQUIRES(arch_cfg_sys.mutex) {
    if (arch == nullptr) return ARCH_E_OUT_OF_MEMORY;
    if (const kqcode_t code = arch_cfg_validate(arch, 1, 1); code < 0) {
        os_free(arch);
        return code;
    }
    return link_and_rewrite(*arch, arch_out);
}

bool is_archive_path(const arch_cfg_sys_t& registry, const schar* path) {
    for (const arch_cfg_t& arch : destinations(registry))
        if (holds_archives(arch) && same_text(arch.dest, path)) return true;
    return false;
}

kqcode_t check_remote_instance(const schar* instance) {
    if (is_this_instance(instance))
        return refuse_printed(ARCH_E_DEST_IS_SELF, "archive_dest can not be self instance!\n");
    return arch_cfg_check_dest_validate(nullptr, instance, ARCH_TYPE_REMOTE);
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_add_timely(arch_cfg_t* arch_in, arch_cfg_t** arch_out) {
    return add_standby(*arch_in, ARCH_TYPE_TIMELY, timely_rules, arch_out);
}

kqcode_t arch_cfg_add_march(arch_cfg_t* arch_in, arch_cfg_t** arch_out) {
    return add_standby(*arch_in, ARCH_TYPE_REALTIME, realtime_rules, arch_out);
}

kqcode_t arch_cfg_add_timer(arch_cfg_t* arch_in, arch_cfg_t** arch_out) {
    return add_standby(*arch_in, ARCH_TYPE_ASYNC, async_rules, arch_out);
}

kqcode_t arch_cfg_add_sync(arch_cfg_t* arch_in, ulint sys_mode, arch_cfg_t** arch_out) {
    *arch_out = nullptr;
    terminate_texts(*arch_in);
    const arch_cfg_hold hold;
    if (const kqcode_t code = check_beside_sync(arch_cfg_sys, sys_mode); code < 0) return code;
    if (const kqcode_t code = check_rules(arch_cfg_sys, sync_rules, arch_in); code < 0) return code;
    if (const kqcode_t code = check_asked(*arch_in, ARCH_TYPE_SYNC); code < 0) return code;
    return register_copy(*arch_in, arch_out);
}

kqcode_t arch_cfg_add_subscribe(arch_cfg_t* arch_in, schar* path, arch_cfg_t** arch_out) {
    terminate_texts(*arch_in);
    const arch_cfg_hold hold;
    if (const kqcode_t code = check_rules(arch_cfg_sys, subscriber_rules, arch_in); code < 0)
        return code;
    if (const kqcode_t code = check_asked(*arch_in, ARCH_TYPE_SUBSCRIBE); code < 0) return code;
    if (const kqcode_t code = take_subscriber_text(*arch_in, path); code < 0) return code;
    return register_copy(*arch_in, arch_out);
}

kqcode_t arch_cfg_add_local(const schar* path, ulint space_limit, usint file_size, usint hang_flag,
                            ulint flush_buf_size, arch_cfg_t** cfg_out) {
    *cfg_out = nullptr;
    const arch_cfg_hold hold;
    pathname_t stored;
    if (const kqcode_t code = take_path(path, stored); code < 0) return code;
    const kqcode_t code = arch_cfg_check_dest_validate(nullptr, stored, ARCH_TYPE_LOCAL);
    if (code < 0) return code;
    if (arch_cfg_check_local_path_validate(stored, 1) == 0) return ARCH_E_INVALID_DEST;
    if (count_of_type(arch_cfg_sys, ARCH_TYPE_LOCAL) >= most_of_type) return ARCH_E_TOO_MANY_LOCAL;
    const archive_sizes sizes{space_limit, file_size, hang_flag, flush_buf_size};
    return register_archive(new_archive(ARCH_TYPE_LOCAL, stored, sizes), cfg_out);
}

kqcode_t arch_cfg_add_remote(const schar* path, schar* inst_name, ulint space_limit,
                             usint file_size, usint, ulint flush_buf_size, arch_cfg_t** arch_out) {
    *arch_out = nullptr;
    const arch_cfg_hold hold;
    if (const kqcode_t code = check_rules(arch_cfg_sys, remote_rules, nullptr); code < 0)
        return code;
    if (const kqcode_t code = check_remote_instance(inst_name); code < 0) return code;
    pathname_t stored;
    // A path that is too long is no usable directory.
    if (take_path(path, stored) < 0) return ARCH_E_INVALID_DEST;
    if (is_archive_path(arch_cfg_sys, stored)) return ARCH_E_DUPLICATE_PATH;
    if (arch_cfg_check_local_path_validate(stored, 1) == 0) return ARCH_E_INVALID_DEST;

    // The file carries no hang flag for REMOTE.
    const archive_sizes sizes{space_limit, file_size, 1, flush_buf_size};
    arch_cfg_t* arch = new_archive(ARCH_TYPE_REMOTE, stored, sizes);
    if (arch != nullptr) copy_text(arch->timer_name, kq_strupr(inst_name));
    return register_archive(arch, arch_out);
}

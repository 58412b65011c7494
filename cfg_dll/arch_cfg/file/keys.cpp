// Applying the keys of kqarch.ini.
//
// A key is a row: its index, whether it belongs to a section or to the settings, whether 0 passes
// its bounds, and how it is applied. Where a value is stored is a pointer to member in a template
// argument, so that a row with the wrong record does not compile. Names, kinds and bounds are the
// INI module's.
#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "arch_cfg_hold.h"
#include "asm3.h"
#include "common/number.h"
#include "common/report.h"
#include "common/server.h"
#include "file/key_numbers.h"
#include "os.h"
#include "registry/reading.h"
#include "registry/registry.h"
#include "utl.h"

using namespace arch;

namespace arch {
namespace {

// A key with its value, on its way into a record or the settings.
struct key_line {
    arch_cfg_sys_t& registry;
    arch_cfg_t* section;  // never null for a section's key
    const other_ini_alterable_t& key;
    schar* text;
    std::size_t size;  // of the text
    ulint number;      // of an integer key

    std::string_view value() const { return {text, size}; }
};

using apply_function = kqcode_t (*)(const key_line&);

enum class key_scope : byte { section, global };

struct key_row {
    ulint index;
    key_scope scope;
    apply_function apply;
    bool zero_exempt = false;
};

// ---- Where values go ----

// Settings interlocked, because some are read without the lock.
template <key_scope Scope, typename Field>
void store(Field& field, const key_line& line) {
    if constexpr (std::is_array_v<Field>)
        copy_text(field, line.value());
    else if constexpr (Scope == key_scope::global)
        os_interlock_write(&field, static_cast<Field>(line.number));
    else
        field = static_cast<Field>(line.number);
}

kqcode_t no_rule(const key_line&) {
    return 0;
}

// A field of the current section.
template <auto Field, apply_function Rule = no_rule>
kqcode_t in_section(const key_line& line) {
    const kqcode_t code = Rule(line);
    if (code >= 0) store<key_scope::section>(line.section->*Field, line);
    return code;
}

// A setting of the registry that is being loaded.
template <auto Field, apply_function Rule = no_rule>
kqcode_t in_registry(const key_line& line) {
    const kqcode_t code = Rule(line);
    if (code >= 0) store<key_scope::global>(line.registry.*Field, line);
    return code;
}

// A setting that is always the process's.
template <auto Field, apply_function Rule = no_rule>
kqcode_t in_process(const key_line& line) {
    const kqcode_t code = Rule(line);
    if (code >= 0) store<key_scope::global>(arch_cfg_sys.*Field, line);
    return code;
}

// ---- Rules of single keys ----

kqcode_t in_own_bounds(const key_line& line) {
    if (!in_range(line.key, line.number))
        return refuse_printed(ARCH_E_INVALID_VALUE,
                              "XMAL_HB_INTERVAL value is invalid(must be %d~%d)!\n",
                              printable(line.key.min_value), printable(line.key.max_value));
    return 0;
}

kqcode_t dest_ip_fits(const key_line& line) {
    if (line.size > ARCH_IP_MAX)
        return refuse_printed(ARCH_E_INVALID_VALUE,
                              "ARCH_DEST_IP value is too long, must be smaller than %d!\n",
                              ARCH_IP_MAX);
    return 0;
}

kqcode_t xmal_ip_fits(const key_line& line) {
    if (line.size > ARCH_IP_MAX)
        return refuse_printed(ARCH_E_INVALID_VALUE,
                              "XMAL_IP value is too long, must be smaller than %d!\n", ARCH_IP_MAX);
    return 0;
}

kqcode_t recv_path_fits(const key_line& line) {
    constexpr std::size_t longest = 64;
    if (line.size > longest) {
        (void)std::fputs("ARCH_RECV_PATH is too long!\n", stderr);
        return ARCH_E_INVALID_VALUE;
    }
    return 0;
}

template <ulint Most>
kqcode_t at_most(const key_line& line) {
    return line.number > Most ? ARCH_E_INVALID_VALUE : 0;
}

kqcode_t is_striping_size(const key_line& line) {
    if (asm3_striping_size_is_valid(line.number) == 0)
        return refuse_printed(ARCH_E_INVALID_VALUE,
                              "ARCH_ASM_STRIPING value is invalid(must be 0/8/16/32/64/128/256\n");
    return 0;
}

// Naming the key at all shares the archive, whatever the value says.
kqcode_t share_local(const key_line& line) {
    line.registry.arch_local_share = 1;
    return 0;
}

kqcode_t apply_type(const key_line& line) {
    const ulint type = arch_cfg_get_arch_type_by_name(line.text);
    line.section->type = static_cast<usint>(type);
    if (type == ARCH_TYPE_NONE) return ARCH_E_PARA_NOT_ALLOWED;
    if (type == ARCH_TYPE_RAFT) {
        const ulint count = os_interlock_read(&arch_cfg_sys.raft_cnt) + 1u;
        os_interlock_write(&arch_cfg_sys.raft_cnt, static_cast<usint>(count));
    }
    return 0;
}

kqcode_t apply_local_path(const key_line& line) {
    const kqcode_t code =
        arch_cfg_check_dest_validate(&line.registry, line.text, line.section->type);
    if (code < 0) return code;
    copy_text(line.section->dest, line.value());
    cut_path_end_dir(line.section->dest);
    return code;
}

kqcode_t apply_remote_name(const key_line& line) {
    const kqcode_t code = arch_cfg_check_dest_validate(&line.registry, line.text, ARCH_TYPE_REMOTE);
    if (code < 0) return code;
    (void)kq_strupr(line.text);
    copy_text(line.section->timer_name, line.value());
    return code;
}

kqcode_t apply_subscriber(const key_line& line) {
    trim_in_place(line.text);
    const kqcode_t code = arch_cfg_check_subscb_dest(line.text);
    if (code >= 0) copy_text(line.section->dest, line.text);
    return code;
}

kqcode_t apply_dest(const key_line& line) {
    switch (line.section->type) {
        case ARCH_TYPE_LOCAL:
            return apply_local_path(line);
        case ARCH_TYPE_REMOTE:
            return apply_remote_name(line);
        case ARCH_TYPE_SUBSCRIBE:
            return apply_subscriber(line);
        case ARCH_TYPE_NONE:
            return refuse(ARCH_E_PARA_NOT_ALLOWED, "ARCH_DEST %s can not config before ARCH_TYPE\n",
                          line.text);
        default:
            return arch_cfg_inst_dests_validate(&line.registry, line.section, line.text);
    }
}

kqcode_t timer_can_be_set(const key_line& line) {
    if (line.section->type == ARCH_TYPE_NONE)
        return refuse(ARCH_E_PARA_NOT_ALLOWED,
                      "ARCH_TIMER_NAME %s can not config before ARCH_TYPE\n", line.text);
    if (line.section->type == ARCH_TYPE_ASYNC && line.text[0] == '\0')
        return ARCH_E_TIMER_NOT_FOUND;
    return 0;
}

kqcode_t apply_incoming_path(const key_line& line) {
    if (line.section->type == ARCH_TYPE_NONE)
        return refuse(ARCH_E_PARA_NOT_ALLOWED,
                      "ARCH_INCOMING_PATH %s can not config before ARCH_TYPE\n", line.text);
    return apply_local_path(line);
}

// ---- The rows ----

constexpr key_row of_section(ulint index, apply_function apply) {
    return {index, key_scope::section, apply};
}

constexpr key_row global(ulint index, apply_function apply) {
    return {index, key_scope::global, apply};
}

constexpr key_row or_zero(key_row row) {
    row.zero_exempt = true;
    return row;
}

using rec = arch_cfg_t;
using sys = arch_cfg_sys_t;

constexpr key_row key_rows[] = {
    of_section(ini_index_arch_type, apply_type),
    of_section(ini_index_arch_dest, apply_dest),
    of_section(ini_index_arch_timer_name, in_section<&rec::timer_name, timer_can_be_set>),
    of_section(ini_index_arch_file_size, in_section<&rec::file_size>),
    or_zero(of_section(ini_index_arch_space_limit, in_section<&rec::space_limit>)),
    of_section(ini_index_arch_hang_flag, in_section<&rec::hang_flag>),
    global(ini_index_arch_timely_wait_apply, in_registry<&sys::wait_apply>),
    global(ini_index_arch_reserve_time, in_registry<&sys::arch_reserve_time>),
    of_section(ini_index_incoming_path, apply_incoming_path),
    of_section(ini_index_arch_flush_buf_size, in_section<&rec::flush_buf_size>),
    or_zero(global(ini_index_xmal_hb_interval, in_process<&sys::xmal_hb_interval, in_own_bounds>)),
    global(ini_index_raft_hb_interval, in_process<&sys::raft_hb_interval>),
    or_zero(global(ini_index_raft_vote_interval, in_process<&sys::raft_vote_interval>)),
    of_section(ini_index_arch_dest_ip, in_section<&rec::arch_dest_ip, dest_ip_fits>),
    of_section(ini_index_arch_dest_port, in_section<&rec::arch_dest_port>),
    global(ini_index_xmal_ip, in_process<&sys::xmal_ip, xmal_ip_fits>),
    global(ini_index_xmal_port, in_process<&sys::xmal_port>),
    global(ini_index_arch_local_share, share_local),
    global(ini_index_arch_local_share_check, in_registry<&sys::arch_local_share_check>),
    of_section(ini_index_arch_send_delay, in_section<&rec::arch_send_delay, at_most<1440>>),
    global(ini_index_raft_self_id, in_process<&sys::raft_self_id>),
    of_section(ini_index_arch_dest_id, in_section<&rec::arch_dest_id>),
    global(ini_index_raft_learner, in_process<&sys::raft_learner>),
    of_section(ini_index_arch_wait_apply, in_section<&rec::wait_apply, at_most<1>>),
    of_section(ini_index_arch_recover_time, in_section<&rec::arch_recover_time>),
    global(ini_index_raft_pkg_interval, in_process<&sys::raft_pkg_interval>),
    global(ini_index_self_center_id, in_process<&sys::self_center_id>),
    of_section(ini_index_arch_center_id, in_section<&rec::arch_center_id>),
    of_section(ini_index_arch_failover, in_section<&rec::arch_failover>),
    of_section(ini_index_arch_subscribe_mode, in_section<&rec::arch_subscb_mode>),
    of_section(ini_index_arch_threshold_per_second, in_section<&rec::arch_threshold_per_second>),
    of_section(ini_index_arch_recv_path, in_section<&rec::recv_path, recv_path_fits>),
    global(ini_index_arch_asm_mirror, in_registry<&sys::arch_asm_mirror>),
    global(ini_index_arch_asm_striping, in_registry<&sys::arch_asm_striping, is_striping_size>),
};

constexpr bool rows_are_in_place() {
    for (ulint i = 0; i < std::size(key_rows); ++i)
        if (key_number(key_rows[i].index) != i) return false;
    return std::size(key_rows) == key_count;
}
static_assert(rows_are_in_place());

// The row of an index, or null for a key of another file (or of none: -1).
const key_row* row_of(lint index) {
    const ulint number = key_number(static_cast<ulint>(index));
    return number < key_count ? &key_rows[number] : nullptr;
}

// ---- Applying a line ----

kqcode_t apply_key(arch_cfg_sys_t& registry, arch_cfg_t* section, const key_row& row,
                   const schar* name, schar* text, std::size_t size) {
    const other_ini_alterable_t& key = *ini_get_other_ini_info_by_index(row.index);
    if (reading_index* index = reading_index::of(arch_cfg_sys)) index->change(section);
    key_line line{registry, section, key, text, size, 0};
    if (key.is_str == 0) {
        if (ini_is_integer(text) == 0) return ARCH_E_INVALID_VALUE;
        line.number = number_in(text);
        const bool exempt = row.zero_exempt && line.number == 0;
        if (!exempt && !in_range(key, line.number))
            return refuse(ARCH_E_INVALID_VALUE, "arch_cfg %s value %s is invalid\n", name, text);
    }
    return row.apply(line);
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_add_value(void* cfg_sys, arch_cfg_t* arch, const schar* para_name,
                            schar* value_str) {
    schar empty[] = "";
    schar* text = value_str != nullptr ? value_str : empty;
    const key_row* row =
        row_of(para_name != nullptr ? ini_get_other_ini_array_index(para_name) : -1);

    const bool is_global = row != nullptr && row->scope == key_scope::global;
    if (!is_global && arch == nullptr)
        return refuse_printed(
            ARCH_E_NO_SECTION,
            "Invalid [arch_name] or the file contains unrecognized characters!\n");
    const std::size_t size = std::strlen(text);
    if (size > longest_value(arch)) return ARCH_E_INVALID_VALUE;
    if (row == nullptr) return ARCH_E_PARA_NOT_ALLOWED;

    if (cfg_sys != nullptr)
        return apply_key(*static_cast<arch_cfg_sys_t*>(cfg_sys), arch, *row, para_name, text, size);
    const arch_cfg_hold hold;
    return apply_key(arch_cfg_sys, arch, *row, para_name, text, size);
}

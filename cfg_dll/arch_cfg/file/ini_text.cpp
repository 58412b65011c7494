// Writing the registry as the text of kqarch.ini.
//
// What a section holds is a list of rows: the key and how its value is appended. A line is the
// format of the INI module's key table with the value in place of its one conversion.
#include <algorithm>
#include <span>
#include <type_traits>

#include "common/report.h"
#include "common/server.h"
#include "file/text_writer.h"
#include "os.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {

text_writer::key_format text_writer::split_format(ulint index) {
    const std::string_view format = ini_get_other_ini_info_by_index(index)->para_string;
    const std::size_t conversion = format.find('%');
    return {format.substr(0, conversion), format.substr(conversion + 2)};
}

namespace {

template <typename Record>
struct text_line {
    ulint index;
    void (*append)(text_writer&, ulint index, const Record&);
};

// ---- Values ----

template <std::size_t Size>
std::string_view value_of(const schar (&field)[Size]) {
    return text_in(field);
}

// Interlocked, because threads change some fields without the lock.
template <typename Field>
requires std::is_unsigned_v<Field> ulint value_of(const Field& field) {
    return os_interlock_read(&field);
}

template <auto Field, typename Record>
void value(text_writer& out, ulint index, const Record& record) {
    out.key(index, value_of(record.*Field));
}

// Left out while the field holds one of the values that mean not configured.
template <auto Field, ulint... Unset, typename Record>
void unless(text_writer& out, ulint index, const Record& record) {
    const ulint held = value_of(record.*Field);
    if (((held != Unset) && ...)) out.key(index, held);
}

// A text that is left out while it is empty.
template <auto Field, typename Record>
void unless_empty(text_writer& out, ulint index, const Record& record) {
    const std::string_view text = value_of(record.*Field);
    if (!text.empty()) out.key(index, text);
}

template <arch_cfg_type Type>
void type_name(text_writer& out, ulint index, const arch_cfg_t&) {
    out.key(index, std::string_view(arch_cfg_get_arch_name_by_type(Type)));
}

void raft_type_name(text_writer& out, ulint index, const arch_cfg_t& arch) {
    const ulint type = arch.type == ARCH_TYPE_RAFT ? ARCH_TYPE_RAFT : ARCH_TYPE_LEARNER;
    out.key(index, std::string_view(arch_cfg_get_arch_name_by_type(type)));
}

// The instance names; the first entry alone when the record counts none.
void instance_list(text_writer& out, ulint index, const arch_cfg_t& arch) {
    const std::size_t count = std::max<std::size_t>(instance_names(arch).size(), 1);
    out.key_list(index, std::span(arch.dest_insts).first(count));
}

// Reading takes a blank at a line's end for none of the path: a separator behind it, which reading
// drops, keeps it.
void path(text_writer& out, ulint index, const arch_cfg_t& arch) {
    const std::string_view text = text_in(arch.dest);
    if (!text.ends_with(' ')) return out.key(index, text);
    schar kept[sizeof arch.dest + 1];
    *std::copy(text.begin(), text.end(), kept) = '/';
    out.key(index, std::string_view(kept, text.size() + 1));
}

void line_feed(text_writer& out, ulint, const arch_cfg_t&) {
    out.append("\n");
}

// ---- What is written ----

constexpr std::string_view header =
    "#Velkor Database Archive Configuration file\n#this is comments\n\n";

using rec = arch_cfg_t;
using sys = arch_cfg_sys_t;

constexpr text_line<sys> settings[] = {
    {ini_index_arch_timely_wait_apply, unless<&sys::wait_apply, ARCH_UNSET_FLAG>},
    {ini_index_arch_reserve_time, unless<&sys::arch_reserve_time, ARCH_UNSET_LONG>},
    {ini_index_arch_local_share, unless<&sys::arch_local_share, ARCH_UNSET_FLAG>},
    {ini_index_arch_local_share_check, unless<&sys::arch_local_share_check, ARCH_UNSET_FLAG>},
    {ini_index_xmal_hb_interval, unless<&sys::xmal_hb_interval, ARCH_UNSET_LONG>},
    {ini_index_raft_hb_interval, unless<&sys::raft_hb_interval, 0>},
    {ini_index_raft_vote_interval, unless<&sys::raft_vote_interval, 0, ARCH_UNSET_LONG>},
    {ini_index_xmal_ip, unless_empty<&sys::xmal_ip>},
    {ini_index_xmal_port, unless<&sys::xmal_port, 0>},
    {ini_index_raft_self_id, unless<&sys::raft_self_id, ARCH_UNSET_SHORT>},
    {ini_index_arch_asm_mirror, unless<&sys::arch_asm_mirror, ARCH_UNSET_FLAG>},
    {ini_index_arch_asm_striping, unless<&sys::arch_asm_striping, ARCH_UNSET_SHORT>},
    {ini_index_raft_pkg_interval, unless<&sys::raft_pkg_interval, 0>},
    {ini_index_self_center_id, unless<&sys::self_center_id, 0>},
};

constexpr text_line<rec> local_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_LOCAL>},
    {ini_index_arch_dest, path},
    {ini_index_arch_file_size, value<&rec::file_size>},
    {ini_index_arch_space_limit, value<&rec::space_limit>},
    {ini_index_arch_flush_buf_size, value<&rec::flush_buf_size>},
    {ini_index_arch_hang_flag, value<&rec::hang_flag>},
};

constexpr text_line<rec> realtime_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_REALTIME>},
    {ini_index_arch_dest, instance_list},
    {0, line_feed},
    {ini_index_arch_wait_apply, unless<&rec::wait_apply, ARCH_UNSET_FLAG>},
    {ini_index_arch_failover, value<&rec::arch_failover>},
};

constexpr text_line<rec> sync_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_SYNC>},
    {ini_index_arch_dest, instance_list},
    {ini_index_arch_recover_time, value<&rec::arch_recover_time>},
};

constexpr text_line<rec> async_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_ASYNC>},
    {ini_index_arch_dest, instance_list},
    {ini_index_arch_timer_name, value<&rec::timer_name>},
    {ini_index_arch_send_delay, value<&rec::arch_send_delay>},
};

constexpr text_line<rec> timely_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_TIMELY>},
    {ini_index_arch_dest, instance_list},
    {0, line_feed},
    {ini_index_arch_wait_apply, unless<&rec::wait_apply, ARCH_UNSET_FLAG>},
    {ini_index_arch_failover, value<&rec::arch_failover>},
};

constexpr text_line<rec> remote_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_REMOTE>},
    {ini_index_arch_dest, value<&rec::timer_name>},
    {ini_index_incoming_path, path},
    {ini_index_arch_file_size, value<&rec::file_size>},
    {ini_index_arch_space_limit, value<&rec::space_limit>},
    {ini_index_arch_flush_buf_size, value<&rec::flush_buf_size>},
};

constexpr text_line<rec> raft_lines[] = {
    {ini_index_arch_type, raft_type_name},
    {ini_index_arch_dest, value<&rec::dest>},
    {ini_index_arch_dest_ip, unless_empty<&rec::arch_dest_ip>},
    {ini_index_arch_dest_port, unless<&rec::arch_dest_port, 0>},
    {ini_index_arch_dest_id, value<&rec::arch_dest_id>},
    {ini_index_arch_center_id, unless<&rec::arch_center_id, 0>},
};

constexpr text_line<rec> subscribe_lines[] = {
    {ini_index_arch_type, type_name<ARCH_TYPE_SUBSCRIBE>},
    {ini_index_arch_subscribe_mode, value<&rec::arch_subscb_mode>},
    {ini_index_arch_dest, value<&rec::dest>},
    {ini_index_arch_timer_name, value<&rec::timer_name>},
    {ini_index_arch_threshold_per_second, value<&rec::arch_threshold_per_second>},
    {ini_index_arch_send_delay, value<&rec::arch_send_delay>},
};

using section_lines = std::span<const text_line<rec>>;

// By type; a record without a type has no lines and is not written.
constexpr section_lines lines_of_type[ARCH_TYPE_COUNT] = {
    {},           local_lines,  realtime_lines, sync_lines, async_lines,
    timely_lines, remote_lines, raft_lines,     raft_lines, subscribe_lines,
};

// ---- Writing ----

void write_settings(text_writer& out, const arch_cfg_sys_t& registry) {
    for (const auto& line : settings) {
        const schar* before = out.end();
        line.append(out, line.index, registry);
        if (out.end() != before) out.append("\n");
    }
}

void write_section(text_writer& out, const arch_cfg_t& arch, section_lines lines) {
    out.append("[");
    out.append(text_in(arch.name));
    out.append("]\n");
    for (const auto& line : lines)
        line.append(out, line.index, arch);
    out.append("\n");
}

void write_registry(text_writer& out, const arch_cfg_sys_t& registry) {
    out.append(header);
    write_settings(out, registry);
    for (const arch_cfg_t& arch : destinations(registry))
        if (arch.type != ARCH_TYPE_NONE && arch.type < ARCH_TYPE_COUNT)
            write_section(out, arch, lines_of_type[arch.type]);
}

// Writes behind the text of `text_length` characters that `buffer` holds. When it does not fit,
// the buffer keeps that text, and the refusal is logged.
template <typename Write>
kqcode_t write_behind(schar* buffer, std::size_t text_length, Write write) {
    if (text_length < ARCH_CFG_TEXT_SIZE) {
        text_writer out(buffer + text_length, ARCH_CFG_TEXT_SIZE - text_length);
        write(out);
        if (out.close()) return 0;
        buffer[text_length] = '\0';
    }
    return refuse_logged(ARCH_E_OUT_OF_MEMORY,
                         "the text of kqarch.ini does not fit into %d characters",
                         ARCH_CFG_TEXT_SIZE);
}

void append_section(schar* buffer, const arch_cfg_t& arch, section_lines lines) {
    (void)write_behind(buffer, std::strlen(buffer),
                       [&](text_writer& out) { write_section(out, arch, lines); });
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_sys_write_to_rec(schar* rec_str) {
    return write_behind(rec_str, 0, [](text_writer& out) { write_registry(out, arch_cfg_sys); });
}

void arch_cfg_write_global_ini(schar* rec_str, schar*) {
    (void)write_behind(rec_str, std::strlen(rec_str),
                       [](text_writer& out) { write_settings(out, arch_cfg_sys); });
}

void arch_cfg_write_local_ini(schar* rec_str, schar*, arch_cfg_t* arch) {
    append_section(rec_str, *arch, local_lines);
}

void arch_cfg_write_all_local_ini(schar* rec_str, schar*) {
    (void)write_behind(rec_str, std::strlen(rec_str), [](text_writer& out) {
        for (const arch_cfg_t& arch : destinations(arch_cfg_sys))
            if (arch.type == ARCH_TYPE_LOCAL) write_section(out, arch, local_lines);
    });
}

void arch_cfg_write_raft_ini(schar* rec_str, schar*, arch_cfg_t* arch) {
    append_section(rec_str, *arch, raft_lines);
}

void arch_cfg_write_subscribe_ini(schar* rec_str, schar*, arch_cfg_t* arch) {
    append_section(rec_str, *arch, subscribe_lines);
}

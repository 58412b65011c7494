// The keys of the other configuration files: their indexes, bounds and written form.
#include <array>
#include <cstring>
#include <limits>

#include "ini.h"
#include "instance_files.h"
#include "text.h"

using namespace platform;

namespace {

struct key_row {
    ulint index;
    other_ini_alterable_t entry;
};

#define TEXT_KEY(name) name, 1, 0, 0, name " = %s\n"
#define NUMBER_KEY(name, least, most) name, 0, most, least, name " = %u\n"

constexpr key_row key_rows[] = {
    // kqmal.ini
    {0, {TEXT_KEY("MAL_INST_NAME")}},
    {1, {TEXT_KEY("MAL_INST_HOST")}},
    {2, {NUMBER_KEY("MAL_INST_PORT", 0, 65535)}},
    {3, {TEXT_KEY("MAL_HOST")}},
    {4, {NUMBER_KEY("MAL_PORT", 0, 65535)}},
    // kqarch.ini
    {ini_index_arch_type, {TEXT_KEY("ARCH_TYPE")}},
    {ini_index_arch_dest, {TEXT_KEY("ARCH_DEST")}},
    {ini_index_arch_timer_name, {TEXT_KEY("ARCH_TIMER_NAME")}},
    {ini_index_arch_file_size, {NUMBER_KEY("ARCH_FILE_SIZE", 64, 2048)}},
    {ini_index_arch_space_limit, {NUMBER_KEY("ARCH_SPACE_LIMIT", 1024, 2147483647)}},
    {ini_index_arch_hang_flag, {NUMBER_KEY("ARCH_HANG_FLAG", 0, 1)}},
    {ini_index_arch_timely_wait_apply, {NUMBER_KEY("ARCH_WAIT_APPLY", 0, 1)}},
    {ini_index_arch_reserve_time, {NUMBER_KEY("ARCH_RESERVE_TIME", 0, 4294967294)}},
    {ini_index_incoming_path, {TEXT_KEY("ARCH_INCOMING_PATH")}},
    {ini_index_arch_flush_buf_size, {NUMBER_KEY("ARCH_FLUSH_BUF_SIZE", 0, 128)}},
    {ini_index_xmal_hb_interval, {NUMBER_KEY("XMAL_HB_INTERVAL", 1, 1800)}},
    {ini_index_raft_hb_interval, {NUMBER_KEY("RAFT_HB_INTERVAL", 1, 1800)}},
    {ini_index_raft_vote_interval, {NUMBER_KEY("RAFT_VOTE_INTERVAL", 2, 3600)}},
    {ini_index_arch_dest_ip, {TEXT_KEY("ARCH_DEST_IP")}},
    {ini_index_arch_dest_port, {NUMBER_KEY("ARCH_DEST_PORT", 1, 65535)}},
    {ini_index_xmal_ip, {TEXT_KEY("XMAL_IP")}},
    {ini_index_xmal_port, {NUMBER_KEY("XMAL_PORT", 1, 65535)}},
    {ini_index_arch_local_share, {NUMBER_KEY("ARCH_LOCAL_SHARE", 0, 1)}},
    {ini_index_arch_local_share_check, {NUMBER_KEY("ARCH_LOCAL_SHARE_CHECK", 0, 1)}},
    {ini_index_arch_send_delay, {NUMBER_KEY("ARCH_SEND_DELAY", 0, 1440)}},
    {ini_index_raft_self_id, {NUMBER_KEY("RAFT_SELF_ID", 0, 65534)}},
    {ini_index_arch_dest_id, {NUMBER_KEY("ARCH_DEST_ID", 0, 65534)}},
    {ini_index_raft_learner, {NUMBER_KEY("RAFT_LEARNER", 0, 1)}},
    {ini_index_arch_wait_apply, {NUMBER_KEY("WAIT_APPLY", 0, 1)}},
    {ini_index_arch_recover_time, {NUMBER_KEY("ARCH_RECOVER_TIME", 0, 86400)}},
    {ini_index_raft_pkg_interval, {NUMBER_KEY("RAFT_PKG_INTERVAL", 1, 60000)}},
    {ini_index_self_center_id, {NUMBER_KEY("SELF_CENTER_ID", 0, 65534)}},
    {ini_index_arch_center_id, {NUMBER_KEY("ARCH_CENTER_ID", 0, 65534)}},
    {ini_index_arch_failover, {NUMBER_KEY("ARCH_FAILOVER", 0, 1)}},
    {ini_index_arch_subscribe_mode, {NUMBER_KEY("ARCH_SUBSCRIBE_MODE", 0, 1)}},
    {ini_index_arch_threshold_per_second, {NUMBER_KEY("ARCH_THRESHOLD_PER_SECOND", 0, 65535)}},
    {ini_index_arch_recv_path, {TEXT_KEY("ARCH_RECV_PATH")}},
    // kqdcr.ini
    {55, {NUMBER_KEY("DCR_SEQNO", 0, 255)}},
    {56, {NUMBER_KEY("EP_SEQNO", 0, 15)}},
    {57, {TEXT_KEY("STATE")}},
    {58, {TEXT_KEY("EP_HOST")}},
    {59, {NUMBER_KEY("EP_LSNR_PORT", 0, 65535)}},
    // kqarch.ini
    {ini_index_arch_asm_mirror, {NUMBER_KEY("ARCH_ASM_MIRROR", 1, 3)}},
    {ini_index_arch_asm_striping, {NUMBER_KEY("ARCH_ASM_STRIPING", 0, 256)}},
};

#undef TEXT_KEY
#undef NUMBER_KEY

constexpr std::size_t entry_count = ini_index_arch_asm_striping + 1;

// By index; null names are indexes of no key.
constexpr std::array<other_ini_alterable_t, entry_count> make_entries() {
    std::array<other_ini_alterable_t, entry_count> made{};
    for (const key_row& row : key_rows)
        made[row.index] = row.entry;
    return made;
}

constexpr auto original_entries = make_entries();
constinit auto entries = original_entries;

// A key is found by a hash of its length and four of its characters that sends no two keys of the
// table to one slot; the multiplier that does so is searched by the compiler. One comparison then
// decides.
struct key_slot {
    std::string_view name;
    lint index = -1;
};

constexpr std::size_t slot_count = 256;
using slot_table = std::array<key_slot, slot_count>;

constexpr unsigned folded(char c) {
    return static_cast<unsigned char>(c) & 0xdfu;
}

constexpr std::size_t slot_of(std::string_view key, unsigned multiplier) {
    std::size_t length = key.size();
    unsigned characters = folded(key[0]) | folded(key[length / 2]) << 8 |
                          folded(key[length - 2]) << 16 | folded(key[length - 1]) << 24;
    return ((characters ^ static_cast<unsigned>(length) * 0x9e3779b9u) * multiplier) >> 24;
}

constexpr bool has_no_collision(unsigned multiplier) {
    bool taken[slot_count] = {};
    for (const key_row& row : key_rows) {
        bool& slot = taken[slot_of(row.entry.para_name, multiplier)];
        if (slot) return false;
        slot = true;
    }
    return true;
}

constexpr unsigned find_multiplier() {
    unsigned multiplier = 0x85ebca6bu;
    while (!has_no_collision(multiplier))
        multiplier = multiplier * 1664525u + 1013904223u;
    return multiplier;
}

constexpr unsigned multiplier = find_multiplier();

constexpr slot_table make_slots() {
    slot_table made{};
    for (const key_row& row : key_rows) {
        made[slot_of(row.entry.para_name, multiplier)] = {row.entry.para_name,
                                                          static_cast<lint>(row.index)};
    }
    return made;
}

constexpr slot_table slots = make_slots();

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// The value of a digit, or more than any base for what is none.
constexpr unsigned digit_value(char c) {
    if (is_digit(c)) return static_cast<unsigned>(c - '0');
    char upper = upper_case(c);
    return upper >= 'A' && upper <= 'F' ? static_cast<unsigned>(upper - 'A' + 10) : 16;
}

}  // namespace

void platform::restore_key_bounds() {
    entries = original_entries;
}

lint ini_get_other_ini_array_index(const schar* para_name) {
    if (para_name == nullptr) return -1;
    std::string_view key = para_name;
    if (key.size() < 2) return -1;
    const key_slot& slot = slots[slot_of(key, multiplier)];
    return equal_ignoring_case(slot.name, key) ? slot.index : -1;
}

other_ini_alterable_t* ini_get_other_ini_info_by_index(ulint index) {
    return index < entry_count && entries[index].para_name != nullptr ? &entries[index] : nullptr;
}

kqbool ini_is_integer(const schar* text) {
    if (text == nullptr) return 0;
    unsigned base = text[0] != '0' ? 10 : text[1] == 'x' ? 16 : 8;
    const schar* digit = base == 16 ? text + 2 : text;
    if (*digit == '\0') return 0;
    ulint64 value = 0;
    for (; *digit != '\0'; ++digit) {
        unsigned added = digit_value(*digit);
        if (added >= base) return 0;
        value = value * base + added;
        if (value > std::numeric_limits<ulint>::max()) return 0;
    }
    return 1;
}

void ini_set_other_ini_range(ulint index, lint64 min_value, lint64 max_value) {
    other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(index);
    if (entry == nullptr) return;
    entry->min_value = min_value;
    entry->max_value = max_value;
}

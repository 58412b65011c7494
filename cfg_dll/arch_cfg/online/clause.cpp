// Parsing an archive clause: KEYWORD = value, KEYWORD = value, ...
//
//   TYPE = REALTIME, DEST = inst1/inst2, WAIT_APPLY = 1
//
// There is no quoting: a value ends at the next comma and may contain "=". A keyword is a row; the
// last one wins when it stands twice. The clause is cut in place, and nothing is allocated.
#include <algorithm>
#include <array>
#include <span>

#include "common/folded_text.h"
#include "common/number.h"
#include "common/server.h"
#include "registry/registry.h"

using namespace arch;

namespace arch {
namespace {

constexpr std::size_t longest_timer_name = 127;

// What a clause fills.
struct clause_result {
    arch_cfg_t& record;
    schar* dest;
    ulint& raft_vote_interval;
    bool dest_too_long = false;
};

// The value is terminated.
using keyword_function = kqcode_t (*)(clause_result&, std::string_view value);

// ---- Numbers ----

bool read_number(std::string_view text, ulint& number) {
    if (ini_is_integer(text.data()) == 0) return false;
    number = number_in(text.data());
    return true;
}

std::string_view without_plus(std::string_view text) {
    return text.substr(text.front() == '+' ? 1 : 0);
}

bool read_unsigned(std::string_view text, ulint& number) {
    text = without_plus(text);
    return !text.starts_with('-') && read_number(text, number);
}

template <auto Field, ulint Bits = 0xFFFFFFFF>
kqcode_t unsigned_number(clause_result& result, std::string_view value) {
    ulint number = 0;
    if (!read_unsigned(value, number)) return ARCH_E_INVALID_NUMBER;
    result.record.*Field = number & Bits;
    return 0;
}

constexpr ulint low_16_bits = 0xFFFF;

// A subscriber's number; a clause that names one and no type is about the subscriber.
template <auto Field>
kqcode_t subscriber_number(clause_result& result, std::string_view value) {
    const kqcode_t code = unsigned_number<Field, low_16_bits>(result, value);
    if (code >= 0 && result.record.type == ARCH_TYPE_NONE) result.record.type = ARCH_TYPE_SUBSCRIBE;
    return code;
}

kqcode_t recover_time(clause_result& result, std::string_view value) {
    ulint number = 0;
    if (!read_unsigned(value, number)) return ARCH_E_INVALID_NUMBER;
    if (!in_key_range(ini_index_arch_recover_time, number)) return ARCH_E_VALUE_OUT_OF_RANGE;
    result.record.arch_recover_time = number;
    return 0;
}

// Stored before it is judged: a refused record still shows what was asked for.
template <auto Field>
kqcode_t flag(clause_result& result, std::string_view value) {
    if (!read_number(value, result.record.*Field)) return ARCH_E_INVALID_NUMBER;
    return result.record.*Field > 1 ? ARCH_E_VALUE_OUT_OF_RANGE : 0;
}

kqcode_t raft_vote_interval(clause_result& result, std::string_view value) {
    if (!read_number(value, result.raft_vote_interval)) return ARCH_E_INVALID_NUMBER;
    const ulint interval = result.raft_vote_interval;
    if (interval == 0) return 0;
    if (!in_key_range(ini_index_raft_vote_interval, interval)) return ARCH_E_VALUE_OUT_OF_RANGE;
    return interval < 2 * arch_cfg_sys_get_raft_hb_interval() ? ARCH_E_VALUE_OUT_OF_RANGE : 0;
}

// One digit, of which the range is checked with the record.
kqcode_t hang_flag(clause_result& result, std::string_view value) {
    ulint number = 0;
    if (!read_unsigned(value, number) || without_plus(value).size() > 1)
        return ARCH_E_INVALID_HANG_FLAG;
    result.record.hang_flag = static_cast<usint>(number);
    return 0;
}

// ---- Texts ----

kqcode_t type(clause_result& result, std::string_view value) {
    const ulint number = arch_cfg_get_arch_type_by_name(value.data());
    // MARCH is a word of the file, not of a clause.
    if (number == ARCH_TYPE_NONE || same_text(value, "MARCH")) return ARCH_E_INVALID_TYPE;
    result.record.type = static_cast<usint>(number);
    return 0;
}

kqcode_t dest(clause_result& result, std::string_view value) {
    result.dest_too_long = value.size() > ARCH_CLAUSE_DEST_MAX;
    if (result.dest_too_long) return ARCH_E_TOO_LONG;
    copy_characters(result.dest, value);
    result.dest[value.size()] = '\0';
    return 0;
}

// Both texts travel in the same field, and the later one wins: a REMOTE destination has no timer.
template <std::size_t Longest, kqcode_t TooLong>
kqcode_t timer_or_path(clause_result& result, std::string_view value) {
    if (value.size() > Longest) return TooLong;
    copy_text(result.record.timer_name, value);
    return 0;
}

// ---- The keywords ----

struct keyword_row {
    std::string_view keyword;
    usint bit;
    keyword_function apply;
};

using rec = arch_cfg_t;

// By length, which is where a search begins.
constexpr keyword_row keywords[] = {
    {"TYPE", 0, type},
    {"DEST", 0, dest},
    {"FILE_SIZE", ARCH_MOD_FILE_SIZE, unsigned_number<&rec::file_size, low_16_bits>},
    {"HANG_FLAG", ARCH_MOD_IN_MOUNT, hang_flag},
    {"WAIT_APPLY", ARCH_MOD_IN_MOUNT, flag<&rec::wait_apply>},
    {"SPACE_LIMIT", ARCH_MOD_SPACE_LIMIT, unsigned_number<&rec::space_limit>},
    {"INCOMING_PATH", ARCH_MOD_IN_MOUNT, timer_or_path<KQ_PATHNAME_MAX, ARCH_E_TOO_LONG>},
    {"ARCH_FAILOVER", ARCH_MOD_FAILOVER, flag<&rec::arch_failover>},
    {"ARCH_TIMER_NAME", ARCH_MOD_IN_MOUNT,
     timer_or_path<longest_timer_name, ARCH_E_TIMER_NAME_TOO_LONG>},
    {"ARCH_SEND_DELAY", ARCH_MOD_SEND_DELAY, unsigned_number<&rec::arch_send_delay, low_16_bits>},
    {"ARCH_RECOVER_TIME", ARCH_MOD_RECOVER_TIME, recover_time},
    {"RAFT_VOTE_INTERVAL", ARCH_MOD_RAFT_VOTE_INTERVAL, raft_vote_interval},
    {"ARCH_FLUSH_BUF_SIZE", ARCH_MOD_IN_MOUNT, unsigned_number<&rec::flush_buf_size>},
    {"ARCH_SUBSCRIBE_MODE", ARCH_MOD_SUBSCRIBE_MODE, subscriber_number<&rec::arch_subscb_mode>},
    {"ARCH_THRESHOLD_PER_SECOND", ARCH_MOD_THRESHOLD,
     subscriber_number<&rec::arch_threshold_per_second>},
};

constexpr std::size_t length_of(const keyword_row& row) {
    return row.keyword.size();
}

static_assert(std::ranges::is_sorted(keywords, {}, length_of));

constexpr std::size_t longest_keyword = length_of(*std::rbegin(keywords));

using length_rows = std::array<const keyword_row*, longest_keyword + 2>;

constexpr length_rows find_length_rows() {
    length_rows first{};
    for (std::size_t length = 0; length != first.size(); ++length)
        first[length] = std::ranges::lower_bound(keywords, length, {}, length_of);
    return first;
}

// The rows of keywords of a length begin here, and end where those of the next begin.
constexpr length_rows first_of_length = find_length_rows();

// The keyword is not empty.
const keyword_row* find_keyword(std::string_view keyword) {
    const std::size_t length = keyword.size();
    if (length > longest_keyword) return nullptr;
    const schar first = fold(keyword.front());
    for (const keyword_row& row : std::span(first_of_length[length], first_of_length[length + 1]))
        if (row.keyword.front() == first && same_characters(row.keyword, keyword)) return &row;
    return nullptr;
}

kqcode_t apply_keyword(std::string_view keyword, std::string_view value, clause_result& result,
                       usint& named) {
    const keyword_row* row = find_keyword(keyword);
    if (row == nullptr) return ARCH_E_CLAUSE_UNKNOWN_KEYWORD;
    const kqcode_t code = row->apply(result, value);
    if (code >= 0) named = static_cast<usint>(named | row->bit);
    return code;
}

// ---- Segments ----

kqcode_t parse_segment(schar* begin, std::size_t length, clause_result& result, usint& named) {
    const std::string_view segment(begin, length);
    const std::size_t equals = segment.find('=');
    if (equals == segment.npos || equals == 0) return ARCH_E_CLAUSE_SYNTAX;
    const std::string_view keyword = trimmed(segment.substr(0, equals));
    const std::string_view value = trimmed(segment.substr(equals + 1));
    if (keyword.empty() || value.empty()) return ARCH_E_CLAUSE_SYNTAX;
    begin[value.data() + value.size() - begin] = '\0';
    return apply_keyword(keyword, value, result, named);
}

kqcode_t parse_segments(schar* clause, clause_result& result, usint& named) {
    std::string_view rest = clause;
    for (;;) {
        const std::size_t comma = rest.find(',');
        const std::size_t length = std::min(comma, rest.size());
        const kqcode_t code = parse_segment(clause, length, result, named);
        if (code < 0) return code;
        if (comma == rest.npos) return 0;
        rest.remove_prefix(comma + 1);
        clause += comma + 1;
    }
}

}  // namespace
}  // namespace arch

kqcode_t arch_cfg_parse_sql(schar* arch_cfg_str, arch_cfg_t* arch_cfg, schar* dest_org,
                            usint* mod_in_mount, ulint* raft_vote_interval) {
    *raft_vote_interval = ARCH_UNSET_LONG;
    arch_init(arch_cfg, "");
    if (arch_cfg_str == nullptr || arch_cfg_str[0] == '\0') return ARCH_E_CLAUSE_SYNTAX;

    clause_result result{*arch_cfg, dest_org, *raft_vote_interval};
    const kqcode_t code = parse_segments(arch_cfg_str, result, *mod_in_mount);
    if (result.dest_too_long) return code;
    // Only the subscriber's delay has a bit that says all about it.
    if (arch_cfg->type != ARCH_TYPE_SUBSCRIBE && (*mod_in_mount & ARCH_MOD_SEND_DELAY) != 0)
        *mod_in_mount = static_cast<usint>(*mod_in_mount | ARCH_MOD_IN_MOUNT);
    return code;
}

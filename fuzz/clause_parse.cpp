// Any bytes as an archive clause: one of the documented codes, and nothing written outside the
// record, the buffer of DEST and the clause itself, which the address sanitizer watches.
#include <arch_cfg.h>
#include <stdint.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>

#include "watched_block.h"

namespace {

constexpr kqcode_t codes[] = {0,
                              ARCH_E_CLAUSE_SYNTAX,
                              ARCH_E_CLAUSE_UNKNOWN_KEYWORD,
                              ARCH_E_INVALID_TYPE,
                              ARCH_E_INVALID_NUMBER,
                              ARCH_E_VALUE_OUT_OF_RANGE,
                              ARCH_E_INVALID_HANG_FLAG,
                              ARCH_E_TOO_LONG,
                              ARCH_E_TIMER_NAME_TOO_LONG};

void require(bool holds) {
    if (!holds) __builtin_trap();
}

template <size_t Size>
bool is_terminated(const schar (&text)[Size]) {
    return memchr(text, 0, Size) != nullptr;
}

void check(const arch_cfg_t& record, kqcode_t code, usint bits, ulint vote_interval) {
    require(std::count(std::begin(codes), std::end(codes), code) == 1);
    require(is_terminated(record.timer_name) && record.name[0] == '\0' && record.dest[0] == '\0');
    require(record.type <= ARCH_TYPE_SUBSCRIBE && record.n_inst == 1 && record.hang_flag <= 9);
    require(record.file_size <= 65535 && record.arch_send_delay <= 65535);
    require(bits < 0x200);
    bool voted = (bits & ARCH_MOD_RAFT_VOTE_INTERVAL) != 0;
    require(code != 0 || voted == (vote_interval != ARCH_UNSET_LONG));
    require(code != 0 || !voted || vote_interval <= 3600);
    require(code != 0 || record.wait_apply <= 1 || record.wait_apply == ARCH_UNSET_FLAG);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    auto clause = make_text({reinterpret_cast<const char*>(data), size});
    auto record = make_block<arch_cfg_t>(1);
    auto dest = make_block<schar>(ARCH_CLAUSE_DEST_MAX + 1);
    memset(dest.get(), 'u', ARCH_CLAUSE_DEST_MAX + 1);
    usint bits = 0;
    ulint vote_interval = 0;
    kqcode_t code =
        arch_cfg_parse_sql(clause.get(), record.get(), dest.get(), &bits, &vote_interval);
    check(record[0], code, bits, vote_interval);
    return 0;
}

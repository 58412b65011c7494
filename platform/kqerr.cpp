// The server's error table: the English text of each code that this layer meets.
#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <string_view>

#include "arch_cfg.h"
#include "elog.h"
#include "platform_code.h"

using namespace platform;

namespace {

constexpr std::size_t description_size = 512;

// A %s stands for the next parameter.
struct error_text {
    kqcode_t code;
    std::string_view text;
};

constexpr error_text error_texts[] = {
    {0, "Success"},
    {ARCH_E_BACKUP, "Backup of kqarch.ini failed"},
    {ARCH_E_NO_SECTION, "Key without a section"},
    {ARCH_E_FILE_OPEN, "Cannot open file"},
    {ARCH_E_OUT_OF_MEMORY, "Out of memory"},
    {ARCH_E_CFG_CHANGING, "Another configuration change is in progress"},
    {ARCH_E_OUT_OF_SPACE, "Out of disk space"},
    {ARCH_E_NO_ARCH_PATH, "No archive path"},
    {ARCH_E_DUPLICATE_NAME, "Duplicate name"},
    {ARCH_E_PARA_NOT_ALLOWED, "Parameter not allowed"},
    {ARCH_E_INVALID_VALUE, "Invalid value"},
    {ARCH_E_CLAUSE_SYNTAX, "Malformed archive clause"},
    {ARCH_E_DEST_EXISTS, "Archive destination already in use"},
    {ARCH_E_INVALID_TYPE, "Invalid archive type"},
    {ARCH_E_INVALID_DEST, "Invalid archive destination"},
    {ARCH_E_NO_LOCAL, "No LOCAL archive"},
    {ARCH_E_TOO_MANY_LOCAL, "Too many LOCAL archives"},
    {ARCH_E_TOO_MANY_ASYNC, "Too many ASYNC archives"},
    {ARCH_E_TOO_MANY_REALTIME, "Too many REALTIME archives"},
    {ARCH_E_CLAUSE_UNKNOWN_KEYWORD, "Unknown keyword in archive clause"},
    {ARCH_E_INVALID_NUMBER, "Invalid number"},
    {ARCH_E_TIMER_NOT_FOUND, "Timer not found"},
    {ARCH_E_INVALID_PORT, "Invalid port"},
    {ARCH_E_TOO_MANY_TIMELY, "Too many TIMELY archives"},
    {ARCH_E_REALTIME_TIMELY_CONFLICT, "REALTIME and TIMELY archives together"},
    {ARCH_E_TOO_MANY_REMOTE, "Too many REMOTE archives"},
    {ARCH_E_MPP_NOT_SUPPORTED, "Not supported in MPP mode"},
    {ARCH_E_TOO_MANY_RAFT, "Too many RAFT archives"},
    {ARCH_E_TOO_MANY_LEARNER, "Too many LEARNER archives"},
    {ARCH_E_SYNC_CONFLICT, "SYNC archive beside one that excludes it"},
    {ARCH_E_SUBSCRIBE_CONFLICT, "SUBSCRIBE archive beside one that excludes it"},
    {ARCH_E_TOO_MANY_SUBSCRIBE, "Too many SUBSCRIBE archives"},
    {ARCH_E_INVALID_FILE_SIZE, "Invalid ARCH_FILE_SIZE"},
    {ARCH_E_TOO_LONG, "Text too long"},
    {ARCH_E_DEST_IS_SELF, "Archive destination is this instance"},
    {ARCH_E_DEST_NOT_FOUND, "Archive destination not found"},
    {ARCH_E_TIMER_NAME_TOO_LONG, "Timer name too long"},
    {ARCH_E_NO_TIMER, "No timer"},
    {ARCH_E_INVALID_SPACE_LIMIT, "Invalid ARCH_SPACE_LIMIT"},
    {ARCH_E_INVALID_HANG_FLAG, "Invalid ARCH_HANG_FLAG"},
    {ARCH_E_INVALID_PATH, "Invalid path"},
    {ARCH_E_TOO_MANY_INSTS, "Too many instances"},
    {ARCH_E_DUPLICATE_PATH, "Archive path already in use"},
    {ARCH_E_MULTI_INST_DEST, "Several instances where one is allowed"},
    {ARCH_E_NO_INCOMING_PATH, "No ARCH_INCOMING_PATH"},
    {ARCH_E_INVALID_SEND_DELAY, "Invalid ARCH_SEND_DELAY"},
    {ARCH_E_SHARED_PATH_CHANGED, "Shared archive path changed"},
    {ARCH_E_PEER_CFG_MISMATCH, "Archive configuration of a peer does not match"},
    {ARCH_E_INVALID_FLUSH_BUF_SIZE, "Invalid ARCH_FLUSH_BUF_SIZE"},
    {ARCH_E_TOO_MANY_SYNC, "Too many SYNC archives"},
    {ARCH_E_FAILOVER_WAIT_APPLY, "ARCH_FAILOVER and WAIT_APPLY together"},
    {ARCH_E_PEER_PATH_CONFLICT, "Archive path used by a peer"},
    {ARCH_E_RAFT_DEST_TOO_LONG, "Raft destination too long"},
    {ARCH_E_NOT_LEARNER, "Not a LEARNER"},
    {ARCH_E_RAFT_TYPE_MISMATCH, "Not the expected Raft type"},
    {ARCH_E_NOT_RAFT_MEMBER, "Not a member of the Raft group"},
    {ARCH_E_VALUE_OUT_OF_RANGE, "Value out of range"},
    {PLATFORM_E_NO_ENDPOINT, "Not an endpoint of the cluster group"},
    {ARCH_E_EP_NO_REMOTE, "Node %s of the cluster group has no REMOTE archive"},
    {ARCH_E_MAL_NOT_CONFIGURED, "MAL not configured"},
};

std::string_view text_of(kqcode_t code) {
    auto found = std::find_if(std::begin(error_texts), std::end(error_texts),
                              [code](const error_text& entry) { return entry.code == code; });
    return found != std::end(error_texts) ? found->text : "Unknown error";
}

// A text that is built up to the size of its buffer and always terminated.
struct description {
    schar text[description_size] = "";
    ulint length = 0;

    void append(std::string_view piece) {
        std::size_t count = piece.copy(text + length, description_size - 1 - length);
        length += static_cast<ulint>(count);
        text[length] = '\0';
    }
};

}  // namespace

kqcode_t kqerr_get_err_desc_with_langage(kqcode_t code, lint, ulint* err_len, schar* err_desc,
                                         ulint n_para, ...) {
    description made;
    std::string_view rest = text_of(code);
    va_list parameters;
    va_start(parameters, n_para);
    for (std::size_t at; n_para > 0 && (at = rest.find("%s")) != std::string_view::npos; --n_para) {
        made.append(rest.substr(0, at));
        const schar* parameter = va_arg(parameters, const schar*);
        made.append(parameter != nullptr ? parameter : "");
        rest.remove_prefix(at + 2);
    }
    va_end(parameters);
    made.append(rest);
    if (err_desc != nullptr) std::memcpy(err_desc, made.text, made.length + 1);
    if (err_len != nullptr) *err_len = made.length;
    return code;
}

#include "elog.h"

#include <fcntl.h>
#include <time.h>

#include <cerrno>
#include <cstdarg>
#include <mutex>
#include <new>
#include <string>

#include "arch_cfg.h"
#include "own_calls.h"
#include "text.h"

using namespace platform;

namespace {

std::mutex log_mutex;
int log_file = -1;  // under log_mutex

void close_log() {
    if (log_file >= 0) own_close(log_file);
    log_file = -1;
}

// An existing file is appended to; a new one is never created through a symbolic link. A pipe
// that nobody reads is refused instead of waited for.
int open_log(const schar* path) {
    constexpr int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    int file = own_open(path, flags);
    if (file >= 0 || errno != ENOENT) return file;
    return own_open(path, flags | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
}

std::string time_stamp() {
    timespec now{};
    tm local{};
    clock_gettime(CLOCK_REALTIME, &now);
    localtime_r(&now.tv_sec, &local);
    char day[32] = "";
    char stamp[48];
    (void)std::strftime(day, sizeof(day), "%Y-%m-%d %H:%M:%S", &local);
    (void)std::snprintf(stamp, sizeof(stamp), "%s.%03ld", day, now.tv_nsec / 1000000);
    return stamp;
}

KQ_PRINTF(1, 0) std::string format_text(const schar* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    (void)std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

// One write a line, so that lines of several processes do not mix.
void write_line(const std::string& line) {
    const char* next = line.data();
    std::size_t size = line.size();
    while (size > 0) {
        ssize_t written = own_write(log_file, next, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        next += written;
        size -= static_cast<std::size_t>(written);
    }
}

KQ_PRINTF(2, 0) void report(ulint level, const schar* format, va_list arguments) {
    std::string text = format_text(format, arguments);
    if (!text.empty() && text.back() == '\n') text.pop_back();
    std::string line = time_stamp() + " [" + static_cast<char>('0' + level % 10) + "] " +
                       escape_controls(text) + "\n";
    std::lock_guard hold(log_mutex);
    write_line(line);
}

bool log_is_open() {
    std::lock_guard hold(log_mutex);
    return log_file >= 0;
}

}  // namespace

void elog_report_ex(ulint level, const schar* format, ...) {
    if (format == nullptr || !log_is_open()) return;
    va_list arguments;
    va_start(arguments, format);
    try {
        report(level, format, arguments);
    } catch (const std::bad_alloc&) {
        // Without memory for the line there is nothing to say it with.
    }
    va_end(arguments);
}

void elog_try_report_kqerr(kqcode_t code, const schar* file, ulint line) {
    elog_report_ex(ELOG_REFUSAL, "code %d raised at %s:%u", code, file != nullptr ? file : "?",
                   line);
}

void aq_fprintf_inner(FILE* stream, const schar* format, ...) {
    if (stream == nullptr || format == nullptr) return;
    va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(stream, format, arguments);
    va_end(arguments);
    (void)std::fflush(stream);
}

kqcode_t elog_open(const schar* path) {
    std::lock_guard hold(log_mutex);
    close_log();
    if (path != nullptr) log_file = open_log(path);
    return log_file >= 0 ? 0 : ARCH_E_FILE_OPEN;
}

void elog_close(void) {
    std::lock_guard hold(log_mutex);
    close_log();
}

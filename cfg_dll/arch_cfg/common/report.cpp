#include "common/report.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "common/text.h"
#include "elog.h"

namespace arch {
namespace {

// The longest message holds a path, a section's name and two numbers.
constexpr std::size_t formatted_size = 1024;
constexpr std::size_t shown_size = 4 * formatted_size;

// A formatted message that is one line, whatever the texts in it hold.
class message {
  public:
    message(const schar* format, va_list arguments) KQ_PRINTF(2, 0);

    const schar* text() const { return shown_; }
    const schar* without_line_feed() {
        if (length_ > 0 && shown_[length_ - 1] == '\n') shown_[--length_] = '\0';
        return shown_;
    }

  private:
    void show(schar c);

    schar shown_[shown_size];
    std::size_t length_ = 0;
};

message::message(const schar* format, va_list arguments) {
    schar formatted[formatted_size] = "";
    (void)std::vsnprintf(formatted, sizeof formatted, format, arguments);
    const std::size_t size = std::strlen(formatted);
    for (std::size_t i = 0; i < size; ++i) {
        const bool closing_line_feed = i + 1 == size && formatted[i] == '\n';
        if (closing_line_feed)
            shown_[length_++] = '\n';
        else
            show(formatted[i]);
    }
    shown_[length_] = '\0';
}

void message::show(schar c) {
    constexpr schar digits[] = "0123456789ABCDEF";
    if (!is_control(c)) {
        shown_[length_++] = c;
        return;
    }
    shown_[length_++] = '\\';
    shown_[length_++] = 'x';
    shown_[length_++] = digits[static_cast<byte>(c) >> 4];
    shown_[length_++] = digits[static_cast<byte>(c) & 15];
}

}  // namespace

kqcode_t refuse(kqcode_t code, const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    aq_fprintf_inner(stderr, "%s", said.text());
    elog_report_ex(ELOG_REFUSAL, "%s", said.text());
    return code;
}

kqcode_t refuse_log_bare(kqcode_t code, const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    message said(format, arguments);
    va_end(arguments);
    aq_fprintf_inner(stderr, "%s", said.text());
    elog_report_ex(ELOG_REFUSAL, "%s", said.without_line_feed());
    return code;
}

kqcode_t refuse_printed(kqcode_t code, const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    aq_fprintf_inner(stderr, "%s", said.text());
    return code;
}

kqcode_t refuse_logged(kqcode_t code, const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    elog_report_ex(ELOG_REFUSAL, "%s", said.text());
    return code;
}

kqcode_t refuse_direct(kqcode_t code, const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    (void)std::fputs(said.text(), stderr);
    elog_report_ex(ELOG_REFUSAL, "%s", said.text());
    return code;
}

void warn(const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    elog_report_ex(ELOG_WARNING, "%s", said.text());
}

void report_change(const schar* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const message said(format, arguments);
    va_end(arguments);
    elog_report_ex(ELOG_CHANGE, "%s", said.text());
}

kqcode_t raise(kqcode_t code, int line) {
    elog_try_report_kqerr(code, "cfg_dll/arch_cfg", static_cast<ulint>(line));
    return code;
}

}  // namespace arch

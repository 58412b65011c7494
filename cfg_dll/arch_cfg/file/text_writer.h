// Lines of kqarch.ini appended to a buffer.
#ifndef ARCH_FILE_TEXT_WRITER_H
#define ARCH_FILE_TEXT_WRITER_H

#include <array>
#include <charconv>
#include <string_view>
#include <utility>

#include "common/text.h"
#include "file/key_numbers.h"

namespace arch {

// Keeps the end of what it has written; what does not fit is left out, and remembered.
class text_writer {
  public:
    text_writer(schar* end, std::size_t room) : end_(end), room_(room - 1) {}

    void append(std::string_view text) {
        if (!fits(text.size())) return;
        copy_characters(end_, text);
        advance(end_ + text.size());
    }

    void append(ulint number) {
        const auto [end, error] = std::to_chars(end_, end_ + room_, number);
        if (error == std::errc())
            advance(end);
        else
            fits_ = false;
    }

    // The line of a key, with a text or a number.
    template <typename Value>
    void key(ulint index, Value value) {
        const key_format& format = format_of(index);
        append(format.before);
        append(value);
        append(format.after);
    }

    // The same with a list of texts joined with "/".
    template <typename Texts>
    void key_list(ulint index, const Texts& texts) {
        const key_format& format = format_of(index);
        append(format.before);
        for (bool is_first = true; const auto& text : texts) {
            if (!std::exchange(is_first, false)) append("/");
            append(text_in(text));
        }
        append(format.after);
    }

    // Terminates the text; false when something did not fit.
    bool close() {
        *end_ = '\0';
        return fits_;
    }

    const schar* end() const { return end_; }

  private:
    // What stands around the one conversion of a key's format.
    struct key_format {
        std::string_view before;
        std::string_view after;
    };

    // The INI module's format of a key, split once for all its lines.
    const key_format& format_of(ulint index) {
        key_format& format = formats_[key_number(index)];
        if (format.before.empty()) format = split_format(index);
        return format;
    }

    static key_format split_format(ulint index);

    bool fits(std::size_t size) {
        fits_ = fits_ && size <= room_;
        return fits_;
    }

    void advance(schar* end) {
        room_ -= static_cast<std::size_t>(end - end_);
        end_ = end;
    }

    schar* end_;
    std::size_t room_;  // without the terminator
    bool fits_ = true;
    std::array<key_format, key_count> formats_{};
};

}  // namespace arch

#endif

// Bounded texts: copies that know their field, comparisons ignoring case, trimming.
#ifndef ARCH_COMMON_TEXT_H
#define ARCH_COMMON_TEXT_H

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "kqtype.h"

namespace arch {

// The text in a field, also when nothing terminates it.
template <std::size_t Size>
std::string_view text_in(const schar (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

// Copies a text that overlaps nothing. Most are short: two pieces, which may overlap each other, cost
// less than a call.
inline void copy_characters(schar* to, std::string_view text) {
    const auto in_two = [&](auto piece) {
        auto last = piece;
        std::memcpy(&piece, text.data(), sizeof piece);
        std::memcpy(&last, text.data() + text.size() - sizeof last, sizeof last);
        std::memcpy(to, &piece, sizeof piece);
        std::memcpy(to + text.size() - sizeof last, &last, sizeof last);
    };
    if (text.size() > 32)
        std::memcpy(to, text.data(), text.size());
    else if (text.size() >= 16)
        in_two(std::array<ulint64, 2>{});
    else if (text.size() >= 8)
        in_two(ulint64{});
    else if (text.size() >= 4)
        in_two(ulint{});
    else
        for (std::size_t i = 0; i < text.size(); ++i)
            to[i] = text[i];
}

// Copies as much of a text as the field takes, and terminates it. The text may be the field's own.
template <std::size_t Size>
void copy_text(schar (&field)[Size], std::string_view text) {
    const std::size_t length = text.size() < Size ? text.size() : Size - 1;
    if (length > 0) std::memmove(field, text.data(), length);
    field[length] = '\0';
}

// The ASCII letters have one case; everything else is compared as it is. The locale plays no part,
// so that two servers never disagree about a name.
inline schar fold(schar c) {
    return c >= 'a' && c <= 'z' ? static_cast<schar>(c - 'a' + 'A') : c;
}

inline bool is_control(schar c) {
    return static_cast<byte>(c) < 0x20 || c == 0x7f;
}

// Whole texts ignoring case; a null text equals nothing.
inline bool same_text(const schar* left, const schar* right) {
    if (left == nullptr || right == nullptr) return false;
    for (; fold(*left) == fold(*right); ++left, ++right)
        if (*left == '\0') return true;
    return false;
}

// Whole texts with case.
inline bool same_path(const schar* left, const schar* right) {
    return std::strcmp(left, right) == 0;
}

// Without the blanks (the space character only) at both ends.
inline std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

// Whether the INI reader, which trims, reads a text back as it is written.
bool survives_reading(std::string_view text);

// Moves a text without its outer blanks to the start of its own buffer.
void trim_in_place(schar* text);

}  // namespace arch

#endif

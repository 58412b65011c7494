// Bounded texts: copies that know their field, comparisons ignoring case, trimming.
#ifndef ARCH_COMMON_TEXT_H
#define ARCH_COMMON_TEXT_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "kqtype.h"

namespace arch {

// In the order of the machine. What looks at several characters of a word relies on the first one
// being in the lowest byte.
static_assert(std::endian::native == std::endian::little);
template <typename Word = ulint64>
Word word_at(const schar* text) {
    Word word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// Which of eight characters is the first terminator, 8 for none.
inline std::size_t first_terminator(ulint64 word) {
    constexpr ulint64 each = 0x0101010101010101;
    return static_cast<std::size_t>(std::countr_zero((word - each) & ~word & 0x80 * each)) / 8;
}

// How long the text in a field is, also when nothing terminates it. Hands each eight characters in
// which it does not end to `take`. Most texts are short: a call would cost more.
template <typename Take>
std::size_t find_end(const schar* field, std::size_t size, Take take) {
    std::size_t length = 0;
    for (; length + 8 <= size; length += 8) {
        const ulint64 word = word_at(field + length);
        const std::size_t end = first_terminator(word);
        if (end < 8) return length + end;
        take(length, word);
    }
    return length + strnlen(field + length, size - length);
}

// The text in a field, also when nothing terminates it.
template <std::size_t Size>
std::string_view text_in(const schar (&field)[Size]) {
    return {field, find_end(field, Size, [](std::size_t, ulint64) {})};
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

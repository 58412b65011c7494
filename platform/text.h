// Texts without a locale: ASCII letters are folded, every other byte stands for itself.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace platform {

constexpr char upper_case(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool is_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

// Each of eight characters in upper case. In a byte whose upper bit is free, adding what is missing
// to 128 sets that bit for each character from a letter on.
inline std::uint64_t upper_case_word(const char* text) {
    constexpr std::uint64_t each = 0x0101010101010101;
    std::uint64_t word;
    std::memcpy(&word, text, sizeof(word));
    std::uint64_t low_bits = word & 0x7f * each;
    std::uint64_t from_a = low_bits + (0x80 - 'a') * each;
    std::uint64_t above_z = low_bits + (0x7f - 'z') * each;
    return word - ((from_a & ~above_z & ~word & 0x80 * each) >> 2);
}

// Below, at or above 0 like the first characters that differ, in any order that is always the same.
inline int compare_ignoring_case(const char* left, const char* right, std::size_t size) {
    constexpr std::size_t step = sizeof(std::uint64_t);
    for (std::size_t at = 0; size >= step && at < size; at += step) {
        // The last eight characters may overlap those before.
        std::size_t from = std::min(at, size - step);
        std::uint64_t left_word = upper_case_word(left + from);
        std::uint64_t right_word = upper_case_word(right + from);
        if (left_word != right_word) return left_word < right_word ? -1 : 1;
    }
    for (std::size_t at = 0; size < step && at < size; ++at) {
        int difference = upper_case(left[at]) - upper_case(right[at]);
        if (difference != 0) return difference;
    }
    return 0;
}

inline bool equal_ignoring_case(std::string_view left, std::string_view right) {
    return left.size() == right.size() &&
           compare_ignoring_case(left.data(), right.data(), left.size()) == 0;
}

// Orders the keys of a map so that a name is found in any case, without making a copy of it.
struct less_ignoring_case {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
};

// The same for the keys of a hash table.
struct hash_ignoring_case {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const;
};
struct same_ignoring_case {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const {
        return equal_ignoring_case(left, right);
    }
};

bool has_control(std::string_view text);

// Each control character as \xNN, so that a foreign text keeps to its line.
std::string escape_controls(std::string_view text);

// Copies what fits into a fixed buffer and always terminates it.
template <std::size_t size>
void copy_text(char (&target)[size], std::string_view text) {
    target[text.copy(target, size - 1)] = '\0';
}

}  // namespace platform

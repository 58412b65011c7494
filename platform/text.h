// Texts without a locale: ASCII letters are folded, every other byte stands for itself.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

constexpr char upper_case(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

constexpr bool is_control(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

constexpr bool equal_ignoring_case(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (upper_case(left[i]) != upper_case(right[i])) return false;
    }
    return true;
}

// Orders the keys of a map so that a name is found in any case, without making a copy of it.
struct less_ignoring_case {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const;
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

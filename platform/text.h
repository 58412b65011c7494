// Texts without a locale: ASCII letters are folded, every other byte stands for itself.
#pragma once

#include <bit>
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

// The first eight characters of a text, or all of a shorter one: pieces that may overlap, which asks
// for the first character in the lowest byte.
static_assert(std::endian::native == std::endian::little);
inline std::uint64_t first_word(std::string_view text) {
    const auto piece_at = [&](auto piece, std::size_t at) -> std::uint64_t {
        std::memcpy(&piece, text.data() + at, sizeof(piece));
        return piece;
    };
    if (text.size() >= 8) return piece_at(std::uint64_t{}, 0);
    if (text.size() >= 4) {
        std::size_t at = text.size() - 4;
        return piece_at(std::uint32_t{}, 0) | piece_at(std::uint32_t{}, at) << 8 * at;
    }
    std::uint64_t word = 0;
    for (std::size_t at = 0; at < text.size(); ++at)
        word |= piece_at(std::uint8_t{}, at) << 8 * at;
    return word;
}

// Each of eight characters in upper case. In a byte whose upper bit is free, adding what is missing
// to 128 sets that bit for each character from a letter on.
inline std::uint64_t upper_case_word(std::uint64_t word) {
    constexpr std::uint64_t each = 0x0101010101010101;
    std::uint64_t low_bits = word & 0x7f * each;
    std::uint64_t from_a = low_bits + (0x80 - 'a') * each;
    std::uint64_t above_z = low_bits + (0x7f - 'z') * each;
    return word - ((from_a & ~above_z & ~word & 0x80 * each) >> 2);
}

// Most texts are written in the case that they are looked for in.
inline bool equal_ignoring_case(std::uint64_t left, std::uint64_t right) {
    return left == right || upper_case_word(left) == upper_case_word(right);
}

inline bool equal_ignoring_case(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    for (; left.size() > 8; left.remove_prefix(8), right.remove_prefix(8))
        if (!equal_ignoring_case(first_word(left), first_word(right))) return false;
    return equal_ignoring_case(first_word(left), first_word(right));
}

// For the keys of a hash table, so that a name is found in any case, without making a copy of it.
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

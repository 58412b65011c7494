#include "text.h"

namespace platform {

std::size_t hash_ignoring_case::operator()(std::string_view text) const {
    // Where the program lies in memory, nobody knows who writes a file of names that collide.
    std::uint64_t hash = reinterpret_cast<std::uintptr_t>(&escape_controls);
    const auto mix = [&](std::uint64_t part) {
        hash = (hash ^ part) * 0x9e3779b97f4a7c15;
        hash ^= hash >> 32;
    };
    for (; text.size() > 8; text.remove_prefix(8))
        mix(upper_case_word(first_word(text)));
    mix(upper_case_word(first_word(text)));
    return hash;
}

namespace {

// Taking 0x20 away borrows from the bit of each character that is below, adding 1 carries into that
// of 0x7f; what a borrow reaches beyond stands above a control character anyway.
bool has_control(std::uint64_t word) {
    constexpr std::uint64_t each = 0x0101010101010101;
    const std::uint64_t below_blank = (word - 0x20 * each) & ~word;
    const std::uint64_t delete_character = ((word & 0x7f * each) + each) & ~word;
    return ((below_blank | delete_character) & 0x80 * each) != 0;
}

}  // namespace

bool has_control(std::string_view text) {
    constexpr std::uint64_t blanks = 0x2020202020202020;
    for (; text.size() >= 8; text.remove_prefix(8))
        if (has_control(first_word(text))) return true;
    return has_control(first_word(text) | blanks << 8 * text.size());
}

std::string escape_controls(std::string_view text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string shown;
    shown.reserve(text.size());
    for (char c : text) {
        if (is_control(c)) {
            shown += {'\\', 'x', digits[static_cast<unsigned char>(c) >> 4], digits[c & 15]};
        } else {
            shown += c;
        }
    }
    return shown;
}

}  // namespace platform

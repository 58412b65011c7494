#include "text.h"

#include <algorithm>

namespace platform {

bool less_ignoring_case::operator()(std::string_view left, std::string_view right) const {
    if (left.size() != right.size()) return left.size() < right.size();
    return compare_ignoring_case(left.data(), right.data(), left.size()) < 0;
}

std::size_t hash_ignoring_case::operator()(std::string_view text) const {
    // Where the program lies in memory, nobody knows who writes a file of names that collide.
    std::uint64_t hash = reinterpret_cast<std::uintptr_t>(&upper_case_word);
    const auto mix = [&](std::uint64_t part) {
        hash = (hash ^ part) * 0x9e3779b97f4a7c15;
        hash ^= hash >> 32;
    };
    for (; text.size() > sizeof(std::uint64_t); text.remove_prefix(sizeof(std::uint64_t)))
        mix(upper_case_word(text.data()));
    char rest[sizeof(std::uint64_t)] = {};
    text.copy(rest, sizeof(rest));
    mix(upper_case_word(rest));
    return hash;
}

bool has_control(std::string_view text) {
    return std::any_of(text.begin(), text.end(), is_control);
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

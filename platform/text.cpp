#include "text.h"

#include <algorithm>

namespace platform {

bool less_ignoring_case::operator()(std::string_view left, std::string_view right) const {
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char a, char b) {
                                            return static_cast<unsigned char>(upper_case(a)) <
                                                   static_cast<unsigned char>(upper_case(b));
                                        });
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

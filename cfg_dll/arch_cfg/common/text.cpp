#include "common/text.h"

#include <algorithm>

namespace arch {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    return text;
}

bool survives_reading(std::string_view text) {
    return std::none_of(text.begin(), text.end(), is_control) && trimmed(text) == text;
}

void trim_in_place(schar* text) {
    const std::string_view whole = text;
    const std::string_view kept = trimmed(whole);
    if (kept.size() == whole.size()) return;
    std::memmove(text, kept.data(), kept.size());
    text[kept.size()] = '\0';
}

}  // namespace arch

#include "common/text.h"

#include "common/folded_text.h"

namespace arch {

bool survives_reading(std::string_view text) {
    return !has_control(text) && trimmed(text) == text;
}

void trim_in_place(schar* text) {
    const std::string_view whole = text;
    const std::string_view kept = trimmed(whole);
    if (kept.size() == whole.size()) return;
    std::memmove(text, kept.data(), kept.size());
    text[kept.size()] = '\0';
}

}  // namespace arch

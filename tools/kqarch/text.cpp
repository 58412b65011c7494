#include "text.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr size_t most_suggestions = 3;

char upper_letter(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

// How many letters to insert, delete, replace or swap to make one word of the other.
size_t distance_between(std::string_view from, std::string_view to) {
    std::vector<size_t> before_last;
    std::vector<size_t> last(to.size() + 1);
    std::iota(last.begin(), last.end(), size_t{0});
    for (size_t i = 1; i <= from.size(); ++i) {
        std::vector<size_t> row(to.size() + 1, i);
        for (size_t j = 1; j <= to.size(); ++j) {
            size_t replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
            if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
        }
        before_last = std::exchange(last, std::move(row));
    }
    return last.back();
}

}  // namespace

std::string visible(std::string_view text) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string shown;
    for (char letter : text) {
        auto value = static_cast<unsigned char>(letter);
        if (value >= 0x20 && value != 0x7f) {
            shown += letter;
        } else {
            shown += {'\\', 'x', digits[value >> 4], digits[value & 15]};
        }
    }
    return shown;
}

std::string join(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string joined;
    for (const std::string& piece : pieces) {
        if (&piece != &pieces.front()) joined += separator;
        joined += piece;
    }
    return joined;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (size_t end = text.find(separator); end != text.npos; end = text.find(separator)) {
        pieces.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    pieces.emplace_back(text);
    return pieces;
}

std::string count_of(size_t number, const std::string& noun) {
    std::string counted = std::to_string(number) + " " + noun;
    if (number == 1) return counted;
    if (noun.back() != 'y') return counted + "s";
    counted.pop_back();
    return counted + "ies";
}

std::string upper_case(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), upper_letter);
    return upper;
}

bool same_text(std::string_view left, std::string_view right) {
    return upper_case(left) == upper_case(right);
}

size_t display_width(std::string_view text) {
    return static_cast<size_t>(std::count_if(
        text.begin(), text.end(), [](char letter) { return (letter & '\xc0') != '\x80'; }));
}

std::vector<std::string> close_names(std::string_view word, const std::vector<std::string>& names) {
    constexpr size_t longest_word = 64;
    if (word.empty() || word.size() > longest_word) return {};
    std::vector<std::pair<size_t, std::string>> close;
    for (const std::string& name : names) {
        size_t distance = distance_between(upper_case(word), upper_case(name));
        if (distance <= std::max<size_t>(1, std::min(word.size(), name.size()) / 3))
            close.emplace_back(distance, name);
    }
    std::stable_sort(close.begin(), close.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<std::string> found;
    for (const auto& [distance, name] : close)
        if (found.size() < most_suggestions) found.push_back(name);
    return found;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& names) {
    std::vector<std::string> close = close_names(word, names);
    return close.empty() ? "" : "Did you mean " + join(close, " or ") + "?";
}

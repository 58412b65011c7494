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

struct character {
    char32_t code;
    size_t length;
};

constexpr char32_t no_character = 0;  // steers, as what is no UTF-8 may

// The bytes of UTF-8 that begin with `first`; 0 when none may.
size_t length_of(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first <= 0xdf) return 2;
    if (first >= 0xe0 && first <= 0xef) return 3;
    return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

// The first character of a text that is not empty; a byte that is no UTF-8 stands for itself.
character first_character(std::string_view text) {
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    auto first = static_cast<unsigned char>(text[0]);
    size_t length = length_of(first);
    if (length <= 1) return {length == 1 ? first : no_character, 1};
    if (length > text.size()) return {no_character, 1};
    char32_t code = first & (0xffU >> (length + 1));
    for (char letter : text.substr(1, length - 1)) {
        if ((letter & '\xc0') != '\x80') return {no_character, 1};
        code = code << 6 | (static_cast<unsigned char>(letter) & 0x3fU);
    }
    bool surrogate = code >= 0xd800 && code <= 0xdfff;
    if (code < least[length] || surrogate || code > 0x10ffff) return {no_character, 1};
    return {code, length};
}

// Control characters, line separators, and those that turn the direction of the text around them.
bool steers(char32_t code) {
    return code < 0x20 || (code >= 0x7f && code <= 0x9f) || code == 0x61c || code == 0x200e ||
           code == 0x200f || (code >= 0x2028 && code <= 0x202e) ||
           (code >= 0x2066 && code <= 0x2069);
}

struct code_range {
    char32_t first;
    char32_t last;
};

constexpr code_range unseen_ranges[] = {
    {0xa0, 0xa0},     {0xad, 0xad},      {0x34f, 0x34f},   {0x61c, 0x61c},   {0x115f, 0x1160},
    {0x1680, 0x1680}, {0x180b, 0x180f},  {0x2000, 0x200f}, {0x2028, 0x202f}, {0x205f, 0x206f},
    {0x2800, 0x2800}, {0x3000, 0x3000},  {0x3164, 0x3164}, {0xfeff, 0xfeff}, {0xffa0, 0xffa0},
    {0xfff9, 0xfffb}, {0xe0000, 0xe007f}};

bool is_unseen(char32_t code) {
    return std::ranges::any_of(unseen_ranges, [code](const code_range& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string revealed(std::string_view text, bool (*is_hidden)(char32_t)) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string shown;
    while (!text.empty()) {
        auto [code, length] = first_character(text);
        bool shows = !is_hidden(code);
        for (char letter : text.substr(0, length)) {
            auto value = static_cast<unsigned char>(letter);
            if (shows)
                shown += letter;
            else
                shown += {'\\', 'x', digits[value >> 4], digits[value & 15]};
        }
        text.remove_prefix(length);
    }
    return shown;
}

}  // namespace

std::string visible(std::string_view text) {
    return revealed(text, steers);
}

std::string with_unseen_shown(std::string_view text) {
    return revealed(text, is_unseen);
}

std::string shell_word(std::string_view text) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./-+:,@%=";
    bool is_plain = !text.empty() && text.find_first_not_of(plain) == text.npos;
    std::string word(text.starts_with('-') ? "./" : "");
    word += text;
    if (is_plain) return word;
    for (size_t at = word.find('\''); at != word.npos; at = word.find('\'', at + 4))
        word.replace(at, 1, "'\\''");
    return "'" + word + "'";
}

std::string join(const std::vector<std::string>& pieces, std::string_view separator) {
    std::string joined;
    for (const std::string& piece : pieces) {
        if (&piece != &pieces.front()) joined += separator;
        joined += piece;
    }
    return joined;
}

std::string first_of(std::vector<std::string> names, size_t most) {
    size_t more = names.size() > most ? names.size() - most : 0;
    names.resize(names.size() - more);
    return join(names, ", ") + (more > 0 ? " and " + std::to_string(more) + " more" : "");
}

std::string shortened(std::string text, size_t longest) {
    if (text.size() <= longest) return text;
    while ((text[longest] & '\xc0') == '\x80')
        --longest;
    return text.substr(0, longest) + "...";
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
    return std::ranges::equal(left, right, {}, upper_letter, upper_letter);
}

std::string time_text(std::time_t time) {
    char text[32];
    std::tm parts{};
    gmtime_r(&time, &parts);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

size_t display_width(std::string_view text) {
    return static_cast<size_t>(std::ranges::count_if(
        with_unseen_shown(text), [](char letter) { return (letter & '\xc0') != '\x80'; }));
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

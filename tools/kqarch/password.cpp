#include "password.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "text.h"

namespace {

constexpr const char* hidden = "***";

struct span {
    size_t begin;
    size_t end;
};

bool begins_like_a_path(std::string_view text) {
    return text.starts_with('/') || text.starts_with('+') || text.starts_with("dfs:");
}

// Before "@" a "/" is what separates surely; without "@" it does so only in a last word that is no
// path.
span find_password_in_line(std::string_view text) {
    size_t end = text.rfind('@');
    if (end == text.npos) {
        size_t word = text.find_last_of(" \t:=[\"'") + 1;
        size_t slash = text.find('/', word);
        bool is_path = begins_like_a_path(text.substr(word));
        return is_path || slash == text.npos ? span{0, 0} : span{slash + 1, text.size()};
    }
    for (const char* separators : {"/", ":", " \t"}) {
        size_t begin = text.substr(0, end).find_first_of(separators);
        if (begin != text.npos) return {begin + 1, end};
    }
    return {0, 0};
}

// The server is what follows the last "@"; user and password are split at the first "/". A ":" or,
// in a connection text, a blank are the separators that people use by mistake.
span find_password(std::string_view text, text_place place) {
    constexpr span none{0, 0};
    if (place == text_place::line) return find_password_in_line(text);
    if (place == text_place::path && begins_like_a_path(text)) return none;
    size_t end = text.rfind('@');
    bool has_server = end != text.npos;
    if (!has_server && place != text_place::subscriber) return none;
    if (!has_server) end = text.size();
    const char* separators = !has_server ? "/" : place == text_place::subscriber ? "/: \t" : "/:";
    size_t begin = text.substr(0, end).find_first_of(separators);
    return begin == text.npos ? none : span{begin + 1, end};
}

bool is_word_letter(char letter) {
    return (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
           (letter >= 'a' && letter <= 'z') || letter == '_';
}

// A short secret is looked for as a word only: "a" must not turn every a into stars.
bool stands_alone(std::string_view text, size_t begin, size_t length) {
    constexpr size_t long_enough = 6;
    if (length >= long_enough) return true;
    bool joined_before =
        begin > 0 && is_word_letter(text[begin]) && is_word_letter(text[begin - 1]);
    size_t end = begin + length;
    bool joined_after =
        end < text.size() && is_word_letter(text[end - 1]) && is_word_letter(text[end]);
    return !joined_before && !joined_after;
}

}  // namespace

std::string hide_password(std::string_view text, text_place place) {
    span found = find_password(text, place);
    std::string shown(text);
    if (found.end > found.begin) shown.replace(found.begin, found.end - found.begin, hidden);
    return shown;
}

void password_list::learn(std::string_view text, text_place place) {
    span found = find_password(text, place);
    if (found.end <= found.begin) return;
    std::string_view secret = text.substr(found.begin, found.end - found.begin);
    add(secret);
    // An instance list is split at "/", a line at "=": the pieces may be quoted alone.
    for (char separator : {'/', '='})
        for (const std::string& piece : split(secret, separator))
            add(piece);
}

void password_list::learn(const password_list& other) {
    secrets_.insert(other.secrets_.begin(), other.secrets_.end());
    lengths_.insert(other.lengths_.begin(), other.lengths_.end());
}

void password_list::add(std::string_view secret) {
    for (std::string& form : std::vector{upper_case(secret), upper_case(visible(secret))}) {
        form.erase(form.find_last_not_of(" \t") + 1);
        form.erase(0, form.find_first_not_of(" \t"));
        if (form.empty()) continue;
        lengths_.insert(form.size());
        secrets_.insert(std::move(form));
    }
}

// Secrets may overlap: every character of any of them goes.
std::string password_list::hide(std::string_view text) const {
    std::string upper = upper_case(text);
    std::vector<bool> is_secret(text.size());
    for (size_t at = 0; at < text.size(); ++at)
        for (size_t length : lengths_) {
            if (length > text.size() - at) break;
            std::string_view piece = std::string_view(upper).substr(at, length);
            if (secrets_.contains(piece) && stands_alone(text, at, length))
                std::fill_n(is_secret.begin() + static_cast<std::ptrdiff_t>(at), length, true);
        }
    std::string shown;
    for (size_t at = 0; at < text.size(); ++at) {
        if (!is_secret[at])
            shown += text[at];
        else if (at == 0 || !is_secret[at - 1])
            shown += hidden;
    }
    return shown;
}

// Small helpers for texts.
#ifndef KQARCH_TEXT_H
#define KQARCH_TEXT_H

#include <cstddef>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

// The text with every control character, every one that turns the direction of writing and every
// byte that is no UTF-8 shown as \xNN: it keeps to one line and cannot steer a terminal.
std::string visible(std::string_view text);

// The same for those that nobody sees or can tell from a blank, in a text for people.
std::string with_unseen_shown(std::string_view text);

// Of a line of kqarch.ini without the blanks before it.
inline bool is_comment(std::string_view line) {
    return line.starts_with('#') || line.starts_with(';');
}

// The text as one word of a shell's command line, in quotes only where it needs them.
std::string shell_word(std::string_view text);

std::string join(const std::vector<std::string>& pieces, std::string_view separator);

// Of names that may be many: "A, B and 7 more".
std::string first_of(std::vector<std::string> names, size_t most = 8);

// A text that is longer than that, cut between characters and with "..." behind.
std::string shortened(std::string text, size_t longest);

std::vector<std::string> split(std::string_view text, char separator);

// "1 file", "2 files"; a noun that ends in y gets "ies".
std::string count_of(size_t number, const std::string& noun);

std::string upper_case(std::string_view text);

// Whether two texts are the same, ignoring the case of ASCII letters.
bool same_text(std::string_view left, std::string_view right);

// "2026-01-31T12:00:00Z"
std::string time_text(std::time_t time);

// How many places a text takes where it is printed, a character of UTF-8 being one.
size_t display_width(std::string_view text);

// The names that could have been meant by `word`, nearest first, at most three; ignoring case.
std::vector<std::string> close_names(std::string_view word, const std::vector<std::string>& names);

// "Did you mean A or B?", or the empty text when nothing is close.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& names);

#endif

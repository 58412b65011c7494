#include "clause.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "catalogue.h"
#include "text.h"

namespace {

constexpr size_t most_bytes = 1 << 20;

std::string read_standard_input() {
    std::string text;
    char block[65536];
    while (text.size() <= most_bytes) {
        ssize_t count = read(STDIN_FILENO, block, sizeof block);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw std::system_error(errno, std::generic_category(), "standard input");
        if (count == 0) break;
        text.append(block, static_cast<size_t>(count));
    }
    if (text.ends_with('\n')) text.pop_back();
    if (text.ends_with('\r')) text.pop_back();
    return text;
}

std::string trimmed(std::string_view text) {
    size_t begin = text.find_first_not_of(' ');
    if (begin == text.npos) return "";
    return std::string(text.substr(begin, text.find_last_not_of(' ') - begin + 1));
}

struct segment {
    std::string before_value;  // as it is written, up to "=" and the blanks behind it
    std::string keyword;       // upper case
    std::string value;
};

// The pieces as the module cuts them. One without "=" is all value.
std::vector<segment> segments_of(const std::string& text) {
    std::vector<segment> segments;
    for (const std::string& piece : split(text, ',')) {
        size_t end = piece.find('=') + 1;
        std::string keyword = end > 0 ? upper_case(trimmed(piece.substr(0, end - 1))) : "";
        size_t value = std::min(piece.find_first_not_of(' ', end), piece.size());
        segments.push_back({piece.substr(0, value), keyword, piece.substr(value)});
    }
    return segments;
}

ulint type_in(const std::vector<segment>& segments, ulint type) {
    for (const segment& one : segments)
        if (one.keyword == "TYPE")
            type = arch_cfg_get_arch_type_by_name(trimmed(one.value).c_str());
    return type;
}

// Where the type is not known, what could be a password is taken for one.
text_place place_of(const segment& one, ulint type) {
    if (one.keyword == "INCOMING_PATH") return text_place::path;
    if (one.keyword != "DEST") return text_place::other;
    if (type == ARCH_TYPE_LOCAL) return text_place::path;
    return type == ARCH_TYPE_SUBSCRIBE || type == ARCH_TYPE_NONE ? text_place::subscriber
                                                                 : text_place::other;
}

}  // namespace

clause_text take_clause(const std::string& argument) {
    clause_text given{argument == "-" ? read_standard_input() : argument};
    if (given.text.find('\0') != std::string::npos) given.unfit = "the clause holds a NUL byte";
    if (given.text.size() > most_bytes) given.unfit = "the clause has more than a megabyte";
    return given;
}

std::string dest_buffer(const std::string& text) {
    std::string buffer = text;
    buffer.resize(std::max<size_t>(text.size(), ARCH_CLAUSE_DEST_MAX) + 1);
    return buffer;
}

parsed_clause parse_clause(const clause_text& given) {
    parsed_clause clause;
    if (given.unfit != nullptr) {
        clause.result = {ARCH_E_CLAUSE_SYNTAX, given.unfit};
        return clause;
    }
    std::string buffer = given.text;
    std::string dest = dest_buffer("");
    clause.result.code = arch_cfg_parse_sql(buffer.data(), &clause.record, dest.data(),
                                            &clause.named, &clause.raft_vote_interval);
    clause.dest.assign(dest.c_str());
    for (const segment& one : segments_of(given.text))
        if (!clause.keywords.insert(one.keyword).second) clause.repeated.insert(one.keyword);
    return clause;
}

std::string masked_clause(const std::string& text, ulint type) {
    std::vector<segment> segments = segments_of(text);
    type = type_in(segments, type);
    std::vector<std::string> shown;
    for (const segment& one : segments)
        shown.push_back(one.before_value + hide_password(one.value, place_of(one, type)));
    return join(shown, ",");
}

password_list passwords_in_clause(const std::string& text, ulint type) {
    std::vector<segment> segments = segments_of(text);
    type = type_in(segments, type);
    password_list passwords;
    for (const segment& one : segments)
        passwords.learn(one.value, place_of(one, type));
    return passwords;
}

std::vector<std::string> doubts_of(const parsed_clause& clause, ulint type) {
    std::vector<std::string> doubts;
    for (const std::string& keyword : clause.repeated)
        doubts.push_back(keyword + " stands twice; the last one counts");
    for (const std::string& keyword : clause.keywords) {
        const key_entry* key = find_key(keyword);
        if (key == nullptr) key = find_key("ARCH_" + keyword);
        bool has_it =
            key == nullptr || key->scope == key_scope::global || (key->types & type_bit(type)) != 0;
        if (!has_it)
            doubts.push_back(std::string("a ") + arch_cfg_get_arch_name_by_type(type) +
                             " destination has no " + keyword + ": it is passed over");
    }
    return doubts;
}

std::optional<captured> misplaced_keyword(const parsed_clause& clause, ulint type) {
    const char* keyword = type == ARCH_TYPE_REMOTE ? "ARCH_TIMER_NAME" : "INCOMING_PATH";
    if (!clause.names(keyword)) return std::nullopt;
    return captured{ARCH_E_PARA_NOT_ALLOWED,
                    std::string(keyword) + " is not for " + arch_cfg_get_arch_name_by_type(type)};
}

captured refuse_raft(ulint type) {
    return {ARCH_E_INVALID_TYPE, std::string("a ") + arch_cfg_get_arch_name_by_type(type) +
                                     " destination is a member of the Raft group"};
}

captured refuse_directory() {
    return {ARCH_E_INVALID_DEST, "the directory does not exist and cannot be created"};
}

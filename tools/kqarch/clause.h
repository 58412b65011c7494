// An archive clause, KEYWORD = value, KEYWORD = value, on its way to the module.
#ifndef KQARCH_CLAUSE_H
#define KQARCH_CLAUSE_H

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "arch_cfg.h"
#include "capture.h"
#include "password.h"

// The clause of a command line; "-" reads it from standard input, without its last line feed.
// Throws std::system_error when that cannot be read. What cannot be parsed at all, a text with a
// NUL byte or of more than a megabyte, stays unread.
struct clause_text {
    std::string text = {};
    const char* unfit = nullptr;  // why it cannot be parsed
};

clause_text take_clause(const std::string& argument);

// What the module made of a clause.
struct parsed_clause {
    captured result{};  // of the parser
    arch_cfg_t record;
    std::string dest;  // empty without DEST
    usint named = 0;   // enum arch_cfg_mod
    ulint raft_vote_interval = 0;
    std::set<std::string> keywords;  // upper case
    std::set<std::string> repeated;  // those of them that stand twice: the last one counts

    bool names(const std::string& keyword) const { return keywords.contains(keyword); }
};

parsed_clause parse_clause(const clause_text& given);

// A destination text of the module's size, terminated, that it may change.
std::string dest_buffer(const std::string& text);

// The clause with *** for a password, and the passwords in it. `type` is the destination's where
// the clause names none.
std::string masked_clause(const std::string& text, ulint type);
password_list passwords_in_clause(const std::string& text, ulint type);

// Members of the Raft group are changed by commands of their own.
captured refuse_raft(ulint type);

// What the module has no words for: a directory that is not there and cannot be made.
captured refuse_directory();

// What the module passes over in silence: keywords that a destination of the type does not have, and
// what stands twice.
std::vector<std::string> doubts_of(const parsed_clause& clause, ulint type);

// Two keywords travel in one field of the record: the one that the type does not have would be
// taken for the other.
std::optional<captured> misplaced_keyword(const parsed_clause& clause, ulint type);

#endif

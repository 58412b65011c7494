// What an administrator may ask about: result codes, keys of kqarch.ini and destination types.
// Everything that a table of the module or of the INI module already holds (bounds, type numbers)
// is read from there at run time and not repeated here.
#ifndef KQARCH_CATALOGUE_H
#define KQARCH_CATALOGUE_H

#include <span>
#include <string_view>

#include "arch_cfg.h"

struct code_entry {
    kqcode_t code;
    const char* name;
    const char* meaning;
    const char* cause;
    const char* remedy;  // an instruction, fit to stand behind "hint: "
};

// What `kqarch check` finds beside what the server refuses with a code.
struct doubt_entry {
    const char* name;
    const char* meaning;
    const char* remedy;
};

enum class key_scope { global, section };

// A set of destination types, one bit a type number.
using type_set = unsigned;

constexpr type_set type_bit(unsigned type) {
    return 1U << type;
}

struct key_entry {
    ulint index;  // enum other_ini_para_index
    const char* name;
    key_scope scope;
    bool is_text;
    const char* unit;           // empty: a plain number, a switch or a text
    const char* default_value;  // what holds while the key is not given
    type_set types;             // section keys: the types that use it
    const char* purpose;
    const char* rule;  // beyond the bounds; empty: none
    bool written_back;
};

struct type_rule {
    kqcode_t code;
    const char* sentence;
};

struct type_entry {
    ulint number;  // enum arch_cfg_type
    const char* name;
    const char* other_name;  // also accepted when reading; empty: none
    const char* what;
    std::span<const type_rule> rules;  // in the order in which they are checked
};

std::span<const code_entry> all_codes();
std::span<const key_entry> all_keys();
std::span<const type_entry> all_types();
std::span<const doubt_entry> all_doubts();

const code_entry* find_code(kqcode_t code);            // also one that the module only passes on
const doubt_entry* find_doubt(std::string_view name);  // ignoring case
const key_entry* find_key(std::string_view name);      // ignoring case
const type_entry* find_type(std::string_view name);    // ignoring case; MARCH too

#endif

#include "refusal.h"

#include "catalogue.h"
#include "hints.h"
#include "ini.h"
#include "instance.h"
#include "settings.h"
#include "text.h"

namespace {

bool is_key(const refusal& refused, const char* key) {
    return refused.line.kind == KQ_INI_KEY && same_text(refused.line.key, key);
}

const key_entry* entry_of(const refusal& refused) {
    return refused.line.kind == KQ_INI_KEY ? find_key(refused.line.key) : nullptr;
}

usint type_of(const refusal& refused) {
    return refused.record != nullptr ? refused.record->type : usint{ARCH_TYPE_NONE};
}

size_t longest_value(const refusal& refused) {
    bool path = has_directory(type_of(refused));
    return path ? KQ_PATHNAME_MAX : KQ_SYSNAME_MAX;
}

std::vector<std::string> key_names() {
    std::vector<std::string> names;
    for (const key_entry& entry : all_keys())
        names.emplace_back(entry.name);
    return names;
}

std::vector<std::string> type_names() {
    std::vector<std::string> names;
    for (const type_entry& entry : all_types())
        if (entry.number != ARCH_TYPE_NONE) names.emplace_back(entry.name);
    return names;
}

// The section whose destination is in the way of a value, or of a name of its list.
std::string user_of(const std::string& value) KQ_EXCLUDES(arch_cfg_sys.mutex) {
    arch_cfg_hold hold;
    std::vector<std::string> names = split(value, '/');
    names.insert(names.begin(), value);
    for (const std::string& name : names) {
        const arch_cfg_t* user = arch_cfg_find_by_dest_low_without_enter(nullptr, name.c_str());
        if (user != nullptr && !name.empty()) return user->name;
    }
    return "";
}

std::string section_text(const refusal& refused, const config_file& file) {
    const std::string& name = refused.line.key;
    if (refused.code == ARCH_E_DUPLICATE_NAME)
        return "section [" + name + "] stands already at line " +
               std::to_string(file.section_line(name));
    if (refused.code == ARCH_E_TOO_LONG)
        return "the section's name has " + std::to_string(name.size()) +
               " characters; at most 128 are allowed";
    return "";
}

std::string destination_text(const refusal& refused) {
    if (refused.code == ARCH_E_DEST_EXISTS) {
        std::string user = user_of(refused.line.value);
        return "section [" + user + "] uses this destination already";
    }
    if (refused.code == ARCH_E_TOO_MANY_INSTS)
        return type_of(refused) == ARCH_TYPE_SYNC ? "a SYNC destination names one instance only"
                                                  : "more than 16 instance names";
    if (refused.code == ARCH_E_TOO_LONG)
        return "a name of the list has more than 128 characters, or the text more than allowed";
    if (type_of(refused) != ARCH_TYPE_SUBSCRIBE) return "";
    if (refused.code == ARCH_E_INVALID_DEST)
        return refused.line.value.empty() ? "the value is empty"
               : refused.line.value.find('@') == std::string::npos &&
                       refused.line.value.find('/') != std::string::npos
                   ? "no @ and no server stand behind the password"
                   : "there is no service of that name";
    if (refused.code == ARCH_E_INVALID_VALUE) return "the value is no [user[/password]@]server";
    if (refused.code == ARCH_E_DEST_IS_SELF) return "the address is this instance itself";
    return "";
}

// What begins like a number is shown; what else stands in its place may be anything.
std::string number_text(const key_entry& entry, const std::string& value) {
    std::string text = std::string("the value of ") + entry.name;
    if (value.empty()) return text + " is empty";
    constexpr const char* digits = "0123456789";
    if (value.find_first_not_of(digits) == value.npos)
        return text + ", " + value + ", is too large";
    if (value[0] == '-' && value.find_first_not_of(digits, 1) == value.npos)
        return text + ", " + value + ", is negative";
    bool number = value.find_first_of(digits) <= 1 && value.find_first_not_of("0123456789+-") != 0;
    bool harmless = number && value.find_first_of("/@:") == value.npos;
    return text + (harmless ? ", " + value + "," : "") + " is no whole number";
}

std::string value_text(const refusal& refused) {
    const key_entry* entry = entry_of(refused);
    if (entry == nullptr) return "there is no key " + refused.line.key + " in kqarch.ini";
    if (refused.line.value.size() > longest_value(refused))
        return std::string("the value of ") + entry->name + " has " +
               std::to_string(refused.line.value.size()) + " characters; at most " +
               std::to_string(longest_value(refused)) + " are allowed here";
    if (is_key(refused, "ARCH_TYPE")) return "there is no archive type " + refused.line.value;
    if (is_key(refused, "ARCH_TIMER_NAME") && refused.line.value.empty())
        return "the timer of an ASYNC destination is not named";
    if (!entry->is_text) return number_text(*entry, refused.line.value);
    return is_key(refused, "ARCH_DEST") || is_key(refused, "ARCH_INCOMING_PATH")
               ? destination_text(refused)
               : "";
}

std::string text_of(const refusal& refused, const config_file& file) {
    if (refused.line.kind == KQ_INI_BAD) return refused.line.value;
    if (!refused.said.empty()) return refused.said;
    std::string text =
        refused.line.kind == KQ_INI_SECTION ? section_text(refused, file) : value_text(refused);
    const code_entry* entry = find_code(refused.code);
    if (text.empty() && entry != nullptr) text = entry->meaning;
    return text;
}

std::string bounds_hint(const key_entry& entry) {
    const other_ini_alterable_t* bounds = ini_get_other_ini_info_by_index(entry.index);
    if (bounds == nullptr) return entry.rule;
    std::string hint = "Give a whole number from " + std::to_string(bounds->min_value) + " to " +
                       std::to_string(bounds->max_value);
    if (*entry.unit != '\0') hint += std::string(", in ") + entry.unit;
    return hint + (*entry.rule != '\0' ? std::string(". ") + entry.rule : ".");
}

// An editor's choice of encoding makes good lines bad.
std::string encoding_hint(const config_file& file, ulint line) {
    const std::string& text = file.text();
    if (text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"))
        return "The file is UTF-16: save it as UTF-8 without a byte order mark.";
    if (text.starts_with("\xef\xbb\xbf") && line == 1)
        return "The file begins with a byte order mark: save it without one.";
    return "";
}

std::string hint_of(const refusal& refused, const std::string& text) {
    const key_entry* entry = entry_of(refused);
    std::string hint;
    if (refused.code == ARCH_E_NO_SECTION)
        hint = "Put the [name] line of the destination that the key belongs to above it.";
    else if (refused.line.kind == KQ_INI_BAD)
        hint = "Write `key = value` or `[section]`, or put # before a comment.";
    else if (refused.line.kind == KQ_INI_KEY && entry == nullptr)
        hint = did_you_mean(refused.line.key, key_names());
    else if (is_key(refused, "ARCH_TYPE"))
        hint = did_you_mean(refused.line.value, type_names());
    else if (entry != nullptr && !entry->is_text && refused.code == ARCH_E_INVALID_VALUE)
        hint = bounds_hint(*entry) +
               (refused.said.empty() ? " Digits alone: no sign, unit or comment behind." : "");
    if (!hint.empty()) return hint;
    if (is_key(refused, "ARCH_TYPE")) return "The types are " + join(type_names(), ", ") + ".";
    return hint_for(refused.code, text);
}

}  // namespace

diagnostic describe(const refusal& refused, const config_file& file) {
    const password_list& passwords = file.passwords();
    bool is_value = refused.line.kind == KQ_INI_KEY;
    std::string text = text_of(refused, file);
    std::string encoding = encoding_hint(file, refused.line.number);
    return {.level = severity::error,
            .file = file.path(),
            .line = refused.line.number,
            .code = refused.code,
            .section = passwords.hide(refused.line.section),
            .key = is_value ? passwords.hide(refused.line.key) : "",
            .text = passwords.hide(text),
            .hint = encoding.empty() ? hint_of(refused, text) : encoding};
}

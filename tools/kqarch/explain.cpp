#include "explain.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "catalogue.h"
#include "ini.h"
#include "password.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

constexpr std::string_view code_prefix = "ARCH_E_";
constexpr size_t line_width = 90;
constexpr size_t label_width = 15;

std::string_view short_name(const code_entry& entry) {
    return std::string_view(entry.name).substr(code_prefix.size());
}

// The code that a topic stands for: a number with or without its sign, a name with or without its
// prefix.
const code_entry* code_of(const std::string& topic) {
    kqcode_t number = 0;
    const char* end = topic.data() + topic.size();
    const auto [stopped_at, error] = std::from_chars(topic.data(), end, number);
    if (error == std::errc() && stopped_at == end) return find_code(number > 0 ? -number : number);
    const auto codes = all_codes();
    const auto found = std::ranges::find_if(codes, [&](const code_entry& entry) {
        return same_text(entry.name, topic) || same_text(short_name(entry), topic);
    });
    return found == codes.end() ? nullptr : &*found;
}

std::vector<std::string> names_of(type_set set) {
    std::vector<std::string> names;
    for (const type_entry& type : all_types())
        if ((set & type_bit(type.number)) != 0) names.emplace_back(type.name);
    return names;
}

type_set types_with_rule(kqcode_t code) {
    type_set set = 0;
    for (const type_entry& type : all_types())
        if (std::ranges::find(type.rules, code, &type_rule::code) != type.rules.end())
            set |= type_bit(type.number);
    return set;
}

std::vector<std::string> keys_of(const type_entry& type) {
    std::vector<std::string> names;
    for (const key_entry& key : all_keys())
        if ((key.types & type_bit(type.number)) != 0) names.emplace_back(key.name);
    return names;
}

std::string padded(std::string text, size_t width) {
    text.resize(std::max(text.size() + 1, width), ' ');
    return text;
}

// A label and a text beside it, which is broken between words where the line is full.
void print_item(output& out, const std::string& label, const std::string& text) {
    if (text.empty()) return;
    std::string line = padded("  " + label, label_width);
    const size_t indent = line.size();
    for (const std::string& word : split(text, ' ')) {
        if (line.size() > indent && line.size() + word.size() >= line_width) {
            out.print(line + "\n");
            line.assign(indent, ' ');
        }
        line += (line.size() > indent ? " " : "") + word;
    }
    out.print(line + "\n");
}

std::string bounds_of(const key_entry& key) {
    if (key.is_text) return "";
    const other_ini_alterable_t* info = ini_get_other_ini_info_by_index(key.index);
    std::string bounds = std::to_string(info->min_value) + " to " + std::to_string(info->max_value);
    return *key.unit == '\0' ? bounds : bounds + " " + key.unit;
}

void print_entry(output& out, const code_entry& entry) {
    out.print_heading(std::to_string(entry.code) + " " + entry.name);
    print_item(out, "meaning", entry.meaning);
    print_item(out, "cause", entry.cause);
    print_item(out, "remedy", entry.remedy);
    print_item(out, "rule of", join(names_of(types_with_rule(entry.code)), ", "));
}

void print_entry(output& out, const key_entry& key) {
    out.print_heading(key.name);
    print_item(out, "purpose", key.purpose);
    print_item(out, "scope",
               key.scope == key_scope::global
                   ? "global: may stand before the first section or in any"
                   : "section of a destination");
    print_item(out, "value", key.is_text ? "text" : "integer");
    print_item(out, "bounds", bounds_of(key));
    print_item(out, "default", key.default_value);
    print_item(out, "types", join(names_of(key.types), ", "));
    print_item(out, "rule", key.rule);
    print_item(out, "written back", key.written_back ? "yes" : "never");
}

void print_entry(output& out, const type_entry& type) {
    out.print_heading(type.name);
    print_item(out, "what", type.what);
    print_item(out, "number", std::to_string(type.number));
    print_item(out, "also read as", type.other_name);
    print_item(out, "keys", join(keys_of(type), ", "));
    out.print("  rules, in the order in which they are checked:\n");
    for (const type_rule& rule : type.rules)
        print_item(out, "  " + std::to_string(rule.code), rule.sentence);
}

void print_entry(output& out, const doubt_entry& entry) {
    out.print_heading(entry.name);
    print_item(out, "meaning", entry.meaning);
    print_item(out, "remedy", entry.remedy);
}

json text_or_null(const char* text) {
    return *text == '\0' ? json() : json(text);
}

json document_of(const code_entry& entry) {
    return {{"code", entry.code},       {"name", entry.name},
            {"meaning", entry.meaning}, {"cause", entry.cause},
            {"remedy", entry.remedy},   {"types", names_of(types_with_rule(entry.code))}};
}

json document_of(const key_entry& key) {
    const other_ini_alterable_t* info = ini_get_other_ini_info_by_index(key.index);
    return {{"name", key.name},
            {"index", key.index},
            {"scope", key.scope == key_scope::global ? "global" : "section"},
            {"value", key.is_text ? "text" : "integer"},
            {"minimum", key.is_text ? json() : json(info->min_value)},
            {"maximum", key.is_text ? json() : json(info->max_value)},
            {"unit", text_or_null(key.unit)},
            {"default", key.default_value},
            {"types", names_of(key.types)},
            {"purpose", key.purpose},
            {"rule", text_or_null(key.rule)},
            {"written_back", key.written_back}};
}

json document_of(const type_entry& type) {
    json rules = json::array();
    for (const type_rule& rule : type.rules)
        rules.push_back({{"code", rule.code},
                         {"name", find_code(rule.code)->name},
                         {"sentence", rule.sentence}});
    return {{"number", type.number},
            {"name", type.name},
            {"also_read_as", text_or_null(type.other_name)},
            {"what", type.what},
            {"keys", keys_of(type)},
            {"rules", rules}};
}

json document_of(const doubt_entry& entry) {
    return {{"name", entry.name}, {"meaning", entry.meaning}, {"remedy", entry.remedy}};
}

template <typename entry_type>
void explain_one(output& out, const char* field, const entry_type& entry) {
    print_entry(out, entry);
    out.set(field, json::array({document_of(entry)}));
}

template <typename entry_type>
json documents_of(std::span<const entry_type> entries) {
    json documents = json::array();
    for (const entry_type& entry : entries)
        documents.push_back(document_of(entry));
    return documents;
}

std::string first_sentence(std::string_view text) {
    const size_t stop = text.find(". ");
    return std::string(stop == text.npos ? text : text.substr(0, stop + 1));
}

void list_all(output& out) {
    out.print_heading("Destination types");
    for (const type_entry& type : all_types())
        print_item(out, type.name, type.what);
    out.print("\n");
    out.print_heading("Keys of kqarch.ini");
    for (const key_entry& key : all_keys())
        print_item(out, padded(key.name, 26), first_sentence(key.purpose));
    out.print("\n");
    out.print_heading("Result codes");
    for (const code_entry& entry : all_codes())
        print_item(
            out, padded(std::to_string(entry.code), 6) + padded(std::string(short_name(entry)), 26),
            entry.meaning);
    out.print("\n");
    out.print_heading("What check finds beside them");
    for (const doubt_entry& entry : all_doubts())
        print_item(out, padded(entry.name, 30), entry.meaning);
    out.set("codes", documents_of(all_codes()));
    out.set("keys", documents_of(all_keys()));
    out.set("types", documents_of(all_types()));
    out.set("findings", documents_of(all_doubts()));
}

std::vector<std::string> every_name() {
    std::vector<std::string> names;
    for (const type_entry& type : all_types())
        names.emplace_back(type.name);
    for (const key_entry& key : all_keys())
        names.emplace_back(key.name);
    for (const code_entry& entry : all_codes()) {
        names.emplace_back(entry.name);
        names.emplace_back(short_name(entry));
    }
    for (const doubt_entry& entry : all_doubts())
        names.emplace_back(entry.name);
    return names;
}

}  // namespace

exit_status run_explain(output& out, const std::string& topic) {
    // No topic has a "/": what follows one may be a password that was pasted.
    std::string shown = hide_password(topic, text_place::subscriber);
    out.set("topic", topic.empty() ? json() : json(visible(shown)));
    for (const char* field : {"codes", "keys", "types", "findings"})
        out.set(field, json::array());
    if (topic.empty()) {
        list_all(out);
    } else if (topic == "0") {
        out.print("0 is success; every other result is below 0.\n");
    } else if (const code_entry* code = code_of(topic)) {
        explain_one(out, "codes", *code);
    } else if (const key_entry* key = find_key(topic)) {
        explain_one(out, "keys", *key);
    } else if (const type_entry* type = find_type(topic)) {
        explain_one(out, "types", *type);
    } else if (const doubt_entry* doubt = find_doubt(topic)) {
        explain_one(out, "findings", *doubt);
    } else {
        std::string meant = did_you_mean(topic, every_name());
        if (meant.empty()) meant = "\"kqarch explain\" alone lists every code, key and type.";
        return out.fail(exit_refused, "nothing is known about \"" + shown + "\"", "", meant);
    }
    return exit_good;
}

// docs/errors.md and docs/keys.md hold every row of the tables and nothing else. With DOCS_REWRITE=1
// in the environment they are written anew.
#include <gtest/gtest.h>
#include <ini.h>

#include <cstdlib>
#include <string_view>

#include "catalogue.h"
#include "support/instance.h"

namespace {

constexpr std::string_view errors_start =
    R"(# Result codes

What a function of the module returns when it refuses, and what `kqarch` shows between brackets.
`kqarch explain CODE` says the same, and which types have a rule with the code. A code may come from
several rules; the message that is printed with it says which.

This page is made from the tool's own tables; CONTRIBUTING.md says how.

| code | name | meaning | cause | what to do |
|---|---|---|---|---|
)";

constexpr std::string_view keys_start =
    R"(# Keys of kqarch.ini

A global key may stand before the first section or in any; every other key belongs to the section of
a destination. Keys are found in any case. Integers may be decimal, octal (`010`) or hexadecimal
(`0x10`). What a section's type does not use has no effect there and is lost when the server rewrites
the file. `kqarch explain KEY` says the same, with the bounds in force.

This page is made from the tool's own tables; CONTRIBUTING.md says how.
)";

// Inside a table a bar would end the cell.
std::string cell(std::string_view text) {
    std::string escaped;
    for (char letter : text)
        escaped += letter == '|' ? "\\|" : std::string(1, letter);
    return escaped + " |";
}

std::string types_of(const key_entry& key) {
    std::string names;
    for (const type_entry& type : all_types()) {
        if ((key.types & type_bit(type.number)) == 0) continue;
        names += (names.empty() ? "" : ", ") + std::string(type.name);
    }
    return names;
}

std::string bounds_of(const key_entry& key) {
    if (key.is_text) return "text";
    const other_ini_alterable_t* info = ini_get_other_ini_info_by_index(key.index);
    std::string bounds = std::to_string(info->min_value) + " to " + std::to_string(info->max_value);
    return *key.unit == '\0' ? bounds : bounds + " " + key.unit;
}

std::string about(const key_entry& key) {
    std::string text = key.purpose;
    if (*key.rule != '\0') text += std::string(" ") + key.rule;
    if (!key.written_back) text += " Never written back.";
    return text;
}

std::string key_rows(key_scope scope) {
    std::string rows;
    for (const key_entry& key : all_keys()) {
        if (key.scope != scope) continue;
        rows += "| " + cell(std::string("`") + key.name + "`") + " " + cell(bounds_of(key)) + " " +
                cell(key.default_value) + " ";
        if (scope == key_scope::section) rows += cell(types_of(key)) + " ";
        rows += cell(about(key)) + "\n";
    }
    return rows;
}

std::string type_section(const type_entry& type) {
    std::string text = std::string("\n### ") + type.name + "\n\n" + type.what;
    if (*type.other_name != '\0')
        text += std::string(" Also read as ") + type.other_name + ", and written back as " +
                type.name + ".";
    text += "\n\n";
    for (const type_rule& rule : type.rules)
        text += "1. " + std::string(rule.sentence) + " (" + std::to_string(rule.code) + ")\n";
    return text;
}

std::string errors_document() {
    std::string text(errors_start);
    for (const code_entry& entry : all_codes())
        text += "| " + cell(std::to_string(entry.code)) + " " +
                cell(std::string("`") + entry.name + "`") + " " + cell(entry.meaning) + " " +
                cell(entry.cause) + " " + cell(entry.remedy) + "\n";
    return text;
}

std::string keys_document() {
    std::string text(keys_start);
    text += "\n## Global keys\n\n| key | value | default | what it is |\n|---|---|---|---|\n";
    text += key_rows(key_scope::global);
    text += "\n## Keys of a destination\n\n| key | value | default | types | what it is |\n";
    text += "|---|---|---|---|---|\n" + key_rows(key_scope::section);
    text += "\n## Destination types and their rules\n\n";
    text +=
        "The rules stand in the order in which they are checked; the first that fails decides "
        "the code.\n";
    for (const type_entry& type : all_types())
        text += type_section(type);
    return text;
}

void expect_document(const std::string& name, const std::string& expected) {
    const std::string path = PROJECT_DIRECTORY "/docs/" + name;
    if (std::getenv("DOCS_REWRITE") != nullptr) test_support::write_file(path, expected);
    EXPECT_EQ(test_support::read_file(path), expected)
        << "to write it anew: DOCS_REWRITE=1 script/test release -R documents";
}

TEST(documents, are_those_of_the_tables) {
    expect_document("errors.md", errors_document());
    expect_document("keys.md", keys_document());
}

}  // namespace

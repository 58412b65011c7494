// The forms that a command's output has. Text is written as it comes; each other form is one
// document, written at the end from what was said.
#ifndef KQARCH_OUTPUT_FORM_H
#define KQARCH_OUTPUT_FORM_H

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostic.h"

struct account {
    std::string command = {};
    std::string headline = {};           // the result in a few words; empty where there is none
    std::vector<diagnostic> found = {};  // of each file the first hundred
    nlohmann::ordered_json fields = nlohmann::ordered_json::object();  // the command's own
};

struct output_form {
    const char* name;
    std::string (*document)(const account& said, exit_status status);  // null: text
    int (*status)(const account& said, exit_status status);            // of the process
};

extern const output_form text_form;
extern const output_form json_form;    // {"schema_version": 1, ...}: docs/check.schema.json
extern const output_form sarif_form;   // for code review: SARIF 2.1.0
extern const output_form nagios_form;  // for monitoring: one line, and the status 0 to 3 of plugins

// Every name, in the order of the help, and the form of a name; null when there is none.
std::vector<std::string> output_form_names();
const output_form* find_output_form(std::string_view name);

// Of every document: its texts need not be UTF-8, it always is.
std::string document_text(const nlohmann::ordered_json& document);

// A number of the command's field "summary"; 0 when it has none.
size_t summary_of(const account& said, const char* name);

#endif

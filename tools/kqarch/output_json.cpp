// One document with everything; docs/check.schema.json holds what `kqarch check` promises of it.
#include "catalogue.h"
#include "output_form.h"
#include "text.h"

namespace {

constexpr int schema_version = 1;

nlohmann::ordered_json text_or_null(const std::string& text) {
    return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(visible(text));
}

template <typename number>
nlohmann::ordered_json number_or_null(number value) {
    return value == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(value);
}

nlohmann::ordered_json as_document(const diagnostic& found) {
    const code_entry* entry = find_code(found.code);
    return {{"severity", name_of(found.level)},
            {"file", text_or_null(found.file)},
            {"line", number_or_null(found.line)},
            {"code", number_or_null(found.code)},
            {"name", text_or_null(entry != nullptr ? entry->name : "")},
            {"section", text_or_null(found.section)},
            {"key", text_or_null(found.key)},
            {"text", visible(found.text)},
            {"hint", text_or_null(found.hint)}};
}

std::string json_document(const account& said, exit_status status) {
    nlohmann::ordered_json diagnostics = nlohmann::ordered_json::array();
    for (const diagnostic& found : said.found)
        diagnostics.push_back(as_document(found));
    nlohmann::ordered_json document = {{"schema_version", schema_version},
                                       {"command", text_or_null(said.command)},
                                       {"exit_code", static_cast<int>(status)},
                                       {"diagnostics", diagnostics}};
    document.update(said.fields);
    return document_text(document);
}

}  // namespace

const output_form json_form{"json", json_document, nullptr};

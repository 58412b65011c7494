#include "output_form.h"

namespace {

constexpr const output_form* forms[] = {&text_form, &json_form, &sarif_form, &nagios_form};

}  // namespace

const output_form text_form{"text", nullptr, nullptr};

std::vector<std::string> output_form_names() {
    std::vector<std::string> names;
    for (const output_form* form : forms)
        names.emplace_back(form->name);
    return names;
}

const output_form* find_output_form(std::string_view name) {
    for (const output_form* form : forms)
        if (form->name == name) return form;
    return nullptr;
}

std::string document_text(const nlohmann::ordered_json& document) {
    return document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

size_t summary_of(const account& said, const char* name) {
    return said.fields.contains("summary") ? said.fields["summary"].value(name, size_t{0}) : 0;
}

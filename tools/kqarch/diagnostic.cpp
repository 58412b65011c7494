#include "diagnostic.h"

#include "catalogue.h"

const char* name_of(severity level) {
    if (level == severity::error) return "error";
    return level == severity::warning ? "warning" : "note";
}

std::string code_text(kqcode_t code) {
    const code_entry* entry = find_code(code);
    return std::to_string(code) + (entry != nullptr ? std::string(" ") + entry->name : "");
}

std::string place_of(const diagnostic& found) {
    if (found.file.empty()) return "kqarch";
    return found.file + (found.line > 0 ? ":" + std::to_string(found.line) : "");
}

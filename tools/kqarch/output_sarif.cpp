// SARIF 2.1.0, which shows findings beside the lines of a change that is reviewed. What belongs to
// no file (wrong use, say) is a notification of the tool.
#include <filesystem>

#include "catalogue.h"
#include "output_form.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

struct rule_text {
    std::string id;
    std::string meaning;
    std::string cause;
    std::string help;
};

rule_text rule_of(const diagnostic& found) {
    if (const code_entry* entry = find_code(found.code))
        return {entry->name, entry->meaning, entry->cause, entry->remedy};
    const doubt_entry* entry = find_doubt(found.rule);
    return {entry->name, entry->meaning, entry->meaning, entry->remedy};
}

json as_text_object(const std::string& text) {
    return {{"text", visible(text)}};
}

json as_rule(const rule_text& rule) {
    return {{"id", rule.id},
            {"shortDescription", as_text_object(rule.meaning)},
            {"fullDescription", as_text_object(rule.cause)},
            {"help", as_text_object(rule.help)}};
}

std::string message_of(const diagnostic& found) {
    if (found.hint.empty()) return found.text;
    bool is_sentence = std::string_view(".!?").find(found.text.back()) != std::string_view::npos;
    return found.text + (is_sentence ? " " : ". ") + found.hint;
}

// Relative to where the check ran, as the path was given.
std::string uri_of(const std::string& path) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~/";
    constexpr char digits[] = "0123456789ABCDEF";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (char letter : std::filesystem::path(path).lexically_normal().string()) {
        auto byte = static_cast<unsigned char>(letter);
        if (plain.find(letter) != plain.npos)
            uri += letter;
        else
            uri += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    return uri;
}

json as_location(const diagnostic& found) {
    json place = {{"artifactLocation", {{"uri", uri_of(found.file)}}}};
    if (found.line > 0) place["region"] = {{"startLine", found.line}};
    return {{"physicalLocation", place}};
}

// The place of a rule in the list, where it comes when it is used first.
size_t index_of(const rule_text& rule, json& rules) {
    for (size_t i = 0; i < rules.size(); ++i)
        if (rules[i]["id"] == rule.id) return i;
    rules.push_back(as_rule(rule));
    return rules.size() - 1;
}

json as_result(const diagnostic& found, json& rules) {
    rule_text rule = rule_of(found);
    size_t index = index_of(rule, rules);
    return {{"ruleId", rule.id},
            {"ruleIndex", index},
            {"level", name_of(found.level)},
            {"message", as_text_object(message_of(found))},
            {"locations", json::array({as_location(found)})}};
}

json as_notification(const diagnostic& found) {
    return {{"level", name_of(found.level)}, {"message", as_text_object(message_of(found))}};
}

std::string sarif_document(const account& said, exit_status status) {
    json rules = json::array();
    json results = json::array();
    json notifications = json::array();
    for (const diagnostic& found : said.found)
        if (found.file.empty())
            notifications.push_back(as_notification(found));
        else
            results.push_back(as_result(found, rules));
    json driver = {{"name", "kqarch"}, {"version", KQARCH_VERSION}, {"rules", rules}};
    bool ran = status == exit_good || status == exit_refused;
    json invocation = {{"executionSuccessful", ran},
                       {"exitCode", static_cast<int>(status)},
                       {"toolExecutionNotifications", notifications}};
    json run = {{"tool", {{"driver", driver}}},
                {"invocations", json::array({invocation})},
                {"columnKind", "utf16CodeUnits"},
                {"results", results}};
    return document_text({{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                          {"version", "2.1.0"},
                          {"runs", json::array({run})}});
}

}  // namespace

const output_form sarif_form{"sarif", sarif_document, nullptr};

#include "difference.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <map>

#include "catalogue.h"
#include "diff.h"
#include "ini.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines = split(text, '\n');
    if (lines.back().empty()) lines.pop_back();
    return lines;
}

std::string trimmed(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t\r");
    if (begin == text.npos) return "";
    return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// A path or a connection text, or something that is said to be a password.
bool may_hold_password(const std::string& comment) {
    if (comment.find_first_of("/@") != comment.npos) return true;
    std::string upper = upper_case(comment);
    return std::ranges::any_of(std::initializer_list<const char*>{"PASS", "PW", "SECRET"},
                               [&](const char* word) { return upper.find(word) != upper.npos; });
}

// The types of the sections, by the lines of their headers.
std::map<ulint, ulint> section_types(const config_file& file) {
    std::map<ulint, ulint> types;
    for (const config_line& line : file.lines())
        if (line.kind == KQ_INI_KEY && same_text(line.key, "ARCH_TYPE"))
            types[line.section_line] = arch_cfg_get_arch_type_by_name(line.value.c_str());
    return types;
}

bool is_never_written(const config_line& line, const std::map<ulint, ulint>& types) {
    const key_entry* entry = line.kind == KQ_INI_KEY ? find_key(line.key) : nullptr;
    if (entry == nullptr) return false;
    auto type = types.find(line.section_line);
    bool of_its_type = entry->scope == key_scope::global || type == types.end() ||
                       (entry->types & type_bit(type->second)) != 0;
    bool zero = std::strtoul(line.value.c_str(), nullptr, 0) == 0;
    return !entry->written_back || !of_its_type ||
           (entry->index == ini_index_raft_vote_interval && zero);
}

}  // namespace

difference::difference(const config_file& before, const std::string& after, password_list passwords)
    : before_(before), after_(after), passwords_(std::move(passwords)) {}

std::vector<lost_line> difference::lost() const {
    std::vector<std::string> before = lines_of(before_.text());
    std::vector<std::string> kept = lines_of(after_);
    std::vector<lost_line> lost;
    for (size_t i = 0; i < before.size(); ++i) {
        std::string line = trimmed(before[i]);
        if (!is_comment(line)) continue;
        // The two lines of the header come back.
        auto again = std::find(kept.begin(), kept.end(), line);
        if (again != kept.end())
            kept.erase(again);
        else
            lost.push_back({static_cast<ulint>(i + 1), "the comment: " + shown_comment(line)});
    }
    std::map<ulint, ulint> types = section_types(before_);
    for (const config_line& line : before_.lines()) {
        if (is_never_written(line, types))
            lost.push_back(
                {line.number, upper_case(line.key) + " = " + passwords_.hide(visible(line.value))});
        else if (line.kind == KQ_INI_SECTION && before_.key_line(line.key, "ARCH_TYPE") == 0)
            lost.push_back({line.number, "the section [" + passwords_.hide(visible(line.key)) +
                                             "], which has no ARCH_TYPE"});
    }
    std::sort(lost.begin(), lost.end(),
              [](const lost_line& left, const lost_line& right) { return left.line < right.line; });
    return lost;
}

void difference::report_lost(output& out) const {
    json documents = json::array();
    for (const lost_line& one : lost()) {
        documents.push_back({{"line", one.line}, {"what", one.what}});
        out.report({.level = severity::warning,
                    .file = before_.path(),
                    .line = one.line,
                    .text = "a rewrite would lose " + one.what});
    }
    out.set("lost", documents);
}

void difference::print(const std::string& name_of_after, output& out) const {
    std::vector<diff_hunk> hunks = diff(lines_of(before_.text()), lines_of(after_));
    json documents = json::array();
    auto print_line = [&](const std::string& line) {
        documents.push_back(line);
        out.print(line + "\n");
    };
    out.print_heading("--- " + visible(before_.path()));
    out.print_heading("+++ " + visible(name_of_after));
    for (const diff_hunk& hunk : hunks) {
        print_line(heading_of(hunk));
        for (const diff_line& line : hunk.lines) {
            const char* marks[] = {" ", "-", "+"};
            bool blank = line.text.empty() && line.kind == change::kept;
            print_line(blank ? "" : marks[static_cast<int>(line.kind)] + shown(line.text));
        }
    }
    if (hunks.empty()) out.print("Only the end of the last line differs.\n");
    out.set("diff", documents);
}

// A comment is free text: where it could hold a password at all, none of it is shown.
std::string difference::shown_comment(const std::string& line) const {
    return may_hold_password(line) ? "# ***" : passwords_.hide(visible(line));
}

// A number that happens to be a password stays.
std::string difference::shown_line(const std::string& line) const {
    size_t end = std::min(line.find('='), line.size());
    const key_entry* entry = find_key(trimmed(line.substr(0, end)));
    bool is_number = entry != nullptr && !entry->is_text &&
                     line.find_first_not_of("0123456789ABCDEFabcdefxX+ ", end + 1) == line.npos;
    return is_number ? line : passwords_.hide(line);
}

std::string difference::shown(const std::string& line) const {
    return visible(is_comment(trimmed(line)) ? shown_comment(line) : shown_line(line));
}

// The text of kqarch.ini in the notation of the scenario files.
#include <regex>

#include "support/scenario.h"

namespace test_support {

const char* const file_header =
    "#Velkor Database Archive Configuration file\n#this is comments\n\n";

namespace {

std::string replaced(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

std::string key_and_value(const std::string& line) {
    size_t mark = line.find(" = ");
    if (mark == line.npos) return line;
    return line.substr(0, mark) + "=" + replaced(line.substr(mark + 3), " ", "\\x20");
}

// What the module writes for a line of the notation: after the instances of a standby that may wait
// it leaves a line empty.
std::string written_for(const std::string& line) {
    if (line[0] != '[') return replaced(line, "=", " = ") + "\n\n";
    std::string text = replaced(line, " ([A-Z_]+)=", "\n$1 = ") + "\n\n";
    bool may_wait = std::regex_search(text, std::regex("ARCH_TYPE = (REALTIME|TIMELY)"));
    return may_wait ? replaced(text, "(ARCH_DEST = .*\n)", "$1\n") : text;
}

}  // namespace

std::string folded(const std::string& text) {
    std::string header = file_header, result, again = header;
    for (const std::string& line : split(text.substr(std::min(header.size(), text.size())), "\n")) {
        if (line.empty()) continue;
        bool in_section = line[0] != '[' && result.find('[') != result.npos;
        result += (result.empty() ? "" : in_section ? " " : "\n") + key_and_value(line);
    }
    for (const std::string& line : split(result, "\n"))
        if (!line.empty()) again += replaced(written_for(line), "\\\\x20", " ");
    if (again != text) return text;
    return result.empty() ? "nothing but the header" : result;
}

}  // namespace test_support

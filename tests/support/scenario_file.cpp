// Reading and writing scenario files.
#include <algorithm>
#include <sstream>

#include "support/scenario.h"

namespace test_support {

namespace {

const std::string result_mark = " => ";
const std::string input_indent = "  ";
const std::string line_end = "; ";
constexpr size_t widest_row = 100;

bool starts_with(const std::string& line, const std::string& start) {
    return line.rfind(start, 0) == 0;
}

std::string input_lines(const std::string& text) {
    std::string lines;
    for (const std::string& line : split(text, line_end))
        lines += line + "\n";
    return lines;
}

step read_step(const std::string& text) {
    size_t mark = text.find(" < ");
    return {text.substr(0, mark), mark == text.npos ? "" : input_lines(text.substr(mark + 3))};
}

row read_row(int number, const std::string& before, const std::string& line) {
    size_t mark = line.find(result_mark);
    row read{number, before, line.substr(0, mark) + "\n", ""};
    if (mark != line.npos) read.expected = line.substr(mark + result_mark.size());
    return read;
}

// Takes a line that belongs to the row before it: input, or what is expected.
bool take_line(row& last, const std::string& line) {
    if (starts_with(line, input_indent))
        last.text += line + "\n";
    else if (starts_with(line, "=> "))
        last.expected = line.substr(3);
    else if (line == "|" || starts_with(line, "| "))
        last.expected += (line == "|" ? "" : line.substr(2)) + "\n";
    else
        return false;
    return true;
}

// The lines of a result as one, unless that would be too long or lose where they end.
std::string in_one_line(const std::string& expected) {
    if (expected.empty() || expected.back() != '\n') return expected;
    std::string lines = expected.substr(0, expected.size() - 1), joined = lines;
    for (size_t at; (at = joined.find('\n')) != joined.npos;)
        joined.replace(at, 1, line_end);
    bool fits = joined.size() + result_mark.size() <= widest_row + 1;
    return fits && in_lines(joined) == lines ? joined : expected;
}

std::string row_text(const row& each) {
    const std::string expected = in_one_line(each.expected);
    if (expected.empty()) return each.text;
    if (expected.back() != '\n') {
        bool fits = each.text.find('\n') == each.text.size() - 1 &&
                    each.text.size() - 1 + result_mark.size() + expected.size() <= widest_row;
        if (!fits) return each.text + result_mark.substr(1) + expected + "\n";
        return each.text.substr(0, each.text.size() - 1) + result_mark + expected + "\n";
    }
    std::string text = each.text;
    std::istringstream lines(expected);
    for (std::string line; std::getline(lines, line);)
        text += (line.empty() ? "|" : "| " + line) + "\n";
    return text;
}

}  // namespace

std::string in_lines(std::string expected) {
    for (size_t at; (at = expected.find(line_end)) != expected.npos;)
        expected.replace(at, line_end.size(), "\n");
    while (!expected.empty() && expected.back() == '\n')
        expected.pop_back();
    return expected;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
    std::vector<std::string> pieces;
    size_t from = 0;
    for (size_t at; (at = text.find(separator, from)) != text.npos; from = at + separator.size())
        pieces.push_back(text.substr(from, at - from));
    pieces.push_back(text.substr(from));
    return pieces;
}

std::vector<step> steps_of(const std::string& text) {
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    std::vector<step> steps;
    for (const std::string& each : split(line, " && "))
        steps.push_back(read_step(each));
    while (std::getline(lines, line))
        steps.back().input += input_lines(line.substr(input_indent.size()));
    return steps;
}

std::vector<std::filesystem::path> scenario_files(const std::filesystem::path& directory) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory))
        if (entry.path().extension() == ".txt") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string scenario_name(const std::filesystem::path& directory,
                          const std::filesystem::path& path) {
    std::string name = path.lexically_relative(directory).replace_extension();
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}

std::vector<row> read_scenario(const std::filesystem::path& path) {
    std::vector<row> rows;
    std::istringstream lines(read_file(path));
    std::string line, before;
    for (int number = 1; std::getline(lines, line); number++) {
        if (line.empty() || line[0] == '#') {
            before += line + "\n";
        } else if (rows.empty() || !before.empty() || !take_line(rows.back(), line)) {
            rows.push_back(read_row(number, before, line));
            before.clear();
        }
    }
    return rows;
}

std::string write_scenario(const std::vector<row>& rows) {
    std::string text;
    for (const row& each : rows)
        text += each.before + row_text(each);
    return text;
}

}  // namespace test_support

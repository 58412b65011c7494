// Reading and writing scenario files.
#include <sstream>
#include <stdexcept>

#include "support/scenario.h"

namespace test_support {

namespace {

const char* const separator = "----";

class line_reader {
  public:
    explicit line_reader(const std::string& text) : stream(text) {}

    bool next(std::string& line) {
        if (!std::getline(stream, line)) return false;
        number++;
        return true;
    }

    bool take_separator() {
        std::string line;
        std::istringstream::pos_type here = stream.tellg();
        if (std::getline(stream, line) && line == separator) {
            number++;
            return true;
        }
        stream.clear();
        stream.seekg(here);
        return false;
    }

    int number = 0;

  private:
    std::istringstream stream;
};

std::string read_expected(line_reader& lines) {
    std::string expected, line;
    bool doubled = lines.take_separator();
    while (lines.next(line) && (doubled || !line.empty())) {
        if (doubled && line == separator && lines.take_separator()) {
            lines.next(line);
            break;
        }
        expected += line + "\n";
    }
    return expected;
}

}  // namespace

std::vector<directive> read_scenario(const std::filesystem::path& path) {
    std::vector<directive> directives;
    line_reader lines(read_file(path));
    std::string line, before;
    while (lines.next(line)) {
        before += line + "\n";
        if (line.empty() || line[0] == '#') continue;
        directive next{lines.number, before, line, "", ""};
        before.clear();
        while (lines.next(line)) {
            next.before += line + "\n";
            if (line == separator) break;
            next.input += line + "\n";
        }
        if (line != separator) throw std::runtime_error(path.string() + ": no ---- at the end");
        next.expected = read_expected(lines);
        directives.push_back(next);
    }
    return directives;
}

std::string write_scenario(const std::vector<directive>& directives) {
    std::string text;
    for (const directive& each : directives) {
        bool doubled = ("\n" + each.expected).find("\n\n") != std::string::npos;
        std::string open = doubled ? std::string(separator) + "\n" : "";
        std::string close = doubled ? open + open : "";
        text += each.before + open + each.expected + close + "\n";
    }
    if (!text.empty()) text.pop_back();
    return text;
}

}  // namespace test_support

// Scenario files: what a user types and everything that has to come out of it.
//
//   # why
//   write db/kqarch.ini      a file:
//   | [ARCHIVE_LOCAL1]       its lines, of which one may be a section with its keys (scenario.h)
//   $ kqarch check db        a shell command, and what has to come out of it:
//   | db: would not start    standard output,
//   ! db/kqarch.ini:1: ...   standard error, where a hint stands in the line that it is for,
//   [3] $ kqarch check new   the exit status too, unless that is 1 after an error and 0 otherwise
//
// " (N times)" stands behind a line that comes N times on end. In a file's text {dir} is the absolute
// directory that the commands run in, and in what a command prints it stands for it. With
// KQARCH_REWRITE set, a file is rewritten to what was seen instead.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "program.h"
#include "support/instance.h"
#include "support/scenario.h"

namespace fs = std::filesystem;

namespace {

constexpr char output_mark = '|';
constexpr char error_mark = '!';
constexpr const char* prompt = "$ ";

using lines = std::vector<std::string>;

lines lines_of(const std::string& text) {
    lines found;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        found.push_back(line);
    return found;
}

std::string marked(const std::string& text, char mark) {
    std::string all;
    lines found = lines_of(text);
    for (auto at = found.begin(), next = at; at != found.end(); at = next) {
        next = std::find_if(at, found.end(), [&](const std::string& line) { return line != *at; });
        all += mark + (at->empty() ? "" : " " + *at);
        all += next - at > 1 ? " (" + std::to_string(next - at) + " times)\n" : "\n";
    }
    return all;
}

// An error and its hint in one line.
std::string with_hints_beside(std::string errors) {
    const std::string hint = "\n  hint: ";
    for (size_t at; (at = errors.find(hint)) != errors.npos;)
        errors.replace(at, 1, "");
    return errors;
}

int usual_status(const std::string& errors) {
    return errors.find("error: ") != errors.npos || errors.find("error[") != errors.npos ? 1 : 0;
}

std::string transcript_of(const std::string& command, const run_result& result) {
    bool usual = result.status == usual_status(result.errors);
    return (usual ? "" : "[" + std::to_string(result.status) + "] ") + prompt + command + "\n" +
           marked(result.output, output_mark) +
           marked(with_hints_beside(result.errors), error_mark);
}

// Runs one file; the text that it would have to be for what was seen.
class scenario {
  public:
    explicit scenario(const std::string& text) : lines_(lines_of(text)) {}

    std::string play() {
        while (at_ < lines_.size())
            play_step();
        return seen_;
    }

  private:
    void play_step() {
        std::string line = lines_[at_++];
        size_t command = line.find(prompt);
        if (line.starts_with("write ")) {
            seen_ += line + "\n";
            place_.write(line.substr(6), take_body());
        } else if (command == 0 || (command == 4 && line[0] == '[')) {
            skip_expectation();
            line.erase(0, command + 2);
            seen_ += transcript_of(line, place_.run(line));
        } else {
            EXPECT_TRUE(line.empty() || line[0] == '#')
                << "line " << at_ << " is no step: " << line;
            seen_ += line + "\n";
        }
    }

    std::string take_body() {
        std::string body;
        for (; at_ < lines_.size() && lines_[at_].starts_with(output_mark); ++at_) {
            seen_ += lines_[at_] + "\n";
            body +=
                test_support::expand_section(lines_[at_].substr(lines_[at_].size() > 1 ? 2 : 1));
        }
        return body;
    }

    void skip_expectation() {
        while (at_ < lines_.size() &&
               (lines_[at_].starts_with(output_mark) || lines_[at_].starts_with(error_mark)))
            ++at_;
    }

    workplace place_;
    lines lines_;
    size_t at_ = 0;
    std::string seen_;
};

class kqarch_scenario : public testing::TestWithParam<fs::path> {};

TEST_P(kqarch_scenario, prints_what_it_should) {
    std::string expected = test_support::read_file(GetParam());
    std::string seen = scenario(expected).play();
    if (std::getenv("KQARCH_REWRITE") != nullptr) std::ofstream(GetParam()) << seen;
    EXPECT_EQ(expected, seen);
}

INSTANTIATE_TEST_SUITE_P(, kqarch_scenario,
                         testing::ValuesIn(test_support::scenario_files(KQARCH_SCENARIOS)),
                         [](const auto& info) { return info.param.stem().string(); });

}  // namespace

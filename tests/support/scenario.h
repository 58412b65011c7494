// Scenario files: tables of commands, each with what has to come of it. A row is
//
//     COMMAND                  which succeeds: it prints "ok" or the code 0, and no message
//     COMMAND => RESULT        what it prints, in one line
//     COMMAND && COMMAND ...   all but the last succeed
//
// RESULT stands on a line of its own, "=> RESULT", where the row would be too long. Several lines of
// a result are joined with "; ", or take a "| " before each. The result of a function is its code.
// What else happened stands there too:
//
//     -803: TEXT               TEXT was printed to standard error, and logged at level 4
//     -803 stderr: TEXT        it was only printed; likewise "stdout: TEXT"
//     -803 log 4: TEXT         it was only logged, at that level
//     invalid -803 ...         "Validate kqarch.ini error, code=-803" was printed after the rest
//     raised -803 ...          "code -803 raised at cfg_dll/arch_cfg:LINE" was logged after the rest
//     -803 with a stop: TEXT   TEXT was logged at level 4, and printed with a stop at its end
//
// and where there are more messages than one, each in a line before the result: first what was
// printed, then what was logged, or "refused: TEXT" if it is the same. <no line feed> ends a printed
// line without one.
//
// (A|B|C) in a row makes it a row for each of these texts, one after the other. What is expected is
// the same for all, with {} for the text where it comes back, or stands there for each: "X | Y | Z".
//
// A command's input follows on lines that two blanks indent, or after " < "; "; " ends a line of it
// too. In arguments and input {TEXT*N} is TEXT N times, \xNN a byte; an argument may stand in
// double quotes. A line of input may also be
//     [NAME] TYPE DEST KEY=VALUE   a section and its keys (values without blanks); behind DEST may
//                                  stand the path of a REMOTE, the timer of another
//     repeat FROM TO LINE          LINE with each number from FROM to TO for {i}
//     include NAME                 the input of an earlier "define NAME"
// Lines that start with "#" are comments. With SCENARIO_REWRITE=1 in the environment, what is
// expected is replaced by what was seen; a row that states nothing keeps its silence on success.
#ifndef TESTS_SUPPORT_SCENARIO_H
#define TESTS_SUPPORT_SCENARIO_H

#include <arch_cfg.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/instance.h"

namespace test_support {

struct row {
    int line;
    std::string before;    // comments and blank lines
    std::string text;      // the row and its input as they stand in the file
    std::string expected;  // one line without its end, or several with it; empty if not stated
};

// A result with its lines ended as they were when they were joined, or not.
std::string in_lines(std::string expected);

struct step {
    std::string command;
    std::string input;
};

// The commands of a row's text.
std::vector<step> steps_of(const std::string& text);

std::vector<std::string> split(const std::string& text, const std::string& separator);
// The files under a directory, and each one's place there as a test's name.
std::vector<std::filesystem::path> scenario_files(const std::filesystem::path& directory);
std::string scenario_name(const std::filesystem::path& directory,
                          const std::filesystem::path& path);

std::vector<row> read_scenario(const std::filesystem::path& path);
std::string write_scenario(const std::vector<row>& rows);

// What a line of input stands for, and several lines of it.
std::string expand_section(const std::string& line);
std::string expand_input(const std::string& input,
                         const std::map<std::string, std::string>& defined = {});

// What a command works with.
struct command_context {
    std::vector<std::string> arguments;  // without the command's name
    std::string input;
    std::map<std::string, std::string>& definitions;
    instance_directory& instance;
    arch_cfg_sys_t& own_registry;                     // a registry that is not the process's
    std::map<bool, std::vector<std::string>>& shown;  // the lines of both since start-up, own: true

    const std::string& argument(size_t index) const;
    const schar* text(size_t index) const;  // null for "null"
    ulint number(size_t index) const;
    // The value of an argument "NAME=value".
    std::optional<std::string> option(const std::string& name) const;
    ulint option(const std::string& name, ulint otherwise) const;
};

// A command prints what it found, one line or more.
using command_function = std::string (*)(const command_context&);
using command_table = std::map<std::string, command_function>;

// A command that has nothing to tell.
template <auto Act>
std::string done(const command_context& call) {
    Act(call);
    return "ok";
}

// The commands by what they are about. Each table stands in a file of its own.
const command_table& file_commands();
const command_table& registry_commands();
const command_table& call_commands();
const command_table& online_commands();
const command_table& cluster_commands();
const command_table& raft_commands();
const command_table& platform_commands();

std::string code_text(kqcode_t code);
// The mode of what is at a path, a link itself.
std::string mode_text(const std::filesystem::path& path);

// What is wrong with a start-up from kqarch.ini: it gives a registry that is not the running one,
// which stays. Nothing is printed or logged. With `text` it must also be accepted, and that becomes
// what it would be written as; else it may be refused, as start-up has rules that changes have not.
std::string fault_of_start_up(const command_context& context, std::string* text = nullptr);

// The text of kqarch.ini with a line for each section, "[NAME] KEY=VALUE ...", as in input. A text
// that is not just what the module would write for those lines stays as it is.
extern const char* const file_header;
std::string folded(const std::string& text);

// The record of exactly that name, or null.
arch_cfg_t* find_record(const arch_cfg_sys_t& registry, const std::string& name);

// Runs the file's rows in a new instance directory; a difference is a test failure that names file
// and line.
void run_scenario(const std::filesystem::path& path);

}  // namespace test_support

#endif

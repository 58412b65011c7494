// Scenario files: commands, their input and the output that is expected of them.
//
//     # a comment
//     load timer_chk=0
//     [L1] ARCH_TYPE=LOCAL ARCH_DEST=arch1
//     ----
//     code 0
//
// A directive is a command line, input lines, "----", the expected output, and a blank line. Where
// the expected output holds a blank line, "----" stands twice before it and twice after it.
//
// In arguments and input {TEXT*N} is TEXT N times, \xNN a byte; an argument may stand in double
// quotes. Input may also use
//     [NAME] KEY=VALUE KEY=VALUE   a section and its keys on one line (values without blanks)
//     repeat FROM TO ... end       the lines between, {i} being FROM to TO
//     include NAME                 the input of an earlier "define NAME"
// With SCENARIO_REWRITE=1 in the environment, what is expected is replaced by what is printed.
#ifndef TESTS_SUPPORT_SCENARIO_H
#define TESTS_SUPPORT_SCENARIO_H

#include <arch_cfg.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "support/instance.h"

namespace test_support {

struct directive {
    int line;
    std::string before;  // the file's text from the directive before to the line of "----"
    std::string command;
    std::string input;
    std::string expected;
};

std::vector<directive> read_scenario(const std::filesystem::path& path);
std::string write_scenario(const std::vector<directive>& directives);

// What one directive's command works with.
struct command_context {
    std::vector<std::string> arguments;  // without the command's name
    std::string input;
    std::map<std::string, std::string>& definitions;
    instance_directory& instance;
    arch_cfg_sys_t& own_registry;  // a registry that is not the process's

    const std::string& argument(size_t index) const;
    const schar* text(size_t index) const;  // null for "null"
    ulint number(size_t index) const;
    // The value of an argument "NAME=value".
    ulint option(const std::string& name, ulint otherwise) const;
};

// A command prints what it found, one line or more.
using command_function = std::string (*)(const command_context&);
using command_table = std::map<std::string, command_function>;

// The commands by what they are about. Each table stands in a file of its own.
const command_table& file_commands();
const command_table& registry_commands();
const command_table& call_commands();
const command_table& online_commands();
const command_table& cluster_commands();
const command_table& raft_commands();

std::string code_text(kqcode_t code);

// The record of exactly that name, or null.
arch_cfg_t* find_record(const arch_cfg_sys_t& registry, const std::string& name);

// Runs the file's directives in a new instance directory; a difference is a test failure that
// names file and line.
void run_scenario(const std::filesystem::path& path);

}  // namespace test_support

#endif

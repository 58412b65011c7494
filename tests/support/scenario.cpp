// Running a scenario: expanding arguments and input, and comparing what each command prints.
#include "support/scenario.h"

#include <errno.h>
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <stdlib.h>

#include <algorithm>
#include <functional>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "support/capture.h"

namespace test_support {

const std::string& command_context::argument(size_t index) const {
    if (index >= arguments.size()) throw std::runtime_error("an argument is missing");
    return arguments[index];
}

const schar* command_context::text(size_t index) const {
    return argument(index) == "null" ? nullptr : argument(index).c_str();
}

ulint command_context::number(size_t index) const {
    return static_cast<ulint>(std::stoull(argument(index)));
}

std::optional<std::string> command_context::option(const std::string& name) const {
    for (const std::string& each : arguments)
        if (each.rfind(name + "=", 0) == 0) return each.substr(name.size() + 1);
    return {};
}

ulint command_context::option(const std::string& name, ulint otherwise) const {
    std::optional<std::string> given = option(name);
    return given ? static_cast<ulint>(std::stoul(*given)) : otherwise;
}

namespace {

// The key of a value that stands in a section without one.
std::string key_of(size_t position, const std::string& type) {
    static const char* const keys[] = {"ARCH_TYPE", "ARCH_DEST"};
    if (position < 2) return keys[position];
    return type == "REMOTE" ? "ARCH_INCOMING_PATH" : "ARCH_TIMER_NAME";
}

}  // namespace

std::string expand_section(const std::string& line) {
    static const std::regex section(R"(^(\[[^\]]*\])((?: [^ #]+)+)$)");
    std::smatch match;
    if (!std::regex_match(line, match, section)) return line + "\n";
    std::vector<std::string> words = split(match[2], " ");
    std::string text = match[1].str() + "\n";
    for (size_t i = 1; i < words.size(); i++) {
        size_t equals = words[i].find('=');
        text += equals == std::string::npos
                    ? key_of(i - 1, words[1]) + " = " + words[i]
                    : words[i].substr(0, equals) + " = " + words[i].substr(equals + 1);
        text += "\n";
    }
    return text;
}

namespace {

using definitions = std::map<std::string, std::string>;

std::string expand_text(std::string text) {
    static const std::regex repeated(R"(\{([^{}*]+)\*(\d+)\})");
    static const std::regex escaped(R"(\\x([0-9a-fA-F]{2}))");
    std::smatch match;
    while (std::regex_search(text, match, repeated)) {
        std::string run;
        for (int count = std::stoi(match[2]); count > 0; count--)
            run += match[1];
        text = match.prefix().str() + run + match.suffix().str();
    }
    std::string result;
    while (std::regex_search(text, match, escaped)) {
        result += match.prefix().str() + static_cast<char>(std::stoi(match[1], nullptr, 16));
        text = match.suffix().str();
    }
    return result + text;
}

std::vector<std::string> split_command(const std::string& line) {
    static const std::regex word(R"RE("([^"]*)"|(\S+))RE");
    std::vector<std::string> words;
    for (std::sregex_iterator at(line.begin(), line.end(), word), end; at != end; ++at)
        words.push_back(expand_text((*at)[2].matched ? (*at)[2].str() : (*at)[1].str()));
    return words;
}

std::string expand_repeat(const std::smatch& repeat, const definitions& defined) {
    std::string result;
    for (int i = std::stoi(repeat[1]); i <= std::stoi(repeat[2]); i++)
        result += expand_input(
            std::regex_replace(repeat[3].str(), std::regex(R"(\{i\})"), std::to_string(i)),
            defined);
    return result;
}

}  // namespace

std::string expand_input(const std::string& input, const definitions& defined) {
    static const std::regex repeat(R"(^repeat (\d+) (\d+) (.*)$)");
    static const std::regex include(R"(^include (\S+)$)");
    std::istringstream lines(input);
    std::string result;
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, repeat))
            result += expand_repeat(match, defined);
        else if (std::regex_match(line, match, include))
            result += expand_input(defined.at(match[1]), defined);
        else
            result += expand_text(expand_section(line));
    }
    return result;
}

namespace {

command_function find_command(const std::string& name) {
    for (auto table : {file_commands, registry_commands, call_commands, online_commands,
                       cluster_commands, raft_commands, platform_commands}) {
        for (const std::string& each : {name, "arch_cfg_" + name})
            if (auto found = table().find(each); found != table().end()) return found->second;
    }
    throw std::runtime_error("no command " + name);
}

using line_list = std::vector<std::string>;

line_list lines_of(const std::string& text) {
    line_list lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// The messages of a refusal are printed and logged alike: then each is told once.
line_list told_once(line_list printed, const line_list& logged) {
    static const std::string console = "stderr: ", log = "log 4: ", both = "refused: ",
                             stop = "with a stop: ";
    line_list told;
    for (size_t i = 0; i < printed.size() && printed.size() == logged.size(); i++) {
        std::string text = printed[i].substr(std::min(console.size(), printed[i].size()));
        if (printed[i] == console + text && logged[i] == log + text) told.push_back(both + text);
    }
    if (!printed.empty() && told.size() == printed.size()) return told;
    if (logged.size() == 1 && printed == line_list{console + logged[0].substr(log.size()) + "."})
        return {stop + logged[0].substr(log.size())};
    printed.insert(printed.end(), logged.begin(), logged.end());
    return printed;
}

std::string in_one_line(const std::string& result, const std::string& message) {
    static const std::string both = "refused: ";
    if (message.rfind(both, 0) == 0) return result + ": " + message.substr(both.size());
    return result + " " + message;
}

// What a command did, in the notation of the files.
std::string observed(line_list printed, line_list logged, line_list results) {
    if (results.empty()) results.push_back("nothing");
    if (!logged.empty() &&
        logged.back() == "log 4: code " + results[0] + " raised at cfg_dll/arch_cfg:LINE") {
        logged.pop_back();
        results[0] = "raised " + results[0];
    }
    if (!printed.empty() &&
        printed.back() == "stderr: Validate kqarch.ini error, code=" + results[0]) {
        printed.pop_back();
        results[0] = "invalid " + results[0];
    }
    line_list messages = told_once(printed, logged);
    if (results.size() == 1 && !results[0].empty() && messages.size() <= 1)
        return messages.empty() ? results[0] : in_one_line(results[0], messages[0]);
    std::string text;
    for (const line_list& lines : {messages, results}) {
        for (const std::string& line : lines)
            text += line + "\n";
    }
    return text;
}

// What a call left that no call may leave, whatever it returned.
line_list faults_of(const command_context& context) KQ_NO_THREAD_ANALYSIS {
    line_list faults = {list_fault(arch_cfg_sys), list_fault(context.own_registry)};
    int lock = pthread_mutex_trylock(&arch_cfg_sys.mutex.the_mutex);
    if (lock == 0) pthread_mutex_unlock(&arch_cfg_sys.mutex.the_mutex);
    if (lock == EBUSY || lock == EDEADLK) faults.push_back("the lock is held");
    std::erase(faults, "");
    return faults;
}

std::string run_step(const step& each, command_context& context) {
    std::vector<std::string> words = split_command(each.command);
    if (words[0] == "define") {
        context.definitions[words.at(1)] = each.input;
        return "ok";
    }
    context.arguments.assign(words.begin() + 1, words.end());
    context.input = expand_input(each.input, context.definitions);
    command_function command = find_command(words[0]);
    output_capture capture(context.instance.error_log());
    line_list results = lines_of(visible(command(context)));
    for (const std::string& fault : faults_of(context))
        results.push_back(fault);
    return observed(lines_of(capture.printed()), lines_of(capture.logged()), results);
}

bool is_success(const std::string& result) {
    return result == "ok" || result == "0";
}

// What the last command did, or an earlier one that should have succeeded and did not.
std::string run_steps(const std::vector<step>& steps, command_context& context) {
    std::string got;
    for (const step& next : steps) {
        got = run_step(next, context);
        if (&next != &steps.back() && !is_success(got)) return next.command + " => " + got;
    }
    return got;
}

bool is_word(const std::string& text, size_t at, size_t size) {
    auto is_in_word = [&text](size_t i) {
        return i < text.size() && isalnum(static_cast<unsigned char>(text[i]));
    };
    return !is_in_word(at - 1) && !is_in_word(at + size);
}

// The text with {} for each whole word `word`: the digit of a code is not the value of a key.
std::string without_word(std::string text, const std::string& word) {
    for (size_t at = 0; !word.empty() && (at = text.find(word, at)) != text.npos; at++) {
        if (is_word(text, at, word.size())) text.replace(at, word.size(), "{}");
    }
    return text;
}

// What was seen with each text of "(A|B)": one result for all, with {} for the text or without, or
// one for each.
std::string together(const std::vector<std::string>& texts, const std::vector<std::string>& seen) {
    auto all = [](const std::vector<std::string>& each) {
        return std::adjacent_find(each.begin(), each.end(), std::not_equal_to<>()) == each.end();
    };
    if (all(seen)) return seen[0];
    std::vector<std::string> patterns;
    std::string listed;
    for (size_t i = 0; i < texts.size(); i++) {
        patterns.push_back(without_word(seen[i], texts[i]));
        listed += (i > 0 ? " | " : "") + seen[i];
    }
    return all(patterns) ? patterns[0] : listed;
}

std::string run_row(const row& each, command_context& context) {
    static const std::regex choice(R"(\(([^()]*\|[^()]*)\))");
    std::smatch match;
    std::vector<std::string> texts = {""}, seen;
    if (std::regex_search(each.text, match, choice)) texts = split(match[1], "|");
    for (const std::string& text : texts) {
        std::string row_text = each.text;
        if (!match.empty()) row_text = match.prefix().str() + text + match.suffix().str();
        seen.push_back(run_steps(steps_of(row_text), context));
    }
    std::string got = together(texts, seen);
    return each.expected.empty() && is_success(got) ? "" : got;
}

// Records of a registry that is not the process's have no other way to be freed.
void free_records(arch_cfg_sys_t& registry) {
    arch_cfg_sys_destroy();
    arch_cfg_sys.arch_lst = registry.arch_lst;
    arch_cfg_sys_destroy();
}

}  // namespace

void run_scenario(const std::filesystem::path& path) {
    bool rewrite = getenv("SCENARIO_REWRITE") != nullptr;
    std::vector<row> rows = read_scenario(path);
    instance_directory instance;
    if (instance.open() != 0) throw std::runtime_error("the instance cannot be opened");
    definitions defined;
    arch_cfg_sys_t own_registry = arch_cfg_sys;
    std::map<bool, line_list> shown;
    command_context context{{}, "", defined, instance, own_registry, shown};
    for (row& each : rows) {
        std::string got = run_row(each, context);
        if (rewrite)
            each.expected = got;
        else if (in_lines(got) != in_lines(each.expected))
            ADD_FAILURE_AT(path.c_str(), each.line) << each.text << "expected:\n"
                                                    << each.expected << "\ngot:\n"
                                                    << got;
    }
    kq_fault_disarm();
    free_records(own_registry);
    if (rewrite) write_file(path, write_scenario(rows));
}

}  // namespace test_support

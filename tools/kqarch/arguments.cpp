#include "arguments.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <exception>
#include <iostream>
#include <limits>
#include <new>
#include <optional>

#include "password.h"
#include "text.h"

namespace {

constexpr const char* program_footer =
    "\nExamples:\n"
    "  kqarch init --kind standby db   write a working instance directory\n"
    "  kqarch check db                 would the server start with it?\n"
    "  kqarch explain -808             what a result code means\n"
    "  kqarch add db 'TYPE=LOCAL, DEST=/arch/second'\n"
    "                                  shows what would become of it, and asks\n"
    "\n"
    "Exit status: 0 good, 1 refused or different, 2 wrong use, 3 could not (missing file,\n"
    "permission, full disk). Data is on standard output, diagnostics on standard error; with\n"
    "--json both are in one document on standard output. Passwords are never shown.\n";

// The first argument that is no option: the command, if there is one.
std::string first_word(int count, char** words) {
    for (int i = 1; i < count; ++i)
        if (words[i][0] != '-') return words[i];
    return "";
}

// The command that is surely asked for: nothing but --json stands before it.
std::string asked_command(int count, char** words) {
    int i = 1;
    while (i < count && std::strcmp(words[i], "--json") == 0)
        ++i;
    return i < count ? words[i] : "";
}

// The value of -o or --output in a word: nothing when it is none, and empty when the next word is.
// Letters of other options may stand before it, as in -qo.
std::optional<std::string> form_in(const std::string& word) {
    constexpr std::string_view long_name = "--output";
    if (word == long_name) return "";
    if (word.starts_with("--output=")) return word.substr(long_name.size() + 1);
    size_t letter = word.starts_with('-') && !word.starts_with("--") ? word.find('o') : word.npos;
    if (letter == word.npos) return std::nullopt;
    return word.substr(letter + 1);
}

// Looked for before anything is parsed: a complaint about the command line has the form too.
const output_form& asked_form(int count, char** words) {
    const output_form* form = &text_form;
    bool has_forms = first_word(count, words) == "check";
    for (int i = 1; i < count && std::strcmp(words[i], "--") != 0; ++i) {
        std::optional<std::string> name = has_forms ? form_in(words[i]) : std::nullopt;
        if (name && name->empty() && i + 1 < count) name = words[i + 1];
        if (std::strcmp(words[i], "--json") == 0) form = &json_form;
        if (const output_form* named = name ? find_output_form(*name) : nullptr) form = named;
    }
    return *form;
}

// A complaint may quote what was given, and that may be a piece of a clause.
std::string without_passwords(const std::string& text, int count, char** words) {
    password_list passwords;
    for (int i = 1; i < count; ++i) {
        std::string word = words[i];
        size_t value = word.find('=') + 1;
        std::string given = word.substr(value);
        bool is_dest = upper_case(word.substr(0, value)).find("DEST") != word.npos;
        bool is_path = given.starts_with('/') || given.starts_with('.');
        passwords.learn(given, is_dest || !is_path ? text_place::subscriber : text_place::other);
    }
    return passwords.hide(text);
}

// Only as it would be shown: what has a 0 or a sign in front may be meant in another way.
std::string why_no_number(const std::string& word) {
    lint64 number = 0;
    (void)std::from_chars(word.data(), word.data() + word.size(), number);
    return std::to_string(number) == word ? "" : word + " is no decimal number, or too large";
}

// Of every command: the library reads 010 and 0x10 too, and takes the largest number for a larger.
void check_numbers(CLI::App& app) {
    for (CLI::Option* option : app.get_options())
        if (option->get_type_name().starts_with("INT") ||
            option->get_type_name().starts_with("UINT"))
            option->check(why_no_number);
    for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; }))
        check_numbers(*command);
}

// Of every command: a file in a directory without a name would be one of the root's.
void check_directories(const CLI::App& command) {
    const CLI::Option* given = command.get_option_no_throw("DIR");
    if (given != nullptr && std::ranges::count(given->results(), "") > 0)
        throw CLI::ValidationError("DIR is empty");
}

std::vector<std::string> names_of(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr))
        names.push_back(command->get_name());
    return names;
}

// Of a command whose action is none that it has.
exit_status refuse_action(const std::vector<std::string>& words,
                          const std::vector<std::string>& actions, output& out) {
    auto given = std::find_if(words.begin(), words.end(),
                              [](const std::string& word) { return !word.starts_with('-'); });
    std::string close = given == words.end() ? "" : did_you_mean(*given, actions);
    std::string shown = given == words.end() ? "" : hide_password(*given, text_place::subscriber);
    return out.fail(exit_usage,
                    given == words.end() ? "no action given" : "there is no action " + shown, "",
                    close.empty() ? "The actions are " + join(actions, ", ") + "." : close);
}

}  // namespace

void add_backup_number(CLI::App& command, std::optional<lint64>& number, bool& replace) {
    command.add_option("--lsn", number, "The number of the backup [one above the highest]")
        ->check(CLI::Range(lint64{0}, std::numeric_limits<lint64>::max()));
    command.add_flag("--replace-backup", replace, "Replace a backup that has the number of --lsn");
}

command_line::command_line()
    : app_("kqarch: check, show and change the archive configuration of a database instance.",
           "kqarch") {
    app_.footer(program_footer);
    app_.set_version_flag("--version", "kqarch " KQARCH_VERSION);
    app_.add_flag("--json", json_, "Write one JSON document to standard output");
    app_.require_subcommand(1);
}

void command_line::offer(std::string_view name, void (*add)(command_line&)) {
    if (asked_.empty() || asked_ == name) add(*this);
}

void command_line::add_commands(const std::string& asked) {
    asked_ = asked;
    offer_look_commands(*this);
    offer_change_commands(*this);
    offer_cluster_commands(*this);
}

CLI::App& command_line::add(const std::string& name, const std::string& what,
                            const std::string& footer, command_run run) {
    CLI::App& command = *app_.add_subcommand(name, what);
    command.footer(footer);
    command.add_flag("--json", json_, "Write one JSON document to standard output");
    runs_[name] = std::move(run);
    return command;
}

int command_line::run(int count, char** words) {
    output out("", asked_form(count, words));
    try {
        add_commands(asked_command(count, words));
        if (runs_.empty()) add_commands("");
        check_numbers(app_);
        app_.parse(count, words);
        const CLI::App& command = *app_.get_subcommands().front();
        check_directories(command);
        out.set_command(command.get_name());
        return out.finish(runs_.at(command.get_name())(out));
    } catch (const CLI::Success& asked) {
        app_.exit(asked);
        return std::cout.flush() ? exit_good : exit_failed;
    } catch (const CLI::ParseError& wrong) {
        auto shown = [&](const std::string& text) { return without_passwords(text, count, words); };
        return out.finish(refuse_usage(shown(wrong.what()), shown(first_word(count, words)), out));
    } catch (const std::bad_alloc&) {
        throw;  // there may be none for what is to be told either
    } catch (const std::exception& failed) {
        return out.finish(out.fail(exit_failed, failed.what()));
    }
}

exit_status command_line::refuse_usage(const std::string& text, const std::string& word,
                                       output& out) const {
    if (runs_.contains(word)) {
        out.set_command(word);
        const CLI::App& command = *app_.get_subcommand(word);
        std::vector<std::string> actions = names_of(command);
        if (!actions.empty() && command.get_subcommands().empty())
            return refuse_action(command.remaining(), actions, out);
        return out.fail(exit_usage, text, "", "`kqarch " + word + " --help` shows how to use it.");
    }
    std::string close = did_you_mean(word, names_of(app_));
    std::string hint =
        close.empty() ? "The commands are " + join(names_of(app_), ", ") + "." : close;
    std::string what = word.empty() ? "no command given" : "there is no command " + word;
    return out.fail(exit_usage, what, "", hint);
}

// kqarch: an administrator's view of an instance's archive configuration. Only arguments here.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <CLI/CLI.hpp>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>

#include "check.h"
#include "explain.h"
#include "fmt.h"
#include "init.h"
#include "init_plan.h"
#include "output.h"
#include "show.h"
#include "text.h"

namespace {

using command_run = std::function<exit_status(output&)>;

constexpr const char* program_footer =
    "\nExamples:\n"
    "  kqarch init --kind standby db   write a working instance directory\n"
    "  kqarch check db                 would the server start with it?\n"
    "  kqarch explain -808             what a result code means\n"
    "\n"
    "Exit status: 0 good, 1 refused or different, 2 wrong use, 3 could not (missing file,\n"
    "permission, full disk). Data is on standard output, diagnostics on standard error; with\n"
    "--json both are in one document on standard output. Passwords are never shown.\n";

constexpr const char* init_footer =
    "\nKinds: single   one instance with a local archive\n"
    "       standby  a local archive, a REALTIME standby and an ASYNC one with a timer\n"
    "       raft     node1 to node3, each with the two others as RAFT members\n"
    "       cluster  node1 and node2 of a shared-storage cluster, REMOTE to one another\n"
    "\nExamples:\n"
    "  kqarch init db\n"
    "  kqarch init --kind raft group && kqarch check group/*\n";

constexpr const char* check_footer =
    "\nEvery problem is listed in one run: first each line that is refused; if there is none,\n"
    "each destination's first failing rule and the first of the whole. The verdict names the\n"
    "code that the server would return. Without --probe nothing on disk is changed: a directory\n"
    "that the server would create is a note.\n"
    "\nExamples:\n"
    "  kqarch check db\n"
    "  kqarch check --no-timers node1 node2\n"
    "  kqarch check --json db | jq '.diagnostics[] | {line, name, text}'\n";

constexpr const char* show_footer =
    "\nShows what can be loaded of a configuration that the server would refuse, and says so.\n"
    "Passwords are shown as ***.\n"
    "\nExamples:\n"
    "  kqarch show db\n"
    "  kqarch show --json db | jq '.destinations[].name'\n";

constexpr const char* fmt_footer =
    "\nPrints the text of kqarch.ini that the server would write after its next change. A\n"
    "password is printed as ***: do not put that text in the place of the file. --check compares\n"
    "the real text with the file, exits 1 if they differ, and says what a rewrite would lose:\n"
    "comments, RAFT_LEARNER, ARCH_RECV_PATH and a RAFT_VOTE_INTERVAL of 0.\n"
    "\nExamples:\n"
    "  kqarch fmt db\n"
    "  kqarch fmt --check db\n";

constexpr const char* explain_footer =
    "\nWithout a topic every code, key and type is listed.\n"
    "\nExamples:\n"
    "  kqarch explain -808\n"
    "  kqarch explain ARCH_SEND_DELAY\n"
    "  kqarch explain REALTIME\n";

struct arguments {
    bool json = false;
    init_options init = {};
    check_options check = {};
    bool no_timers = false;
    std::string show_directory = {};
    fmt_options fmt = {};
    std::string topic = {};
};

CLI::App* add_command(CLI::App& app, const std::string& name, const std::string& what,
                      const std::string& footer, arguments& given) {
    CLI::App* command = app.add_subcommand(name, what);
    command->footer(footer);
    command->add_flag("--json", given.json, "Write one JSON document to standard output");
    return command;
}

void add_commands(CLI::App& app, arguments& given) {
    CLI::App* init =
        add_command(app, "init", "Write a working instance directory", init_footer, given);
    init->add_option("DIR", given.init.directory, "A new or empty directory")->required();
    init->add_option("--kind", given.init.kind, "What to write")
        ->check(CLI::IsMember(init_kinds()))
        ->capture_default_str();

    CLI::App* check =
        add_command(app, "check", "Say whether the server would start", check_footer, given);
    check->add_option("DIR", given.check.directories, "Instance directories")->required();
    check->add_flag("--probe", given.check.probe,
                    "Create missing directories and write probe files, as the server does");
    check->add_flag("--no-timers", given.no_timers, "Do not look timers up in kqtimer.ini");
    check->add_flag("--check-asm", given.check.rules.asm_paths,
                    "Check paths on ASM storage like others");

    CLI::App* show = add_command(app, "show", "Show an instance and its archive configuration",
                                 show_footer, given);
    show->add_option("DIR", given.show_directory, "An instance directory")->required();

    CLI::App* fmt =
        add_command(app, "fmt", "Print kqarch.ini as the server would write it", fmt_footer, given);
    fmt->add_option("DIR", given.fmt.directory, "An instance directory")->required();
    fmt->add_flag("--check", given.fmt.check, "Compare with the file instead of printing");

    CLI::App* explain = add_command(app, "explain", "Explain a result code, a key or a type",
                                    explain_footer, given);
    explain->add_option("TOPIC", given.topic, "A code by number or name, a key or a type");
}

exit_status run_command(const std::string& name, arguments& given, output& out) {
    if (name == "init") return run_init(given.init, out);
    if (name == "show") return run_show(given.show_directory, out);
    if (name == "fmt") return run_fmt(given.fmt, out);
    if (name == "explain") return run_explain(out, given.topic);
    given.check.rules.timers = !given.no_timers;
    return run_check(given.check, out);
}

std::vector<std::string> command_names(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr))
        names.push_back(command->get_name());
    return names;
}

// The first argument that is no option: the command, if there is one.
std::string first_word(int count, char** words) {
    for (int i = 1; i < count; ++i)
        if (words[i][0] != '-') return words[i];
    return "";
}

bool asks_for_json(int count, char** words) {
    return std::any_of(words, words + count,
                       [](const char* word) { return std::strcmp(word, "--json") == 0; });
}

exit_status refuse_usage(const std::string& text, const std::string& word,
                         const std::vector<std::string>& commands, output& out) {
    bool known = std::find(commands.begin(), commands.end(), word) != commands.end();
    if (known) {
        out.set_command(word);
        return out.fail(exit_usage, text, "", "`kqarch " + word + " --help` shows how to use it.");
    }
    std::string close = did_you_mean(word, commands);
    std::string hint = close.empty() ? "The commands are " + join(commands, ", ") + "." : close;
    std::string what = word.empty() ? "no command given" : "there is no command " + word;
    return out.fail(exit_usage, what, "", hint);
}

// A program started with a standard descriptor closed would write into the next file that it
// opens. What stands in for standard output takes nothing, so that lost data is noticed.
void complete_descriptors() {
    for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            (void)open("/dev/null", descriptor == STDERR_FILENO ? O_WRONLY : O_RDONLY);
}

int run(int count, char** words) {
    arguments given;
    CLI::App app("kqarch: check and show the archive configuration of a database instance.",
                 "kqarch");
    app.footer(program_footer);
    app.set_version_flag("--version", "kqarch " KQARCH_VERSION);
    app.add_flag("--json", given.json, "Write one JSON document to standard output");
    app.require_subcommand(1);
    add_commands(app, given);

    std::string word = first_word(count, words);
    output out("", asks_for_json(count, words));
    try {
        app.parse(count, words);
        std::string name = app.get_subcommands().front()->get_name();
        out.set_command(name);
        return out.finish(run_command(name, given, out));
    } catch (const CLI::Success& asked) {
        app.exit(asked);
        return std::cout.flush() ? exit_good : exit_failed;
    } catch (const CLI::ParseError& wrong) {
        return out.finish(refuse_usage(wrong.what(), word, command_names(app), out));
    } catch (const std::exception& failed) {
        return out.finish(out.fail(exit_failed, failed.what()));
    }
}

}  // namespace

int main(int count, char** words) {
    complete_descriptors();
    return run(count, words);
}

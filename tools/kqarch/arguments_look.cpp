#include <memory>

#include "arguments.h"
#include "check.h"
#include "explain.h"
#include "fmt.h"
#include "init.h"
#include "init_plan.h"
#include "show.h"

namespace {

constexpr const char* init_footer =
    "\nKinds: single   one instance with a local archive\n"
    "       standby  a local archive, a REALTIME standby and an ASYNC one with a timer\n"
    "       raft     node1 to node3, each with the two others as RAFT members\n"
    "       cluster  node1 and node2 of a shared-storage cluster that share their archives\n"
    "\nExamples:\n"
    "  kqarch init db\n"
    "  kqarch init --kind raft group && kqarch check group/*\n";

constexpr const char* check_footer =
    "\nEvery problem is listed in one run: first each line that is refused; if there is none,\n"
    "each destination's first failing rule and the first of the whole. The verdict names the\n"
    "code that the server would return. Without --probe nothing on disk is changed: a directory\n"
    "that the server would create is a note. A directory that is given twice is checked once.\n"
    "\nOutputs: text    findings on standard error, a line for each directory on standard output\n"
    "         json    one document with everything, the same as --json\n"
    "         sarif   SARIF 2.1.0, for code review\n"
    "         nagios  one line for monitoring, and the status 0 OK, 1 WARNING, 2 CRITICAL (would\n"
    "                 not start, or a warning with --strict) or 3 UNKNOWN (could not be checked,\n"
    "                 or wrong use)\n"
    "With --quiet the text has errors and warnings, and the line of a directory that has one:\n"
    "nothing when all is right. The other outputs stay as they are.\n"
    "\nExamples:\n"
    "  kqarch check db\n"
    "  kqarch check --quiet --strict node1 node2\n"
    "  kqarch check --json db | jq '.diagnostics[] | {line, name, text}'\n"
    "  kqarch check -o sarif */ >kqarch.sarif\n";

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
    "comments, RAFT_LEARNER, ARCH_RECV_PATH, a RAFT_VOTE_INTERVAL of 0 and keys that the\n"
    "destination's type does not use.\n"
    "\nExamples:\n"
    "  kqarch fmt db\n"
    "  kqarch fmt --check db\n";

constexpr const char* explain_footer =
    "\nWithout a topic every code, key and type is listed, and what check finds beside codes.\n"
    "\nExamples:\n"
    "  kqarch explain -808\n"
    "  kqarch explain ARCH_SEND_DELAY\n"
    "  kqarch explain REALTIME\n"
    "  kqarch explain key-twice\n";

void add_init(command_line& commands) {
    auto given = std::make_shared<init_options>();
    CLI::App& init = commands.add("init", "Write a working instance directory", init_footer,
                                  [given](output& out) { return run_init(*given, out); });
    init.add_option("DIR", given->directory, "A new or empty directory")->required();
    init.add_option("--kind", given->kind, "What to write")
        ->check(CLI::IsMember(init_kinds()))
        ->capture_default_str();
}

void add_check(command_line& commands) {
    auto given = std::make_shared<check_options>();
    CLI::App& check = commands.add("check", "Say whether the server would start", check_footer,
                                   [given](output& out) { return run_check(*given, out); });
    check.add_option("DIR", given->directories, "Instance directories")->required();
    check.add_flag("--probe", given->probe,
                   "Create missing directories and write probe files, as the server does");
    check.add_flag_callback(
        "--no-timers", [given] { given->rules.timers = false; },
        "Do not look timers up in kqtimer.ini");
    check.add_flag("--check-asm", given->rules.asm_paths, "Check paths on ASM storage like others");
    check.add_flag("-q,--quiet", given->quiet, "Print faults only, nothing when all is right");
    check.add_flag("--strict", given->strict, "Exit with 1 where there are warnings too");
    // Its value is found before the command line is parsed: see asked_form.
    // Its value is looked for before the command line is parsed: see asked_form.
    check.add_option("-o,--output", "What to write [text]")
        ->type_name("FORM")
        ->check(CLI::IsMember(output_form_names()))
        ->take_last();
}

void add_show(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    CLI::App& show =
        commands.add("show", "Show an instance and its archive configuration", show_footer,
                     [directory](output& out) { return run_show(*directory, out); });
    show.add_option("DIR", *directory, "An instance directory")->required();
}

void add_fmt(command_line& commands) {
    auto given = std::make_shared<fmt_options>();
    CLI::App& fmt = commands.add("fmt", "Print kqarch.ini as the server would write it", fmt_footer,
                                 [given](output& out) { return run_fmt(*given, out); });
    fmt.add_option("DIR", given->directory, "An instance directory")->required();
    fmt.add_flag("--check", given->check, "Compare with the file instead of printing");
}

void add_explain(command_line& commands) {
    auto topic = std::make_shared<std::string>();
    CLI::App& explain =
        commands.add("explain", "Explain a result code, a key or a type", explain_footer,
                     [topic](output& out) { return run_explain(out, *topic); });
    explain.add_option("TOPIC", *topic,
                       "A code by number or name, a key, a type, or a rule of SARIF");
}

}  // namespace

void offer_look_commands(command_line& commands) {
    commands.offer("init", add_init);
    commands.offer("check", add_check);
    commands.offer("show", add_show);
    commands.offer("fmt", add_fmt);
    commands.offer("explain", add_explain);
}

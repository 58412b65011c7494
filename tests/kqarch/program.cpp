#include "program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <fstream>

#include "support/instance.h"

namespace fs = std::filesystem;
using test_support::read_file;

namespace {

constexpr const char* prelude =
    "umask 022\n"
    "unset NO_COLOR\n"
    "export LC_ALL=C TERM=xterm\n"
    // Runs a change and prints what is different, a section in a line, and what it means, not what
    // every change says.
    "brief() {\n"
    "    text=$(\"$@\")\n"
    "    set -- $?\n"
    "    printf '%s\\n' \"$text\" | sed -e '/^[ @]/d; /^$/d; /^--- /d; /^+++ /d; /^[-+]$/d' \\\n"
    "        -e '/^The server would start/d; /^Backup: /d; /^Changed /d' |\n"
    "        awk '{ sign = substr($0, 1, 1); same = sign == last && !/^.\\[/; last = sign }\n"
    "            sign ~ /[-+]/ && same { printf \", %s\", substr($0, 2); next }\n"
    "            { printf \"%s%s\", (NR > 1 ? \"\\n\" : \"\"), $0 } END { if (NR) print \"\" }'\n"
    "    return $1\n"
    "}\n"
    // Runs a command with each of the arguments in turn.
    "each() {\n"
    "    command=$1 statuses=\n"
    "    shift\n"
    "    for given; do $command \"$given\"; statuses=\"$statuses $?\"; done\n"
    "    test $(printf '%s\\n' $statuses | uniq | wc -l) -eq 1 || echo \"statuses$statuses\"\n"
    "    return ${statuses##* }\n"
    "}\n"
    // The exit code, how many diagnostics and which fields a JSON document has.
    "json() { eval \"kqarch $1\" | jq -c '[.exit_code, (.diagnostics | length)] + keys_unsorted'; "
    "}\n"
    // kqmal.ini for the instances named; KQ2 has an address.
    "mal() {\n"
    "    for name; do\n"
    "        printf '[M%s]\\nMAL_INST_NAME = %s\\n' \"$name\" \"$name\"\n"
    "        test \"$name\" != KQ2 || printf 'MAL_INST_HOST = 10.0.0.2\\nMAL_INST_PORT = 5237\\n'\n"
    "    done\n"
    "}\n"
    "unprivileged() {\n"
    "    if [ \"$(id -u)\" -ne 0 ]; then \"$@\"; return; fi\n"
    "    chown -hR 65534 .\n"
    "    setpriv --reuid=65534 --regid=65534 --clear-groups \"$@\"\n"
    "    set -- $?\n"
    "    chown -hR 0 .\n"
    "    return $1\n"
    "}\n";

void replace_all(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != text.npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

}  // namespace

workplace::workplace() {
    std::string name = fs::temp_directory_path() / "kqarch_test.XXXXXX";
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    root_ = fs::canonical(name);
    directory_ = root_ / "work";
    // The program may have been built where an unprivileged user cannot look.
    fs::permissions(root_, fs::perms(0755));
    fs::create_directory(root_ / "bin");
    fs::copy_file(KQARCH_PROGRAM, root_ / "bin" / "kqarch");
    fs::create_directory(directory_);
}

workplace::~workplace() {
    run("chmod -R u+rwx .");
    fs::remove_all(root_);
}

void workplace::write(const std::string& path, const std::string& text) const {
    fs::create_directories((directory_ / path).parent_path());
    std::ofstream(directory_ / path, std::ios::binary) << with_directory(text);
}

run_result workplace::run(const std::string& command) const {
    std::ofstream(root_ / "script", std::ios::binary)
        << prelude << "PATH=" << (root_ / "bin").string() << ":$PATH\ncd " << directory_.string()
        << "\n"
        << with_directory(command) << "\n";
    std::string shell = "sh " + (root_ / "script").string() + " </dev/null >" +
                        (root_ / "output").string() + " 2>" + (root_ / "errors").string();
    int status = std::system(shell.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            without_directory(read_file(root_ / "output")),
            without_directory(read_file(root_ / "errors"))};
}

std::string workplace::with_directory(std::string text) const {
    replace_all(text, "{dir}", directory_.string());
    return text;
}

std::string workplace::without_directory(std::string text) const {
    replace_all(text, directory_.string(), "{dir}");
    return text;
}

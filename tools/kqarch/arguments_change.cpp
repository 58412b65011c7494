#include <limits>
#include <memory>
#include <utility>

#include "add.h"
#include "arguments.h"
#include "backups.h"
#include "drop.h"
#include "journal.h"
#include "modify.h"

namespace {

constexpr const char* how_changes_go =
    "\nThe change is first carried out on a scratch copy: the difference of kqarch.ini is shown,\n"
    "what a rewrite loses, what it means, and whether the server would start with the result; a\n"
    "result with which it would not is refused unless --force. Then it asks on a terminal, or\n"
    "wants --yes. A backup is taken before kqarch.ini is written, and a line goes to\n"
    "kqarch_journal.log. The running server does not learn of the change. A closed pipe ends the\n"
    "command: before the change is written, nothing is changed; after that it is finished.\n";

constexpr const char* clause_syntax =
    "\nCLAUSE: KEYWORD=value, KEYWORD=value, without quoting; - reads it from standard input, so\n"
    "that a password need not stand on a command line. Keywords: TYPE, DEST, INCOMING_PATH,\n"
    "FILE_SIZE, SPACE_LIMIT, HANG_FLAG, ARCH_FLUSH_BUF_SIZE, ARCH_RECOVER_TIME, ARCH_TIMER_NAME,\n"
    "ARCH_SEND_DELAY, WAIT_APPLY, ARCH_FAILOVER, ARCH_SUBSCRIBE_MODE,\n"
    "ARCH_THRESHOLD_PER_SECOND, RAFT_VOTE_INTERVAL.\n";

constexpr const char* add_examples =
    "\nExamples:\n"
    "  kqarch add db 'TYPE=LOCAL, DEST=/arch/second, FILE_SIZE=256'\n"
    "  kqarch add --dry-run db 'TYPE=REALTIME, DEST=KQ4, WAIT_APPLY=1'\n"
    "  kqarch add --yes db 'TYPE=ASYNC, DEST=KQ5, ARCH_TIMER_NAME=NIGHTLY'\n"
    "  kqarch add db 'TYPE=REMOTE, DEST=NODE2, INCOMING_PATH=/arch/node2'\n"
    "  kqarch add --yes db - <subscriber.clause\n";

constexpr const char* modify_footer =
    "\nWhat the clause does not name stays as it is. TYPE changes the destination's type, DEST "
    "what\n"
    "it points at. DEST before the clause is the directory, or an instance, as `kqarch show` "
    "shows\n"
    "it; for the subscriber --subscriber stands instead.\n";

constexpr const char* modify_examples =
    "\nExamples:\n"
    "  kqarch modify db KQ2 'WAIT_APPLY=1'\n"
    "  kqarch modify db /arch/second 'SPACE_LIMIT=16384, HANG_FLAG=0'\n"
    "  kqarch modify --yes db --subscriber - <new_password.clause\n";

constexpr const char* drop_examples =
    "\nDEST is the directory, or an instance, as `kqarch show` shows it; a destination that names\n"
    "several instances goes whole.\n"
    "\nExamples:\n"
    "  kqarch drop db KQ2\n"
    "  kqarch drop --yes db --subscriber\n";

constexpr const char* backup_footer =
    "\nCopies kqarch.ini to kqarch_bak_NUMBER.log beside it.\n"
    "\nExamples:\n"
    "  kqarch backup db\n"
    "  kqarch backup db --lsn 120034\n";

constexpr const char* backups_footer =
    "\nLists the backups with their time, size in bytes and destinations, and says of each "
    "whether\n"
    "the server would start with it; one of more than 256 KB is not looked at.\n"
    "\nExamples:\n"
    "  kqarch backups db\n"
    "  kqarch backups --json db | jq '.backups[] | select(.would_start).number'\n";

constexpr const char* restore_examples =
    "\nThe backup is written over kqarch.ini byte for byte, also where that is empty, cut short "
    "or\n"
    "does not load.\n"
    "\nExamples:\n"
    "  kqarch restore --dry-run db 3\n"
    "  kqarch restore --yes db 3\n";

constexpr const char* backup_delete_footer =
    "\nExamples:\n"
    "  kqarch backup-delete db 3\n";

constexpr const char* journal_footer =
    "\nShows kqarch_journal.log: a line for each change that was made through kqarch.\n"
    "\nExamples:\n"
    "  kqarch journal db\n"
    "  kqarch journal --json db | jq '.changes[] | select(.user == \"root\")'\n";

void add_directory(CLI::App& command, std::string& directory) {
    command.add_option("DIR", directory, "An instance directory")->required();
}

void add_change_options(CLI::App& command, change_options& given) {
    command.add_flag("--dry-run", given.dry_run, "Show what would become of it, and stop there");
    command.add_flag("--yes", given.yes, "Do not ask");
    command.add_flag("--force", given.force, "Even when the server would not start with it");
    add_backup_number(command, given.lsn, given.replace_backup);
}

void add_add(command_line& commands) {
    auto given = std::make_shared<add_options>();
    CLI::App& add = commands.add("add", "Add a destination",
                                 std::string(how_changes_go) + clause_syntax + add_examples,
                                 [given](output& out) { return run_add(*given, out); });
    add_directory(add, given->directory);
    add.add_option("CLAUSE", given->clause, "What to add")->required();
    add.add_flag("--standby", given->standby, "The database is a standby, as a rule of SYNC asks");
    add_change_options(add, *given);
}

// --subscriber stands in the place of DEST.
void check_target(CLI::App& command, const target& which, size_t positionals) {
    size_t wanted = which.subscriber ? positionals - 1 : positionals;
    size_t given = 0;
    for (const CLI::Option* option : command.get_options())
        if (option->get_positional() && option->count() > 0) ++given;
    if (given > wanted) throw CLI::ExcludesError("--subscriber", "DEST");
    if (given < wanted && positionals == 2) throw CLI::RequiredError("DEST or --subscriber");
    if (given < wanted) throw CLI::RequiredError("DEST (or --subscriber) and CLAUSE");
}

void add_target(CLI::App& command, target& which) {
    command.add_option("DEST", which.dest, "The destination's directory, or an instance");
    command.add_flag("--subscriber", which.subscriber, "The subscriber, in the place of DEST");
}

void add_modify(command_line& commands) {
    auto given = std::make_shared<modify_options>();
    CLI::App& modify =
        commands.add("modify", "Change a destination",
                     std::string(modify_footer) + how_changes_go + clause_syntax + modify_examples,
                     [given](output& out) { return run_modify(*given, out); });
    add_directory(modify, given->directory);
    add_target(modify, given->which);
    modify.add_option("CLAUSE", given->clause, "What to change");
    add_change_options(modify, *given);
    modify.parse_complete_callback([&modify, given] {
        check_target(modify, given->which, 3);
        if (given->which.subscriber) given->clause = std::exchange(given->which.dest, "");
    });
}

void add_drop(command_line& commands) {
    auto given = std::make_shared<drop_options>();
    CLI::App& drop =
        commands.add("drop", "Remove a destination", std::string(how_changes_go) + drop_examples,
                     [given](output& out) { return run_drop(*given, out); });
    add_directory(drop, given->directory);
    add_target(drop, given->which);
    add_change_options(drop, *given);
    drop.parse_complete_callback([&drop, given] { check_target(drop, given->which, 2); });
}

void add_backup(command_line& commands) {
    auto given = std::make_shared<backup_options>();
    CLI::App& backup = commands.add("backup", "Take a backup of kqarch.ini", backup_footer,
                                    [given](output& out) { return run_backup(*given, out); });
    add_directory(backup, given->directory);
    add_backup_number(backup, given->lsn, given->replace);
}

void add_backups(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    CLI::App& backups =
        commands.add("backups", "List the backups of kqarch.ini", backups_footer,
                     [directory](output& out) { return run_backups(*directory, out); });
    add_directory(backups, *directory);
}

void add_restore(command_line& commands) {
    auto given = std::make_shared<restore_options>();
    CLI::App& restore = commands.add("restore", "Bring a backup back",
                                     std::string(how_changes_go) + restore_examples,
                                     [given](output& out) { return run_restore(*given, out); });
    add_directory(restore, given->directory);
    restore.add_option("LSN", given->number, "The number of the backup to bring back")
        ->required()
        ->check(CLI::Range(lint64{0}, std::numeric_limits<lint64>::max()));
    add_change_options(restore, *given);
}

void add_backup_delete(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    auto number = std::make_shared<lint64>();
    CLI::App& backup_delete =
        commands.add("backup-delete", "Delete a backup", backup_delete_footer,
                     [=](output& out) { return run_backup_delete(*directory, *number, out); });
    add_directory(backup_delete, *directory);
    backup_delete.add_option("LSN", *number, "The number of the backup")
        ->required()
        ->check(CLI::Range(lint64{0}, std::numeric_limits<lint64>::max()));
}

void add_journal(command_line& commands) {
    auto directory = std::make_shared<std::string>();
    CLI::App& journal =
        commands.add("journal", "Show which changes were made", journal_footer,
                     [directory](output& out) { return run_journal(*directory, out); });
    add_directory(journal, *directory);
}

}  // namespace

void offer_change_commands(command_line& commands) {
    commands.offer("add", add_add);
    commands.offer("modify", add_modify);
    commands.offer("drop", add_drop);
    commands.offer("backup", add_backup);
    commands.offer("backups", add_backups);
    commands.offer("restore", add_restore);
    commands.offer("backup-delete", add_backup_delete);
    commands.offer("journal", add_journal);
}

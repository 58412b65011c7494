// What every changing command has in common, from the look at kqarch.ini to the line in the
// journal.
//
// The change is carried out twice. First on a scratch copy, which shows what would become of
// kqarch.ini: the difference, what a rewrite loses, the consequences, and whether the server would
// still start. Then, when it is agreed on, on the instance: the directory is locked, kqarch.ini is
// still what was read, a backup of it is on disk, and a line is left in the journal.
#ifndef KQARCH_CHANGE_H
#define KQARCH_CHANGE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "capture.h"
#include "instance.h"
#include "output.h"
#include "password.h"

// What every changing command is told.
struct change_options {
    std::string directory = {};
    bool dry_run = false;            // show what would become of it and stop there
    bool yes = false;                // do not ask
    bool force = false;              // even when it is not safe, or the server would not start
    bool replace_backup = false;     // one that has the number of `lsn`
    std::optional<lint64> lsn = {};  // the number of the backup; default: one above the highest
};

// Alters the process registry and writes kqarch.ini into the configuration directory, as the
// module's online functions do: an adder, a drop, or a change under the lock followed by
// arch_cfg_sys_write_to_file. Called without the lock and with all that it prints taken away,
// twice: each time on a registry freshly loaded from kqarch.ini as start-up does it. A negative
// code is a refusal; `said` then tells why, where the module did not print it.
using change_function = std::function<captured()>;

struct requested_change {
    std::string command = {};      // "add", for the journal
    std::string what = {};         // the clause or name, for the journal: without its password
    password_list passwords = {};  // of the clause: hidden in everything that is shown
    // Called before anything else, with the directory locked; what it returns ends the change.
    std::function<std::optional<problem>(const instance&)> prepare = {};
    change_function apply = {};
    // Whether the text is made anew from the registry, so that all of kqarch.ini must load. Else
    // `apply` writes a text of its own.
    bool rewrites = true;
    // Refused on a learner: RAFT_LEARNER is never written back.
    bool keeps_learner = false;
    std::vector<std::string> remarks = {};  // sentences to show with the consequences
    std::vector<std::string> doubts = {};   // to warn of; `apply` may set them
};

// Reports everything to `out`. Exit status: good when the change was made (or, on a dry run, would
// be), refused, wrong use without --yes where nobody can be asked, or failed.
exit_status run_change(const change_options& options, const requested_change& change, output& out);

#endif

// kqarch_journal.log: a line for each change that was made through kqarch, or failed on the way.
//
//   2026-01-31T12:00:00Z <tab> user <tab> host <tab> command <tab> backup <tab> result <tab> what
//
// backup: its number, or "-". result: "made", or the code and its name. what: the clause or the
// name, with *** for a password. Control characters are shown as \xNN.
#ifndef KQARCH_JOURNAL_H
#define KQARCH_JOURNAL_H

#include <cstddef>
#include <optional>
#include <string>

#include "instance.h"
#include "private_file.h"

struct journal_entry {
    std::string command;
    std::string what;
    std::optional<lint64> backup;
    kqcode_t code;  // 0: made
};

// Opened before a change is made, so that none is made that cannot be recorded.
class journal {
  public:
    explicit journal(const instance& open);

    const std::optional<problem>& failure() const { return failure_; }

    // Appends the line in one write; what kept it from being written, if anything did.
    std::optional<problem> append(const journal_entry& entry) const;

  private:
    std::string path_;
    open_file file_;
    std::optional<problem> failure_;
};

// How many changes were made since a backup was taken, the one that it was taken for among them; 0
// where the journal does not know the backup.
size_t changes_since_backup(const std::string& directory, lint64 number);

// When the last change was made; empty where none is known.
std::string time_of_last_change(const std::string& directory);

// kqarch journal
exit_status run_journal(const std::string& directory, output& out);

#endif

// kqarch backup, backups, restore and backup-delete.
#ifndef KQARCH_BACKUPS_H
#define KQARCH_BACKUPS_H

#include <optional>
#include <string>

#include "change.h"

struct backup_options {
    std::string directory = {};
    std::optional<lint64> lsn = {};
    bool replace = false;  // a backup of that number
};

exit_status run_backup(const backup_options& options, output& out);

exit_status run_backups(const std::string& directory, output& out);

struct restore_options : change_options {
    lint64 number = 0;
};

exit_status run_restore(const restore_options& options, output& out);

exit_status run_backup_delete(const std::string& directory, lint64 number, output& out);

#endif

// Backups of kqarch.ini: kqarch_bak_NUMBER.log beside it.
#ifndef KQARCH_BACKUP_H
#define KQARCH_BACKUP_H

#include <optional>
#include <string>
#include <vector>

#include "config_file.h"
#include "instance.h"
#include "snapshot.h"

std::string backup_name(lint64 number);

// The numbers of the backups in a directory, ascending.
std::vector<lint64> backups_in(const std::string& directory);

// The number for a new backup: the one that is asked for, or one above the highest. Nothing, and
// an error reported, when it is taken and may not be replaced.
std::optional<lint64> number_for_backup(const instance& open, std::optional<lint64> asked,
                                        bool replace, output& out);

// Copies kqarch.ini, which has to be what was read before. What kept it, if anything did.
std::optional<problem> take_backup(const instance& open, lint64 number,
                                   const file_snapshot& expected);

// Whether a file looks as a write leaves it that was interrupted: nothing in it, or no end.
bool looks_cut_short(const config_file& file);

// The backup with the highest number of those that start-up would accept. Nothing when there is
// none. The process registry is used for trying them.
std::optional<lint64> best_backup(const instance& open) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

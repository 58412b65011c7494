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

// The number for a new backup: the one that is asked for, or one above the highest, or the highest
// that is free. Nothing, and an error reported, when it is taken and may not be replaced.
std::optional<lint64> number_for_backup(const instance& open, std::optional<lint64> asked,
                                        bool replace, output& out);

// When a file was written last.
std::string time_of(const std::string& path);

// Copies kqarch.ini, which has to be what was read before. What kept it, if anything did.
std::optional<problem> take_backup(const instance& open, lint64 number,
                                   const file_snapshot& expected);

// Whether there is nothing in a file but blanks.
bool is_blank(const config_file& file);

// Whether a file looks as a write leaves it that was interrupted: nothing in it, or no end.
bool looks_cut_short(const config_file& file);

// What there is to go back to from a kqarch.ini that has lost its text.
struct way_back {
    std::optional<lint64> number;  // the highest of the backups that start-up would accept
    std::string found;             // "there is the backup kqarch_bak_3.log"
    std::string hint;
};

// Nothing when there is no backup and the journal knows of no change. The process registry is used
// for trying the backups.
std::optional<way_back> find_way_back(const instance& open) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

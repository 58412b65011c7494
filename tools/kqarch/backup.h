// Backups of kqarch.ini: kqarch_bak_NUMBER.log beside it.
#ifndef KQARCH_BACKUP_H
#define KQARCH_BACKUP_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "config_file.h"
#include "instance.h"
#include "snapshot.h"

std::string backup_name(lint64 number);

// The numbers of the backups in a directory, ascending.
std::vector<lint64> backups_in(const std::string& directory);

// The names there that are like a backup's, with something else in the number's place; in order.
std::vector<std::string> mistaken_for_backups(const std::string& directory);

// Whether something is there that is neither a regular file nor a link.
bool is_no_file(const std::string& path);

// Nobody's configuration comes near it, and loading takes much longer the larger a text is.
constexpr std::uintmax_t largest_backup_to_load = 256 * 1024;

// 0 for what is not there.
std::uintmax_t size_of(const std::string& path);

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
// for trying the newest backups, of those that are not too large.
std::optional<way_back> find_way_back(const instance& open) KQ_EXCLUDES(arch_cfg_sys.mutex);

#endif

#include "backup.h"

#include <sys/stat.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>

#include "capture.h"
#include "journal.h"
#include "startup.h"
#include "text.h"

namespace {

namespace fs = std::filesystem;

constexpr std::string_view prefix = "kqarch_bak_";
constexpr std::string_view ending = ".log";

// How many backups are tried for one to go back to.
constexpr size_t tries = 5;

bool is_like_backup(const std::string& name) {
    return name.size() >= prefix.size() + ending.size() && name.starts_with(prefix) &&
           name.ends_with(ending);
}

// The number in a name that a backup command would write, and in no other.
std::optional<lint64> number_in(const std::string& name) {
    if (!is_like_backup(name)) return std::nullopt;
    lint64 number = 0;
    (void)std::from_chars(name.data() + prefix.size(), name.data() + name.size(), number);
    if (number < 0 || backup_name(number) != name) return std::nullopt;
    return number;
}

std::vector<std::string> names_in(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(directory, error), end; !error && at != end; at.increment(error))
        names.push_back(at->path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

lint64 free_number(const std::vector<lint64>& taken) {
    lint64 highest = taken.empty() ? 0 : taken.back();
    if (highest < std::numeric_limits<lint64>::max()) return highest + 1;
    while (std::binary_search(taken.begin(), taken.end(), highest))
        --highest;
    return highest;
}

diagnostic about(const instance& open, kqcode_t code, const std::string& text,
                 const std::string& hint) {
    return {.file = open.config_file(), .code = code, .text = text, .hint = hint};
}

}  // namespace

std::string backup_name(lint64 number) {
    return std::string(prefix) + std::to_string(number) + std::string(ending);
}

std::vector<lint64> backups_in(const std::string& directory) {
    std::vector<lint64> numbers;
    for (const std::string& name : names_in(directory))
        if (std::optional<lint64> number = number_in(name)) numbers.push_back(*number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<std::string> mistaken_for_backups(const std::string& directory) {
    std::vector<std::string> names = names_in(directory);
    std::erase_if(names, [](const std::string& name) {
        return !is_like_backup(name) || number_in(name).has_value();
    });
    return names;
}

bool is_no_file(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) &&
           !S_ISLNK(status.st_mode);
}

std::uintmax_t size_of(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? static_cast<std::uintmax_t>(status.st_size) : 0;
}

std::optional<lint64> number_for_backup(const instance& open, std::optional<lint64> asked,
                                        bool replace, output& out) {
    std::vector<lint64> taken = backups_in(open.directory());
    lint64 number = asked ? *asked : free_number(taken);
    if (is_no_file(open.file(backup_name(number)))) {
        out.fail(exit_refused, "is no regular file", open.file(backup_name(number)),
                 "Give another number with --lsn.");
        return std::nullopt;
    }
    if (replace || !std::binary_search(taken.begin(), taken.end(), number)) return number;
    out.fail(exit_refused, "this backup exists already", open.file(backup_name(number)),
             "Give another number with --lsn, or --replace-backup to replace it.");
    return std::nullopt;
}

std::optional<problem> take_backup(const instance& open, lint64 number,
                                   const file_snapshot& expected) {
    captured_with_log copied =
        capture_with_log([number] { return arch_file_gen_bak(static_cast<ulint64>(number)); });
    if (copied.code < 0)
        return problem{exit_failed,
                       about(open, copied.code,
                             "the backup " + open.file(backup_name(number)) + " cannot be written",
                             "See that the directory can be written and its disk has room.")};
    std::optional<file_snapshot> made = take_snapshot(open.file(backup_name(number)));
    if (made && made->bytes == expected.bytes) return std::nullopt;
    return problem{exit_refused, about(open, 0, "was changed by somebody else meanwhile",
                                       "Look at it, and repeat the command.")};
}

std::string time_of(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? time_text(status.st_mtime) : "";
}

bool is_blank(const config_file& file) {
    return file.text().find_first_not_of(" \t\r\n") == std::string::npos;
}

// What the server writes begins with a header and ends with an empty line.
bool looks_cut_short(const config_file& file) {
    const std::string& text = file.text();
    if (is_blank(file) || !text.ends_with('\n')) return true;
    return text.starts_with("#Velkor ") && !text.ends_with("\n\n");
}

namespace {

std::optional<lint64> best_of(const std::vector<lint64>& numbers, const instance& open) {
    size_t tried = 0;
    for (auto number = numbers.rbegin(); number != numbers.rend() && tried < tries; ++number) {
        std::string path = open.file(backup_name(*number));
        if (size_of(path) > largest_backup_to_load) continue;
        ++tried;
        config_file file;
        bool readable = file.read(path) >= 0;
        if (readable && !file.lines().empty() && start_up(file).code >= 0) return *number;
    }
    return std::nullopt;
}

// "the state before the last change, of 2026-01-31T12:00:00Z"
std::string state_in(const instance& open, lint64 number) {
    size_t changes = changes_since_backup(open.directory(), number);
    std::string before = changes == 0   ? ""
                         : changes == 1 ? " before the last change,"
                                        : " before the last " + count_of(changes, "change") + ",";
    return "the state" + before + " of " + time_of(open.file(backup_name(number)));
}

way_back way_to(lint64 number, const instance& open) {
    return {number, "there is the backup " + backup_name(number),
            "`kqarch restore " + shell_word(open.directory()) + " " + std::to_string(number) +
                "` brings back " + state_in(open, number) + "."};
}

bool all_are_tried(const std::vector<lint64>& numbers, const instance& open) {
    return numbers.size() <= tries &&
           std::none_of(numbers.begin(), numbers.end(), [&](lint64 number) {
               return size_of(open.file(backup_name(number))) > largest_backup_to_load;
           });
}

way_back way_to_none_of(const std::vector<lint64>& numbers, const instance& open) {
    std::string directory = shell_word(open.directory());
    return {std::nullopt,
            all_are_tried(numbers, open)
                ? "the server would start with no backup of it"
                : "the server would start with none of its newest backups that are not too large",
            "`kqarch backups " + directory + "` says why; `kqarch restore --force " + directory +
                " " + std::to_string(numbers.back()) + "` brings the last one back."};
}

}  // namespace

std::optional<way_back> find_way_back(const instance& open) {
    std::vector<lint64> numbers = backups_in(open.directory());
    if (std::optional<lint64> best = best_of(numbers, open)) return way_to(*best, open);
    if (!numbers.empty()) return way_to_none_of(numbers, open);
    std::string time = time_of_last_change(open.directory());
    if (time.empty()) return std::nullopt;
    return way_back{std::nullopt, "the journal knows of changes, the last of " + time,
                    "No backup is left here: look for a copy elsewhere. `kqarch journal " +
                        shell_word(open.directory()) + "` shows the changes."};
}

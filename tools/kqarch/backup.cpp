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

// The number in a name that the module would write, and in no other.
std::optional<lint64> number_in(const std::string& name) {
    if (!name.starts_with(prefix) || !name.ends_with(ending)) return std::nullopt;
    lint64 number = 0;
    (void)std::from_chars(name.data() + prefix.size(), name.data() + name.size(), number);
    if (backup_name(number) != name) return std::nullopt;
    return number;
}

lint64 free_number(const std::vector<lint64>& taken) {
    lint64 highest = taken.empty() ? 0 : std::max<lint64>(taken.back(), 0);
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
    std::error_code error;
    for (fs::directory_iterator at(directory, error), end; !error && at != end; at.increment(error))
        if (std::optional<lint64> number = number_in(at->path().filename().string()))
            numbers.push_back(*number);
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::optional<lint64> number_for_backup(const instance& open, std::optional<lint64> asked,
                                        bool replace, output& out) {
    std::vector<lint64> taken = backups_in(open.directory());
    lint64 number = asked ? *asked : free_number(taken);
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
    for (auto number = numbers.rbegin(); number != numbers.rend(); ++number) {
        config_file file;
        bool readable = file.read(open.file(backup_name(*number))) >= 0;
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

way_back way_to_none_of(const std::vector<lint64>& numbers, const instance& open) {
    std::string directory = shell_word(open.directory());
    return {std::nullopt, "the server would start with no backup of it",
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

#include "journal.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <filesystem>
#include <vector>

#include "snapshot.h"
#include "table.h"
#include "text.h"
#include "user_name.h"

namespace {

using json = nlohmann::ordered_json;

constexpr const char* journal_name = "kqarch_journal.log";
constexpr std::array fields = {"time", "user", "host", "command", "backup", "result", "what"};
enum column : size_t { time_column, command_column = 3, backup_column, result_column };
constexpr const char* made = "made";

std::string host_text() {
    char name[256] = "";
    (void)gethostname(name, sizeof name - 1);
    return name;
}

std::string line_of(const journal_entry& entry) {
    std::vector<std::string> pieces = {
        time_text(std::time(nullptr)),
        user_name(getuid()).value_or(std::to_string(getuid())),
        host_text(),
        entry.command,
        entry.backup ? std::to_string(*entry.backup) : "-",
        entry.code == 0 ? made : code_text(entry.code),
        entry.what,
    };
    for (std::string& piece : pieces)
        piece = visible(piece);
    return join(pieces, "\t") + "\n";
}

// A line that an earlier failure cut short stays a line of its own.
bool ends_inside_a_line(int file) {
    char last = '\n';
    off_t size = lseek(file, 0, SEEK_END);
    return size > 0 && pread(file, &last, 1, size - 1) == 1 && last != '\n';
}

problem cannot(const std::string& path, const std::string& what) {
    return {exit_failed, {.file = path, .text = what + ": " + reason_text()}};
}

std::vector<table_row> rows_of(const std::string& text, const std::string& path, output& out) {
    std::vector<table_row> rows;
    ulint number = 0;
    for (const std::string& line : split(text, '\n')) {
        ++number;
        if (line.empty()) continue;
        table_row pieces = split(line, '\t');
        for (std::string& piece : pieces)
            piece = visible(piece);
        if (pieces.size() == fields.size())
            rows.push_back(std::move(pieces));
        else
            out.report({.level = severity::warning,
                        .file = path,
                        .line = number,
                        .text = "is no line of the journal"});
    }
    return rows;
}

std::optional<lint64> backup_of(const table_row& row) {
    const std::string& text = row[backup_column];
    lint64 number = 0;
    (void)std::from_chars(text.data(), text.data() + text.size(), number);
    if (std::to_string(number) != text) return std::nullopt;
    return number;
}

json as_document(const table_row& row) {
    json document = json::object();
    for (size_t i = 0; i < fields.size(); ++i)
        document[fields[i]] = row[i];
    std::optional<lint64> backup = backup_of(row);
    document[fields[backup_column]] = backup ? json(*backup) : json();
    return document;
}

// What was made, oldest first.
std::vector<table_row> rows_in(const std::string& directory) {
    output nowhere("", json_form);
    std::optional<file_snapshot> taken = take_snapshot(directory + "/" + journal_name);
    std::vector<table_row> rows;
    if (taken) rows = rows_of(taken->bytes, "", nowhere);
    std::erase_if(rows, [](const table_row& row) { return row[result_column] != made; });
    return rows;
}

bool is_change(const table_row& row) {
    return row[command_column] != "backup" && row[command_column] != "backup-delete";
}

void show(std::vector<table_row> rows, output& out) {
    json documents = json::array();
    for (const table_row& row : rows)
        documents.push_back(as_document(row));
    out.set("changes", documents);
    if (rows.empty()) return out.print("No changes are recorded.\n");
    table_row heading;
    for (const char* field : fields)
        heading.push_back(upper_case(field));
    rows.insert(rows.begin(), heading);
    print_table(rows, out);
}

}  // namespace

journal::journal(const instance& open)
    : path_(open.file(journal_name)), file_(open_private(open.directory(), journal_name)) {
    if (!file_) failure_ = cannot(path_, "the journal cannot be opened");
}

std::optional<problem> journal::append(const journal_entry& entry) const {
    std::string line = (ends_inside_a_line(file_.get()) ? "\n" : "") + line_of(entry);
    ssize_t written = write(file_.get(), line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) return std::nullopt;
    if (written >= 0) errno = ENOSPC;
    return cannot(path_, "the change could not be recorded");
}

size_t changes_since_backup(const std::string& directory, lint64 number) {
    size_t changes = 0;
    bool known = false;
    for (const table_row& row : rows_in(directory)) {
        bool taken = backup_of(row) == number && row[command_column] != "backup-delete";
        if (taken) changes = 0;
        known = known || taken;
        changes += known && is_change(row) ? 1 : 0;
    }
    return changes;
}

std::string time_of_last_change(const std::string& directory) {
    std::string time;
    for (const table_row& row : rows_in(directory))
        if (is_change(row)) time = row[time_column];
    return time;
}

exit_status run_journal(const std::string& directory, output& out) {
    out.set("changes", nullptr);
    std::error_code error;
    if (!std::filesystem::is_directory(directory, error))
        return out.fail(exit_failed, error ? error.message() : "is no directory", directory,
                        "Give the configuration directory of an instance.");
    std::string path = directory + "/" + journal_name;
    std::optional<file_snapshot> taken = take_snapshot(path);
    if (!taken) return out.fail(exit_failed, "cannot be read: " + reason_text(), path);
    show(rows_of(taken->bytes, path, out), out);
    return exit_good;
}

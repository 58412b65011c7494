#include "backups.h"

#include <sys/stat.h>

#include <cerrno>

#include "backup.h"
#include "capture.h"
#include "change_lock.h"
#include "config_file.h"
#include "counts.h"
#include "held_signals.h"
#include "instance.h"
#include "journal.h"
#include "startup.h"
#include "table.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

exit_status give_up(const problem& why, output& out) {
    out.report(why.found);
    return why.status;
}

problem no_backup(const instance& open, lint64 number) {
    std::vector<std::string> there;
    for (lint64 one : backups_in(open.directory()))
        there.push_back(std::to_string(one));
    return {exit_failed,
            {.file = open.file(backup_name(number)),
             .code = ARCH_E_BACKUP,
             .text = "cannot be read: " + reason_text(),
             .hint = there.empty() ? "There are no backups here."
                                   : "The backups here are " + first_of(there) + "."}};
}

std::optional<std::string> read_backup(const instance& open, lint64 number) {
    std::optional<file_snapshot> taken = take_snapshot(open.file(backup_name(number)));
    if (taken && taken->exists) return std::move(taken->bytes);
    if (taken) errno = ENOENT;
    return std::nullopt;
}

// What a small change of the directory needs: the lock and the journal.
class recorded_step {
  public:
    explicit recorded_step(const instance& open) : lock_(open), record_(open) {}

    const std::optional<problem>& failure() const {
        return lock_.failure() ? lock_.failure() : record_.failure();
    }

    exit_status end(const journal_entry& entry, output& out) const {
        if (std::optional<problem> unrecorded = record_.append(entry))
            return give_up(*unrecorded, out);
        return exit_good;
    }

  private:
    held_signals until_recorded_;
    change_lock lock_;
    journal record_;
};

// ---- The list ----

struct listed_backup {
    lint64 number;
    std::string path;
    std::optional<std::uintmax_t> size = {};  // unknown when it cannot be read
    bool loaded = false;
    startup start = {};
    type_counts counts = {};
};

listed_backup look_at(const instance& open, lint64 number) {
    listed_backup found{.number = number, .path = open.file(backup_name(number))};
    if (std::uintmax_t size = size_of(found.path);
        size > largest_backup_to_load && !is_no_file(found.path)) {
        found.size = size;
        return found;
    }
    std::optional<std::string> text = read_backup(open, number);
    if (!text) return found;
    config_file file;
    file.parse(*text, found.path);
    found.size = text->size();
    found.loaded = true;
    found.start = start_up(file);
    found.counts = counts_of_registry();
    return found;
}

std::string verdict_of(const listed_backup& found) {
    if (!found.size) return "cannot be read";
    if (!found.loaded) {
        constexpr std::uintmax_t tenth = 1024 * 1024 / 10;
        std::string tenths = std::to_string((*found.size + tenth / 2) / tenth);
        tenths.insert(0, tenths.size() < 2 ? "0" : "");
        return "not looked at, " + tenths.insert(tenths.size() - 1, ".") + " MB";
    }
    return found.start.code < 0 ? "no: " + code_text(found.start.code) : "yes";
}

table_row as_row(const listed_backup& found) {
    return {std::to_string(found.number), time_of(found.path),
            found.size ? std::to_string(*found.size) : "-",
            found.loaded ? counts_text(found.counts) : "-", verdict_of(found)};
}

json as_document(const listed_backup& found) {
    bool skipped = found.size && !found.loaded;
    json size;
    if (found.size) size = *found.size;
    return {{"number", found.number},
            {"file", visible(found.path)},
            {"time", time_of(found.path)},
            {"size", size},
            {"counts", skipped ? json(nullptr) : counts_document(found.counts)},
            {"would_start", skipped ? json(nullptr) : json(found.size && found.start.code >= 0)},
            {"start_code", skipped ? json(nullptr) : json(found.start.code)}};
}

void tell_of_mistaken(const instance& open, output& out) {
    std::vector<std::string> names = mistaken_for_backups(open.directory());
    if (names.empty()) return;
    out.report({.level = severity::note,
                .file = open.directory(),
                .text = "no backups, by their names: " + first_of(names, 5),
                .hint = "A backup's name is kqarch_bak_NUMBER.log, the number decimal and without "
                        "zeros in front."});
}

// A server that does not look at kqarch.ini starts with any.
const char* heading_of_start(const instance& open) {
    return open.archiving() ? "WOULD START" : "WOULD START WITH ARCHIVING ON";
}

}  // namespace

exit_status run_backup(const backup_options& options, output& out) {
    out.set("backup", nullptr);
    instance open(options.directory);
    if (open.failure()) return give_up(*open.failure(), out);
    recorded_step step(open);
    if (step.failure()) return give_up(*step.failure(), out);
    std::optional<file_snapshot> present = take_snapshot(open.config_file());
    if (!present || !present->exists)
        return give_up(unreadable(open.config_file(), ARCH_E_FILE_OPEN), out);
    std::optional<lint64> number = number_for_backup(open, options.lsn, options.replace, out);
    if (!number) return exit_refused;
    if (std::optional<problem> failed = take_backup(open, *number, *present))
        return give_up(*failed, out);
    std::string path = visible(open.file(backup_name(*number)));
    out.set("backup", {{"number", *number}, {"file", path}});
    out.print("Backup: " + path + "\n");
    out.set_done("the backup " + path + " was taken");
    return step.end({"backup", "", number, 0}, out);
}

exit_status run_backups(const std::string& directory, output& out) {
    out.set("archiving", nullptr);
    out.set("backups", nullptr);
    instance open(directory);
    if (open.failure()) return give_up(*open.failure(), out);
    out.set("archiving", open.archiving());
    json documents = json::array();
    std::vector<table_row> rows = {
        {"NUMBER", "TIME", "SIZE", "DESTINATIONS", heading_of_start(open)}};
    for (lint64 number : backups_in(open.directory())) {
        listed_backup found = look_at(open, number);
        documents.push_back(as_document(found));
        rows.push_back(as_row(found));
    }
    out.set("backups", documents);
    if (rows.size() > 1)
        print_table(rows, out);
    else
        out.print("No backups.\n");
    tell_of_mistaken(open, out);
    return exit_good;
}

exit_status run_restore(const restore_options& options, output& out) {
    std::string text;
    requested_change change{
        .command = "restore", .what = backup_name(options.number), .rewrites = false};
    change.prepare = [&](const instance& open) -> std::optional<problem> {
        std::optional<std::string> read = read_backup(open, options.number);
        if (!read) return no_backup(open, options.number);
        text = *read;
        if (text.find('\0') == text.npos) return std::nullopt;
        return problem{exit_refused,
                       {.file = open.file(backup_name(options.number)),
                        .text = "holds a NUL byte, which the server does not write"}};
    };
    change.apply = [&] { return captured{arch_cfg_sys_write_by_rec(text.c_str(), 1), ""}; };
    return run_change(options, change, out);
}

exit_status run_backup_delete(const std::string& directory, lint64 number, output& out) {
    out.set("deleted", nullptr);
    instance open(directory);
    if (open.failure()) return give_up(*open.failure(), out);
    recorded_step step(open);
    if (step.failure()) return give_up(*step.failure(), out);
    std::string path = open.file(backup_name(number));
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return give_up(no_backup(open, number), out);
    if (is_no_file(path))
        return give_up({exit_failed, {.file = path, .text = "is no regular file"}}, out);
    captured deleted =
        capture([number] { return arch_file_delete_bak(static_cast<ulint64>(number)); });
    if (deleted.code < 0)
        return give_up({exit_failed,
                        {.file = path,
                         .code = deleted.code,
                         .text = "cannot be deleted",
                         .hint = "A backup is deleted by who may write to the directory."}},
                       out);
    out.set("deleted", visible(path));
    out.print("Deleted " + visible(path) + "\n");
    out.set_done(visible(path) + " was deleted");
    return step.end({"backup-delete", "", number, 0}, out);
}

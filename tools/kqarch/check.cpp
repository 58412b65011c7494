#include "check.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <set>

#include "backup.h"
#include "catalogue.h"
#include "config_file.h"
#include "counts.h"
#include "doubts.h"
#include "instance.h"
#include "loading.h"
#include "osfile.h"
#include "owner.h"
#include "settings.h"
#include "text.h"

namespace {

enum class outcome { would_start, would_not_start, not_checked };

struct verdict {
    std::string directory;
    outcome result = outcome::would_start;
    kqcode_t code = 0;
    std::optional<bool> archiving = {};  // unknown when the instance does not open
    type_counts counts = {};
    bool lost = false;  // kqarch.ini had destinations once, and is empty
    size_t errors = 0;
    size_t warnings = 0;
};

// A directory that the server would make, and the line that names it.
struct missing_directory {
    std::string section;
    std::string path;
};

class checker {
  public:
    checker(const check_options& options, const std::string& directory, output& out)
        : options_(options), out_(out), instance_(directory) {
        verdict_.directory = instance_.directory();
    }

    verdict run() {
        os_set_dry_run(options_.probe ? 0 : 1);
        if (instance_.failure()) {
            give_up(*instance_.failure());
        } else {
            verdict_.archiving = instance_.archiving();
            if (*verdict_.archiving) check_config();
            if (seen_ && looks_cut_short(file_)) offer_backup();
        }
        os_set_dry_run(0);
        return verdict_;
    }

  private:
    void tell(const diagnostic& found) {
        if (found.level == severity::error) ++verdict_.errors;
        if (found.level == severity::warning) ++verdict_.warnings;
        out_.report(found);
    }

    void give_up(const problem& found) {
        tell(found.found);
        verdict_.code = found.found.code;
        bool unknown = found.status == exit_failed && !found.stops_server;
        verdict_.result = unknown ? outcome::not_checked : outcome::would_not_start;
    }

    void report(const std::vector<diagnostic>& found) {
        for (const diagnostic& one : found)
            tell(one);
    }

    void refuse(const std::vector<diagnostic>& found, kqcode_t code) {
        report(found);
        verdict_.code = code;
        verdict_.result = outcome::would_not_start;
    }

    void refuse_lines(const refused_lines& refused) {
        refuse(refused.first, refused.first.front().code);
        verdict_.errors += refused.more;
        out_.leave_out(file_.path(), refused.more);
    }

    void check_config() {
        if (instance_.config_missing()) {
            if (!check_absent_config()) return;
        } else if (kqcode_t code = file_.read(instance_.config_file()); code < 0) {
            return give_up(unreadable(file_.path(), code));
        }
        seen_ = true;
        if (refused_lines refused = load(file_); !refused.empty()) {
            refuse_lines(refused);
            return report(doubts_of_mode(file_));
        }
        check_rules();
        report(doubts_of_lines(file_));
        report(doubts_of_user(instance_));
    }

    bool check_absent_config() {
        if (instance_.config_creatable()) {
            tell({.level = severity::note,
                  .file = instance_.config_file(),
                  .text = "does not exist; the server would create it empty",
                  .rule = "absent-file"});
            return true;
        }
        give_up({exit_failed,
                 {.file = instance_.config_file(),
                  .code = ARCH_E_FILE_OPEN,
                  .text = "does not exist, and cannot be created",
                  .hint = find_code(ARCH_E_FILE_OPEN)->remedy}});
        return false;
    }

    void check_rules() {
        std::vector<missing_directory> missing = missing_directories();
        std::vector<diagnostic> doubts = doubts_of_registry(instance_, file_);
        std::set<std::string> may_be_made;
        for (const missing_directory& one : missing)
            if (options_.probe) may_be_made.insert(one.path);
        handed_over to_owner(instance_.directory(), may_be_made, handed_over::named_by::owner);
        validation result = validate(file_, options_.rules);
        if (result.code < 0) refuse(result.failures, result.code);
        for (const missing_directory& one : missing)
            note_missing(one, result.failures);
        warn(result.log_warnings);
        report(doubts);
        if (result.code == 0) verdict_.counts = counts_of_registry();
    }

    std::vector<missing_directory> missing_directories() const {
        arch_cfg_hold hold;
        std::vector<missing_directory> missing;
        for (arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
            bool unseen = os_file_path_is_asm(arch->dest) != 0 && !options_.rules.asm_paths;
            if (has_directory(arch->type) && !unseen && arch->dest[0] != '\0' &&
                !os_dir_is_exist(arch->dest))
                missing.push_back({arch->name, arch->dest});
        }
        return missing;
    }

    void note_missing(const missing_directory& missing, const std::vector<diagnostic>& failures) {
        auto is_its_own = [&](const diagnostic& one) { return one.section == missing.section; };
        bool exists = os_dir_is_exist(missing.path.c_str()) != 0;
        if (!exists && std::any_of(failures.begin(), failures.end(), is_its_own)) return;
        ulint incoming = file_.key_line(missing.section, "ARCH_INCOMING_PATH");
        ulint line = incoming != 0 ? incoming : file_.key_line(missing.section, "ARCH_DEST");
        tell({.level = severity::note,
              .file = file_.path(),
              .line = line,
              .section = missing.section,
              .key = incoming != 0 ? "ARCH_INCOMING_PATH" : "ARCH_DEST",
              .text = "directory " + file_.passwords().hide(missing.path) +
                      (exists ? " did not exist and was created"
                              : " does not exist; the server would create it"),
              .rule = "absent-directory"});
    }

    // Each is about an instance of kqmal.ini: "Instance(NAME) not configured in ...".
    void warn(const std::vector<std::string>& texts) {
        config_file registry;
        if (!texts.empty()) registry.read(instance_.file("kqmal.ini"));
        for (const std::string& text : texts) {
            size_t name = text.find('(') + 1;
            tell({.level = severity::warning,
                  .file = registry.path(),
                  .line = line_of_instance(registry, text.substr(name, text.find(')') - name)),
                  .text = text,
                  .hint = "Add a destination for the instance if it is to receive archives.",
                  .rule = "instance-without-destination"});
        }
    }

    static ulint line_of_instance(const config_file& registry, const std::string& name) {
        for (const config_line& line : registry.lines())
            if (same_text(line.key, "MAL_INST_NAME") && same_text(line.value, name))
                return line.number;
        return 0;
    }

    // Trying the backups takes the registry, so that this comes last.
    void offer_backup() {
        std::optional<way_back> way = find_way_back(instance_);
        bool blank = is_blank(file_);
        if (!way || (!blank && !way->number)) return;
        verdict_.lost = blank;
        std::string what = instance_.config_missing() ? "does not exist"
                           : blank                    ? "is empty"
                                                      : "seems to be cut short";
        tell({.level = severity::warning,
              .file = instance_.config_file(),
              .text = what + ", and " + way->found,
              .hint = way->hint,
              .rule = "lost-text"});
    }

    const check_options& options_;
    output& out_;
    instance instance_;
    config_file file_;
    bool seen_ = false;  // what is in kqarch.ini, or that there is none
    verdict verdict_;
};

std::string verdict_text(const verdict& given) {
    if (given.result == outcome::not_checked) return "could not be checked";
    if (given.result == outcome::would_not_start)
        return "would not start: " + code_text(given.code);
    if (given.archiving == false)
        return "would start: archiving is off, the server does not look at kqarch.ini";
    if (given.lost) return "would start, but kqarch.ini has lost its destinations";
    return "would start: " + counts_text(given.counts);
}

nlohmann::ordered_json as_document(const verdict& given) {
    const char* results[] = {"would_start", "would_not_start", "not_checked"};
    const code_entry* entry = find_code(given.code);
    nlohmann::ordered_json archiving;
    if (given.archiving) archiving = *given.archiving;
    return {{"directory", visible(given.directory)},
            {"verdict", results[static_cast<int>(given.result)]},
            {"code",
             given.result != outcome::not_checked ? nlohmann::ordered_json(given.code) : nullptr},
            {"name", entry != nullptr ? nlohmann::ordered_json(entry->name) : nullptr},
            {"archiving", archiving},
            {"counts", counts_document(given.counts)},
            {"errors", given.errors},
            {"warnings", given.warnings}};
}

// What all directories come to.
struct summary {
    size_t good = 0;
    size_t refused = 0;
    size_t failed = 0;
    size_t destinations = 0;
    size_t errors = 0;
    size_t warnings = 0;

    size_t directories() const { return good + refused + failed; }
};

void add(summary& all, const verdict& given) {
    if (given.result == outcome::would_start) ++all.good;
    if (given.result == outcome::would_not_start) ++all.refused;
    if (given.result == outcome::not_checked) ++all.failed;
    for (const auto& [type, count] : given.counts)
        all.destinations += count;
    all.errors += given.errors;
    all.warnings += given.warnings;
}

std::string summary_text(const summary& all) {
    std::vector<std::string> parts;
    if (all.good > 0) parts.push_back(std::to_string(all.good) + " would start");
    if (all.refused > 0) parts.push_back(std::to_string(all.refused) + " would not start");
    if (all.failed > 0) parts.push_back(std::to_string(all.failed) + " could not be checked");
    return count_of(all.directories(), "directory") + ": " + join(parts, ", ");
}

nlohmann::ordered_json as_document(const summary& all) {
    return {{"directories", all.directories()}, {"would_start", all.good},
            {"would_not_start", all.refused},   {"not_checked", all.failed},
            {"destinations", all.destinations}, {"errors", all.errors},
            {"warnings", all.warnings}};
}

// A directory under two names is one, so that nothing is told or counted twice.
std::vector<std::string> without_repetition(const std::vector<std::string>& directories) {
    std::vector<std::string> once;
    std::set<std::pair<dev_t, ino_t>> seen;
    for (const std::string& directory : directories) {
        struct stat status {};
        bool exists = stat(directory.c_str(), &status) == 0;
        bool repeated = exists ? !seen.insert({status.st_dev, status.st_ino}).second
                               : std::find(once.begin(), once.end(), directory) != once.end();
        if (!repeated) once.push_back(directory);
    }
    return once;
}

// The verdict of one directory, and what --strict makes of it.
std::string verdict_line(const verdict& given, bool strict) {
    std::string line = given.directory + ": " + verdict_text(given);
    if (!strict || given.warnings == 0 || given.result != outcome::would_start) return line;
    return line + "; --strict refuses " + count_of(given.warnings, "warning");
}

exit_status exit_status_of(const summary& all, bool strict) {
    if (all.failed > 0) return exit_failed;
    return all.refused > 0 || (strict && all.warnings > 0) ? exit_refused : exit_good;
}

}  // namespace

exit_status run_check(const check_options& options, output& out) {
    summary all;
    std::string line;
    nlohmann::ordered_json documents = nlohmann::ordered_json::array();
    if (options.quiet) out.set_quiet();
    for (const std::string& directory : without_repetition(options.directories)) {
        verdict given = checker(options, directory, out).run();
        line = verdict_line(given, options.strict);
        bool faulty = given.errors + given.warnings > 0;
        if (!options.quiet || faulty) out.print_heading(visible(line));
        if (!out.as_text()) documents.push_back(as_document(given));
        add(all, given);
    }
    bool many = all.directories() > 1;
    if (many && !options.quiet) out.print_heading(summary_text(all));
    if (out.as_text()) return exit_status_of(all, options.strict);
    out.set("directories", documents);
    out.set("summary", as_document(all));
    out.set_headline(many ? summary_text(all) : line);
    return exit_status_of(all, options.strict);
}

#include "change.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "backup.h"
#include "catalogue.h"
#include "change_lock.h"
#include "config_file.h"
#include "consequences.h"
#include "difference.h"
#include "held_signals.h"
#include "hints.h"
#include "instance.h"
#include "journal.h"
#include "scratch.h"
#include "startup.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

problem because(exit_status status, const std::string& file, const std::string& text,
                const std::string& hint = {}) {
    return {status, {.file = file, .text = text, .hint = hint}};
}

// Why a step ended the change; nothing when it goes on.
using step = std::optional<problem>;

class changer {
  public:
    changer(const change_options& options, const requested_change& change, output& out)
        : options_(options), change_(change), out_(out), instance_(options.directory) {}

    exit_status run() {
        if (step stop = prepare()) return end(*stop);
        if (step stop = try_out()) return end(*stop);
        if (text_ == file_.text() && file_.snapshot().exists) return tell_nothing_changes();
        show();
        if (step stop = would_start()) return end(*stop);
        if (options_.dry_run) return tell_dry_run();
        if (step stop = agree()) return end(*stop);
        return make();
    }

  private:
    exit_status end(const problem& why) {
        diagnostic found = why.found;
        found.text = passwords_.hide(found.text);
        out_.report(found);
        return why.status;
    }

    // ---- What is there ----

    step prepare() {
        if (instance_.failure()) return instance_.failure();
        if (change_.rewrites && !instance_.archiving())
            return because(exit_refused, instance_.file("kq.ini"),
                           "archiving is off: the server knows no destinations, and its next write "
                           "would lose those of kqarch.ini",
                           "Set ARCH_FLAG = 1 in kq.ini.");
        if (!options_.dry_run) lock_.emplace(instance_);
        if (lock_ && lock_->failure()) return lock_->failure();
        if (step stop = read()) return stop;
        if (change_.prepare)
            if (step stop = change_.prepare(instance_)) return stop;
        startup present = start_up(file_);
        before_ = facts_of_registry();
        if (present.loads || !change_.rewrites) return std::nullopt;
        diagnostic found = present.decisive();
        found.hint =
            "A change rewrites the whole file, so that all of it must load. `kqarch check " +
            instance_.directory() + "` lists every problem.";
        return problem{exit_refused, found};
    }

    step read() {
        kqcode_t code = instance_.config_missing() ? file_.parse("", instance_.config_file())
                                                   : file_.read(instance_.config_file());
        passwords_ = change_.passwords;
        passwords_.learn(file_.passwords());
        if (code < 0) return unreadable(instance_.config_file(), code);
        return std::nullopt;
    }

    // ---- What would become of it ----

    captured_with_log apply() {
        captured own{};
        captured_with_log result = capture_with_log([&] {
            own = change_.apply();
            return own.code;
        });
        if (result.said.empty()) result.said = own.said;
        if (result.said.empty()) result.said = join(result.refusals, "; ");
        const code_entry* entry = find_code(result.code);
        if (result.said.empty() && entry != nullptr) result.said = entry->meaning;
        return result;
    }

    step refusal(const captured& result) {
        return problem{status_of(result.code),
                       {.file = instance_.config_file(),
                        .code = result.code,
                        .text = result.said,
                        .hint = hint_for(result.code, result.said)}};
    }

    step try_out() {
        dry_run nothing_is_created;
        scratch_directory scratch(file_.text());
        captured result = apply();
        result.said = scratch.explained(result.said);
        if (result.code < 0) return refusal(result);
        text_ = scratch.text();
        facts_ = facts_of_registry();
        return std::nullopt;
    }

    exit_status tell_nothing_changes() {
        out_.print(visible(instance_.config_file()) + ": nothing changes\n");
        return exit_good;
    }

    void show() {
        after_.parse(text_, instance_.config_file());
        passwords_.learn(after_.passwords());
        difference found(file_, text_, passwords_);
        if (change_.rewrites) found.report_lost(out_);
        found.print(instance_.config_file() + " after the change", out_);
        start_ = start_up(after_);
        // Of lines that are refused nothing is known.
        if (start_.loads) facts_ = facts_of_registry();
        tell_consequences();
    }

    void tell_consequences() {
        std::vector<std::string> told = consequences(before_, facts_);
        told.insert(told.end(), change_.remarks.begin(), change_.remarks.end());
        json documents = json::array();
        out_.print("\n");
        for (const std::string& sentence : told) {
            documents.push_back(passwords_.hide(sentence));
            out_.print(passwords_.hide(sentence) + "\n");
        }
        out_.set("consequences", documents);
    }

    step would_start() {
        out_.set("would_start", start_.code >= 0);
        out_.set("start_code", start_.code);
        if (start_.code >= 0) {
            out_.print("The server would start with the result.\n");
            return std::nullopt;
        }
        diagnostic found = start_.decisive();
        found.line = 0;  // of a text that does not exist
        found.text = "the server would not start with the result: " + found.text;
        found.hint = "Nothing was changed. --force makes the change all the same.";
        if (!options_.force) return problem{exit_refused, found};
        found.level = severity::warning;
        found.hint = "";
        found.text = passwords_.hide(found.text);
        out_.report(found);
        return std::nullopt;
    }

    exit_status tell_dry_run() {
        out_.print("Dry run: nothing was changed.\n");
        return exit_good;
    }

    // ---- Making it ----

    step agree() {
        if (options_.yes) return std::nullopt;
        if (isatty(STDIN_FILENO) == 0 || isatty(STDERR_FILENO) == 0)
            return because(exit_usage, "", "nothing was changed: there is no terminal to ask on",
                           "--yes makes the change without asking, --dry-run only shows it.");
        std::cout.flush();
        std::cerr << "Make this change? [y/N] " << std::flush;
        std::string answer;
        std::getline(std::cin, answer);
        if (same_text(answer, "y") || same_text(answer, "yes")) return std::nullopt;
        return because(exit_refused, "", "nothing was changed");
    }

    exit_status make() {
        held_signals until_it_is_told;
        exit_status status = make_whole();
        (void)std::fflush(stdout);
        return status;
    }

    exit_status make_whole() {
        journal record(instance_);
        if (record.failure()) return end(*record.failure());
        std::optional<lint64> number;
        if (file_.snapshot().exists) {
            number = number_for_backup(instance_, options_.lsn, options_.force, out_);
            if (!number) return exit_refused;
        }
        if (step stop = secure(number)) return end(*stop);
        captured result = carry_out();
        step unrecorded =
            record.append({change_.command, change_.what, number, std::min(result.code, 0)});
        exit_status status = result.code < 0 ? tell_failure(result, number) : tell_success(number);
        return unrecorded ? end(*unrecorded) : status;
    }

    step changed_meanwhile() const {
        std::optional<file_snapshot> present = take_snapshot(instance_.config_file());
        if (present && *present == file_.snapshot()) return std::nullopt;
        return because(exit_refused, instance_.config_file(),
                       "was changed by somebody else meanwhile: nothing was written",
                       "Look at it, and repeat the command.");
    }

    // What is to be replaced is what was read, and a copy of it is safe.
    step secure(std::optional<lint64> number) {
        if (step stop = changed_meanwhile()) return stop;
        if (!number) return std::nullopt;
        if (step stop = take_backup(instance_, *number, file_.snapshot())) return stop;
        std::string path = instance_.file(backup_name(*number));
        out_.set("backup", {{"number", *number}, {"file", visible(path)}});
        out_.print("Backup: " + visible(path) + "\n");
        return changed_meanwhile();
    }

    captured carry_out() {
        (void)start_up(file_);
        return apply();
    }

    exit_status tell_success(std::optional<lint64> number) {
        std::optional<file_snapshot> written = take_snapshot(instance_.config_file());
        if (!written || written->bytes != text_)
            return end(because(exit_failed, instance_.config_file(),
                               "what was written is not what was shown", way_back(number)));
        out_.set("made", true);
        out_.print("Changed " + visible(instance_.config_file()) + "\n");
        return exit_good;
    }

    exit_status tell_failure(const captured& result, std::optional<lint64> number) {
        std::optional<file_snapshot> present = take_snapshot(instance_.config_file());
        problem why = *refusal(result);
        bool whole = present && *present == file_.snapshot();
        if (why.found.text.ends_with('.')) why.found.text.pop_back();
        why.found.text += whole ? "; nothing was changed" : "; the file is not whole";
        if (!whole) why.found.hint = way_back(number);
        return end(why);
    }

    std::string way_back(std::optional<lint64> number) const {
        if (!number) return "There was no kqarch.ini before; remove what is there.";
        return "`kqarch restore " + instance_.directory() + " " + std::to_string(*number) +
               "` brings the file back as it was.";
    }

    const change_options& options_;
    const requested_change& change_;
    output& out_;
    instance instance_;
    std::optional<change_lock> lock_;
    config_file file_;  // as it was read
    config_file after_;
    std::string text_;  // that is to be written
    startup start_;     // with that text
    password_list passwords_;
    configuration_facts before_;
    configuration_facts facts_;  // after the change
};

}  // namespace

exit_status run_change(const change_options& options, const requested_change& change, output& out) {
    for (const char* field :
         {"diff", "lost", "consequences", "would_start", "start_code", "backup", "made"})
        out.set(field, nullptr);
    out.set("made", false);
    return changer(options, change, out).run();
}

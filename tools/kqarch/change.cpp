#include "change.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include "backup.h"
#include "catalogue.h"
#include "change_lock.h"
#include "cluster_node.h"
#include "config_file.h"
#include "consequences.h"
#include "difference.h"
#include "doubts.h"
#include "held_signals.h"
#include "hints.h"
#include "instance.h"
#include "journal.h"
#include "owner.h"
#include "private_file.h"
#include "raft_danger.h"
#include "scratch.h"
#include "startup.h"
#include "text.h"

namespace {

using json = nlohmann::ordered_json;

problem because(exit_status status, const std::string& file, const std::string& text,
                const std::string& hint = {}) {
    return {status, {.file = file, .text = text, .hint = hint}};
}

// Why a file cannot be opened for writing; empty where it can.
std::string reason_against_writing(const std::string& path) {
    open_file probe(open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    return probe ? "" : std::strerror(errno);
}

constexpr const char* forcing = " --force makes the change all the same.";

// Why a step ended the change; nothing when it goes on.
using step = std::optional<problem>;

class changer {
  public:
    changer(const change_options& options, const requested_change& change, output& out)
        : options_(options), change_(change), out_(out), instance_(options.directory) {}

    exit_status run() {
        if (step stop = prepare()) return end(*stop);
        if (step stop = stays_learner()) return end(*stop);
        if (step stop = try_out()) return end(*stop);
        warn_of(change_.doubts);
        if (text_ == file_.text() && file_.snapshot().exists) return tell_nothing_changes();
        show();
        if (step stop = would_start()) return end(*stop);
        if (step stop = is_safe()) return end(*stop);
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

    void warn(diagnostic found) {
        found.level = severity::warning;
        found.line = 0;  // of a text that does not exist
        found.text = passwords_.hide(found.text);
        out_.report(found);
    }

    void warn_of(const std::vector<std::string>& doubts) {
        for (const std::string& doubt : doubts)
            warn({.file = instance_.config_file(), .text = doubt});
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
        start_ = start_up(file_);
        before_ = facts_of_registry();
        was_learner_ = arch_cfg_check_self_is_learner() != 0;
        if (start_.loads) group_before_ = group_of(node_of_registry());
        doubts_before_ = doubts_of_registry(instance_, file_);
        if (start_.loads || !change_.rewrites) return std::nullopt;
        diagnostic found = start_.decisive();
        found.hint =
            "A change rewrites the whole file, so that all of it must load. `kqarch check " +
            shell_word(instance_.directory()) + "` lists every problem.";
        return problem{exit_refused, found};
    }

    step stays_learner() {
        if (!change_.keeps_learner || arch_cfg_check_self_is_learner() == 0) return std::nullopt;
        problem why = because(exit_refused, instance_.config_file(),
                              "this node is a learner, and RAFT_LEARNER = 1 is not written back: "
                              "from its next start on it would be a voter",
                              "Make the change with an editor. --force makes it all the same.");
        if (!options_.force) return why;
        why.found.hint = "";
        warn(why.found);
        return std::nullopt;
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

    problem refusal(const captured& result) const {
        return {status_of(result.code),
                {.file = instance_.config_file(),
                 .code = result.code,
                 .text = result.said,
                 .hint = hint_for(result.code, result.said)}};
    }

    // Nothing is found in a file that has lost its text.
    problem refusal_of_trial(const captured& result) const {
        problem why = refusal(result);
        if (result.code != ARCH_E_DEST_NOT_FOUND || !is_blank(file_)) return why;
        why.found.text = std::string("no destination has that name: the file ") +
                         (file_.snapshot().exists ? "is empty" : "does not exist");
        std::optional<way_back> way = find_way_back(instance_);
        if (!way) return why;
        why.found.text += ", and " + way->found;
        why.found.hint = way->hint;
        return why;
    }

    step try_out() {
        dry_run nothing_is_created;
        scratch_directory scratch(file_.text());
        captured result = apply();
        result.said = scratch.explained(result.said);
        if (result.code < 0) return refusal_of_trial(result);
        text_ = scratch.text();
        facts_ = facts_of_registry();
        return std::nullopt;
    }

    exit_status tell_nothing_changes() {
        tell_start();
        if (start_.code < 0) warn(no_start("the server would not start with it: "));
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
        if (start_.loads) node_after_ = node_of_registry();
        if (start_.loads) warn_of_new_doubts();
        tell_consequences();
    }

    void warn_of_new_doubts() {
        for (const diagnostic& doubt : doubts_of_registry(instance_, after_))
            if (std::none_of(doubts_before_.begin(), doubts_before_.end(),
                             [&](const diagnostic& old) { return old.text == doubt.text; }))
                warn(doubt);
    }

    void tell_consequences() {
        std::vector<std::string> told = consequences(before_, facts_);
        raft_group group = group_of(node_after_);
        if (!change_.rewrites && start_.loads && group != group_before_.value_or(raft_group{}))
            for (std::string& sentence : group_consequences(group_before_, group))
                told.push_back(std::move(sentence));
        told.insert(told.end(), change_.remarks.begin(), change_.remarks.end());
        json documents = json::array();
        out_.print("\n");
        for (const std::string& sentence : told) {
            documents.push_back(passwords_.hide(sentence));
            out_.print(passwords_.hide(sentence) + "\n");
        }
        out_.set("consequences", documents);
    }

    void tell_start() {
        out_.set("would_start", start_.code >= 0);
        out_.set("start_code", start_.code);
    }

    diagnostic no_start(const std::string& what) const {
        diagnostic found = start_.decisive();
        found.line = 0;
        found.text = (instance_.archiving() ? "" : "with archiving on, ") + what + found.text;
        found.hint = "";
        return found;
    }

    step would_start() {
        tell_start();
        if (start_.code >= 0) {
            out_.print("The server would start with the result.\n");
            for (const diagnostic& doubt : doubts_of_user(instance_))
                warn(doubt);
            return std::nullopt;
        }
        diagnostic found = no_start("the server would not start with the result: ");
        if (options_.force) {
            warn(found);
            return std::nullopt;
        }
        found.hint = std::string("Nothing was changed.") + forcing;
        return problem{exit_refused, found};
    }

    // A text of its own may say anything: what the commands that rewrite keep from happening too.
    std::vector<danger> dangers() const {
        std::vector<danger> found;
        raft_group was = group_before_.value_or(raft_group{});
        raft_group is = group_of(node_after_);
        std::optional<danger> of_group =
            is.voters.empty() ? danger_of_leaving(was, node_after_.name) : danger_of_step(was, is);
        if (of_group) found.push_back(*of_group);
        if (was_learner_ && is.voters.contains(upper_case(node_after_.name)))
            found.push_back(
                {"this node is a learner, and the result has no RAFT_LEARNER = 1: from "
                 "its next start on it would be a voter",
                 "Restore a backup that has the line, or `promote` this node first when "
                 "it has caught up."});
        if (instance_.archiving() && !before_.destinations.empty() && facts_.destinations.empty())
            found.push_back({"the result has no destination: nothing is archived any more",
                             "Look at it with `kqarch backups`, and choose another backup."});
        return found;
    }

    step is_safe() {
        if (change_.rewrites || !start_.loads) return std::nullopt;
        step stop;
        for (const danger& one : dangers()) {
            problem why = because(exit_refused, instance_.config_file(), one.text,
                                  options_.force ? "" : passwords_.hide(one.hint) + forcing);
            if (options_.force) warn(why.found);
            if (stop) end(*stop);
            if (!options_.force) stop = why;
        }
        return stop;
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
            number = number_for_backup(instance_, options_.lsn, options_.replace_backup, out_);
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
        startup again = start_up(file_);
        if (change_.rewrites && !again.loads) return {again.code, again.decisive().text};
        std::set<std::string> may_be_made = directories_of(facts_);
        may_be_made.insert(instance_.config_file());
        handed_over to_owner(instance_.directory(), may_be_made, handed_over::named_by::root);
        return apply();
    }

    exit_status tell_success(std::optional<lint64> number) {
        std::optional<file_snapshot> written = take_snapshot(instance_.config_file());
        if (!written || written->bytes != text_)
            return end(because(exit_failed, instance_.config_file(),
                               "what was written is not what was shown", how_back(number)));
        out_.set("made", true);
        out_.set_done(
            "the change was made" +
            (number ? ", with the backup " + visible(instance_.file(backup_name(*number))) : ""));
        out_.print("Changed " + visible(instance_.config_file()) + "\n");
        return exit_good;
    }

    exit_status tell_failure(const captured& result, std::optional<lint64> number) {
        problem why = refusal(result);
        std::string reason = reason_against_writing(instance_.config_file());
        if (result.code == ARCH_E_FILE_OPEN && !reason.empty())
            why.found.text = "cannot be written: " + reason;
        if (why.found.text.ends_with('.')) why.found.text.pop_back();
        if (is_untouched())
            why.found.text += "; nothing was changed";
        else if (put_back())
            why.found.text += "; the file was put back as it was";
        else
            why.found = not_whole(why.found, number);
        return end(why);
    }

    diagnostic not_whole(diagnostic found, std::optional<lint64> number) const {
        found.text += "; the file is not whole";
        if (number) found.text += ", and could not be put back";
        found.hint = how_back(number);
        return found;
    }

    bool is_untouched() const {
        std::optional<file_snapshot> present = take_snapshot(instance_.config_file());
        return present && *present == file_.snapshot();
    }

    // The old text may have room where the new one had none. A file that somebody else put in this
    // one's place is his.
    bool put_back() const {
        std::optional<file_snapshot> present = take_snapshot(instance_.config_file());
        bool same = present && present->exists && present->device == file_.snapshot().device &&
                    present->number == file_.snapshot().number;
        if (!same) return false;
        (void)capture([this] { return arch_cfg_sys_write_by_rec(file_.text().c_str(), 1); });
        return is_untouched();
    }

    std::string how_back(std::optional<lint64> number) const {
        if (!number) return "There was no kqarch.ini before; remove what is there.";
        return "`kqarch restore " + shell_word(instance_.directory()) + " " +
               std::to_string(*number) + "` brings the file back as it was.";
    }

    const change_options& options_;
    const requested_change& change_;
    output& out_;
    instance instance_;
    std::optional<change_lock> lock_;
    config_file file_;  // as it was read
    config_file after_;
    std::string text_;  // that is to be written
    startup start_;     // with that text, and before with the text that was read
    std::vector<diagnostic> doubts_before_;
    password_list passwords_;
    configuration_facts before_;
    std::optional<raft_group> group_before_;  // unknown where the file does not load
    bool was_learner_ = false;
    cluster_node node_after_;    // where the text loads
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

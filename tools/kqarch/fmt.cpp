#include "fmt.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "capture.h"
#include "catalogue.h"
#include "config_file.h"
#include "diff.h"
#include "ini.h"
#include "instance.h"
#include "loading.h"
#include "osfile.h"
#include "text.h"
#include "validation.h"

namespace {

using json = nlohmann::ordered_json;

constexpr size_t most_diff_lines = 40;

std::string read_whole(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines = split(text, '\n');
    if (lines.back().empty()) lines.pop_back();
    return lines;
}

std::string trimmed(const std::string& text) {
    size_t begin = text.find_first_not_of(" \t\r");
    if (begin == text.npos) return "";
    return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

bool is_comment(const std::string& line) {
    return line.starts_with('#') || line.starts_with(';');
}

struct lost_line {
    ulint line;
    std::string what;
};

bool is_never_written(const config_line& line) {
    const key_entry* entry = line.kind == KQ_INI_KEY ? find_key(line.key) : nullptr;
    if (entry == nullptr) return false;
    bool zero = std::strtoul(line.value.c_str(), nullptr, 0) == 0;
    return !entry->written_back || (entry->index == ini_index_raft_vote_interval && zero);
}

text_place place_of(ulint type) {
    if (type == ARCH_TYPE_LOCAL || type == ARCH_TYPE_REMOTE) return text_place::path;
    return type == ARCH_TYPE_SUBSCRIBE ? text_place::subscriber : text_place::other;
}

// The written text without passwords. Every section begins with its type.
std::string without_passwords(const std::string& text) {
    std::vector<std::string> lines = split(text, '\n');
    ulint type = ARCH_TYPE_NONE;
    for (std::string& line : lines) {
        size_t begin = line.find(" = ") + 3;
        if (line.starts_with('[')) type = ARCH_TYPE_NONE;
        if (line.starts_with("ARCH_TYPE = "))
            type = arch_cfg_get_arch_type_by_name(line.c_str() + begin);
        bool destination = line.starts_with("ARCH_DEST = ");
        text_place place =
            destination || type != ARCH_TYPE_SUBSCRIBE ? place_of(type) : text_place::other;
        if (line.find(" = ") != line.npos)
            line = line.substr(0, begin) + hide_password(line.substr(begin), place);
        else if (!is_comment(line))
            line = hide_password(line, text_place::other);
    }
    return join(lines, "\n");
}

class rewriter {
  public:
    rewriter(const instance& open, const fmt_options& options, output& out)
        : open_(open), options_(options), out_(out) {}

    exit_status run() {
        if (kqcode_t code = file_.read(open_.config_file()); code < 0)
            return stop(unreadable(open_.config_file(), code));
        std::vector<diagnostic> refused = load(file_);
        for (const diagnostic& one : refused)
            out_.report(one);
        if (!refused.empty()) return exit_refused;
        settle_defaults();
        if (!write_text()) return exit_failed;
        out_.set("text", without_passwords(text_));
        return options_.check ? compare() : print();
    }

  private:
    exit_status stop(const problem& why) {
        out_.report(why.found);
        return why.status;
    }

    // Validation fills in defaults, which a rewrite then writes.
    void settle_defaults() {
        os_set_dry_run(1);
        validation result = validate(file_, {});
        os_set_dry_run(0);
        if (result.code == 0) return;
        diagnostic warning = result.failures.back();
        warning.level = severity::warning;
        warning.text = "the server would not start with this: " + warning.text;
        warning.hint = "`kqarch check " + open_.directory() + "` lists every problem.";
        out_.report(warning);
    }

    bool write_text() {
        text_.resize(ARCH_CFG_TEXT_SIZE);
        kqcode_t code = 0;
        {
            registry_hold hold;
            code = capture([this]() KQ_NO_THREAD_ANALYSIS {
                       return arch_cfg_sys_write_to_rec(text_.data());
                   }).code;
        }
        text_.resize(text_.find('\0') != text_.npos ? text_.find('\0') : text_.size());
        if (code < 0)
            out_.report({.file = file_.path(),
                         .code = code,
                         .text = "the text is longer than the server can write",
                         .hint = find_code(code)->remedy});
        return code >= 0;
    }

    exit_status print() {
        std::string text = without_passwords(text_);
        out_.print(text);
        if (text != text_)
            out_.report({.level = severity::note,
                         .file = file_.path(),
                         .text = "passwords are shown as ***; the server writes them"});
        return exit_good;
    }

    exit_status compare() {
        std::string before = read_whole(file_.path());
        std::vector<lost_line> lost = lost_lines(lines_of(before));
        json documents = json::array();
        for (const lost_line& one : lost) {
            documents.push_back({{"line", one.line}, {"what", one.what}});
            out_.report({.level = severity::warning,
                         .file = file_.path(),
                         .line = one.line,
                         .text = "a rewrite would lose " + one.what});
        }
        out_.set("lost", documents);
        out_.set("differs", before != text_);
        if (before == text_) {
            out_.print(visible(file_.path()) + ": as the server would write it\n");
            return exit_good;
        }
        print_difference(before);
        return exit_refused;
    }

    std::vector<lost_line> lost_lines(const std::vector<std::string>& before) const {
        std::vector<std::string> kept = lines_of(text_);
        std::vector<lost_line> lost;
        for (size_t i = 0; i < before.size(); ++i) {
            std::string line = trimmed(before[i]);
            if (!is_comment(line)) continue;
            // The two lines of the header come back.
            auto again = std::find(kept.begin(), kept.end(), line);
            if (again != kept.end())
                kept.erase(again);
            else
                lost.push_back({static_cast<ulint>(i + 1), "the comment: " + hidden_comment(line)});
        }
        for (const config_line& line : file_.lines())
            if (is_never_written(line))
                lost.push_back({line.number, upper_case(line.key) + " = " +
                                                 file_.passwords().hide(visible(line.value))});
        std::sort(lost.begin(), lost.end(), [](const lost_line& left, const lost_line& right) {
            return left.line < right.line;
        });
        return lost;
    }

    // A setting that was commented out may hold a password that stands nowhere else.
    std::string hidden_comment(const std::string& line) const {
        size_t value = line.find('=') + 1;  // 0 without one
        bool connection = value > 0 && upper_case(line).find("ARCH_DEST") < value &&
                          !trimmed(line.substr(value)).starts_with('/');
        text_place place = connection ? text_place::subscriber : text_place::other;
        return file_.passwords().hide(visible(line.substr(0, value)) +
                                      hide_password(visible(line.substr(value)), place));
    }

    void print_difference(const std::string& before) {
        std::vector<diff_line> found = diff(lines_of(before), lines_of(text_));
        json documents = json::array();
        out_.print_heading("--- " + visible(file_.path()));
        out_.print_heading("+++ as the server would write it");
        for (size_t i = 0; i < found.size(); ++i) {
            std::string line = diff_text(found[i]);
            documents.push_back(line);
            if (i < most_diff_lines) out_.print(line + "\n");
        }
        if (found.size() > most_diff_lines)
            out_.print("... and " + count_of(found.size() - most_diff_lines, "more line") + "\n");
        if (found.empty()) out_.print("Only the end of the last line differs.\n");
        out_.set("diff", documents);
    }

    std::string diff_text(const diff_line& line) const {
        const char* marks[] = {" ", "-", "+"};
        std::string text =
            is_comment(trimmed(line.text)) ? hidden_comment(line.text) : shown_line(line.text);
        if (text.empty() && line.kind == change::kept) return "";
        return marks[static_cast<int>(line.kind)] + visible(text);
    }

    // Only texts can hold a password: a number that happens to be one stays.
    std::string shown_line(const std::string& line) const {
        size_t end = line.find('=');
        const key_entry* entry =
            end != line.npos ? find_key(trimmed(line.substr(0, end))) : nullptr;
        return entry != nullptr && !entry->is_text ? line : file_.passwords().hide(line);
    }

    const instance& open_;
    const fmt_options& options_;
    output& out_;
    config_file file_;
    std::string text_;
};

}  // namespace

exit_status run_fmt(const fmt_options& options, output& out) {
    instance open(options.directory);
    for (const char* field : {"text", "differs", "lost", "diff"})
        out.set(field, nullptr);
    if (!open.failure()) return rewriter(open, options, out).run();
    out.report(open.failure()->found);
    return open.failure()->status;
}

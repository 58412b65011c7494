#include "fmt.h"

#include "capture.h"
#include "config_file.h"
#include "difference.h"
#include "instance.h"
#include "loading.h"
#include "osfile.h"
#include "settings.h"
#include "text.h"
#include "validation.h"

namespace {

text_place place_of(ulint type) {
    if (has_directory(type)) return text_place::path;
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
            line.replace(begin, line.npos, hide_password(line.substr(begin), place));
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
        refused_lines refused = load(file_);
        for (const diagnostic& one : refused.first)
            out_.report(one);
        out_.leave_out(file_.path(), refused.more);
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
            arch_cfg_hold hold;
            code = capture([this]() KQ_NO_THREAD_ANALYSIS {
                       return arch_cfg_sys_write_to_rec(text_.data());
                   }).code;
        }
        text_.resize(text_.find('\0') != text_.npos ? text_.find('\0') : text_.size());
        if (code < 0)
            out_.report({.file = file_.path(),
                         .code = code,
                         .text = "the text is longer than the server can write",
                         .hint = "Remove destinations: the server could not write this file "
                                 "after a change either."});
        return code >= 0;
    }

    exit_status print() {
        std::string text = without_passwords(text_);
        out_.print_data(text);
        if (text != text_)
            out_.report({.level = severity::note,
                         .file = file_.path(),
                         .text = "passwords are shown as ***; the server writes them"});
        return exit_good;
    }

    exit_status compare() {
        difference found(file_, text_, file_.passwords());
        found.report_lost(out_);
        out_.set("differs", !found.empty());
        if (found.empty()) {
            out_.print(visible(file_.path()) + ": as the server would write it\n");
            return exit_good;
        }
        found.print("as the server would write it", out_);
        return exit_refused;
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

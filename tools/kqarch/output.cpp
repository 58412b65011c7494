#include "output.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "catalogue.h"
#include "text.h"

namespace {

const char* colour_of(severity level) {
    if (level == severity::error) return "\033[1;31m";
    return level == severity::warning ? "\033[1;35m" : "\033[1;36m";
}

bool wants_colour(int descriptor) {
    const char* no_colour = std::getenv("NO_COLOR");
    if (no_colour != nullptr && *no_colour != '\0') return false;
    const char* terminal = std::getenv("TERM");
    return isatty(descriptor) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

std::string painted(const std::string& text, const char* colour, int descriptor) {
    return wants_colour(descriptor) ? colour + text + "\033[0m" : text;
}

std::string code_label(kqcode_t code) {
    return code == 0 ? "" : "[" + code_text(code) + "]";
}

// A key may be as long as its file.
std::string with_short_key(std::string text, const std::string& key) {
    constexpr size_t longest_key = 80;
    size_t at = key.size() > longest_key ? text.find(key) : text.npos;
    return at == text.npos ? text : text.replace(at, key.size(), shortened(key, longest_key));
}

void write_line(const diagnostic& found) {
    std::string line = painted(visible(place_of(found)), "\033[1m", STDERR_FILENO) + ": ";
    line += painted(name_of(found.level) + code_label(found.code), colour_of(found.level),
                    STDERR_FILENO);
    line += ": " + visible(with_short_key(found.text, found.key)) + "\n";
    if (!found.hint.empty()) line += "  hint: " + visible(found.hint) + "\n";
    line = with_unseen_shown(line);
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

output::output(std::string command, const output_form& form)
    : form_(&form), said_{.command = std::move(command)} {}

void output::print(std::string_view text) {
    if (as_text()) write(with_unseen_shown(text));
}

void output::print_data(std::string_view data) {
    if (as_text()) write(std::string(data));
}

// Written at once: later its reason would not be known.
void output::write(const std::string& text) {
    bool written =
        std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
    if (!written && write_error_ == 0) write_error_ = errno;
}

void output::print_heading(std::string_view text) {
    print(painted(std::string(text), "\033[1m", STDOUT_FILENO) + "\n");
}

void output::print_alarm(std::string_view text) {
    print(painted(std::string(text), colour_of(severity::error), STDOUT_FILENO) + "\n");
}

void output::set(const std::string& field, nlohmann::ordered_json value) {
    if (!as_text()) said_.fields[field] = std::move(value);
}

void output::report(const diagnostic& found) {
    if (quiet_ && found.level == severity::note) return;
    if (++reported_[found.file] <= most_of_a_file) tell(found);
}

void output::tell(const diagnostic& found) {
    if (as_text())
        write_line(found);
    else
        said_.found.push_back(found);
}

exit_status output::fail(exit_status status, std::string text, std::string file, std::string hint) {
    report({.file = std::move(file), .text = std::move(text), .hint = std::move(hint)});
    return status;
}

// A file that is none of its kind has a problem in every line.
void output::report_left_out() {
    if (quiet_) return;
    for (const auto& [file, count] : reported_)
        if (count > most_of_a_file)
            tell({.level = severity::note,
                  .file = file,
                  .text = std::to_string(count - most_of_a_file) + " more are not shown",
                  .rule = "left-out"});
}

int output::finish(exit_status status) {
    report_left_out();
    // What is done has to be told, also where nobody reads the document.
    if (!done_.empty()) (void)std::signal(SIGPIPE, SIG_IGN);
    if (!as_text()) write(form_->document(said_, status));
    if (write_error_ == 0) return form_->status != nullptr ? form_->status(said_, status) : status;
    // A reader that has seen enough, `head` say, has closed the pipe on purpose.
    if (write_error_ != EPIPE || !done_.empty())
        std::fprintf(stderr, "kqarch: error: standard output: %s%s%s\n",
                     std::strerror(write_error_), done_.empty() ? "" : "; ", done_.c_str());
    return exit_failed;
}

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

constexpr int schema_version = 1;
constexpr size_t most_of_a_file = 100;

const char* name_of(severity level) {
    if (level == severity::error) return "error";
    return level == severity::warning ? "warning" : "note";
}

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

std::string place_of(const diagnostic& found) {
    if (found.file.empty()) return "kqarch";
    std::string place = visible(found.file);
    if (found.line > 0) place += ":" + std::to_string(found.line);
    return place;
}

std::string code_label(kqcode_t code) {
    return code == 0 ? "" : "[" + code_text(code) + "]";
}

nlohmann::ordered_json text_or_null(const std::string& text) {
    return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(visible(text));
}

template <typename number>
nlohmann::ordered_json number_or_null(number value) {
    return value == 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(value);
}

nlohmann::ordered_json as_document(const diagnostic& found) {
    const code_entry* entry = find_code(found.code);
    return {{"severity", name_of(found.level)},
            {"file", text_or_null(found.file)},
            {"line", number_or_null(found.line)},
            {"code", number_or_null(found.code)},
            {"name", text_or_null(entry != nullptr ? entry->name : "")},
            {"section", text_or_null(found.section)},
            {"key", text_or_null(found.key)},
            {"text", visible(found.text)},
            {"hint", text_or_null(found.hint)}};
}

void write_line(const diagnostic& found) {
    std::string line = painted(place_of(found), "\033[1m", STDERR_FILENO) + ": ";
    line += painted(name_of(found.level) + code_label(found.code), colour_of(found.level),
                    STDERR_FILENO);
    line += ": " + visible(found.text) + "\n";
    if (!found.hint.empty()) line += "  hint: " + visible(found.hint) + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

std::string code_text(kqcode_t code) {
    const code_entry* entry = find_code(code);
    return std::to_string(code) + (entry != nullptr ? std::string(" ") + entry->name : "");
}

output::output(std::string command, bool as_json)
    : command_(std::move(command)), as_json_(as_json) {}

void output::print(std::string_view text) {
    if (!as_json_) write(text);
}

// Written at once: later its reason would not be known.
void output::write(std::string_view text) {
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
    if (as_json_) fields_[field] = std::move(value);
}

void output::report(const diagnostic& found) {
    if (++reported_[found.file] > most_of_a_file) return;
    if (as_json_) {
        diagnostics_.push_back(as_document(found));
    } else {
        write_line(found);
    }
}

exit_status output::fail(exit_status status, std::string text, std::string file, std::string hint) {
    report({.file = std::move(file), .text = std::move(text), .hint = std::move(hint)});
    return status;
}

void output::write_document(exit_status status) {
    nlohmann::ordered_json document = {{"schema_version", schema_version},
                                       {"command", text_or_null(command_)},
                                       {"exit_code", static_cast<int>(status)},
                                       {"diagnostics", diagnostics_}};
    document.update(fields_);
    // A text of the file need not be UTF-8; the document always is.
    std::string text =
        document.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    write(text);
}

// A file that is none of its kind has a problem in every line.
void output::report_left_out() {
    for (const auto& [file, count] : std::exchange(reported_, {}))
        if (count > most_of_a_file)
            report({.level = severity::note,
                    .file = file,
                    .text = std::to_string(count - most_of_a_file) + " more are not shown"});
}

int output::finish(exit_status status) {
    report_left_out();
    // What is done has to be told, also where nobody reads the document.
    if (!done_.empty()) (void)std::signal(SIGPIPE, SIG_IGN);
    if (as_json_) write_document(status);
    if (write_error_ == 0) return status;
    // A reader that has seen enough, `head` say, has closed the pipe on purpose.
    if (write_error_ != EPIPE || !done_.empty())
        std::fprintf(stderr, "kqarch: error: standard output: %s%s%s\n",
                     std::strerror(write_error_), done_.empty() ? "" : "; ", done_.c_str());
    return exit_failed;
}

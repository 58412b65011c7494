// Where every command of kqarch puts what it has to say.
//
// Data goes to standard output, diagnostics to standard error. With --json both go into one
// document on standard output, written by finish():
//
//   {"schema_version": 1, "command": "check", "exit_code": 1,
//    "diagnostics": [{"severity": "error", "file": "db/kqarch.ini", "line": 4, "code": -803,
//                     "name": "ARCH_E_INVALID_VALUE", "section": "ARCHIVE_LOCAL1",
//                     "key": "ARCH_FILE_SIZE", "text": "...", "hint": "..."}],
//    ...the command's own fields}
//
// Every field is always present; what does not apply is null.
#ifndef KQARCH_OUTPUT_H
#define KQARCH_OUTPUT_H

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kqtype.h"

enum exit_status {
    exit_good = 0,
    exit_refused = 1,  // refused, or different
    exit_usage = 2,    // wrong use of the command line
    exit_failed = 3    // could not: a missing file, no permission, a full disk
};

enum class severity { error, warning, note };

// `FILE:LINE: error[CODE NAME]: text`, then `hint: ...`; what is empty or 0 is left out.
struct diagnostic {
    severity level = severity::error;
    std::string file = {};
    ulint line = 0;
    kqcode_t code = 0;
    std::string section = {};
    std::string key = {};
    std::string text = {};
    std::string hint = {};
};

// "-808 ARCH_E_INVALID_DEST".
std::string code_text(kqcode_t code);

class output {
  public:
    output(std::string command, bool as_json);

    // The command that speaks, once it is known.
    void set_command(std::string command) { command_ = std::move(command); }
    bool as_json() const { return as_json_; }

    // A piece of text for standard output; nothing with --json.
    void print(std::string_view text);

    // The same with a line feed, in bold on a terminal.
    void print_heading(std::string_view text);

    // The same in red: something that is wrong.
    void print_alarm(std::string_view text);

    // A field of the JSON document; nothing without --json.
    void set(const std::string& field, nlohmann::ordered_json value);

    // Of one file the first hundred are told, and then how many more there are.
    void report(const diagnostic& found);

    // Reports an error that belongs to no line and no code, and returns `status`.
    exit_status fail(exit_status status, std::string text, std::string file = {},
                     std::string hint = {});

    // What has been done, which is told on standard error where standard output cannot tell it.
    void set_done(std::string what) { done_ = std::move(what); }

    // Ends the output. The process's exit status: `status`, or exit_failed when standard output
    // did not take everything.
    int finish(exit_status status);

  private:
    void write(std::string_view text);
    void report_left_out();
    void write_document(exit_status status);

    std::string command_;
    bool as_json_;
    std::map<std::string, size_t> reported_;  // of each file
    std::string done_;
    int write_error_ = 0;  // errno of the first write that failed
    nlohmann::ordered_json fields_ = nlohmann::ordered_json::object();
    nlohmann::ordered_json diagnostics_ = nlohmann::ordered_json::array();
};

#endif

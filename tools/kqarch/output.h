// Where every command of kqarch puts what it has to say.
//
// Data goes to standard output, diagnostics to standard error. With --json both go into one
// document on standard output, written by finish() (other forms: output_form.h):
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

#include "diagnostic.h"
#include "output_form.h"

constexpr size_t most_of_a_file = 100;  // findings that are told

class output {
  public:
    output(std::string command, const output_form& form);

    // The command that speaks, once it is known.
    void set_command(std::string command) { said_.command = std::move(command); }
    bool as_text() const { return form_ == &text_form; }

    // From now on the text holds no notes.
    void set_quiet() { quiet_ = as_text(); }

    // A piece of text for standard output; nothing in another form.
    void print(std::string_view text);

    // The same, byte for byte: what a program reads.
    void print_data(std::string_view data);

    // The same with a line feed, in bold on a terminal.
    void print_heading(std::string_view text);

    // The same in red: something that is wrong.
    void print_alarm(std::string_view text);

    // A field of the JSON document, and what the document of another form has instead of text.
    void set(const std::string& field, nlohmann::ordered_json value);
    void set_headline(std::string text) { said_.headline = std::move(text); }

    // Of one file the first hundred are told, and then in a note how many more there are.
    void report(const diagnostic& found);

    // Counts among those of a file what is not even handed in.
    void leave_out(const std::string& file, size_t count) { reported_[file] += count; }

    // Reports an error that belongs to no line and no code, and returns `status`.
    exit_status fail(exit_status status, std::string text, std::string file = {},
                     std::string hint = {});

    // What has been done, which is told on standard error where standard output cannot tell it.
    void set_done(std::string what) { done_ = std::move(what); }

    // Ends the output. The process's exit status: `status`, or exit_failed when standard output
    // did not take everything.
    int finish(exit_status status);

  private:
    void write(const std::string& text);
    void tell(const diagnostic& found);
    void report_left_out();

    const output_form* form_;
    account said_;  // left empty by text
    bool quiet_ = false;
    std::map<std::string, size_t> reported_;  // of each file
    std::string done_;
    int write_error_ = 0;  // errno of the first write that failed
};

#endif

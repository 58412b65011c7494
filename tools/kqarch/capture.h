// What the module and the layer under it print, taken away from the user's terminal: they write to
// the process's standard output and error themselves.
#ifndef KQARCH_CAPTURE_H
#define KQARCH_CAPTURE_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kqtype.h"

struct captured {
    kqcode_t code;
    std::string said;  // what was printed, its lines joined with "; "; often empty
};

// Takes what is printed for as long as it lives. Around many captures it saves each of them the
// redirection, which costs more than most calls.
class output_taken {
  public:
    output_taken();
    ~output_taken();
    output_taken(const output_taken&) = delete;
    output_taken& operator=(const output_taken&) = delete;

    // What was printed since it was asked for last, as `captured` has it.
    std::string said();

  private:
    int output_ = -1;  // where it went before; negative inside another
    int errors_ = -1;
};

// Calls `call` with both descriptors redirected. Throws std::system_error when that is impossible.
captured capture(const std::function<kqcode_t()>& call);

// The same, with what went to the error log.
struct captured_with_log : captured {
    std::vector<std::string> warnings;  // the texts that were logged at level 3
    std::vector<std::string> refusals;  // and at level 4
};

captured_with_log capture_with_log(const std::function<kqcode_t()>& call);

// A file in memory that the layer can open by its path; empty at first.
class memory_file {
  public:
    memory_file();
    ~memory_file();
    memory_file(const memory_file&) = delete;
    memory_file& operator=(const memory_file&) = delete;

    int descriptor() const { return descriptor_; }
    std::string path() const;
    std::string content() const;
    void clear();

    // Replaces the content.
    void fill(std::string_view text);

  private:
    int descriptor_;
};

#endif

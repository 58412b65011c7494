// What the module and the layer under it print, taken away from the user's terminal: they write to
// the process's standard output and error themselves.
#ifndef KQARCH_CAPTURE_H
#define KQARCH_CAPTURE_H

#include <functional>
#include <string>

#include "kqtype.h"

struct captured {
    kqcode_t code;
    std::string said;  // what was printed, its lines joined with "; "; often empty
};

// Calls `call` with both descriptors redirected. Throws std::system_error when that is impossible.
captured capture(const std::function<kqcode_t()>& call);

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

  private:
    int descriptor_;
};

#endif

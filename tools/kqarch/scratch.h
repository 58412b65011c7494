// A configuration directory of its own for the module to write to: it has mode 0700, and its
// kqarch.ini lies in memory, so that a killed process leaves no text behind.
#ifndef KQARCH_SCRATCH_H
#define KQARCH_SCRATCH_H

#include <string>

#include "capture.h"
#include "ini.h"

class scratch_directory {
  public:
    // Throws std::system_error when it cannot be made. As long as it lives, it is the configuration
    // directory of the process.
    explicit scratch_directory(const std::string& text);
    ~scratch_directory();
    scratch_directory(const scratch_directory&) = delete;
    scratch_directory& operator=(const scratch_directory&) = delete;

    // A message of the module with words in the place of the file's name, which nobody knows.
    std::string explained(std::string message) const;

    // The text of kqarch.ini.
    std::string text() const { return config_.content(); }

  private:
    void remove() const;

    memory_file config_;
    std::string path_;
    pathname_t original_;
};

#endif

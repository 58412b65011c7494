// A server of a fuzz run that starts from files: one instance in memory for all of them.
#ifndef FUZZ_FILE_SERVER_H
#define FUZZ_FILE_SERVER_H

#include <fcntl.h>
#include <osfile.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <string_view>

#include "support/online.h"

inline void demand(bool holds, const char* what) {
    if (holds) return;
    fprintf(stderr, "%s\n", what);
    abort();
}

class file_server {
  public:
    // Directories of archives are not made: what is on the machine hardly matters.
    file_server() : file(open("kqarch.ini", O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
        os_set_dry_run(1);
    }
    ~file_server() { close(file); }

    void write(std::string_view text) const {
        bool written = pwrite(file, text.data(), text.size(), 0) == ssize_t(text.size()) &&
                       ftruncate(file, off_t(text.size())) == 0;
        demand(written, "the file cannot be written");
    }

    int unused_descriptor() const {
        int lowest = dup(file);
        close(lowest);
        return lowest;
    }

  private:
    test_support::online_instance instance;
    int file;
};

#endif

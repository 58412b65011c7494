// A file as it was read: its bytes, and which file it was.
#ifndef KQARCH_SNAPSHOT_H
#define KQARCH_SNAPSHOT_H

#include <sys/types.h>

#include <optional>
#include <string>

struct file_snapshot {
    bool exists = false;
    std::string bytes = {};
    dev_t device = 0;
    ino_t number = 0;

    bool operator==(const file_snapshot&) const = default;
};

// Reads a regular file; one that is not there gives a snapshot that says so. Nothing, with errno,
// when it cannot be read or is no regular file.
std::optional<file_snapshot> take_snapshot(const std::string& path);

// Why a file could not be read or opened, by errno: "is no regular file", "Permission denied".
std::string reason_text();

#endif

// An instance directory, opened through the layer, and the one registry of the process loaded from
// its kqarch.ini.
#ifndef KQARCH_INSTANCE_H
#define KQARCH_INSTANCE_H

#include <optional>
#include <string>

#include "arch_cfg_hold.h"
#include "output.h"

// Why something could not be done.
struct problem {
    exit_status status;
    diagnostic found;
    bool stops_server = false;  // surely, whoever it runs as
};

// One instance is open at a time.
class instance {
  public:
    explicit instance(const std::string& directory);
    ~instance();
    instance(const instance&) = delete;
    instance& operator=(const instance&) = delete;

    // What kept it from opening; nothing else may be asked then.
    const std::optional<problem>& failure() const { return failure_; }

    // The directory as the user wrote it, without slashes at its end, and a file in it.
    const std::string& directory() const { return directory_; }
    std::string file(const std::string& name) const;
    std::string config_file() const { return file("kqarch.ini"); }

    // Whether ARCH_FLAG is 1: else the server does not look at kqarch.ini.
    bool archiving() const;

    // Whether there is surely no kqarch.ini.
    bool config_missing() const;

    // Whether the server, run by this user, could create an absent kqarch.ini.
    bool config_creatable() const;

  private:
    std::optional<problem> why_not_openable() const;

    std::string directory_;
    std::optional<problem> failure_;
};

// Whether a code refuses something, or says that it could not be done.
exit_status status_of(kqcode_t code);

// Why the file at `path`, which gave `code` when it was read, cannot be read.
problem unreadable(const std::string& path, kqcode_t code);

#endif

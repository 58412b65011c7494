// One kqarch at a time changes a directory.
#ifndef KQARCH_CHANGE_LOCK_H
#define KQARCH_CHANGE_LOCK_H

#include <optional>

#include "instance.h"
#include "private_file.h"

// Holds .kqarch.lock of the directory, and clears away what killed processes left there. The lock
// ends with the process that holds it; the file stays, and means nothing by itself.
class change_lock {
  public:
    explicit change_lock(const instance& open);

    // What kept it from being taken: another kqarch holds it, or the file cannot be made.
    const std::optional<problem>& failure() const { return failure_; }

  private:
    open_file file_;
    std::optional<problem> failure_;
};

#endif

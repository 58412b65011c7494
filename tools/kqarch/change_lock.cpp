#include "change_lock.h"

#include <sys/file.h>

#include <cerrno>
#include <csignal>

#include "snapshot.h"

namespace {

constexpr const char* lock_name = ".kqarch.lock";

bool lock(int file) {
    while (flock(file, LOCK_EX | LOCK_NB) != 0)
        if (errno != EINTR) return false;
    return true;
}

}  // namespace

change_lock::change_lock(const instance& open) : file_(open_private(open.directory(), lock_name)) {
    if (file_ && lock(file_.get())) return;
    if (file_ && errno == EWOULDBLOCK)
        failure_ = problem{exit_refused,
                           {.file = open.directory(),
                            .code = ARCH_E_CFG_CHANGING,
                            .text = "another kqarch is changing this directory",
                            .hint = "Try again when it has ended."}};
    else
        failure_ = problem{exit_failed,
                           {.file = open.file(lock_name),
                            .text = "cannot be locked: " + reason_text(),
                            .hint = "A change is made by who may write to the directory."}};
}

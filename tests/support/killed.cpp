#include "support/killed.h"

#include <signal.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test_support {

namespace {

pid_t start_traced(const std::function<int()>& change) {
    pid_t child = fork();
    if (child != 0) return child;
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(may_not_trace);
    raise(SIGSTOP);
    _exit(change());
}

// Whether the process stands before or behind one of the calls; `inside` is of its last stop.
bool is_at(const std::set<long>& calls, pid_t child, int status, bool& inside) {
    if (WSTOPSIG(status) != (SIGTRAP | 0x80)) return false;
    __ptrace_syscall_info info{};
    (void)ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
    if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
        inside = calls.empty() || calls.contains(static_cast<long>(info.entry.nr));
    return inside;
}

}  // namespace

int kill_at_stop(int nth, const std::function<int()>& change, const std::set<long>& calls) {
    pid_t child = start_traced(change);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSTOPPED(status)) (void)ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
    bool inside = false;
    for (int stop = 0; WIFSTOPPED(status);) {
        if (is_at(calls, child, status, inside) && stop++ == nth)
            kill(child, SIGKILL);
        else
            (void)ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : killed;
}

}  // namespace test_support

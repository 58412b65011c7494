// kqarch killed between any two system calls that change something: what it leaves on disk, and
// that `kqarch restore` brings the old bytes back.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>

#include "change_support.h"

namespace {

constexpr int not_allowed = 77;
constexpr const char* backup = "kqarch_bak_1.log";

const std::set<long> changing_calls = {SYS_openat, SYS_write,    SYS_fsync,    SYS_fchmod,
                                       SYS_linkat, SYS_renameat, SYS_unlinkat, SYS_flock,
                                       SYS_close,  SYS_ftruncate};

// Whether the traced process stands before or behind a call that changes something.
class call_watch {
  public:
    bool is_changing(pid_t child) {
        __ptrace_syscall_info info{};
        (void)ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
            inside_ = changing_calls.contains(static_cast<long>(info.entry.nr));
        return inside_;
    }

  private:
    bool inside_ = false;
};

// Runs a change in a process of its own and kills it at its n-th stop. The exit status, or -1 when
// it was killed.
int kill_at_stop(int nth, const std::function<exit_status()>& change) {
    pid_t child = fork();
    if (child == 0) {
        if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(not_allowed);
        raise(SIGSTOP);
        _exit(change());
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSTOPPED(status)) (void)ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD);
    call_watch watch;
    for (int stop = 0; WIFSTOPPED(status);) {
        bool counts = WSTOPSIG(status) == (SIGTRAP | 0x80) && watch.is_changing(child);
        if (counts && stop++ == nth)
            kill(child, SIGKILL);
        else
            (void)ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        waitpid(child, &status, 0);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(killed_change, is_undone_by_a_restore) {
    changed_instance instance;
    // What killed processes leave of their scratch directories goes with the instance.
    std::string scratch = instance.beside("scratch");
    std::filesystem::create_directory(scratch);
    setenv("TMPDIR", scratch.c_str(), 1);
    auto change = [&] { return instance.add(instance.local_clause()); };
    int how = kill_at_stop(-1, change);
    if (how == not_allowed) GTEST_SKIP() << "this process may not trace another";
    ASSERT_EQ(how, exit_good);
    std::string changed = instance.config();

    int olds = 0, shorts = 0, news = 0;
    how = -1;
    for (int stop = 0; how == -1; ++stop) {
        ASSERT_LT(stop, 20000);
        SCOPED_TRACE("killed at stop " + std::to_string(stop));
        instance.reset();
        how = kill_at_stop(stop, change);
        std::string text = instance.config();
        EXPECT_TRUE(changed.starts_with(text) || text == instance.original()) << text;
        EXPECT_TRUE(!instance.has(backup) || instance.read(backup) == instance.original());
        olds += text == instance.original();
        news += text == changed;
        shorts += text != instance.original() && text != changed;
        if (text == instance.original()) continue;
        EXPECT_EQ(instance.restore(1), exit_good);
        EXPECT_EQ(instance.config(), instance.original());
    }
    unsetenv("TMPDIR");
    EXPECT_EQ(how, exit_good);
    EXPECT_GT(olds, 0);
    EXPECT_GT(news, 0);
    EXPECT_GT(shorts, 0) << "no kill came while the file was empty";
}

}  // namespace

// Work that an interruption must not leave half-done.
#ifndef KQARCH_HELD_SIGNALS_H
#define KQARCH_HELD_SIGNALS_H

#include <csignal>

// As long as it lives, the signals that end a process wait, and a closed pipe is told by the result
// of writing: what is begun is finished.
class held_signals {
  public:
    held_signals() {
        closed_pipe_ = std::signal(SIGPIPE, SIG_IGN);
        sigset_t ends;
        sigemptyset(&ends);
        for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&ends, number);
        sigprocmask(SIG_BLOCK, &ends, &before_);
    }
    ~held_signals() {
        (void)std::signal(SIGPIPE, closed_pipe_);
        sigprocmask(SIG_SETMASK, &before_, nullptr);
    }
    held_signals(const held_signals&) = delete;
    held_signals& operator=(const held_signals&) = delete;

  private:
    void (*closed_pipe_)(int);
    sigset_t before_;
};

#endif

// Histories of a Raft group: operations chosen by bytes, each compared with the model.
#ifndef TESTS_SUPPORT_RAFT_HISTORY_H
#define TESTS_SUPPORT_RAFT_HISTORY_H

#include "support/raft_model.h"

namespace test_support {

// Turns bytes into choices; when they are used up, the first is chosen.
class choices {
  public:
    choices(const byte* bytes, size_t size) : next(bytes), end(bytes + size) {}
    bool used_up() const { return next == end; }
    ulint below(ulint bound) { return used_up() ? 0 : *next++ % bound; }

  private:
    const byte* next;
    const byte* end;
};

class raft_history {
  public:
    // Fills the process registry with two directories, two voters and a learner. The instance ME is
    // open; with `on_disk` the directories and kqarch.ini are in the working directory.
    raft_history(bool bp_mode, bool on_disk);

    // Performs an operation; what then disagrees with the model, or nothing.
    std::string step(choices& from);

    // Hands the text to start-up in a file. The history goes on with what was read, if it was
    // accepted and is to go on; otherwise the registry is put back.
    std::string restart(bool go_on);

    ulint restarts_accepted = 0;

  private:
    using operation = void (raft_history::*)(choices&);

    void add(choices& from);
    void check_new(choices& from);
    void change_address(choices& from);
    void ask(choices& from);
    void learner_leaves(choices& from);
    void voter_leaves(choices& from);
    void change_to_new(choices& from);
    void promote(choices& from);
    void count_voters(choices& from);
    void clear_settings(choices& from);
    void end_group(choices& from);
    void replace_settings(choices& from);
    void set_vote_interval(choices& from);

    void expect(const char* what, long long got, long long wanted);
    // The text that a call left: the model's after success, empty after a failure.
    void expect_text(bool failed);

    raft_model model;
    bool on_disk;
    std::string described;
    std::string fault;
};

}  // namespace test_support

#endif

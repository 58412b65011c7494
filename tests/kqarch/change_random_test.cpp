// Long random sequences of changes: what was accepted starts up again to the same configuration,
// what was refused changes nothing, and what only --force does is what start-up refuses.
//
// KQARCH_SEED=N repeats a sequence.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "change_support.h"
#include "check.h"
#include "config_file.h"
#include "instance.h"
#include "startup.h"
#include "text.h"

namespace {

using texts = std::vector<std::string>;

const texts types = {"LOCAL",  "LOCAL", "REALTIME", "REALTIME", "SYNC",      "ASYNC",
                     "TIMELY", "RAFT",  "REMOTE",   "MARCH",    "SUBSCRIBE", "NOTHING"};
const texts names = {"KQ1", "KQ2", "kq3", "KQ4", "KQ5", "KQ6/kq7", "KQ8/kq9", "NOWHERE", "KQ8/"};
const texts oddities = {"a\nb",
                        "\t",
                        "[X]",
                        "x\x01",
                        "=",
                        "/",
                        "sysdba/p@10.9.8.7:5236",
                        "sysdba/p@localhost",
                        std::string(300, 'x')};
const texts values = {"FILE_SIZE=64",      "FILE_SIZE=+0x80",       "SPACE_LIMIT=2048",
                      "HANG_FLAG=0",       "HANG_FLAG=2",           "WAIT_APPLY=1",
                      "WAIT_APPLY=0",      "ARCH_FAILOVER=1",       "ARCH_FLUSH_BUF_SIZE=8",
                      "ARCH_SEND_DELAY=9", "ARCH_SEND_DELAY=x",     "ARCH_RECOVER_TIME=7",
                      "FILE_SIZE=3",       "ARCH_SEND_DELAY=1441",  "RAFT_VOTE_INTERVAL=20",
                      "FILE_SIZE=-1",      "ARCH_SUBSCRIBE_MODE=1", "ARCH_THRESHOLD_PER_SECOND=5"};

// The first LOCAL destination hangs, whatever its section says.
std::string without_hang_flags(std::string text) {
    const std::string line = "ARCH_HANG_FLAG = 0";
    for (size_t at = text.find(line); at != text.npos; at = text.find(line, at))
        text.replace(at, line.size(), "ARCH_HANG_FLAG = 1");
    return text;
}

class random_changes : public testing::Test {
  protected:
    random_changes() {
        const char* chosen = std::getenv("KQARCH_SEED");
        seed =
            chosen != nullptr ? static_cast<unsigned>(std::atoi(chosen)) : std::random_device()();
        generator.seed(seed);
        instance.know_instances({"KQ1", "KQ2", "KQ3", "KQ4", "KQ5", "KQ6", "KQ7", "KQ8", "KQ9"});
    }

    size_t below(size_t count) {
        return std::uniform_int_distribution<size_t>(0, count - 1)(generator);
    }
    const std::string& one_of(const texts& all) { return all[below(all.size())]; }

    std::string directory() { return instance.beside("d" + std::to_string(below(5))); }

    std::string destination(bool is_directory) {
        if (below(20) == 0) return one_of(oddities);
        return is_directory ? directory() : one_of(names);
    }

    std::string clause(bool names_all) {
        std::string type = one_of(types);
        texts pieces;
        if (names_all || below(4) == 0) pieces.push_back("TYPE=" + type);
        if (names_all || below(4) == 0) pieces.push_back("DEST=" + destination(type == "LOCAL"));
        if (type == "ASYNC" || type == "SUBSCRIBE") pieces.push_back("ARCH_TIMER_NAME=NIGHTLY");
        if (type == "REMOTE") pieces.push_back("INCOMING_PATH=" + directory());
        for (size_t i = below(3); i > 0; --i)
            pieces.push_back(one_of(values));
        return join(pieces, ", ");
    }

    asked_change next() {
        size_t choice = below(6);
        std::string which = choice == 5 ? "" : destination(below(2) == 0);
        if (choice < 2) return {"drop", which, ""};
        if (choice < 4) return {"add", "", clause(true)};
        return {"modify", which, clause(false)};
    }

    void expect_it_starts_up_the_same() {
        ::instance open(instance.directory());
        ASSERT_FALSE(open.failure());
        config_file file;
        ASSERT_GE(file.read(open.config_file()), 0);
        EXPECT_EQ(start_up(file).code, 0);
        std::string text(ARCH_CFG_TEXT_SIZE, '\0');
        arch_cfg_hold hold;
        ASSERT_EQ(arch_cfg_sys_write_to_rec(text.data()), 0);
        EXPECT_EQ(without_hang_flags(text.c_str()), without_hang_flags(file.text()));
    }

    kqcode_t start_up_code() {
        ::instance open(instance.directory());
        config_file file;
        file.read(open.config_file());
        return start_up(file).code;
    }

    void play(const asked_change& change) {
        std::string before = instance.config();
        exit_status status = instance.make(change, false);
        if (status == exit_good) return expect_it_starts_up_the_same();
        EXPECT_EQ(status, exit_refused);
        ++refused;
        EXPECT_EQ(instance.config(), before);
        if (instance.make(change, true) != exit_good) return;
        ++forced;
        EXPECT_LT(start_up_code(), 0);
        EXPECT_EQ(instance.restore(instance.last_backup()), exit_good);
        EXPECT_EQ(instance.config(), before);
    }

    changed_instance instance;
    unsigned seed;
    std::mt19937 generator;
    int refused = 0;
    int forced = 0;
};

TEST_F(random_changes, start_up_as_they_were_accepted) {
    SCOPED_TRACE("KQARCH_SEED=" + std::to_string(seed));
    constexpr int steps = 600;
    for (int step = 0; step < steps && !HasFailure(); ++step) {
        // Every now and then from the beginning: some states accept little.
        if (step % 60 == 0) instance.reset();
        asked_change change = next();
        SCOPED_TRACE(change.command + " '" + change.dest + "' '" + change.clause + "'");
        play(change);
    }
    EXPECT_GT(forced, 0);
    EXPECT_GT(refused, forced);
    EXPECT_LT(refused, steps * 9 / 10);
}

}  // namespace

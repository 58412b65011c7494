// Random histories of a Raft group against a model.
//   RAFT_HISTORY_STEPS   how many steps a history has (4000)
//   RAFT_HISTORY_SEED    the first seed (1); the next history has the next one
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <random>

#include "support/capture.h"
#include "support/instance.h"
#include "support/raft_history.h"

namespace {

using namespace test_support;

ulint setting(const char* name, ulint otherwise) {
    const char* text = getenv(name);
    return text != nullptr ? static_cast<ulint>(std::stoul(text)) : otherwise;
}

// The parameter: whether the members need no addresses.
class raft : public testing::TestWithParam<bool> {
  protected:
    void SetUp() override {
        std::string mode = GetParam() ? "DPC_MODE = BP\n" : "";
        write_file("kqmal.ini", "");
        ASSERT_EQ(instance.open("INSTANCE_NAME = ME\nMAL_INI = 1\n" + mode), 0);
    }
    // A step writes a file or two: memory is faster than a disk by far.
    int in_memory = access("/dev/shm", W_OK) == 0 ? setenv("TMPDIR", "/dev/shm", 0) : 0;
    instance_directory instance;
};

// The model's text is what `rec` held at every step, so that each is what start-up is given.
std::string live(ulint seed, ulint steps, bool bp_mode, ulint& restarts) {
    descriptor_capture messages(STDERR_FILENO);
    std::mt19937 random(seed);
    raft_history history(bp_mode, true);
    for (ulint step = 0; step < steps; step++) {
        byte bytes[64];
        for (byte& each : bytes)
            each = static_cast<byte>(random());
        choices from(bytes, sizeof bytes);
        std::string fault = history.step(from);
        if (fault.empty()) fault = history.restart(random() % 16 == 0);
        if (!fault.empty()) return "step " + std::to_string(step) + ": " + fault;
    }
    restarts = history.restarts_accepted;
    return "";
}

TEST_P(raft, histories_agree_with_the_model) {
    ulint steps = setting("RAFT_HISTORY_STEPS", 4000), first = setting("RAFT_HISTORY_SEED", 1);
    for (ulint seed = first; seed < first + 2; seed++) {
        ulint restarts = 0;
        std::string fault = live(seed, steps, GetParam(), restarts);
        printf("seed %u: %u of %u start-ups accepted\n", seed, restarts, steps);
        ASSERT_EQ(fault, "") << "seed " << seed;
        EXPECT_GT(restarts, steps / 20);
        EXPECT_LT(restarts, steps - steps / 20);
    }
}

INSTANTIATE_TEST_SUITE_P(, raft, testing::Bool(), [](const auto& with_bp) {
    return with_bp.param ? "without_addresses" : "with_addresses";
});

}  // namespace

// Each file under tests/scenarios is a test.
#include <gtest/gtest.h>

#include "support/scenario.h"

namespace {

using namespace test_support;

class scenario : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(scenario, holds) {
    run_scenario(GetParam());
}

INSTANTIATE_TEST_SUITE_P(, scenario, testing::ValuesIn(scenario_files(SCENARIO_DIRECTORY)),
                         [](const auto& file) {
                             return scenario_name(SCENARIO_DIRECTORY, file.param);
                         });

}  // namespace

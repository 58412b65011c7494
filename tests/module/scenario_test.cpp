// Each file under tests/scenarios is a test.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/scenario.h"

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> files_of(const std::string& subsystem) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(fs::path(SCENARIO_DIRECTORY) / subsystem))
        if (entry.path().extension() == ".txt") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

std::string name_of(const testing::TestParamInfo<fs::path>& file) {
    return file.param.stem().string();
}

class scenario : public testing::TestWithParam<fs::path> {};

TEST_P(scenario, holds) {
    test_support::run_scenario(GetParam());
}

INSTANTIATE_TEST_SUITE_P(registry, scenario, testing::ValuesIn(files_of("registry")), name_of);
INSTANTIATE_TEST_SUITE_P(startup, scenario, testing::ValuesIn(files_of("startup")), name_of);
INSTANTIATE_TEST_SUITE_P(file, scenario, testing::ValuesIn(files_of("file")), name_of);
INSTANTIATE_TEST_SUITE_P(validation, scenario, testing::ValuesIn(files_of("validation")), name_of);
INSTANTIATE_TEST_SUITE_P(online, scenario, testing::ValuesIn(files_of("online")), name_of);
INSTANTIATE_TEST_SUITE_P(exchange, scenario, testing::ValuesIn(files_of("exchange")), name_of);
INSTANTIATE_TEST_SUITE_P(raft, scenario, testing::ValuesIn(files_of("raft")), name_of);
INSTANTIATE_TEST_SUITE_P(platform, scenario, testing::ValuesIn(files_of("platform")), name_of);

}  // namespace

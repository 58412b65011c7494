// Time in proportion to the file, whatever the file holds.
#include <gtest/gtest.h>
#include <time.h>

#include <algorithm>

#include "support/capture.h"
#include "support/instance.h"

namespace {

using namespace test_support;

class growth : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(instance.open(), 0); }

    instance_directory instance;
    descriptor_capture quiet{2};
};

struct start_up {
    kqcode_t code;
    ulint records;
    double seconds;
};

start_up start(kqbool validated) {
    arch_cfg_sys_destroy();
    clock_t begin = clock();
    kqcode_t code = arch_cfg_sys_init_with_check(nullptr, 1, validated, 0);
    return {code, arch_cfg_sys.arch_lst.count,
            static_cast<double>(clock() - begin) / CLOCKS_PER_SEC};
}

std::string repeated(int count, std::string (*piece)(int)) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += piece(i);
    return text;
}

// 100 characters.
std::string local_section(int number) {
    std::string name = std::to_string(number);
    std::string text = "[L" + name + "]\nARCH_TYPE = LOCAL\nARCH_DEST = /" + name;
    return text + std::string(99 - text.size(), '/') + "\n";
}

// The best of three, because others use the machine.
double load_seconds(int sections) {
    write_file("kqarch.ini", repeated(sections, local_section));
    double best = 1e9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        start_up run = start(0);
        EXPECT_EQ(run.records, static_cast<ulint>(sections));
        best = std::min(best, run.seconds);
    }
    return best;
}

// Ten times where it is in proportion, a hundred times where each section is compared with all.
TEST_F(growth, of_a_load_is_that_of_the_file) {
    double small = load_seconds(2000);
    EXPECT_LT(load_seconds(20000), 30 * small);
}

TEST_F(growth, of_ten_megabytes_stays_below_a_second) {
    const struct {
        const char* what;
        std::string text;
        kqcode_t code;
    } files[] = {
        {"sections", repeated(100000, local_section), ARCH_E_TOO_MANY_LOCAL},
        {"keys",
         repeated(100000, [](int) { return "ARCH_WAIT_APPLY = 0" + std::string(80, ' ') + "\n"; }),
         0},
        {"comments", repeated(100000, [](int) { return "#" + std::string(98, '[') + "\n"; }), 0},
        {"one line", "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = " + std::string(10000000, '/'),
         ARCH_E_INVALID_VALUE},
        {"one empty line", std::string(10000000, ' '), 0},
        {"empty lines", std::string(10000000, '\n'), 0},
    };
    for (const auto& file : files) {
        write_file("kqarch.ini", file.text);
        start_up run = start(1);
        EXPECT_EQ(run.code, file.code) << file.what;
#ifdef NDEBUG
        EXPECT_LT(run.seconds, 1.0) << file.what;
#endif
        RecordProperty(file.what, std::to_string(run.seconds));
    }
}

}  // namespace

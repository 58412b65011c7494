// The error log, the console printer and the error table.
#include <arch_cfg.h>
#include <elog.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "support/capture.h"
#include "support/instance.h"

using test_support::instance_directory;
using test_support::read_file;

namespace {

// The lines of the log behind their time stamps, which must look like one.
std::string logged(const instance_directory& directory) {
    const std::string pattern = "dddd-dd-dd dd:dd:dd.ddd ";
    std::istringstream lines(read_file(directory.error_log()));
    std::string shown;
    for (std::string line; std::getline(lines, line);) {
        std::string stamp = line.substr(0, pattern.size());
        for (char& c : stamp) {
            if (c >= '0' && c <= '9') c = 'd';
        }
        EXPECT_EQ(stamp, pattern) << line;
        shown += line.substr(std::min(line.size(), pattern.size())) + "\n";
    }
    return shown;
}

TEST(error_log, keeps_each_report_to_one_line) {
    instance_directory directory;
    std::string long_text(100000, 'x');
    elog_report_ex(4, "plain %d\n", 7);
    elog_report_ex(3, "%s", "a\nb\tc\x1b[0m\x7f\n\n");
    elog_report_ex(2, "%s", "");
    elog_report_ex(2, "%s", long_text.c_str());
    elog_report_ex(2, "%s", "\xc3\xa4 % \\x0A");
    elog_try_report_kqerr(-951, "cfg_dll/arch_cfg", 12);
    EXPECT_EQ(logged(directory),
              "[4] plain 7\n[3] a\\x0Ab\\x09c\\x1B[0m\\x7F\\x0A\n[2] \n[2] " + long_text +
                  "\n[2] \xc3\xa4 % \\x0A\n[4] code -951 raised at cfg_dll/arch_cfg:12\n");
}

TEST(error_log, is_appended_to_while_it_is_open) {
    instance_directory directory;
    std::string path = directory.error_log();
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
    elog_report_ex(4, "one");
    elog_close();
    elog_report_ex(4, "dropped");
    ASSERT_EQ(elog_open(path.c_str()), 0);
    elog_report_ex(4, "two");
    EXPECT_EQ(logged(directory), "[4] one\n[4] two\n");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::filesystem::create_symlink("elsewhere", "dangling");
    for (const char* bad : {".", "missing/log", "pipe", "dangling"}) {
        EXPECT_EQ(elog_open(bad), -140) << bad;
        elog_report_ex(4, "dropped");
    }
    EXPECT_EQ(elog_open(nullptr), -140);
    EXPECT_FALSE(std::filesystem::exists("elsewhere"));
    EXPECT_EQ(logged(directory), "[4] one\n[4] two\n");
}

TEST(error_log, is_whole_with_many_threads) {
    instance_directory directory;
    std::string text(5000, 't');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < 50; ++line)
                elog_report_ex(4, "%s", text.c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::istringstream lines(logged(directory));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count)
        ASSERT_EQ(line, "[4] " + text);
    EXPECT_EQ(count, 200);
}

TEST(console, prints_as_it_is) {
    test_support::descriptor_capture console(2);
    aq_fprintf_inner(stderr, "%s%d", "a\tb\n", 5);
    aq_fprintf_inner(nullptr, "nobody");
    EXPECT_EQ(console.text(), "a\tb\n5");
}

TEST(error_table, fills_in_parameters_and_never_overruns) {
    schar text[512];
    ulint length = 0;
    EXPECT_EQ(kqerr_get_err_desc_with_langage(ARCH_E_EP_NO_REMOTE, 0, &length, text, 1, "12"),
              ARCH_E_EP_NO_REMOTE);
    EXPECT_NE(std::string(text).find(" 12 "), std::string::npos);
    EXPECT_EQ(length, std::string(text).size());
    std::string long_text(2000, 'p');
    kqerr_get_err_desc_with_langage(ARCH_E_EP_NO_REMOTE, 1, &length, text, 1, long_text.c_str());
    EXPECT_EQ(length, 511u);
    EXPECT_EQ(std::string(text).size(), 511u);
    kqerr_get_err_desc_with_langage(ARCH_E_EP_NO_REMOTE, 0, &length, text, 0);
    EXPECT_EQ(length, std::string(text).size());
    EXPECT_EQ(kqerr_get_err_desc_with_langage(-12345, 0, nullptr, nullptr, 0), -12345);
    for (kqcode_t code : {ARCH_E_OUT_OF_MEMORY, ARCH_E_INVALID_VALUE, ARCH_E_MAL_NOT_CONFIGURED}) {
        kqerr_get_err_desc_with_langage(code, 0, &length, text, 0);
        EXPECT_GT(length, 0u);
        EXPECT_STRNE(text, "Unknown error") << code;
    }
}

}  // namespace

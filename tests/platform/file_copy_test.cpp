// Copies: whole or not at all, whatever fails on the way.
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <osfile.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>
#include <string>

#include "support/instance.h"

namespace fs = std::filesystem;
using test_support::instance_directory;
using test_support::read_file;
using test_support::write_file;

namespace {

std::size_t entries_here() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("."), {}));
}

TEST(file_copy, keeps_contents_and_mode) {
    instance_directory directory;
    std::string contents(200001, 'c');
    write_file("source", contents);
    fs::permissions("source", fs::perms(0640));
    ASSERT_EQ(os_file_copy("source", "copy", 0), 1u);
    EXPECT_EQ(read_file("copy"), contents);
    EXPECT_EQ(fs::status("copy").permissions(), fs::perms(0640));
    ASSERT_EQ(os_file_copy("source", "source", 1), 1u);
    EXPECT_EQ(read_file("source"), contents);
    EXPECT_EQ(entries_here(), 2u);
}

TEST(file_copy, replaces_only_when_told_and_the_link_itself) {
    instance_directory directory;
    write_file("source", "new");
    write_file("target", "old");
    fs::create_symlink("target", "link");
    EXPECT_EQ(os_file_copy("source", "target", 0), 0u);
    EXPECT_EQ(os_file_copy("source", "link", 0), 0u);
    EXPECT_EQ(read_file("target"), "old");
    EXPECT_EQ(os_file_copy("source", "link", 1), 1u);
    EXPECT_EQ(read_file("target"), "old");
    EXPECT_EQ(read_file("link"), "new");
    EXPECT_FALSE(fs::is_symlink("link"));
    EXPECT_EQ(entries_here(), 3u);
}

TEST(file_copy, refuses_what_is_no_file) {
    instance_directory directory;
    write_file("source", "new");
    fs::create_directory("directory");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    for (const char* source : {"missing", "directory", "pipe", "", "+A/x"}) {
        EXPECT_EQ(os_file_copy(source, "target", 1), 0u) << source;
    }
    for (const char* target :
         {"directory", "directory/", "missing/x", "source/x", "", "..", "+A/x"}) {
        EXPECT_EQ(os_file_copy("source", target, 1), 0u) << target;
    }
    EXPECT_EQ(os_file_copy(nullptr, "target", 1), 0u);
    EXPECT_EQ(os_file_copy("source", nullptr, 1), 0u);
    EXPECT_EQ(entries_here(), 3u);
}

// Makes the first, the second, ... call fail, until a copy goes through.
void copy_with_every_fault(bool has_target, kqbool replace) {
    for (ulint nth = 1;; ++nth) {
        ASSERT_LT(nth, 100u);
        instance_directory directory;
        write_file("source", std::string(150000, 'n'));
        if (has_target) write_file("target", "old");
        kq_fault_arm("any", nth, 0);
        kqbool copied = os_file_copy("source", "target", replace);
        ulint hits = kq_fault_hits();
        kq_fault_disarm();
        ASSERT_EQ(copied, hits == 0 ? 1u : 0u) << nth;
        EXPECT_EQ(entries_here(), copied != 0 || has_target ? 2u : 1u) << nth;
        if (has_target && copied == 0) {
            EXPECT_EQ(read_file("target"), "old") << nth;
        }
        if (copied != 0) break;
    }
    SUCCEED();
}

TEST(file_copy, leaves_the_old_target_whole_when_anything_fails) {
    copy_with_every_fault(true, 1);
    copy_with_every_fault(false, 1);
    copy_with_every_fault(false, 0);
}

}  // namespace

// Files and directories, ASM storage and the dry run.
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <os.h>
#include <osfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/instance.h"

namespace fs = std::filesystem;
using test_support::instance_directory;
using test_support::read_file;
using test_support::write_file;

namespace {

mode_t mode_of(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

class dry_run {
  public:
    dry_run() { os_set_dry_run(1); }
    ~dry_run() { os_set_dry_run(0); }
};

TEST(files, are_missing_only_when_that_is_certain) {
    instance_directory directory;
    write_file("file", "");
    fs::create_symlink("nowhere", "dangling");
    for (const char* path : {"file", ".", "dangling"})
        EXPECT_EQ(os_file_is_exist(path), 1u) << path;
    EXPECT_EQ(os_file_is_exist(std::string(300, 'n').c_str()), 1u);
    for (const char* path : {"missing", "file/below", "missing/below", "", "+A/x"}) {
        EXPECT_EQ(os_file_is_exist(path), 0u) << path;
    }
    EXPECT_EQ(os_file_is_exist(nullptr), 0u);
}

TEST(files, are_created_exclusively_and_never_through_a_link) {
    instance_directory directory;
    fs::create_symlink("target", "link");
    os_handle_t handle = os_file_create_normal("new");
    ASSERT_GE(handle, 0);
    os_file_close_normal(handle);
    EXPECT_EQ(mode_of("new"), 0600u);
    for (const char* path : {"new", "link", "missing/new", ".", ""}) {
        EXPECT_EQ(os_file_create_normal(path), OS_HANDLE_INVALID) << path;
        EXPECT_EQ(os_file_create_with_init(path, 1, 4, 1), OS_HANDLE_INVALID) << path;
    }
    EXPECT_FALSE(fs::exists("target"));
    EXPECT_EQ(os_file_create_normal(nullptr), OS_HANDLE_INVALID);
    os_file_close(OS_HANDLE_INVALID);
}

TEST(files, are_filled_with_zeros_or_not_left_behind) {
    instance_directory directory;
    os_handle_t handle = os_file_create_with_init("zeros", 200000, 4, 1);
    ASSERT_GE(handle, 0);
    os_file_close(handle);
    EXPECT_EQ(read_file("zeros"), std::string(200000, '\0'));
    EXPECT_EQ(mode_of("zeros"), 0600u);
    kq_fault_arm("file_write", 3, 0);
    EXPECT_EQ(os_file_create_with_init("full", 200000, 4, 1), OS_HANDLE_INVALID);
    EXPECT_EQ(kq_fault_hits(), 1u);
    kq_fault_disarm();
    EXPECT_FALSE(fs::exists("full"));
    EXPECT_EQ(os_file_delete("zeros"), 1u);
    EXPECT_EQ(os_file_delete("zeros"), 0u);
    EXPECT_EQ(os_file_delete("."), 0u);
}

TEST(directories, are_created_with_their_parents) {
    instance_directory directory;
    umask(022);
    write_file("file", "");
    fs::create_symlink("nowhere", "dangling");
    for (const char* path : {"a/b//c/", "a/b", "./d", "a/../e/f", "."}) {
        EXPECT_EQ(os_dir_create(path), 1u) << path;
        EXPECT_EQ(os_dir_is_exist(path), 1u) << path;
    }
    EXPECT_EQ(mode_of("a"), 0750u);
    EXPECT_EQ(mode_of("a/b/c"), 0750u);
    EXPECT_TRUE(fs::is_directory("e/f"));
    std::string too_long = "g";
    while (too_long.size() < 5000)
        too_long += "/" + std::string(100, 'g');
    for (const std::string& path :
         {std::string("file"), std::string("file/x"), std::string("dangling"), std::string(""),
          std::string("dfs:x"), std::string("+A"), std::string(300, 'n'), too_long}) {
        EXPECT_EQ(os_dir_create(path.c_str()), 0u) << path;
        EXPECT_EQ(os_dir_is_exist(path.c_str()), 0u) << path;
    }
    EXPECT_FALSE(fs::exists("g"));
    EXPECT_EQ(os_dir_create(nullptr), 0u);
}

TEST(paths, may_be_longer_than_a_path_name) {
    instance_directory directory;
    std::string path;
    while (path.size() < 600)
        path += std::string(100, 'p') + "/";
    ASSERT_EQ(os_dir_create(path.c_str()), 1u);
    std::string file = path + "file";
    os_file_close_normal(os_file_create_normal(file.c_str()));
    EXPECT_EQ(os_file_is_exist(file.c_str()), 1u);
    EXPECT_EQ(os_file_copy(file.c_str(), (path + "copy").c_str(), 0), 1u);
    EXPECT_EQ(os_file_check_overflow(file.c_str(), 0, 1), 0);
    EXPECT_EQ(os_file_delete(file.c_str()), 1u);
}

TEST(asm_storage, lies_under_its_root_and_nowhere_else) {
    instance_directory directory;
    fs::create_directory("disk");
    write_file("outside", "");
    ASSERT_EQ(directory.open("ASM_ROOT = disk\n"), 0);
    EXPECT_EQ(os_dir_create("+DATA/arch"), 1u);
    EXPECT_TRUE(fs::is_directory("disk/DATA/arch"));
    EXPECT_EQ(os_dir_is_exist("+DATA/arch"), 1u);
    os_file_close(os_file_create_with_init("+DATA/arch/f", 10, 4, 1));
    EXPECT_EQ(fs::file_size("disk/DATA/arch/f"), 10u);
    EXPECT_EQ(os_file_copy("+DATA/arch/f", "+DATA/arch/g", 0), 1u);
    EXPECT_EQ(os_file_is_exist("+DATA/arch/g"), 1u);
    EXPECT_EQ(os_file_delete("+DATA/arch/g"), 1u);
    EXPECT_FALSE(fs::exists("disk/DATA/arch/g"));
    for (const char* path : {"+../outside", "+DATA/../../outside", "+DATA/.."}) {
        EXPECT_EQ(os_file_is_exist(path), 0u) << path;
        EXPECT_EQ(os_file_delete(path), 0u) << path;
        EXPECT_EQ(os_dir_create(path), 0u) << path;
    }
    EXPECT_TRUE(fs::exists("outside"));
    EXPECT_EQ(os_dir_create("+DATA/..x"), 1u);
    EXPECT_EQ(os_file_path_is_asm("+"), 1u);
    EXPECT_EQ(os_file_path_is_asm("x+"), 0u);
    EXPECT_EQ(os_file_path_is_dfs("dfs:"), 1u);
    EXPECT_EQ(os_file_path_is_dfs("df"), 0u);
}

TEST(space, is_that_of_the_nearest_directory) {
    instance_directory directory;
    write_file("file", "");
    for (const char* path : {"missing/deep/x", "file/below/x", "x", "/", "/missing", "", "//"}) {
        EXPECT_EQ(os_file_check_overflow(path, 1, 0), 0) << path;
        EXPECT_NE(os_file_check_overflow(path, 1, ~0ull), 0) << path;
    }
    EXPECT_EQ(os_file_check_overflow("missing/x", 0, 1), 0);
    EXPECT_EQ(os_file_check_overflow("+A/x", 0, ~0ull), 0);
    // No file system that tests run on is that large and has that little left.
    EXPECT_NE(os_file_check_overflow("/proc/self/x", 0, 1), 0);
}

TEST(dry_runs, change_nothing_and_say_what_could_be) {
    instance_directory directory;
    write_file("file", "");
    fs::create_symlink("nowhere", "dangling");
    dry_run on;
    for (const char* path : {"a/b/c", ".", "a/"})
        EXPECT_EQ(os_dir_create(path), 1u) << path;
    for (const char* path : {"file", "file/x", "dangling", "dangling/x", "dfs:x", "+A", ""}) {
        EXPECT_EQ(os_dir_create(path), 0u) << path;
    }
    for (const char* path : {"file", "file/x", "dangling", ""}) {
        EXPECT_EQ(os_file_create_with_init(path, 1, 4, 1), OS_HANDLE_INVALID) << path;
    }
    std::string name_too_long = "a/" + std::string(256, 'n');
    EXPECT_EQ(os_file_create_with_init(name_too_long.c_str(), 1, 4, 1), OS_HANDLE_INVALID);
    EXPECT_FALSE(fs::exists("a"));
}

TEST(dry_runs, delete_only_what_was_really_created) {
    instance_directory directory;
    write_file("real", "");
    dry_run on;
    os_handle_t handle = os_file_create_with_init("a/probe", 4096, 4, 1);
    ASSERT_NE(handle, OS_HANDLE_INVALID);
    EXPECT_EQ(os_file_create_with_init("a/probe", 4096, 4, 1), OS_HANDLE_INVALID);
    os_file_close(handle);
    fs::create_directory("a");
    write_file("a/probe", "of somebody else");
    EXPECT_EQ(os_file_delete("a/probe"), 1u);
    EXPECT_EQ(read_file("a/probe"), "of somebody else");
    EXPECT_EQ(os_file_delete("real"), 1u);
    EXPECT_FALSE(fs::exists("real"));
}

TEST(dry_runs, do_not_wait) {
    dry_run on;
    ulint64 before = kq_get_tick_count();
    os_thread_sleep_low(60000);
    EXPECT_LT(kq_get_tick_count() - before, 30000u);
}

}  // namespace

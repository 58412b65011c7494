// A registry and its file, which then cannot be written: really, also by the superuser.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ini.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "support/capture.h"
#include "support/online.h"

namespace {

using namespace test_support;

class unwritable_file : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(start_from("[L1]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n[L2]\n"
                             "ARCH_TYPE = LOCAL\nARCH_DEST = arch2\n[A1]\nARCH_TYPE = ASYNC\n"
                             "ARCH_DEST = INST9\nARCH_TIMER_NAME = T1\n"),
                  0);
    }

    std::string last_log_line() {
        std::string log = read_file("../error.log");
        return log.substr(log.rfind('[', log.size() - 2));
    }

    online_instance instance;
};

TEST_F(unwritable_file, is_a_pipe_with_a_reader) {
    std::filesystem::remove("kqarch.ini");
    ASSERT_EQ(mkfifo("kqarch.ini", 0600), 0);
    int reader = open("kqarch.ini", O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(arch_cfg_drop("arch2"), ARCH_E_FILE_OPEN);
    EXPECT_EQ(arch_cfg_sys.arch_lst.count, 2u);
    char text[16];
    EXPECT_EQ(read(reader, text, sizeof text), 0);
    close(reader);
}

TEST_F(unwritable_file, is_longer_than_a_file_may_be) {
    constexpr size_t limit = 16384;
    std::string large(3 * limit / 2, '#');
    signal(SIGXFSZ, SIG_IGN);
    rlimit before, small;
    getrlimit(RLIMIT_FSIZE, &before);
    small = {limit, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    kqcode_t code = arch_cfg_sys_write_by_rec(large.c_str(), 1);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(code, ARCH_E_FILE_OPEN);
    EXPECT_EQ(read_file("kqarch.ini"), large.substr(0, limit));
    EXPECT_EQ(last_log_line(), "[4] ./kqarch.ini could not be written whole: File too large\n");
    EXPECT_EQ(arch_cfg_sys_write_by_rec(large.c_str(), 1), 0);
    EXPECT_EQ(read_file("kqarch.ini"), large);
}

// Runs in a process with mounts of its own; 77 when it may not have them.
int on_a_small_file_system(bool (*check)()) {
    pid_t child = fork();
    if (child == 0) {
        bool own = unshare(CLONE_NEWNS) == 0 && mount("", "/", "", MS_REC | MS_PRIVATE, "") == 0;
        mkdir("small", 0700);
        own = own && mount("none", "small", "tmpfs", 0, "size=64k") == 0;
        if (!own) _exit(77);
        strcpy(global_ini_info.config_path, "small");
        _exit(check() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void fill(const char* path) {
    int file = open(path, O_WRONLY | O_CREAT, 0600);
    char page[4096] = {};
    while (write(file, page, sizeof page) > 0)
        ;
    close(file);
}

bool keeps_backup_when_full() {
    std::string old = read_file("kqarch.ini");
    write_file("small/kqarch.ini", old);
    bool good = arch_file_gen_bak(1) == 0;
    fill("small/filler");
    // The file's own page is free once it was emptied: a text that needs another one fails.
    std::string large = old + std::string(8192, '#');
    good = good && arch_cfg_sys_write_by_rec(large.c_str(), 1) == ARCH_E_FILE_OPEN;
    good = good && large.rfind(read_file("small/kqarch.ini"), 0) == 0;
    good = good && arch_file_gen_bak(2) == ARCH_E_BACKUP;
    good = good && !std::filesystem::exists("small/kqarch_bak_2.log");
    good = good && read_file("small/kqarch_bak_1.log") == old;
    return good && arch_cfg_sys_write_by_rec(old.c_str(), 1) == 0 &&
           read_file("small/kqarch.ini") == old;
}

bool refuses_read_only() {
    write_file("small/kqarch.ini", "old");
    if (mount("none", "small", "tmpfs", MS_REMOUNT | MS_RDONLY, "size=64k") != 0) return false;
    return arch_cfg_drop("arch1") == ARCH_E_FILE_OPEN && arch_cfg_sys.arch_lst.count == 2 &&
           read_file("small/kqarch.ini") == "old" && arch_file_gen_bak(1) == ARCH_E_BACKUP &&
           arch_file_delete_bak(1) == ARCH_E_BACKUP;
}

TEST_F(unwritable_file, is_on_a_full_or_read_only_disk) {
    int status = on_a_small_file_system(keeps_backup_when_full);
    if (status == 77) GTEST_SKIP() << "this process may not mount";
    EXPECT_EQ(status, 0);
    EXPECT_EQ(on_a_small_file_system(refuses_read_only), 0);
}

}  // namespace

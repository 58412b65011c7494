// Online changes with each call of the operating system failing in turn, and with a file that
// really cannot be written, also by the superuser.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ini.h>
#include <kq_fault.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <functional>

#include "support/capture.h"
#include "support/online.h"

namespace {

using namespace test_support;

const char* const beginning =
    "[L1]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n[L2]\nARCH_TYPE = LOCAL\nARCH_DEST = arch2\n"
    "[A1]\nARCH_TYPE = ASYNC\nARCH_DEST = INST9\nARCH_TIMER_NAME = T1\n";

arch_cfg_t standby(usint type) {
    arch_cfg_t asked;
    arch_init(&asked, "");
    asked.type = type;
    strcpy(asked.dest_insts[0], "INST1");
    strcpy(asked.dest, "INST1");
    strcpy(asked.timer_name, "T1");
    return asked;
}

template <auto Adder>
kqcode_t add_standby(usint type) {
    arch_cfg_t asked = standby(type), *added = nullptr;
    return Adder(&asked, &added);
}

kqcode_t add_sync() {
    arch_cfg_t asked = standby(ARCH_TYPE_SYNC), *added = nullptr;
    return arch_cfg_add_sync(&asked, 0, &added);
}

kqcode_t add_subscriber() {
    schar text[] = "u/p@localhost";
    arch_cfg_t asked = standby(ARCH_TYPE_SUBSCRIBE), *added = nullptr;
    return arch_cfg_add_subscribe(&asked, text, &added);
}

kqcode_t add_local() {
    arch_cfg_t* added = nullptr;
    return arch_cfg_add_local("arch3", 0, 64, 1, 0, &added);
}

kqcode_t add_remote() {
    schar instance[] = "inst1";
    arch_cfg_t* added = nullptr;
    return arch_cfg_add_remote("in1", instance, 0, 64, 1, 0, &added);
}

struct change {
    const char* name;
    kqcode_t (*make)();
    bool without_standby;  // a subscriber stands beside LOCAL only
};

const change changes[] = {
    {"march", [] { return add_standby<arch_cfg_add_march>(ARCH_TYPE_REALTIME); }, false},
    {"timely", [] { return add_standby<arch_cfg_add_timely>(ARCH_TYPE_TIMELY); }, false},
    {"timer", [] { return add_standby<arch_cfg_add_timer>(ARCH_TYPE_ASYNC); }, false},
    {"sync", add_sync, false},
    {"subscribe", add_subscriber, true},
    {"local", add_local, false},
    {"remote", add_remote, false},
    {"drop", [] { return arch_cfg_drop("arch1"); }, false},
    {"drop_low", [] { return arch_cfg_drop_low(arch_cfg_sys.arch_lst.end); }, false},
};

const char* const fault_points[] = {"os_malloc",  "file_open", "file_write",  "file_sync",
                                    "file_close", "file_copy", "file_create", "file_delete",
                                    "dir_create", "any"};

kqcode_t write_file_locked() {
    registry_lock lock;
    return arch_cfg_sys_write_to_file();
}

class online_faults : public testing::Test {
  protected:
    // What every change starts from, and the directories that it makes gone.
    void begin(bool without_standby) {
        for (const char* made : {"arch3", "in1"})
            std::filesystem::remove_all(made);
        std::string text = beginning;
        if (without_standby) text.resize(text.find("[A1]"));
        ASSERT_EQ(start_from(text), 0);
        ASSERT_EQ(write_file_locked(), 0);
    }

    // What a change with a fault in it left: its code, and the registry and the file by it.
    void judge(kqcode_t code, const std::string& before, const std::string& after) {
        std::string registry = registry_text(), file = read_file("kqarch.ini");
        EXPECT_EQ(list_fault(arch_cfg_sys), "");
        switch (code) {
            case 0:
                EXPECT_EQ(registry, after);
                EXPECT_EQ(file, after);
                break;
            case ARCH_E_FILE_OPEN:
                EXPECT_EQ(registry, after) << "the change is not undone";
                EXPECT_TRUE(file == before || after.rfind(file, 0) == 0) << file;
                break;
            case ARCH_E_OUT_OF_MEMORY:
            case ARCH_E_INVALID_DEST:
                EXPECT_EQ(registry, before);
                EXPECT_EQ(file, before);
                break;
            default:
                ADD_FAILURE() << "code " << code;
        }
        EXPECT_EQ(write_file_locked(), 0);
        EXPECT_EQ(read_file("kqarch.ini"), registry);
    }

    void sweep(const change& each, const char* what, bool for_good) {
        begin(each.without_standby);
        std::string before = registry_text();
        ASSERT_EQ(each.make(), 0);
        std::string after = registry_text();
        ulint hits = 1;
        for (ulint nth = 1; hits > 0; nth++) {
            SCOPED_TRACE(std::string(each.name) + ", " + what + " " + std::to_string(nth));
            begin(each.without_standby);
            kq_fault_arm(what, nth, for_good);
            kqcode_t code = each.make();
            hits = kq_fault_hits();
            kq_fault_disarm();
            EXPECT_TRUE(code == 0 || hits > 0);
            judge(code, before, after);
            failures += code != 0;
            if (HasFailure()) return;
        }
    }

    online_instance instance;
    int failures = 0;
};

TEST_F(online_faults, leave_the_old_registry_or_the_new_one) {
    descriptor_capture quiet(2);
    for (const char* what : fault_points) {
        int before = failures;
        for (const change& each : changes)
            sweep(each, what, false);
        // A copy is no part of a change, and the deleting of a probe file no reason to fail.
        bool may_pass =
            std::string("file_copy file_delete file_create").find(what) != std::string::npos;
        EXPECT_EQ(failures > before, !may_pass) << what;
    }
    for (const char* what : {"os_malloc", "file_open", "file_sync", "file_close"})
        for (const change& each : changes)
            sweep(each, what, true);
}

TEST_F(online_faults, leave_an_older_backup_whole) {
    descriptor_capture quiet(2);
    begin(false);
    std::string text = read_file("kqarch.ini");
    for (const char* what : fault_points) {
        ulint hits = 1;
        for (ulint nth = 1; hits > 0; nth++) {
            write_file("kqarch_bak_5.log", "older");
            kq_fault_arm(what, nth, 0);
            kqcode_t code = arch_file_gen_bak(5);
            hits = kq_fault_hits();
            kq_fault_disarm();
            EXPECT_TRUE(code == 0 || (code == ARCH_E_BACKUP && hits > 0)) << what << nth;
            EXPECT_EQ(read_file("kqarch_bak_5.log"), code == 0 ? text : "older") << what << nth;
            for (const auto& entry : std::filesystem::directory_iterator("."))
                EXPECT_NE(entry.path().filename().string()[0], '.') << what << nth;
        }
    }
    EXPECT_EQ(arch_file_delete_bak(5), 0);
}

// ---- A file that cannot be written ----

class unwritable_file : public online_faults {
  protected:
    void SetUp() override { begin(false); }

    // A drop that is made in memory and refused by the file.
    void drop_is_refused() {
        descriptor_capture quiet(2);
        EXPECT_EQ(arch_cfg_drop("arch1"), ARCH_E_FILE_OPEN);
        EXPECT_EQ(arch_cfg_sys.arch_lst.count, 2u);
        EXPECT_EQ(list_fault(arch_cfg_sys), "");
    }

    void replace_file(const std::function<int()>& make) {
        std::filesystem::remove("kqarch.ini");
        ASSERT_EQ(make(), 0);
    }

    std::string last_log_line() {
        std::string log = read_file("../error.log");
        return log.substr(log.rfind('[', log.size() - 2));
    }
};

TEST_F(unwritable_file, is_a_directory) {
    replace_file([] { return mkdir("kqarch.ini", 0700); });
    drop_is_refused();
}

// Neither without a reader nor into the hands of one.
TEST_F(unwritable_file, is_a_pipe) {
    replace_file([] { return mkfifo("kqarch.ini", 0600); });
    drop_is_refused();
    int reader = open("kqarch.ini", O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(arch_cfg_drop("arch2"), ARCH_E_FILE_OPEN);
    EXPECT_EQ(arch_cfg_sys.arch_lst.count, 1u);
    char text[16];
    EXPECT_EQ(read(reader, text, sizeof text), 0);
    close(reader);
}

TEST_F(unwritable_file, is_a_link_to_nowhere_or_to_a_device) {
    replace_file([] { return symlink("missing/kqarch.ini", "kqarch.ini"); });
    drop_is_refused();
    ASSERT_EQ(arch_cfg_sys.arch_lst.count, 2u);
    replace_file([] { return symlink("/dev/full", "kqarch.ini"); });
    EXPECT_EQ(arch_cfg_drop("arch2"), ARCH_E_FILE_OPEN);
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
int on_a_small_file_system(const std::function<bool()>& check) {
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

TEST_F(unwritable_file, is_on_a_full_disk) {
    int status = on_a_small_file_system(keeps_backup_when_full);
    if (status == 77) GTEST_SKIP() << "this process may not mount";
    EXPECT_EQ(status, 0);
}

TEST_F(unwritable_file, is_on_a_read_only_disk) {
    int status = on_a_small_file_system(refuses_read_only);
    if (status == 77) GTEST_SKIP() << "this process may not mount";
    EXPECT_EQ(status, 0);
}

}  // namespace

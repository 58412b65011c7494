// Every call that allocates or touches a file, on registries of several sizes and types, with each
// of its allocations and file operations failing in turn.
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <vector>

#include "module/led_calls.h"
#include "support/capture.h"
#include "support/online.h"
#include "support/scenario.h"

namespace {

using namespace test_support;

// ---- What is called ----

// What a failure leaves in memory.
enum memory { as_before, as_after, without_settings, no_records };

struct outcome {
    kqcode_t code;
    memory left;
};

struct call {
    const char* name;
    kqcode_t (*make)();
    std::vector<outcome> failures;      // the codes that the header names for a fault
    const char* registry_of = nullptr;  // the one registry that it is made on, if not all
};

template <auto Function, typename... Arguments>
kqcode_t locked(Arguments... arguments) {
    arch_cfg_hold lock;
    return Function(arguments...);
}

arch_cfg_t asked(usint type) {
    arch_cfg_t record;
    arch_init(&record, "");
    record.type = type;
    strcpy(record.dest_insts[0], "INST20");
    strcpy(record.dest, "INST20");
    strcpy(record.timer_name, "T1");
    return record;
}

template <auto Adder, usint Type, typename... Arguments>
kqcode_t add(Arguments... arguments) {
    arch_cfg_t record = asked(Type), *added = nullptr;
    kqcode_t code = Adder(&record, arguments..., &added);
    EXPECT_EQ(added != nullptr, code == 0 || code == ARCH_E_FILE_OPEN);
    return code;
}

kqcode_t add_subscriber() {
    schar text[] = "u/p@localhost";
    return add<arch_cfg_add_subscribe, ARCH_TYPE_SUBSCRIBE>(text);
}

kqcode_t add_local() {
    arch_cfg_t* added = nullptr;
    return arch_cfg_add_local("new/local", 0, 64, 1, 0, &added);
}

kqcode_t add_remote() {
    schar instance[] = "inst20";
    arch_cfg_t* added = nullptr;
    return arch_cfg_add_remote("new/remote", instance, 0, 64, 1, 0, &added);
}

kqcode_t add_member() {
    static schar text[ARCH_CFG_TEXT_SIZE];
    arch_cfg_t* added = nullptr;
    kqcode_t code =
        arch_cfg_add_learner_or_raft("new", "h", 99, 99, 0, ARCH_TYPE_LEARNER, &added, text);
    EXPECT_EQ(text[0] != '\0', code == 0);
    EXPECT_EQ(added != nullptr, code == 0);
    return code;
}

// Each record in turn; the first that is refused decides.
kqcode_t validate_each() {
    arch_cfg_hold lock;
    kqcode_t code = 0;
    for (arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch && code >= 0; arch = arch->link.next)
        code = arch_cfg_validate(arch, 1, 1);
    return code;
}

template <auto Check>
kqcode_t check_directory() {
    return Check("new/checked", 1) == 1 ? 0 : ARCH_E_INVALID_DEST;
}

kqcode_t start(const schar* path) {
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init_with_check(path, 1, 1, 1);
}

kqcode_t start_without_file() {
    std::filesystem::remove("kqarch.ini");
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init(nullptr, 1, 1);
}

// More texts than the index of start-up has room for without a block.
kqcode_t start_large() {
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init_with_check("large.ini", 1, 0, 1);
}

// Hands a pool to a function and expects back what it has taken.
template <typename Function>
kqcode_t with_pool(Function function) {
    kqenv_t env = mem_env_create(0);
    arch_cfg_hold lock;
    kqcode_t code = function(env);
    EXPECT_EQ(mem_env_destroy(env), 0u) << "a block of the pool is still held";
    return code;
}

template <bool IsShared>
kqcode_t decode() {
    return with_pool([](kqenv_t env) KQ_REQUIRES(arch_cfg_sys.mutex) {
        std::vector<byte> message(arch_cfg_info_len_calc(IsShared));
        ulint size = arch_cfg_info_encode(message.data(), 0, 0, IsShared);
        return arch_cfg_info_decode_and_check(env, &message[4], size - 4, IsShared);
    });
}

template <bool OfThree, typename Function>
kqcode_t with_list(Function function) {
    return with_pool([function](kqenv_t env) KQ_REQUIRES(arch_cfg_sys.mutex) {
        kq_lst_t list{};
        kqcode_t code = function(env, &list);
        EXPECT_TRUE(code == 0 || (list.count == 0 && !list.start && !list.end));
        for (kq_lst_node_t *node = list.start, *next; node != nullptr; node = next) {
            next = node->next;
            if (OfThree) mem_free(env, node->data);
            if (OfThree) mem_free(env, node->flag);
            mem_free(env, node);
        }
        return code;
    });
}

kqcode_t list_remote() {
    return with_list<false>([](kqenv_t env, kq_lst_t* list) KQ_REQUIRES(arch_cfg_sys.mutex) {
        return arch_cfg_get_all_remote_dest(env, list);
    });
}

kqcode_t list_all() {
    return with_list<true>([](kqenv_t env, kq_lst_t* list) KQ_REQUIRES(arch_cfg_sys.mutex) {
        return arch_cfg_get_all_local_and_remote_dest(env, list, 1, 0);
    });
}

// What was collected stays with the caller, also when more did not fit.
kqcode_t collect_paths() {
    return with_pool([](kqenv_t env) KQ_REQUIRES(arch_cfg_sys.mutex) {
        ulint count = 0, size = 0;
        pathname_t* paths = nullptr;
        kqcode_t code = rarch_cfg_arch_path_get(env, &count, &paths);
        EXPECT_EQ(count > 0, paths != nullptr);
        mem_free(env, paths);
        paths = nullptr;
        for (count = 0; code >= 0 && count < 33;)
            code = rarch_cfg_arch_path_arr_fill(env, &size, &count, &paths, "path");
        EXPECT_TRUE(count <= size && size % 16 == 0);
        mem_free(env, paths);
        return code;
    });
}

const std::vector<outcome> of_change = {{ARCH_E_OUT_OF_MEMORY, as_before},
                                        {ARCH_E_INVALID_DEST, as_before},
                                        {ARCH_E_FILE_OPEN, as_after}};
const std::vector<outcome> of_write = {{ARCH_E_FILE_OPEN, as_after}};
const std::vector<outcome> of_memory = {{ARCH_E_OUT_OF_MEMORY, as_before}};
const std::vector<outcome> of_probe = {{ARCH_E_INVALID_DEST, as_before}};
const std::vector<outcome> of_backup = {{ARCH_E_BACKUP, as_before}};
const std::vector<outcome> of_start = {{ARCH_E_OUT_OF_MEMORY, no_records},
                                       {ARCH_E_INVALID_DEST, no_records},
                                       {ARCH_E_FILE_OPEN, no_records}};

const call calls[] = {
    {"start", [] { return start(nullptr); }, of_start},
    {"start from a path", [] { return start("./kqarch.ini"); }, of_start},
    {"start without a file", start_without_file, of_start},
    {"start large", start_large, of_start, "one directory"},
    {"create", [] { return arch_cfg_create(nullptr, "NEW", nullptr); }, of_memory},
    {"march", add<arch_cfg_add_march, ARCH_TYPE_REALTIME>, of_change},
    {"timely", add<arch_cfg_add_timely, ARCH_TYPE_TIMELY>, of_change},
    {"timer", add<arch_cfg_add_timer, ARCH_TYPE_ASYNC>, of_change},
    {"sync", [] { return add<arch_cfg_add_sync, ARCH_TYPE_SYNC>(0u); }, of_change},
    {"subscribe", add_subscriber, of_change},
    {"local", add_local, of_change},
    {"remote", add_remote, of_change},
    {"drop", [] { return arch_cfg_drop("local/1"); }, of_change},
    {"drop_low", [] { return arch_cfg_drop_low(arch_cfg_sys.arch_lst.end); }, of_change},
    {"write", locked<arch_cfg_sys_write_to_file>, of_write},
    {"write a text", [] { return arch_cfg_sys_write_by_rec("# new\n", 1); }, of_write},
    {"backup", [] { return arch_file_gen_bak(1); }, of_backup},
    {"backup anew", [] { return arch_file_gen_bak(5); }, of_backup},
    {"delete backup", [] { return arch_file_delete_bak(5); }, of_backup},
    {"validate each", validate_each, of_probe},
    {"validate all", [] { return arch_cfg_sys_validate(1, 1); }, of_probe},
    {"local path", check_directory<arch_cfg_check_local_path_validate>, of_probe},
    {"local dest", check_directory<arch_cfg_local_dest_check>, of_probe},
    {"decode", decode<false>, of_memory},
    {"decode shared", decode<true>, of_memory},
    {"list remote", list_remote, of_memory},
    {"list all", list_all, of_memory},
    {"collect paths", collect_paths, of_memory},
    {"add member", add_member, of_memory},
    {"end group", arch_delete_raft_info, of_write},
    {"raft settings",
     [] { return arch_cfg_sys_update_raft_info(5, 10, 5, "me", 99, 99, 0); },
     {{ARCH_E_INVALID_DEST, without_settings}}},
};

// ---- What it is called on ----

const std::map<std::string, std::string> registries = {
    {"one directory", "[L1] LOCAL local/1\n"},
    {"directories", "repeat 1 7 [L{i}] LOCAL local/{i}\n"},
    {"standbys",
     "[L1] LOCAL local/1\nrepeat 1 7 [R{i}] REALTIME INST{i}\nrepeat 8 10 [A{i}] ASYNC INST{i} "
     "T1\n"},
    {"other standbys",
     "[L1] LOCAL local/1\nrepeat 1 3 [T{i}] TIMELY INST{i}\nrepeat 4 6 [S{i}] SYNC INST{i}\n"
     "[A7] ASYNC INST7 T1\n"},
    {"a cluster",
     "ARCH_LOCAL_SHARE = 1\n[L1] LOCAL local/1\nrepeat 2 6 [M{i}] REMOTE INST{i} remote/{i}\n"},
    {"a Raft group",
     "RAFT_SELF_ID = 98\nRAFT_HB_INTERVAL = 5\nRAFT_VOTE_INTERVAL = 10\nXMAL_HB_INTERVAL = 5\n"
     "XMAL_IP = me\nXMAL_PORT = 98\n[L1] LOCAL local/1\n"
     "repeat 1 4 [R{i}] RAFT R{i} ARCH_DEST_IP=h ARCH_DEST_PORT=1{i} ARCH_DEST_ID=1{i}\n"
     "repeat 1 3 [E{i}] LEARNER E{i} ARCH_DEST_IP=h ARCH_DEST_PORT=2{i} ARCH_DEST_ID=2{i}\n"},
    {"a subscriber", "[L1] LOCAL local/1\n[B1] SUBSCRIBE u/p@localhost T1\n"},
};

const char* const points[] = {"os_malloc",   "mem_malloc_ex", "file_open",  "file_read",
                              "file_write",  "file_sync",     "file_close", "file_create",
                              "file_delete", "file_copy",     "dir_create", "interrupted",
                              "any"};

// ---- What must hold afterwards ----

constexpr const char* probe_prefix = ".ARCHIVE_";

// Every file of the instance but probe files, which stay where they can not be deleted.
std::map<std::string, std::string> files(bool with_probes) {
    std::map<std::string, std::string> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("."))
        if (entry.is_regular_file() &&
            (with_probes || entry.path().filename().string().rfind(probe_prefix, 0) != 0))
            found[entry.path().string()] = read_file(entry.path());
    return found;
}

struct state {
    std::string memory;
    std::map<std::string, std::string> disk;
};

state now(bool with_probes) {
    return {registry_fields_text(), files(with_probes)};
}

// What a write that failed may leave: the old file, or the beginning of the new one.
bool is_old_or_short(state& left, const state& before, const state& after) {
    const char* const name = "./kqarch.ini";
    std::string text = left.disk[name];
    auto old = before.disk.find(name), fresh = after.disk.find(name);
    bool is_old = old != before.disk.end() && old->second == text;
    bool is_short = fresh != after.disk.end() && fresh->second.rfind(text, 0) == 0;
    left.disk[name] = old != before.disk.end() ? old->second : "";
    return is_old || is_short;
}

int lowest_free_descriptor() {
    int descriptor = dup(STDIN_FILENO);
    close(descriptor);
    return descriptor;
}

bool is_lock_free() KQ_NO_THREAD_ANALYSIS {
    int code = pthread_mutex_trylock(&arch_cfg_sys.mutex.the_mutex);
    if (code == 0) pthread_mutex_unlock(&arch_cfg_sys.mutex.the_mutex);
    return code != EBUSY;
}

class fault_sweep : public testing::Test {
  protected:
    void remove_directories() {
        for (const char* made : {"local", "remote", "new"})
            std::filesystem::remove_all(made);
    }

    void begin() {
        write_file("kqarch_bak_5.log", "older");
        static const auto large = expand_input("repeat 1 100 [L{i}] LOCAL local/{i}\n");
        write_file("large.ini", large);
        std::filesystem::remove("kqarch_bak_1.log");
        remove_directories();
        ASSERT_EQ(start_from(text), 0);
        remove_directories();
    }

    // All faults of a kind in one call, on the registry of `text`.
    void sweep(const call& each, const char* what, bool for_good) {
        const bool carries_on = strcmp(what, "interrupted") == 0;
        if (carries_on && for_good) return;
        bool with_probes = strcmp(what, "file_delete") != 0 && strcmp(what, "any") != 0;
        for (ulint nth = 1, hits = 1; hits > 0; nth++) {
            begin();
            int descriptor = lowest_free_descriptor();
            kq_fault_arm(what, nth, for_good);
            kqcode_t code = each.make();
            hits = kq_fault_hits();
            kq_fault_disarm();
            SCOPED_TRACE("call " + std::to_string(nth) + ", code " + std::to_string(code));
            faults[each.name] += hits > 0;
            state left = now(with_probes);
            if (code == plain)
                EXPECT_TRUE(left.memory == after.memory && left.disk == after.disk);
            else
                judge(each, code, left);
            EXPECT_TRUE(code == plain || (hits > 0 && !carries_on)) << "it ought to succeed";
            EXPECT_EQ(list_fault(arch_cfg_sys), "");
            EXPECT_TRUE(is_lock_free());
            EXPECT_EQ(blocks_held(), arch_cfg_sys.arch_lst.count) << "a block leaks";
            EXPECT_EQ(lowest_free_descriptor(), descriptor) << "a descriptor leaks";
            if (HasFailure()) return;
        }
    }

    void judge(const call& each, kqcode_t code, state& left) {
        for (const outcome& allowed : each.failures) {
            if (allowed.code != code) continue;
            const std::string memories[] = {before.memory, after.memory, cleared};
            EXPECT_TRUE(allowed.left == no_records || left.memory == memories[allowed.left]);
            bool may_be_short = code == ARCH_E_FILE_OPEN || each.make == start_without_file;
            EXPECT_TRUE(!may_be_short || is_old_or_short(left, before, after));
            EXPECT_EQ(left.disk, before.disk);
            EXPECT_TRUE(allowed.left != no_records || arch_cfg_sys.arch_lst.count == 0);
            if (allowed.left == no_records) return;
            EXPECT_EQ(locked<arch_cfg_sys_write_to_file>(), 0);
            EXPECT_EQ(read_file("kqarch.ini"), registry_text());
            return;
        }
        ADD_FAILURE() << "the header does not name this code";
    }

    // The states that a failure may leave, each seen without one.
    void look_at(const call& each) {
        begin();
        before = now(true);
        arch_cfg_sys_delete_raft_info();
        cleared = registry_fields_text();
        begin();
        plain = each.make();
        after = now(true);
    }

    online_instance instance;
    std::string text;
    state before, after;
    std::string cleared;
    kqcode_t plain = 0;
    std::map<std::string, int> faults;  // by call
};

TEST_F(fault_sweep, leaves_the_old_state_or_the_new_one) {
    descriptor_capture quiet(STDERR_FILENO);
    for (const auto& [name, sections] : registries) {
        text = expand_input(sections);
        for (const call& each : calls) {
            if (each.registry_of != nullptr && name != each.registry_of) continue;
            SCOPED_TRACE(name + ", " + each.name);
            look_at(each);
            for (const char* what : points)
                for (bool for_good : {false, true}) {
                    SCOPED_TRACE(what);
                    sweep(each, what, for_good);
                    if (HasFailure()) return;
                }
        }
    }
    int injected = 0;
    for (const call& each : calls) {
        EXPECT_GT(faults[each.name], 0) << each.name;
        injected += faults[each.name];
    }
    printf("%d faults injected\n", injected);
    EXPECT_GE(injected, 6000);
}

}  // namespace

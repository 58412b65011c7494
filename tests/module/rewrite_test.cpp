// Loading, writing, loading and writing again, over generated instances that are valid and together
// hold every type and every key.
#include <gtest/gtest.h>
#include <ini.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

#include "support/capture.h"
#include "support/fields.h"
#include "support/instance.h"

namespace {

using namespace test_support;

using names = std::vector<std::string>;

// Builds the text of one instance and notes which keys it holds.
class generator {
  public:
    generator(unsigned seed, std::set<std::string>& used) : random(seed), keys(used) {
        for (int i = 1; i <= 40; i++)
            instances.push_back("INST" + std::to_string(i));
        std::shuffle(instances.begin(), instances.end(), random);
    }

    bool chance() { return random() % 2 == 0; }

    unsigned count(unsigned most) { return static_cast<unsigned>(1 + random() % most); }

    void section(const std::string& type) {
        number++;
        text += "[" + type + std::to_string(number) + "]\n";
        key("ARCH_TYPE", {type});
    }

    // One of the values.
    void key(const std::string& name, const names& values) {
        keys.insert(name);
        text += name + " = " + values[random() % values.size()] + "\n";
    }

    void maybe(const std::string& name, const names& values) {
        if (chance()) key(name, values);
    }

    std::string instance_list(unsigned most) {
        std::string list;
        for (unsigned left = count(most); left > 0; left--) {
            list += (list.empty() ? "" : "/") + instances.back();
            instances.pop_back();
        }
        return list;
    }

    std::string path(const std::string& prefix) { return prefix + std::to_string(++number); }

    std::string text;
    unsigned number = 0;

  private:
    std::mt19937 random;
    std::set<std::string>& keys;
    names instances;
};

void add_sizes(generator& file) {
    file.maybe("ARCH_FILE_SIZE", {"64", "2048", "0x80"});
    file.maybe("ARCH_SPACE_LIMIT", {"0", "1024", "2147483647"});
    file.maybe("ARCH_FLUSH_BUF_SIZE", {"0", "128"});
}

void add_settings(generator& file, bool waits) {
    file.maybe("ARCH_WAIT_APPLY", waits ? names{"0", "1"} : names{"0"});
    file.maybe("ARCH_RESERVE_TIME", {"0", "4294967294"});
    file.maybe("ARCH_LOCAL_SHARE", {"0", "1"});
    file.maybe("ARCH_LOCAL_SHARE_CHECK", {"0", "1"});
    file.maybe("ARCH_ASM_MIRROR", {"1", "3"});
    file.maybe("ARCH_ASM_STRIPING", {"0", "32", "64", "128", "256"});
    file.maybe("RAFT_PKG_INTERVAL", {"1", "60000"});
    file.maybe("RAFT_LEARNER", {"0", "1"});
    file.maybe("SELF_CENTER_ID", {"1", "65534"});
}

void add_locals(generator& file) {
    for (unsigned left = file.count(4); left > 0; left--) {
        file.section("LOCAL");
        file.key("ARCH_DEST", {file.path("arch"), file.path("deep/er")});
        file.maybe("ARCH_HANG_FLAG", {"0", "1"});
        file.maybe("ARCH_RECV_PATH", {"/recv"});
        add_sizes(file);
    }
}

void add_standbys(generator& file, const std::string& type, unsigned most_names) {
    for (unsigned left = file.count(3); left > 0; left--) {
        file.section(type);
        file.key("ARCH_DEST", {file.instance_list(most_names)});
        if (type == "SYNC") file.maybe("ARCH_RECOVER_TIME", {"0", "86400"});
        if (type == "ASYNC") {
            file.key("ARCH_TIMER_NAME", {"T1", "t2"});
            file.maybe("ARCH_SEND_DELAY", {"0", "1440"});
        }
        if (type != "REALTIME" && type != "TIMELY") continue;
        file.maybe("WAIT_APPLY", type == "TIMELY" ? names{"0", "1"} : names{"0"});
        file.key("ARCH_FAILOVER", {"0"});
    }
}

void add_remotes(generator& file) {
    for (unsigned left = file.count(4); left > 0; left--) {
        file.section("REMOTE");
        file.key("ARCH_DEST", {file.instance_list(1)});
        file.key("ARCH_INCOMING_PATH", {file.path("in")});
        add_sizes(file);
    }
}

void add_raft_settings(generator& file) {
    file.key("XMAL_IP", {"192.0.2.250"});
    file.key("XMAL_PORT", {"1", "65535"});
    file.key("XMAL_HB_INTERVAL", {"1", "1800"});
    file.key("RAFT_HB_INTERVAL", {"1", "900"});
    file.key("RAFT_VOTE_INTERVAL", {"1800", "3600"});
    file.key("RAFT_SELF_ID", {"0", "65534"});
}

void add_members(generator& file, const std::string& type) {
    for (unsigned left = file.count(8); left > 0; left--) {
        file.section(type);
        std::string id = std::to_string(file.number);
        file.key("ARCH_DEST", {file.instance_list(1)});
        file.key("ARCH_DEST_IP", {"192.0.2." + id});
        file.key("ARCH_DEST_PORT", {"1", "65535"});
        file.key("ARCH_DEST_ID", {id});
        file.maybe("ARCH_CENTER_ID", {"0", "65534"});
    }
}

void add_subscriber(generator& file) {
    file.section("SUBSCRIBE");
    file.key("ARCH_DEST", {"user/pw@localhost", "198.51.100.1:5236"});
    file.key("ARCH_TIMER_NAME", {"T1"});
    file.maybe("ARCH_SUBSCRIBE_MODE", {"0", "1"});
    file.maybe("ARCH_THRESHOLD_PER_SECOND", {"0", "65535"});
    file.maybe("ARCH_SEND_DELAY", {"0", "1440"});
}

// The kinds of instance that may be: which types stand together.
std::string generate(unsigned seed, std::set<std::string>& used) {
    generator file(seed, used);
    unsigned kind = seed % 6;
    add_settings(file, kind == 1);
    if (kind == 4) add_raft_settings(file);
    if (file.chance()) add_locals(file);
    if (kind == 0) add_standbys(file, file.chance() ? "REALTIME" : "MARCH", 4);
    if (kind == 1) add_standbys(file, "TIMELY", 4);
    if (kind == 2) add_standbys(file, "SYNC", 1);
    if (kind == 3) add_remotes(file);
    if (kind == 3) add_standbys(file, "REALTIME", 1);
    if (kind == 4) add_members(file, "RAFT");
    if (kind == 4) add_members(file, "LEARNER");
    if (kind == 5) add_subscriber(file);
    if (kind < 4) add_standbys(file, "ASYNC", kind == 2 ? 1 : 3);
    add_locals(file);
    return file.text;
}

// The registry as text, without what is never written back.
std::string described() {
    arch_cfg_sys.raft_learner = 0;
    std::string text = differences(registry_fields(), arch_cfg_sys) + "\n";
    for (arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
        arch->recv_path[0] = '\0';
        text += arch->name + differences(record_fields(), *arch) + "\n";
    }
    return text;
}

std::string load(const std::string& text) {
    write_file("kqarch.ini", text);
    arch_cfg_sys_destroy();
    kqcode_t code = arch_cfg_sys_init(nullptr, 1, 1);
    return code == 0 ? described() : "code " + std::to_string(code);
}

std::string written() {
    static schar text[ARCH_CFG_TEXT_SIZE];
    arch_cfg_hold lock;
    EXPECT_EQ(arch_cfg_sys_write_to_rec(text), 0);
    return text;
}

TEST(rewrite, gives_the_same_registry_and_the_same_text) {
    instance_directory instance;
    std::string mal;
    for (int i = 1; i <= 40; i++)
        mal += "[M" + std::to_string(i) + "]\nMAL_INST_NAME = INST" + std::to_string(i) +
               "\nMAL_INST_HOST = 192.0.2.1\nMAL_INST_PORT = 5236\n";
    write_file("kqmal.ini", mal);
    write_file("kqtimer.ini", "[T1]\n[T2]\n");
    ASSERT_EQ(instance.open("MAL_INI = 1\nTIMER_INI = 1\n"), 0);

    std::set<std::string> used;
    for (unsigned seed = 0; seed < 60; seed++) {
        std::string text = generate(seed, used);
        std::string first_registry = load(text);
        ASSERT_NE(first_registry.substr(0, 5), "code ") << first_registry << "\n" << text;
        std::string first_text = written();
        EXPECT_EQ(load(first_text), first_registry) << text;
        EXPECT_EQ(written(), first_text) << text;
    }
    std::set<std::string> all;
    for (ulint index = ini_index_arch_type; index <= ini_index_arch_asm_striping; index++) {
        bool foreign = index > ini_index_arch_recv_path && index < ini_index_arch_asm_mirror;
        if (!foreign) all.insert(ini_get_other_ini_info_by_index(index)->para_name);
    }
    EXPECT_EQ(used, all);
}

}  // namespace

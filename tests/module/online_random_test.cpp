// Long random sequences of adds and drops. After each that is accepted the written file starts up
// again to the same registry, except where start-up has a rule that no adder and no drop has: those
// rules are told here once more, and start-up has to give just their code.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstring>
#include <random>
#include <set>
#include <vector>

#include "support/capture.h"
#include "support/fields.h"
#include "support/online.h"

namespace {

using namespace test_support;

constexpr int sequences = 12, steps = 250;
const char* const self = "KQSERVER";

std::string upper(std::string text) {
    for (char& c : text)
        c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    return text;
}

std::vector<arch_cfg_t*> records() {
    std::vector<arch_cfg_t*> all;
    for (arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        all.push_back(arch);
    return all;
}

bool names_instances(const arch_cfg_t& arch) {
    return arch.type >= ARCH_TYPE_REALTIME && arch.type <= ARCH_TYPE_LEARNER &&
           arch.type != ARCH_TYPE_REMOTE;
}

// ---- What start-up refuses and online changes do not ----

// The texts of a record that may be no other's, in the order of reading; a REMOTE's path, which is
// looked up but not found itself, last.
std::vector<std::string> claimed(const arch_cfg_t& arch) {
    if (arch.type == ARCH_TYPE_LOCAL) return {upper(arch.dest)};
    if (arch.type == ARCH_TYPE_REMOTE) return {upper(arch.timer_name), upper(arch.dest)};
    std::vector<std::string> names;
    for (int i = 0; names_instances(arch) && i < arch.n_inst; i++)
        names.push_back(upper(arch.dest_insts[i]));
    return names;
}

kqcode_t verdict_of_reading() {
    std::set<std::string> used;
    for (const arch_cfg_t* arch : records()) {
        std::vector<std::string> texts = claimed(*arch);
        for (const std::string& text : texts) {
            if (text == self) return ARCH_E_DEST_IS_SELF;
            if (used.count(text) > 0) return ARCH_E_DEST_EXISTS;
        }
        if (arch->type == ARCH_TYPE_REMOTE) texts.pop_back();
        used.insert(texts.begin(), texts.end());
    }
    return 0;
}

kqcode_t verdict_of_counts(const std::multiset<int>& types) {
    if (types.count(ARCH_TYPE_LOCAL) == 0 && !types.empty()) return ARCH_E_NO_LOCAL;
    bool raft = types.count(ARCH_TYPE_RAFT) > 0;
    for (int type : {ARCH_TYPE_REALTIME, ARCH_TYPE_TIMELY, ARCH_TYPE_REMOTE})
        if (raft && types.count(type) > 0) return ARCH_E_INVALID_VALUE;
    return 0;
}

kqcode_t verdict_of_start_up() {
    std::multiset<int> types;
    std::multiset<std::string> paths;
    for (const arch_cfg_t* arch : records()) {
        types.insert(arch->type);
        bool archive = arch->type == ARCH_TYPE_LOCAL || arch->type == ARCH_TYPE_REMOTE;
        if (archive) paths.insert(arch->dest);
    }
    if (kqcode_t code = verdict_of_reading(); code < 0) return code;
    if (kqcode_t code = verdict_of_counts(types); code < 0) return code;
    for (const arch_cfg_t* arch : records()) {
        bool archive = arch->type == ARCH_TYPE_LOCAL || arch->type == ARCH_TYPE_REMOTE;
        if (archive && paths.count(arch->dest) > 1) return ARCH_E_DEST_EXISTS;
        if (arch->wait_apply == 1 && arch->arch_failover == 1) return ARCH_E_FAILOVER_WAIT_APPLY;
        bool waits = arch->type == ARCH_TYPE_REALTIME && arch->wait_apply == 1;
        if (waits && types.count(ARCH_TYPE_REMOTE) > 0) return ARCH_E_INVALID_VALUE;
    }
    return 0;
}

// The registry as text. What the file does not keep is taken as start-up takes it: the hang flag of
// the first LOCAL is 1, and the voters are those of the list.
std::string described() {
    usint voters = 0;
    arch_cfg_t* first_local = nullptr;
    for (arch_cfg_t* arch : records()) {
        voters = static_cast<usint>(voters + (arch->type == ARCH_TYPE_RAFT));
        if (arch->type == ARCH_TYPE_LOCAL && first_local == nullptr) first_local = arch;
    }
    usint counted = std::exchange(arch_cfg_sys.raft_cnt, voters);
    usint flag = first_local ? std::exchange(first_local->hang_flag, usint(1)) : usint(0);
    std::string text = registry_fields_text();
    arch_cfg_sys.raft_cnt = counted;
    if (first_local) first_local->hang_flag = flag;
    return text;
}

// ---- The changes ----

class changer {
  public:
    explicit changer(unsigned seed) : random(seed) {}

    unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }

    // The last value, which is refused, seldom.
    template <class Value>
    Value mostly(std::initializer_list<Value> values) {
        unsigned good = static_cast<unsigned>(values.size()) - 1;
        return values.begin()[below(12) == 0 ? good : below(good)];
    }

    template <class Value>
    Value one_of(std::initializer_list<Value> values) {
        return values.begin()[below(static_cast<unsigned>(values.size()))];
    }

    std::string path() {
        static const char* const prefixes[] = {"arch", "ARCH", "in", "deep/er", "a = [b] #"};
        return prefixes[below(5)] + std::to_string(below(6)) + one_of({"", "", "/", "///"});
    }

    std::string instance() {
        return below(40) == 0 ? self : "INST" + std::to_string(1 + below(20));
    }

    // Holds what the type's section has: nothing else comes back from the file.
    arch_cfg_t standby(usint type) {
        arch_cfg_t asked;
        arch_init(&asked, "");
        asked.type = type;
        asked.n_inst = static_cast<byte>(below(3) == 0 ? 1 + below(16) : 1);
        for (int i = 0; i < asked.n_inst; i++) {
            std::string name = instance();
            memcpy(asked.dest_insts[i], name.c_str(), name.size() + 1);
        }
        if (asked.n_inst == 1) arch_cfg_set_dest(&asked, asked.dest_insts[0]);
        bool applies = type == ARCH_TYPE_REALTIME || type == ARCH_TYPE_TIMELY;
        bool timed = type == ARCH_TYPE_ASYNC || type == ARCH_TYPE_SUBSCRIBE;
        if (applies) asked.wait_apply = mostly({0u, 1u, 255u, 2u});
        if (applies) asked.arch_failover = one_of({0u, 1u, 255u, 255u});
        if (timed) asked.arch_send_delay = mostly({0u, 1440u, 1441u});
        if (timed) strcpy(asked.timer_name, mostly({"T1", "t2", "none"}));
        if (type == ARCH_TYPE_SYNC) asked.arch_recover_time = mostly({0u, 1u, 86400u, 86401u});
        return asked;
    }

    kqcode_t add_subscriber(arch_cfg_t** added) {
        arch_cfg_t asked = standby(ARCH_TYPE_SUBSCRIBE);
        memset(asked.dest_insts, 0, sizeof asked.dest_insts);
        asked.n_inst = 1;
        asked.arch_threshold_per_second = below(65536);
        asked.arch_subscb_mode = mostly({0u, 1u, 2u});
        std::string text =
            one_of({" u/p@localhost", "198.51.100.1:5236", "127.0.0.1:5236", "bad@", "no"});
        return arch_cfg_add_subscribe(&asked, text.data(), added);
    }

    kqcode_t add(arch_cfg_t** added) {
        usint type = static_cast<usint>(1 + below(9));
        arch_cfg_t asked = standby(type);
        std::string where = path(), who = instance();
        ulint limit = mostly({0u, 1024u, 2147483647u, 1023u}), buffer = mostly({0u, 128u, 129u});
        usint size = mostly({usint(64), usint(2048), usint(63)}),
              hang = one_of({usint(0), usint(1)});
        switch (type) {
            case ARCH_TYPE_REALTIME:
                return arch_cfg_add_march(&asked, added);
            case ARCH_TYPE_SYNC:
                return arch_cfg_add_sync(&asked, below(3), added);
            case ARCH_TYPE_ASYNC:
                return arch_cfg_add_timer(&asked, added);
            case ARCH_TYPE_TIMELY:
                return arch_cfg_add_timely(&asked, added);
            case ARCH_TYPE_REMOTE:
                return arch_cfg_add_remote(where.c_str(), who.data(), limit, size, hang, buffer,
                                           added);
            case ARCH_TYPE_SUBSCRIBE:
                return add_subscriber(added);
            default:
                return arch_cfg_add_local(where.c_str(), limit, size, hang, buffer, added);
        }
    }

    // By the record or by a text that names one; sometimes by one that names none.
    kqcode_t drop() {
        std::vector<arch_cfg_t*> all = records();
        if (all.empty() || below(8) == 0) return arch_cfg_drop((instance() + "/" + path()).c_str());
        arch_cfg_t* chosen = all[below(static_cast<unsigned>(all.size()))];
        std::vector<std::string> texts = claimed(*chosen);
        if (below(2) == 0 || texts.empty()) return arch_cfg_drop_low(chosen);
        return arch_cfg_drop(texts[below(static_cast<unsigned>(texts.size()))].c_str());
    }

  private:
    std::mt19937 random;
};

const char* const beginnings[] = {
    "", "[archive_local1]\nARCH_TYPE = LOCAL\nARCH_DEST = first\nARCH_HANG_FLAG = 0\n",
    "ARCH_WAIT_APPLY = 1\nARCH_LOCAL_SHARE = 1\nARCH_RESERVE_TIME = 7\n",
    "XMAL_IP = 192.0.2.9\nXMAL_PORT = 1\nXMAL_HB_INTERVAL = 1\nRAFT_HB_INTERVAL = 1\n"
    "RAFT_VOTE_INTERVAL = 2\nRAFT_SELF_ID = 0\n"
    "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = first\n[F]\nARCH_TYPE = RAFT\nARCH_DEST = member\n"
    "ARCH_DEST_IP = 192.0.2.8\nARCH_DEST_PORT = 1\nARCH_DEST_ID = 1\n"};

class online_changes : public testing::Test {
  protected:
    // One change; false when something was wrong.
    bool step(changer& change) {
        std::string before = described(), file = read_file("kqarch.ini");
        arch_cfg_t* added = nullptr;
        bool adds = change.below(9) < 5;
        kqcode_t code = adds ? change.add(&added) : change.drop();
        EXPECT_EQ(list_fault(arch_cfg_sys), "");
        if (code < 0) {
            refused++;
            EXPECT_EQ(added, nullptr);
            EXPECT_EQ(described(), before) << "a refusal changed the registry";
            EXPECT_EQ(read_file("kqarch.ini"), file) << "a refusal changed the file";
            return !HasFailure();
        }
        accepted++;
        EXPECT_EQ(added, adds ? arch_cfg_sys.arch_lst.end : nullptr);
        std::string running = described();
        kqcode_t started = start_up_aside(1, [&running] { EXPECT_EQ(described(), running); });
        EXPECT_EQ(started, verdict_of_start_up());
        codes.insert(started);
        return !HasFailure();
    }

    online_instance instance;
    std::set<kqcode_t> codes;
    int accepted = 0, refused = 0;
};

TEST_F(online_changes, are_what_start_up_reads) {
    descriptor_capture quiet(2);
    const char* given = getenv("SEED");
    unsigned first = given ? static_cast<unsigned>(atoi(given)) : 1;
    for (unsigned seed = first; seed < first + sequences; seed++) {
        changer change(seed);
        ASSERT_EQ(start_from(beginnings[seed % 4]), 0);
        for (int i = 0; i < steps; i++)
            ASSERT_TRUE(step(change)) << "SEED=" << seed << " step " << i << "\n"
                                      << read_file("kqarch.ini");
    }
    if (given != nullptr) return;
    EXPECT_GT(accepted, refused / 4);
    std::set<kqcode_t> reached = {0,
                                  ARCH_E_NO_LOCAL,
                                  ARCH_E_DEST_EXISTS,
                                  ARCH_E_INVALID_VALUE,
                                  ARCH_E_DEST_IS_SELF,
                                  ARCH_E_FAILOVER_WAIT_APPLY};
    EXPECT_EQ(codes, reached);
}

}  // namespace

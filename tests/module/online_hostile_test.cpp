// Whatever a caller hands in: records of arbitrary bytes, texts without an end of their own, counts
// above their arrays. The code is a documented one, and what is registered comes back from the
// file.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>

#include "support/capture.h"
#include "support/online.h"

namespace {

using namespace test_support;

using record_adder = kqcode_t (*)(arch_cfg_t*, arch_cfg_t**);

struct adder {
    usint type;
    record_adder add;
};

const adder adders[] = {
    {ARCH_TYPE_REALTIME, arch_cfg_add_march},
    {ARCH_TYPE_TIMELY, arch_cfg_add_timely},
    {ARCH_TYPE_ASYNC, arch_cfg_add_timer},
    {ARCH_TYPE_SYNC,
     [](arch_cfg_t* asked, arch_cfg_t** added) { return arch_cfg_add_sync(asked, 0, added); }},
    {ARCH_TYPE_SUBSCRIBE,
     [](arch_cfg_t* asked, arch_cfg_t** added) {
         schar text[] = "localhost";
         return arch_cfg_add_subscribe(asked, text, added);
     }},
};

const int any_byte[] = {0x00, 0x01, '\n', ' ', '/', '[', 'A', 0x7f, 0x80, 0xff};

const char* const beginning = "[L]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n";

int sections_of(const std::string& text) {
    int sections = 0;
    for (size_t at = 0; (at = text.find("\n[", at)) != std::string::npos; at++)
        sections++;
    return sections;
}

class hostile : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(start_from(beginning), 0);
        // Without archiving the instances' names are nobody's business but the adders'.
        ASSERT_EQ(instance.open("TIMER_INI = 1\nARCH_FLAG = 0\n"), 0);
        before = registry_text();
    }

    // After a call: a sound registry, with one record more exactly when the call succeeded, which
    // is then dropped again; the lock is free.
    void judge(kqcode_t code, const std::set<kqcode_t>& allowed, arch_cfg_t* const& added) {
        EXPECT_TRUE(allowed.count(code) > 0) << code;
        EXPECT_EQ(list_fault(arch_cfg_sys), "");
        if (code != 0) {
            EXPECT_EQ(added, nullptr);
            EXPECT_EQ(registry_text(), before);
            return;
        }
        ASSERT_EQ(added, arch_cfg_sys.arch_lst.end);
        std::string written = registry_text();
        EXPECT_EQ(read_file("kqarch.ini"), written);
        EXPECT_EQ(sections_of(written), 2) << written;
        EXPECT_EQ(arch_cfg_drop_low(added), 0);
        EXPECT_EQ(registry_text(), before);
    }

    online_instance instance;
    std::string before;
};

const std::set<kqcode_t> any_of_a_record = {0,
                                            ARCH_E_INVALID_DEST,
                                            ARCH_E_TOO_LONG,
                                            ARCH_E_INVALID_VALUE,
                                            ARCH_E_TOO_MANY_INSTS,
                                            ARCH_E_INVALID_TYPE,
                                            ARCH_E_PARA_NOT_ALLOWED,
                                            ARCH_E_TIMER_NOT_FOUND,
                                            ARCH_E_INVALID_SEND_DELAY};

TEST_F(hostile, records_of_one_byte) {
    descriptor_capture quiet(2);
    for (int byte_value : any_byte) {
        for (const adder& each : adders) {
            // On the heap and of just its size, where a sanitizer sees each byte beyond.
            auto asked = std::make_unique<arch_cfg_t>();
            memset(static_cast<void*>(asked.get()), byte_value, sizeof *asked);
            arch_cfg_t* added = nullptr;
            kqcode_t code = each.add(asked.get(), &added);
            std::set<kqcode_t> allowed = {ARCH_E_TOO_MANY_INSTS, ARCH_E_INVALID_TYPE,
                                          ARCH_E_TIMER_NOT_FOUND};
            judge(code, allowed, added);
        }
    }
}

// A good record but for its texts, which fill their fields to the last byte, and its link.
TEST_F(hostile, records_of_unended_texts) {
    descriptor_capture quiet(2);
    int registered = 0;
    for (int byte_value : any_byte) {
        for (const adder& each : adders) {
            for (int instances = 0; instances <= 16; instances++) {
                auto asked = std::make_unique<arch_cfg_t>();
                arch_init(asked.get(), "");
                memset(asked->name, byte_value, sizeof asked->name);
                memset(asked->dest_insts, byte_value, sizeof asked->dest_insts);
                memset(asked->dest, byte_value, sizeof asked->dest);
                memset(asked->recv_path, byte_value, sizeof asked->recv_path);
                memset(asked->arch_dest_ip, byte_value, sizeof asked->arch_dest_ip);
                memset(asked->dest_ip_arr, byte_value, sizeof asked->dest_ip_arr);
                memset(static_cast<void*>(&asked->link), 0xff, sizeof asked->link);
                bool timed = each.type == ARCH_TYPE_ASYNC || each.type == ARCH_TYPE_SUBSCRIBE;
                memset(asked->timer_name, timed ? 0 : byte_value, sizeof asked->timer_name);
                if (timed) strcpy(asked->timer_name, "T1");
                asked->type = each.type;
                asked->n_inst = static_cast<byte>(instances);
                arch_cfg_t* added = nullptr;
                kqcode_t code = each.add(asked.get(), &added);
                judge(code, any_of_a_record, added);
                registered += code == 0;
            }
        }
    }
    EXPECT_GT(registered, 10);
}

// A timer's name without an end is looked up as what its field holds.
TEST_F(hostile, timers_of_unended_names) {
    descriptor_capture quiet(2);
    arch_cfg_t asked, *added = nullptr;
    arch_init(&asked, "");
    asked.type = ARCH_TYPE_ASYNC;
    strcpy(asked.dest_insts[0], "INST1");
    strcpy(asked.dest, "INST1");
    memset(asked.timer_name, 'T', sizeof asked.timer_name);
    judge(arch_cfg_add_timer(&asked, &added), {ARCH_E_TIMER_NOT_FOUND}, added);
}

TEST_F(hostile, texts_of_any_length_and_byte) {
    descriptor_capture quiet(2);
    const std::set<kqcode_t> allowed = {
        0,
        ARCH_E_INVALID_DEST,
        ARCH_E_TOO_LONG,
        ARCH_E_INVALID_VALUE,
        ARCH_E_INVALID_PATH,
        ARCH_E_DEST_EXISTS,
        ARCH_E_DUPLICATE_PATH,
    };
    for (char byte_value : {'\n', ' ', '=', '[', 'x', '\x7f', '\xff'}) {
        for (size_t length : {0u, 1u, 16u, 17u, 128u, 129u, 200u, 256u, 257u, 70000u}) {
            std::string text(length, byte_value), name = text, login = text;
            arch_cfg_t* added = nullptr;
            judge(arch_cfg_add_local(text.c_str(), 0, 64, 1, 0, &added), allowed, added);
            judge(arch_cfg_add_remote("in1", name.data(), 0, 64, 1, 0, &added), allowed, added);
            schar instance_name[] = "inst1";
            judge(arch_cfg_add_remote(text.c_str(), instance_name, 0, 64, 1, 0, &added), allowed,
                  added);
            arch_cfg_t asked;
            arch_init(&asked, "");
            asked.type = ARCH_TYPE_SUBSCRIBE;
            strcpy(asked.timer_name, "T1");
            added = nullptr;
            kqcode_t code = arch_cfg_add_subscribe(&asked, login.data(), &added);
            judge(code, allowed, added);
            EXPECT_EQ(arch_cfg_drop((text + "-").c_str()), ARCH_E_DEST_NOT_FOUND);
        }
    }
}

}  // namespace

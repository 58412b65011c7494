// Whatever a caller hands in: records of arbitrary bytes, texts without an end of their own, counts
// above their arrays. The code is a documented one, and what is registered comes back from the
// file.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <set>

#include "support/capture.h"
#include "support/online.h"
#include "support/scenario.h"

namespace {

using namespace test_support;

const struct adder {
    usint type;
    kqcode_t (*add)(arch_cfg_t*, arch_cfg_t**);
} adders[] = {
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

class hostile : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(start_from("[L]\nARCH_TYPE = LOCAL\nARCH_DEST = arch1\n"), 0);
        // Without archiving the instances' names are nobody's business but the adders'.
        ASSERT_EQ(instance.open("TIMER_INI = 1\nARCH_FLAG = 0\n"), 0);
        before = registry_text();
    }

    // After a call: a sound registry, with one record more exactly when the call succeeded, which
    // is then dropped again; the lock is free.
    void judge(kqcode_t code, arch_cfg_t* const& added) {
        static const std::set<kqcode_t> allowed = {
            0,
            ARCH_E_INVALID_DEST,
            ARCH_E_TOO_LONG,
            ARCH_E_INVALID_VALUE,
            ARCH_E_TOO_MANY_INSTS,
            ARCH_E_INVALID_TYPE,
            ARCH_E_PARA_NOT_ALLOWED,
            ARCH_E_TIMER_NOT_FOUND,
            ARCH_E_INVALID_SEND_DELAY,
            ARCH_E_INVALID_PATH,
            ARCH_E_DEST_EXISTS,
            ARCH_E_DUPLICATE_PATH,
        };
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
        EXPECT_EQ(split(written, "\n[").size(), 3u) << written;
        EXPECT_EQ(arch_cfg_drop_low(added), 0);
        EXPECT_EQ(registry_text(), before);
    }

    online_instance instance;
    std::string before;
};

// A record of one byte, or a good one but for its link and its texts, which fill their fields to the
// last byte; the name of a timer only in the one of 16 instances.
std::unique_ptr<arch_cfg_t> record_of(int byte_value, usint type, int instances) {
    // On the heap and of just its size, where a sanitizer sees each byte beyond.
    auto asked = std::make_unique<arch_cfg_t>();
    auto fill = [byte_value](auto&... texts) { (memset(texts, byte_value, sizeof texts), ...); };
    memset(static_cast<void*>(asked.get()), byte_value, sizeof *asked);
    if (instances < 0) return asked;
    arch_init(asked.get(), "");
    fill(asked->name, asked->dest_insts, asked->dest, asked->recv_path, asked->timer_name,
         asked->arch_dest_ip, asked->dest_ip_arr);
    memset(static_cast<void*>(&asked->link), 0xff, sizeof asked->link);
    bool timed = type == ARCH_TYPE_ASYNC || type == ARCH_TYPE_SUBSCRIBE;
    if (timed && instances < 16) strcpy(asked->timer_name, "T1");
    asked->type = type;
    asked->n_inst = static_cast<byte>(instances);
    return asked;
}

TEST_F(hostile, records_of_unended_texts) {
    descriptor_capture quiet(2);
    int registered = 0;
    for (int byte_value : {0x00, 0x01, 0x0a, 0x20, 0x2f, 0x5b, 0x41, 0x7f, 0x80, 0xff}) {
        for (const adder& each : adders) {
            for (int instances = -1; instances <= 16; instances++) {
                auto asked = record_of(byte_value, each.type, instances);
                arch_cfg_t* added = nullptr;
                kqcode_t code = each.add(asked.get(), &added);
                judge(code, added);
                EXPECT_TRUE(instances >= 0 || code != 0);
                registered += code == 0;
            }
        }
    }
    EXPECT_GT(registered, 10);
}

TEST_F(hostile, texts_of_any_length_and_byte) {
    descriptor_capture quiet(2);
    for (char byte_value : {'\n', ' ', '=', '[', 'x', '\x7f', '\xff'}) {
        for (size_t length : {0u, 1u, 16u, 17u, 128u, 129u, 200u, 256u, 257u, 70000u}) {
            std::string text(length, byte_value), name = text, login = text, good = "inst1";
            arch_cfg_t asked, *added = nullptr;
            judge(arch_cfg_add_local(text.c_str(), 0, 64, 1, 0, &added), added);
            judge(arch_cfg_add_remote("in1", name.data(), 0, 64, 1, 0, &added), added);
            judge(arch_cfg_add_remote(text.c_str(), good.data(), 0, 64, 1, 0, &added), added);
            arch_init(&asked, "");
            asked.type = ARCH_TYPE_SUBSCRIBE;
            strcpy(asked.timer_name, "T1");
            added = nullptr;
            judge(arch_cfg_add_subscribe(&asked, login.data(), &added), added);
            EXPECT_EQ(arch_cfg_drop((text + "-").c_str()), ARCH_E_DEST_NOT_FOUND);
        }
    }
}

}  // namespace

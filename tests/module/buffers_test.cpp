// What is written through pointers: neither too much nor beyond.
#include <gtest/gtest.h>
#include <stddef.h>

#include <cstring>
#include <memory>

#include "support/capture.h"
#include "support/fields.h"
#include "support/instance.h"

namespace {

using namespace test_support;

constexpr char guard = 0x55;

// A buffer of exactly `Size` characters with guard bytes behind it.
template <size_t Size>
struct guarded {
    schar text[Size];
    schar behind[64];
    guarded() { memset(static_cast<void*>(this), guard, sizeof *this); }
    bool whole() const { return std::string(behind, sizeof behind) == std::string(64, guard); }
};

class buffers : public testing::Test {
  protected:
    instance_directory instance;
};

// The eighteen values that arch_cfg_sys_get_info reports.
struct information {
    kqbool has_inited, wait_apply, local_share, local_share_check, raft_learner;
    usint count, changing, xmal_port, raft_cnt, striping, center;
    byte seqno, mirror;
    guarded<65> ip;
    ulint xmal_hb, raft_hb, raft_vote, reserve;

    information() { memset(static_cast<void*>(this), guard, sizeof *this); }
    void get() {
        arch_cfg_sys_get_info(&has_inited, &count, &wait_apply, &changing, &seqno, ip.text,
                              &xmal_port, &xmal_hb, &raft_hb, &raft_vote, &raft_cnt, &reserve,
                              &local_share, &local_share_check, &raft_learner, &mirror, &striping,
                              &center);
    }
    std::vector<ulint> numbers() const {
        return {has_inited, count,   wait_apply,  changing,          seqno,       xmal_port,
                xmal_hb,    raft_hb, raft_vote,   raft_cnt,          reserve,     mirror,
                striping,   center,  local_share, local_share_check, raft_learner};
    }
};

TEST_F(buffers, information_of_a_registry_that_is_not_up_is_one_zero) {
    information got, untouched;
    arch_cfg_sys.xmal_port = 1;
    got.get();
    EXPECT_EQ(got.has_inited, 0u);
    got.has_inited = untouched.has_inited;
    EXPECT_EQ(memcmp(&got, &untouched, sizeof got), 0);
}

TEST_F(buffers, information_is_each_setting_in_its_own_place) {
    int number = 0;
    for (const auto& each : registry_fields())
        each.set(arch_cfg_sys, std::to_string(++number));
    memset(arch_cfg_sys.xmal_ip, 'i', 64);
    arch_cfg_sys.raft_self_id = 0x12345;
    ASSERT_EQ(arch_cfg_create(nullptr, "A", nullptr), 0);
    information got;
    got.get();
    std::vector<ulint> expected = {1, 1, 3, 4, 0x45, 6, 7, 8, 9, 13, 15, 18, 19, 11, 16, 17, 14};
    EXPECT_EQ(got.numbers(), expected);
    EXPECT_EQ(std::string(got.ip.text), std::string(64, 'i'));
    EXPECT_TRUE(got.ip.whole());
}

TEST_F(buffers, a_count_above_16_bits_is_cut) {
    arch_cfg_sys.has_inited = 1;
    arch_cfg_sys.arch_lst.count = 0x10002;
    information got;
    got.get();
    arch_cfg_sys.arch_lst.count = 0;
    EXPECT_EQ(got.count, 2);
}

TEST_F(buffers, pieces_stay_in_their_buffer) {
    std::string list = std::string(128, 'x') + "/" + std::string(129, 'y');
    schar* cursor = list.data();
    guarded<129> piece;
    EXPECT_EQ(arch_cfg_calc_next_inst_dest(&cursor, piece.text), 0);
    EXPECT_EQ(piece.text, std::string(128, 'x'));
    EXPECT_EQ(arch_cfg_calc_next_inst_dest(&cursor, piece.text), ARCH_E_TOO_LONG);
    EXPECT_STREQ(piece.text, "");
    EXPECT_EQ(cursor, list.data() + 129);
    cursor = nullptr;
    piece.text[0] = guard;
    EXPECT_EQ(arch_cfg_calc_next_inst_dest(&cursor, piece.text), 0);
    EXPECT_STREQ(piece.text, "");
    EXPECT_EQ(cursor, nullptr);
    EXPECT_TRUE(piece.whole());
}

TEST_F(buffers, names_are_cut_to_their_field) {
    struct {
        arch_cfg_t arch;
        schar behind[64];
    } record;
    memset(&record, guard, sizeof record);
    arch_init(&record.arch, std::string(300, 'n').c_str());
    EXPECT_EQ(record.arch.name, std::string(128, 'n'));
    EXPECT_EQ(std::string(record.behind, 64), std::string(64, guard));
    EXPECT_EQ(record.arch.link.prev, nullptr);
    EXPECT_EQ(record.arch.link.next, nullptr);
    arch_init(&record.arch, nullptr);
    EXPECT_STREQ(record.arch.name, "");
    EXPECT_EQ(arch_cfg_destroy(&record.arch), 0);
}

TEST_F(buffers, listed_destinations_are_as_many_as_counted) {
    arch_cfg_t* arch = nullptr;
    for (const char* name : {"A", "B"}) {
        ASSERT_EQ(arch_cfg_create(nullptr, name, &arch), 0);
        arch->type = ARCH_TYPE_LOCAL;
        memset(arch->dest, name[0], KQ_PATHNAME_MAX);
    }
    guarded<2 * sizeof(sysname_t)> entries;
    usint count = 0;
    arch_cfg_get_arch_arr_by_type(ARCH_TYPE_LOCAL, &count,
                                  reinterpret_cast<sysname_t*>(entries.text));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(entries.text, std::string(128, 'A'));
    EXPECT_EQ(entries.text + sizeof(sysname_t), std::string(128, 'B'));
    EXPECT_TRUE(entries.whole());
}

// A registry whose text is about as long as the buffer, its last directory of `length` characters.
class full_text : public buffers {
  protected:
    void SetUp() override {
        do {
            std::string name = std::to_string(arch_cfg_sys.arch_lst.count);
            ASSERT_EQ(arch_cfg_create(nullptr, name.c_str(), &last), 0);
            last->type = ARCH_TYPE_LOCAL;
            memset(last->dest, 'd', KQ_PATHNAME_MAX);
        } while (!written().empty());
    }

    // Makes the text fit, with less room left than a directory can take.
    size_t shorten() {
        last->dest[0] = '\0';
        if (written().empty()) last->link.prev->dest[50] = '\0';
        return written().size();
    }

    std::string written() {
        arch_cfg_hold lock;
        code = arch_cfg_sys_write_to_rec(buffer->text);
        EXPECT_TRUE(buffer->whole());
        return buffer->text;
    }

    std::unique_ptr<guarded<ARCH_CFG_TEXT_SIZE>> buffer =
        std::make_unique<guarded<ARCH_CFG_TEXT_SIZE>>();
    arch_cfg_t* last = nullptr;
    kqcode_t code = 0;
};

TEST_F(full_text, fits_up_to_its_last_character_or_is_refused_whole) {
    ASSERT_EQ(code, ARCH_E_OUT_OF_MEMORY);
    size_t shortest = shorten();
    ASSERT_EQ(code, 0);
    ASSERT_LT(shortest, ARCH_CFG_TEXT_SIZE - 1u);
    size_t room = ARCH_CFG_TEXT_SIZE - 1 - shortest;
    ASSERT_LT(room, static_cast<size_t>(KQ_PATHNAME_MAX));
    arch_cfg_set_dest(last, std::string(room, 'd').c_str());
    EXPECT_EQ(written().size(), ARCH_CFG_TEXT_SIZE - 1u);
    EXPECT_EQ(code, 0);
    arch_cfg_set_dest(last, std::string(room + 1, 'd').c_str());
    output_capture capture(instance.error_log());
    EXPECT_EQ(written(), "");
    EXPECT_EQ(code, ARCH_E_OUT_OF_MEMORY);
    std::string lines = capture.lines();
    EXPECT_EQ(lines.rfind("log 4: ", 0), 0u) << lines;
    EXPECT_EQ(lines.find('\n'), lines.size() - 1) << lines;
}

TEST_F(full_text, takes_no_piece_that_does_not_fit) {
    shorten();
    std::string whole = written();
    output_capture capture(instance.error_log());
    arch_cfg_hold lock;
    arch_cfg_write_all_local_ini(buffer->text, nullptr);
    EXPECT_EQ(buffer->text, whole);
    arch_cfg_set_dest(last, std::string(KQ_PATHNAME_MAX, 'd').c_str());
    arch_cfg_write_local_ini(buffer->text, nullptr, last);
    EXPECT_EQ(buffer->text, whole);
    EXPECT_TRUE(buffer->whole());
    EXPECT_NE(capture.lines().find("log 4: "), std::string::npos);
}

}  // namespace

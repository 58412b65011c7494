// What is written through pointers: neither too much nor beyond.
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <mem.h>
#include <stddef.h>

#include <cstring>
#include <memory>
#include <utility>

#include "support/capture.h"
#include "support/fields.h"
#include "support/instance.h"

namespace {

using namespace test_support;

constexpr char guard = 0x55;

// What is written to, with guard bytes behind it.
template <class Buffer>
struct guarded {
    Buffer text;
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
    guarded<schar[65]> ip;
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

TEST_F(buffers, information_is_each_setting_in_its_own_place) {
    information got, untouched;
    arch_cfg_sys.xmal_port = 1;
    got.get();
    EXPECT_EQ(std::exchange(got.has_inited, untouched.has_inited), 0u);
    EXPECT_EQ(memcmp(&got, &untouched, sizeof got), 0) << "a registry that is not up is one zero";
    int number = 0;
    for (const auto& each : registry_fields())
        each.set(arch_cfg_sys, std::to_string(++number));
    memset(arch_cfg_sys.xmal_ip, 'i', 64);
    arch_cfg_sys.raft_self_id = 0x12345;
    ASSERT_EQ(arch_cfg_create(nullptr, "A", nullptr), 0);
    got.get();
    std::vector<ulint> expected = {1, 1, 3, 4, 0x45, 6, 7, 8, 9, 13, 15, 18, 19, 11, 16, 17, 14};
    EXPECT_EQ(got.numbers(), expected);
    EXPECT_EQ(std::string(got.ip.text), std::string(64, 'i'));
    EXPECT_TRUE(got.ip.whole());
    arch_cfg_sys.arch_lst.count = 0x10002;
    got.get();
    arch_cfg_sys.arch_lst.count = 1;
    EXPECT_EQ(got.count, 2);
}

TEST_F(buffers, pieces_stay_in_their_buffer) {
    std::string list = std::string(128, 'x') + "/" + std::string(129, 'y');
    schar* cursor = list.data();
    guarded<sysname_t> piece;
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
    guarded<arch_cfg_t> record;
    arch_cfg_t& arch = record.text;
    arch_init(&arch, std::string(300, 'n').c_str());
    EXPECT_EQ(arch.name, std::string(128, 'n'));
    EXPECT_TRUE(record.whole() && arch.link.prev == nullptr && arch.link.next == nullptr);
    arch_init(&arch, nullptr);
    EXPECT_STREQ(arch.name, "");
    EXPECT_EQ(arch_cfg_destroy(&arch), 0);
}

TEST_F(buffers, listed_destinations_are_as_many_as_counted) {
    arch_cfg_t* arch = nullptr;
    for (const char* name : {"A", "B"}) {
        ASSERT_EQ(arch_cfg_create(nullptr, name, &arch), 0);
        arch->type = ARCH_TYPE_LOCAL;
        memset(arch->dest, name[0], KQ_PATHNAME_MAX);
    }
    guarded<sysname_t[2]> entries;
    usint count = 0;
    arch_cfg_get_arch_arr_by_type(ARCH_TYPE_LOCAL, &count, entries.text);
    EXPECT_EQ(count, 2);
    EXPECT_EQ(entries.text[0], std::string(128, 'A'));
    EXPECT_EQ(entries.text[1], std::string(128, 'B'));
    EXPECT_TRUE(entries.whole());
}

// An array as a caller keeps it, its elements checked whole.
struct path_array {
    kqenv_t env = mem_env_create(0);
    ulint size = 0, count = 0;
    pathname_t* paths = nullptr;

    kqcode_t fill(const schar* path) {
        return rarch_cfg_arch_path_arr_fill(env, &size, &count, &paths, path);
    }
};

TEST_F(buffers, an_array_of_paths_grows_by_sixteen_and_keeps_what_it_has) {
    path_array array;
    auto path = [](ulint i) { return std::string(256, static_cast<char>('0' + i % 70)); };
    for (ulint i = 0; i < 100; i++) {
        pathname_t* before = array.paths;
        bool grows = i % 16 == 0;
        kq_fault_arm("mem_malloc_ex", 1, 0);
        EXPECT_EQ(array.fill(path(i).c_str()), grows ? ARCH_E_OUT_OF_MEMORY : 0);
        kq_fault_disarm();
        if (grows) {
            EXPECT_TRUE(array.paths == before && array.size == i && array.count == i);
            ASSERT_EQ(array.fill((path(i) + "beyond").c_str()), 0);
        }
        EXPECT_EQ(array.count, i + 1);
        EXPECT_EQ(array.size, (i / 16 + 1) * 16);
        for (ulint earlier = 0; earlier <= i; earlier++)
            EXPECT_EQ(array.paths[earlier], path(earlier));
    }
    // A path of the array itself, where it grows; and none.
    while (array.count % 16 != 0)
        array.fill("/");
    EXPECT_EQ(array.fill(array.paths[3]), 0);
    EXPECT_EQ(array.paths[array.count - 1], path(3));
    EXPECT_EQ(array.fill(nullptr), 0);
    EXPECT_STREQ(array.paths[array.count - 1], "");
    mem_free(array.env, array.paths);
    EXPECT_EQ(mem_env_destroy(array.env), 0u);
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

    using text_buffer = guarded<schar[ARCH_CFG_TEXT_SIZE]>;
    std::unique_ptr<text_buffer> buffer = std::make_unique<text_buffer>();
    arch_cfg_t* last = nullptr;
    kqcode_t code = 0;
};

TEST_F(full_text, fits_up_to_its_last_character_or_is_refused_whole) {
    ASSERT_EQ(code, ARCH_E_OUT_OF_MEMORY);
    size_t room = ARCH_CFG_TEXT_SIZE - 1 - shorten();
    ASSERT_EQ(code, 0);
    ASSERT_TRUE(room > 0 && room < KQ_PATHNAME_MAX) << room;
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

// The bytes of the configuration message: what is written, and what a damaged one does.
#include <gtest/gtest.h>
#include <ini.h>
#include <kq_fault.h>

#include <cstring>
#include <memory>

#include "support/instance.h"
#include "support/peer_model.h"
#include "support/wire_text.h"

namespace {

using namespace test_support;

constexpr byte guard_byte = 0xA5;
constexpr size_t guard_size = 64;

using paths = std::vector<archive_path>;

class wire : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(instance.open("INSTANCE_NAME = A\n"), 0); }
    instance_directory instance;
};

// The message, in front of guard bytes, which must stay.
std::vector<byte> encoded(kqbool with_names) {
    arch_cfg_hold lock;
    ulint size = arch_cfg_info_len_calc(with_names);
    std::vector<byte> block(size + guard_size, guard_byte);
    EXPECT_EQ(arch_cfg_info_encode(block.data(), 0, size, with_names), size);
    EXPECT_EQ(static_cast<size_t>(std::count(block.begin() + size, block.end(), guard_byte)),
              guard_size);
    block.resize(size);
    return block;
}

// The answer to a message in a block of exactly its size; nothing may be held of the pool.
kqcode_t answer(const std::vector<byte>& body, kqbool is_shared, ulint64 limit = 0) {
    auto block = std::make_unique<byte[]>(body.size());
    std::copy(body.begin(), body.end(), block.get());
    kqenv_t env = mem_env_create(limit);
    kqcode_t code = 0;
    {
        arch_cfg_hold lock;
        code = arch_cfg_info_decode_and_check(env, block.get(), static_cast<ulint>(body.size()),
                                              is_shared);
    }
    EXPECT_EQ(mem_env_destroy(env), 0u) << wire_text(body.data(), body.size());
    return code;
}

// Who sends and who receives; in some the receiver agrees, in some it does not.
struct exchange {
    paths sender, receiver;
    kqcode_t shared, unshared;
};

const exchange exchanges[] = {
    {{{false, "/arch", "A"}, {true, "/rarch", "B"}},
     {{false, "/own", "A"}, {true, "/rarch", "b"}},
     0,
     ARCH_E_PEER_PATH_CONFLICT},
    {{{false, "/arch", "A"}, {true, "/b", "B"}, {true, "/long/path/of/c", "C"}},
     {{true, "/B", "B"}},
     ARCH_E_PEER_CFG_MISMATCH,
     0},
    {{{false, std::string(256, 'p'), "A"}, {true, std::string(255, 'q'), std::string(128, 'N')}},
     {{true, std::string(255, 'q'), std::string(128, 'n')}, {false, "/x", "A"}},
     0,
     ARCH_E_PEER_PATH_CONFLICT},
    {{{true, "", ""}, {false, "/x", "A"}}, {}, 0, 0},
};

// The answer must be the model's; what comes back counts how often which was given.
kqcode_t compare(const exchange& each, const std::vector<byte>& body, kqbool is_shared) {
    kqcode_t code = answer(body, is_shared);
    EXPECT_EQ(code, answer_of(each.receiver, 0, body.data(), body.size(), is_shared == 1))
        << wire_text(body.data(), body.size());
    return code;
}

void damage(const exchange& each, const std::vector<byte>& body, kqbool is_shared) {
    for (size_t size = 0; size < body.size(); size++)
        compare(each, {body.begin(), body.begin() + static_cast<std::ptrdiff_t>(size)}, is_shared);
    std::vector<byte> longer = body;
    longer.push_back(0);
    EXPECT_EQ(compare(each, longer, is_shared), ARCH_E_PEER_CFG_MISMATCH);
    for (size_t at = 0; at < body.size(); at++) {
        std::vector<byte> changed = body;
        for (byte value : {byte{0}, byte{1}, byte{0x7F}, byte{0x80}, byte{0xFF},
                           static_cast<byte>(body[at] - 1), static_cast<byte>(body[at] + 1)}) {
            changed[at] = value;
            compare(each, changed, is_shared);
        }
    }
}

TEST_F(wire, a_damaged_message_has_a_defined_answer) {
    for (const exchange& each : exchanges) {
        fill_registry(each.sender);
        std::vector<byte> with_names = encoded(1), without = encoded(0);
        with_names.erase(with_names.begin(), with_names.begin() + 4);
        without.erase(without.begin(), without.begin() + 4);
        EXPECT_EQ(with_names, message_of(each.sender, true));
        EXPECT_EQ(without, message_of(each.sender, false));
        fill_registry(each.receiver);
        EXPECT_EQ(compare(each, with_names, 1), each.shared);
        EXPECT_EQ(compare(each, without, 0), each.unshared);
        damage(each, with_names, 1);
        damage(each, without, 0);
        compare(each, with_names, 0);
        compare(each, without, 1);
    }
}

TEST_F(wire, a_refused_allocation_is_reported_and_nothing_held) {
    for (const exchange& each : exchanges) {
        fill_registry(each.receiver);
        for (kqbool is_shared : {1u, 0u}) {
            std::vector<byte> body = message_of(each.sender, is_shared == 1);
            kqcode_t expected = is_shared == 1 ? each.shared : each.unshared;
            ulint refused = 0;
            do {
                kq_fault_arm("mem_malloc_ex", ++refused, 0);
                kqcode_t code = answer(body, is_shared);
                EXPECT_EQ(code, kq_fault_hits() > 0 ? ARCH_E_OUT_OF_MEMORY : expected);
            } while (kq_fault_hits() > 0);
            kq_fault_disarm();
            EXPECT_GT(refused, each.sender.size());
            EXPECT_EQ(answer(body, is_shared, 1), ARCH_E_OUT_OF_MEMORY);
        }
    }
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

TEST_F(wire, an_array_of_paths_grows_by_sixteen_and_keeps_what_it_has) {
    path_array array;
    for (ulint i = 0; i < 100; i++) {
        ASSERT_EQ(
            array.fill(std::string(i % 2 ? 300 : 256, static_cast<char>('0' + i % 70)).c_str()), 0);
        EXPECT_EQ(array.count, i + 1);
        EXPECT_EQ(array.size, (i / 16 + 1) * 16);
        for (ulint earlier = 0; earlier <= i; earlier++)
            EXPECT_EQ(array.paths[earlier],
                      std::string(256, static_cast<char>('0' + earlier % 70)));
    }
    mem_free(array.env, array.paths);
    EXPECT_EQ(mem_env_destroy(array.env), 0u);
}

TEST_F(wire, an_array_that_cannot_grow_is_left_as_it_was) {
    path_array array;
    for (int i = 0; i < 16; i++)
        ASSERT_EQ(array.fill(("/" + std::to_string(i)).c_str()), 0);
    pathname_t* before = array.paths;
    kq_fault_arm("mem_malloc_ex", 1, 0);
    EXPECT_EQ(array.fill("/16"), ARCH_E_OUT_OF_MEMORY);
    EXPECT_EQ(array.paths, before);
    EXPECT_EQ(array.size, 16u);
    EXPECT_EQ(array.count, 16u);
    EXPECT_EQ(array.fill(array.paths[3]), 0);
    EXPECT_STREQ(array.paths[15], "/15");
    EXPECT_STREQ(array.paths[16], "/3");
    EXPECT_EQ(array.fill(nullptr), 0);
    EXPECT_STREQ(array.paths[17], "");
    mem_free(array.env, array.paths);
    EXPECT_EQ(mem_env_destroy(array.env), 0u);
}

}  // namespace

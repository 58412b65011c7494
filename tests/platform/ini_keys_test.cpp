// The key table of the configuration files, and what an integer is.
#include <gtest/gtest.h>
#include <ini.h>
#include <kq_instance.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "support/instance.h"

namespace {

constexpr ulint index_end = 300;

TEST(ini_keys, finds_every_key_in_any_case_and_nothing_near_it) {
    ulint found = 0;
    for (ulint index = 0; index < index_end; ++index) {
        const other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(index);
        if (entry == nullptr) continue;
        ++found;
        const std::string name = entry->para_name;
        std::string mixed = name;
        for (std::size_t i = 0; i < mixed.size(); i += 2) {
            mixed[i] = static_cast<char>(std::tolower(mixed[i]));
        }
        EXPECT_EQ(ini_get_other_ini_array_index(name.c_str()), static_cast<lint>(index)) << name;
        EXPECT_EQ(ini_get_other_ini_array_index(mixed.c_str()), static_cast<lint>(index)) << mixed;
        for (std::size_t i = 0; i < name.size(); ++i) {
            for (char wrong : {'\x7f', '\x1f', '0', '?'}) {
                std::string changed = name;
                changed[i] = wrong;
                EXPECT_EQ(ini_get_other_ini_array_index(changed.c_str()), -1) << changed;
            }
        }
        EXPECT_EQ(ini_get_other_ini_array_index((name + "_").c_str()), -1);
        EXPECT_EQ(ini_get_other_ini_array_index(name.substr(0, name.size() - 1).c_str()), -1);
    }
    EXPECT_GE(found, 35u);
    for (const char* text : {"", "A", "_", "AR", "NO_SUCH_KEY"}) {
        EXPECT_EQ(ini_get_other_ini_array_index(text), -1) << text;
    }
    EXPECT_EQ(ini_get_other_ini_array_index(nullptr), -1);
    EXPECT_EQ(ini_get_other_ini_array_index(std::string(100000, 'A').c_str()), -1);
}

TEST(ini_keys, has_all_keys_of_kqarch_ini_and_some_of_other_files) {
    for (ulint index = 0; index < index_end; ++index) {
        bool of_arch = (index >= 23 && index <= 54) || index == 250 || index == 251;
        if (of_arch) {
            EXPECT_NE(ini_get_other_ini_info_by_index(index), nullptr) << index;
        }
    }
    for (const char* other : {"MAL_INST_NAME", "DCR_SEQNO"}) {
        lint index = ini_get_other_ini_array_index(other);
        EXPECT_TRUE((index >= 0 && index <= 22) || (index >= 55 && index <= 249)) << other;
    }
    EXPECT_EQ(ini_get_other_ini_info_by_index(~0u), nullptr);
}

TEST(ini_keys, writes_the_line_that_the_reader_reads) {
    for (ulint index = 0; index < index_end; ++index) {
        const other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(index);
        if (entry == nullptr) continue;
        std::string name = entry->para_name;
        EXPECT_EQ(entry->para_string, name + (entry->is_str ? " = %s\n" : " = %u\n"));
        EXPECT_LE(entry->min_value, entry->max_value) << name;
    }
}

TEST(ini_keys, keeps_changed_bounds_until_the_next_open) {
    test_support::instance_directory directory;
    other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(ini_index_arch_reserve_time);
    EXPECT_EQ(entry->max_value, 4294967294);
    ini_set_other_ini_range(ini_index_arch_reserve_time, -5, 5000000000);
    ini_set_other_ini_range(200, 0, 1);
    EXPECT_EQ(entry->min_value, -5);
    EXPECT_EQ(entry->max_value, 5000000000);
    EXPECT_EQ(directory.open(), 0);
    EXPECT_EQ(entry->min_value, 0);
    EXPECT_EQ(entry->max_value, 4294967294);
}

TEST(ini_keys, knows_an_integer) {
    for (const char* text : {"0", "7", "4294967295", "00", "017", "037777777777", "0x0", "0xAbF",
                             "0xffffffff", "0x00000000000000000001"}) {
        EXPECT_EQ(ini_is_integer(text), 1u) << text;
    }
    for (const char* text :
         {"", " 1", "1 ", "+1", "-1", "4294967296", "08", "019", "040000000000", "0x", "0xg",
          "0x100000000", "1a", "1.0", "0X1", "99999999999999999999999999", "x1", "\xb2"}) {
        EXPECT_EQ(ini_is_integer(text), 0u) << text;
    }
    EXPECT_EQ(ini_is_integer(nullptr), 0u);
}

}  // namespace

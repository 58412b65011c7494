// The tables of kqarch explain against what they describe: the header, the INI module's key table,
// and the module itself.
#include "catalogue.h"

#include <arch_cfg.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ini.h>

#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "support/instance.h"

namespace {

using testing::ContainerEq;

// Lines that begin with ARCH_E_NAME = NUMBER.
std::map<std::string, int> codes_of_header() {
    std::istringstream header(test_support::read_file(PROJECT_DIRECTORY "/include/arch_cfg.h"));
    std::map<std::string, int> codes;
    for (std::string line; std::getline(header, line);) {
        std::istringstream words(line);
        std::string name, equals;
        int code = 0;
        if (words >> name >> equals >> code && name.starts_with("ARCH_E_") && equals == "=")
            codes[name] = code;
    }
    return codes;
}

bool is_key_of_archive(ulint index) {
    return (index >= 23 && index <= 54) || index == 250 || index == 251;
}

// KEY = VALUE lines.
std::map<std::string, std::string> lines_of(const std::string& text) {
    std::map<std::string, std::string> values;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        const size_t equals = line.find(" = ");
        if (equals != line.npos) values[line.substr(0, equals)] = line.substr(equals + 3);
    }
    return values;
}

std::set<std::string> keys_of(const std::map<std::string, std::string>& values) {
    std::set<std::string> keys;
    for (const auto& [key, value] : values)
        keys.insert(key);
    return keys;
}

class written_registry : public testing::Test {
  protected:
    written_registry() { arch_cfg_sys_init_env(); }
    ~written_registry() override { arch_cfg_sys_destroy(); }

    static std::map<std::string, std::string> written() {
        std::vector<schar> text(ARCH_CFG_TEXT_SIZE);
        const arch_cfg_hold lock;
        EXPECT_EQ(arch_cfg_sys_write_to_rec(text.data()), 0);
        return lines_of(text.data());
    }

    static arch_cfg_t* add(ulint type) {
        arch_cfg_t* arch = nullptr;
        EXPECT_EQ(arch_cfg_create(nullptr, "SECTION", &arch), 0);
        arch->type = static_cast<usint>(type);
        return arch;
    }
};

TEST(catalogue, explains_the_codes_of_the_header_and_no_others) {
    std::map<std::string, int> explained;
    for (const code_entry& entry : all_codes())
        explained[entry.name] = entry.code;
    EXPECT_EQ(explained.size(), all_codes().size()) << "a name stands twice";
    EXPECT_THAT(explained, ContainerEq(codes_of_header()));
}

TEST(catalogue, has_the_keys_of_the_key_table_and_no_others) {
    std::set<ulint> described;
    for (const key_entry& key : all_keys()) {
        const other_ini_alterable_t* info = ini_get_other_ini_info_by_index(key.index);
        ASSERT_TRUE(info != nullptr && is_key_of_archive(key.index)) << key.name;
        EXPECT_TRUE(described.insert(key.index).second) << key.name;
        EXPECT_STREQ(key.name, info->para_name);
        EXPECT_EQ(key.is_text ? 1U : 0U, info->is_str) << key.name;
        EXPECT_EQ(key.types != 0, key.scope == key_scope::section) << key.name;
    }
    for (ulint index = 0; index < 400; ++index)
        EXPECT_EQ(described.contains(index), is_key_of_archive(index)) << "index " << index;
}

// Without a section the module takes global keys alone; "?" is a value that no integer key takes.
TEST_F(written_registry, scope_is_the_module_s) {
    for (const key_entry& key : all_keys()) {
        schar value[] = "?";
        const kqcode_t code = arch_cfg_add_value(nullptr, nullptr, key.name, value);
        EXPECT_EQ(code == ARCH_E_NO_SECTION, key.scope == key_scope::section) << key.name;
    }
}

TEST(catalogue, has_every_type_under_its_number) {
    ASSERT_EQ(all_types().size(), 9U);
    for (const type_entry& type : all_types()) {
        EXPECT_STREQ(type.name, arch_cfg_get_arch_name_by_type(type.number));
        EXPECT_EQ(find_type(type.name), &type);
        EXPECT_FALSE(type.rules.empty()) << type.name;
        for (const type_rule& rule : type.rules)
            EXPECT_NE(find_code(rule.code), nullptr) << type.name << ": " << rule.sentence;
    }
}

// What the module writes for a record with every field set is what the tables say it writes, and
// for a new one the defaults; a key whose default depends on others shows a marker.
TEST_F(written_registry, keys_written_of_each_type_are_those_that_it_uses_with_their_defaults) {
    int compared = 0;
    for (const type_entry& type : all_types()) {
        arch_cfg_t* arch = add(type.number);
        for (const auto& [name, value] : written()) {
            const key_entry* key = find_key(name);
            ASSERT_NE(key, nullptr) << name;
            if (key->is_text || value == "255" || value == "65535") continue;
            EXPECT_EQ(key->default_value, value) << type.name << " " << name;
            ++compared;
        }
        arch->wait_apply = 0;
        arch->arch_dest_port = arch->arch_center_id = 1;
        arch->arch_dest_ip[0] = '1';
        std::set<std::string> expected;
        for (const key_entry& key : all_keys())
            if (key.written_back && (key.types & type_bit(type.number)) != 0)
                expected.insert(key.name);
        EXPECT_THAT(keys_of(written()), ContainerEq(expected)) << type.name;
        arch_cfg_destroy_for_drs(arch);
    }
    EXPECT_GE(compared, 12);
}

TEST_F(written_registry, global_keys_written_are_those_said_to_be) {
    std::set<std::string> expected;
    for (const key_entry& key : all_keys()) {
        if (key.scope != key_scope::global) continue;
        schar one_of_all[] = "32";
        schar flag[] = "1";
        const other_ini_alterable_t* info = ini_get_other_ini_info_by_index(key.index);
        const bool is_small = key.is_text || info->max_value < 32;
        EXPECT_EQ(arch_cfg_add_value(nullptr, nullptr, key.name, is_small ? flag : one_of_all), 0)
            << key.name;
        if (key.written_back) expected.insert(key.name);
    }
    EXPECT_THAT(keys_of(written()), ContainerEq(expected));
}

}  // namespace

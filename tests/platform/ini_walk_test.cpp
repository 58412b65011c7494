// How every INI file is cut into lines, and the reader of kqarch.ini on top of that.
#include <gtest/gtest.h>
#include <kq_fault.h>
#include <kq_instance.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "ini.h"
#include "support/capture.h"
#include "support/instance.h"

using test_support::descriptor_capture;
using test_support::instance_directory;
using test_support::write_file;

namespace {

kqcode_t show_line(const kq_ini_line_t* line, void* context) {
    static const char* const kinds[] = {"section", "key", "bad"};
    *static_cast<std::string*>(context) += std::to_string(line->number) + " " + kinds[line->kind] +
                                           "<" + line->key + "><" + line->value + ">\n";
    return std::string_view(line->key) == "stop" ? -7 : 0;
}

std::string walked(const std::string& text, kqcode_t expected = 0) {
    write_file("walked.ini", text);
    std::string shown;
    EXPECT_EQ(kq_ini_walk("walked.ini", show_line, &shown), expected);
    return shown;
}

TEST(ini_walk, cuts_a_text_into_lines) {
    using namespace std::string_literals;
    instance_directory directory;
    const std::string neither = "neither a section nor KEY = VALUE";
    struct {
        std::string text;
        std::string lines;
    } cases[] = {
        {"", ""},
        {"\n\n \t\n", ""},
        {"a=b", "1 key<a><b>\n"},
        {"\xef\xbb\xbf[s]\r\na=b\r\n", "1 section<s><>\n2 key<a><b>\n"},
        {"\xef\xbb\xbf", ""},
        {"a=b\r", "1 key<a><b>\n"},
        {"[s\r ]\r\r\na=\r b \r \r\n", "1 section<s><>\n2 key<a><b>\n"},
        {"a=b\rc", "1 key<a><b\rc>\n"},
        {" \t a b \t = \t c d \t \nx =\n", "1 key<a b><c d>\n2 key<x><>\n"},
        {"# c\n \t; c\na = 1 # 2 ; 3\n#", "3 key<a><1 # 2 ; 3>\n"},
        {"a=b=c\na==", "1 key<a><b=c>\n2 key<a><=>\n"},
        {" [ \t s t \t ] \t\n[]\n[a]b]\n[x=y]",
         "1 section<s t><>\n2 section<><>\n3 section<a]b><>\n4 section<x=y><>\n"},
        {"[\n[a] # c\n[a",
         "1 bad<><a section header without ]>\n2 bad<><a section header without ]>\n"
         "3 bad<><a section header without ]>\n"},
        {"word\n= value\n \t=\n]", "1 bad<><" + neither +
                                       ">\n2 bad<><no key before =>\n3 bad<><no key before =>\n"
                                       "4 bad<><" +
                                       neither + ">\n"},
        {"a=\0b\n#\0\n[\0]\n\0\nc=d\n"s,
         "1 bad<><NUL byte>\n2 bad<><NUL byte>\n3 bad<><NUL byte>\n4 bad<><NUL byte>\n"
         "5 key<c><d>\n"},
        {"\xe4=\xff", "1 key<\xe4><\xff>\n"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(walked(each.text), each.lines) << each.text;
}

TEST(ini_walk, takes_lines_of_any_length) {
    instance_directory directory;
    std::string value(300000, 'v');
    EXPECT_EQ(walked("k=" + value + "\n[" + value + "]"),
              "1 key<k><" + value + ">\n2 section<" + value + "><>\n");
}

TEST(ini_walk, ends_where_the_callback_says) {
    instance_directory directory;
    EXPECT_EQ(walked("a=1\nstop=2\nb=3\n", -7), "1 key<a><1>\n2 key<stop><2>\n");
}

// A file of /proc says that it has no bytes and has some.
TEST(ini_walk, reads_what_is_longer_than_it_said) {
    std::string shown;
    EXPECT_EQ(kq_ini_walk("/proc/self/status", show_line, &shown), 0);
    EXPECT_NE(shown.find("1 bad"), std::string::npos);
}

TEST(ini_walk, refuses_what_cannot_be_read) {
    instance_directory directory;
    std::filesystem::create_directory("directory");
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    write_file("file", "a=b\n");
    std::string shown;
    for (const char* path :
         {"missing", "directory", "pipe", "/dev/zero", "file/below", "", "+A/x"}) {
        EXPECT_EQ(kq_ini_walk(path, show_line, &shown), -140) << path;
    }
    EXPECT_EQ(kq_ini_walk(nullptr, show_line, &shown), -140);
    struct {
        const char* what;
        kqcode_t code;
    } faults[] = {{"file_open", -140}, {"file_read", -140}, {"os_malloc", -503}};
    for (const auto& fault : faults) {
        kq_fault_arm(fault.what, 1, 0);
        EXPECT_EQ(kq_ini_walk("file", show_line, &shown), fault.code) << fault.what;
        EXPECT_EQ(kq_fault_hits(), 1u) << fault.what;
        kq_fault_disarm();
    }
    EXPECT_EQ(shown, "");
    EXPECT_EQ(kq_ini_walk("file", show_line, &shown), 0);
}

TEST(arch_reader, says_what_was_refused_and_never_a_value) {
    instance_directory directory;
    ASSERT_EQ(directory.open(), 0);
    const std::string section = "[S]\nARCH_TYPE = SUBSCRIBE\n";
    struct {
        std::string text;
        kqcode_t code;
        std::string refusal;
    } cases[] = {
        {"ARCH_TYPE", -803, "kqarch.ini:1: neither a section nor KEY = VALUE, code -803\n"},
        {"[a]\n\n[A]\n", -801, "kqarch.ini:3: A refused, code -801\n"},
        {section + "Arch_Send_Delay = SECRET\n", -803,
         "kqarch.ini:3: Arch_Send_Delay refused, code -803\n"},
        {section + "no\tsuch\x1bkey = SECRET\n", -802,
         "kqarch.ini:3: no\\x09such\\x1Bkey refused, code -802\n"},
        {"[" + std::string(129, 'n') + "]\n", -951,
         "kqarch.ini:1: " + std::string(129, 'n') + " refused, code -951\n"},
        {section + "MAL_INST_NAME = SECRET\n", -802,
         "kqarch.ini:3: MAL_INST_NAME refused, code -802\n"},
        {"# nothing\n", 0, ""},
    };
    for (const auto& each : cases) {
        arch_cfg_sys_destroy();
        arch_cfg_sys_init_env();
        write_file("kqarch.ini", each.text);
        descriptor_capture console(2);
        EXPECT_EQ(ini_read_other_info_for_posix("kqarch.ini", INI_READ_ARCH), each.code);
        EXPECT_EQ(console.text(), each.refusal);
    }
    EXPECT_EQ(ini_read_other_info_for_posix("kqarch.ini", 1), -802);
}

}  // namespace

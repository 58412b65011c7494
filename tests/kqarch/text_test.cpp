#include <gtest/gtest.h>

#include "diff.h"
#include "password.h"
#include "text.h"

TEST(password, is_hidden_in_its_place_only) {
    struct row {
        const char* text;
        text_place place;
        const char* shown;
    };
    constexpr row rows[] = {
        {"sysdba/secret@host:5236", text_place::subscriber, "sysdba/***@host:5236"},
        {"sysdba/se@cr/et@host", text_place::subscriber, "sysdba/***@host"},
        {"/secret@host", text_place::subscriber, "/***@host"},
        {"sysdba/secret", text_place::subscriber, "sysdba/***"},
        {"sysdba/@host", text_place::subscriber, "sysdba/@host"},
        {"sysdba secret@host", text_place::subscriber, "sysdba ***@host"},
        {"sysdba@host:5236", text_place::subscriber, "sysdba@host:5236"},
        {"host:5236", text_place::subscriber, "host:5236"},
        {"sysdba:secret@host", text_place::other, "sysdba:***@host"},
        {"SYSDBA/SECRET@HOST", text_place::other, "SYSDBA/***@HOST"},
        {"INST_A/INST_B", text_place::other, "INST_A/INST_B"},
        {"/data/x@y", text_place::path, "/data/x@y"},
        {"+GROUP/x@y", text_place::path, "+GROUP/x@y"},
        {"sysdba/secret@host", text_place::path, "sysdba/***@host"},
    };
    for (const row& one : rows)
        EXPECT_EQ(hide_password(one.text, one.place), one.shown);
}

TEST(password, is_hidden_wherever_a_message_quotes_it) {
    password_list passwords;
    passwords.learn("sysdba/Se@cr/abc@host", text_place::subscriber);
    passwords.learn("sysdba/k\x07y-long@host", text_place::other);
    passwords.learn("INST_A/INST_B", text_place::other);
    EXPECT_EQ(passwords.hide("ARCH_DEST sysdba/Se@cr/abc@host is bad"),
              "ARCH_DEST sysdba/***@host is bad");
    EXPECT_EQ(passwords.hide("Instance SE@CR cannot be found"), "Instance *** cannot be found");
    EXPECT_EQ(passwords.hide("value k\\x07y-LONG@host"), "value ***@host");
    EXPECT_EQ(passwords.hide("INST_A and INST_B, abcd, x_abc"), "INST_A and INST_B, abcd, x_abc");
}

TEST(visible, escapes_what_could_steer_a_terminal) {
    struct row {
        const char* text;
        const char* shown;
    };
    constexpr row rows[] = {
        {"plain \xc3\xa4 \xe4\xb8\xad \xf0\x9f\x98\x80",
         "plain \xc3\xa4 \xe4\xb8\xad \xf0\x9f\x98\x80"},
        {"\x1b[2J\x7f", "\\x1b[2J\\x7f"},
        {"\xc2\x9b", "\\xc2\\x9b"},
        {"a\xe2\x80\xae"
         "b",
         "a\\xe2\\x80\\xaeb"},
        {"\xe2\x81\xa6\xe2\x80\x8f\xd8\x9c", "\\xe2\\x81\\xa6\\xe2\\x80\\x8f\\xd8\\x9c"},
        {"\x9b\xff", "\\x9b\\xff"},
        {"\xc0\x80\xed\xa0\x80", "\\xc0\\x80\\xed\\xa0\\x80"},
        {"\xe4\xb8", "\\xe4\\xb8"},
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"},
    };
    for (const row& one : rows)
        EXPECT_EQ(visible(one.text), one.shown);
}

TEST(shell_word, is_quoted_where_a_shell_would_take_it_apart) {
    EXPECT_EQ(shell_word("it's"), "'it'\\''s'");
    EXPECT_EQ(shell_word("-db"), "./-db");
    EXPECT_EQ(shell_word("- d"), "'./- d'");
    EXPECT_EQ(shell_word(""), "''");
}

TEST(names, that_are_close_are_suggested) {
    const std::vector<std::string> names = {"ARCH_DEST", "ARCH_DEST_IP", "ARCH_TYPE"};
    EXPECT_EQ(close_names("arch_tyep", names), std::vector<std::string>{"ARCH_TYPE"});
    EXPECT_EQ(close_names("ARCH_DST", names).front(), "ARCH_DEST");
    for (const std::string& text : {std::string(), std::string(100000, 'A')})
        EXPECT_TRUE(close_names(text, names).empty());
}

TEST(difference, turns_one_text_into_the_other) {
    const std::vector<std::string> before = {"a", "b", "c", "d", "e", "f", "g", "h", "i"};
    const std::vector<std::string> after = {"0", "a", "b", "c", "d", "e", "f", "g", "h"};
    std::string shown;
    for (const diff_hunk& hunk : diff(before, after)) {
        shown += heading_of(hunk);
        for (const diff_line& line : hunk.lines)
            shown += "=-+"[static_cast<int>(line.kind)] + line.text;
    }
    EXPECT_EQ(shown, "@@ -1,3 +1,4 @@+0=a=b=c@@ -6,4 +7,3 @@=f=g=h-i");
    EXPECT_TRUE(diff(before, before).empty());
    EXPECT_EQ(heading_of(diff({}, {"a"}).front()), "@@ -0,0 +1,1 @@");
}

// Texts, addresses and login texts.
#include <arpa/inet.h>
#include <asm3.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <netinet/in.h>
#include <utl.h>

#include <string>

namespace {

TEST(texts, are_raised_and_cut_in_place) {
    schar text[] = "aZ_9\xe4z";
    EXPECT_EQ(kq_strupr(text), text);
    EXPECT_STREQ(text, "AZ_9\xe4Z");
    EXPECT_EQ(kq_strupr(nullptr), nullptr);
    struct {
        std::string path;
        const char* expected;
    } cases[] = {{"/a/b///", "/a/b"}, {"a", "a"}, {"/", "/"}, {"///", "/"}, {"", ""}, {"a/", "a"}};
    for (auto& each : cases) {
        cut_path_end_dir(each.path.data());
        EXPECT_STREQ(each.path.c_str(), each.expected);
    }
}

TEST(texts, are_path_names_without_control_characters) {
    EXPECT_EQ(is_valid_pathname(std::string(256, 'p').c_str(), 0), 1u);
    EXPECT_EQ(is_valid_pathname("\xe4 \xff", 1), 1u);
    for (const std::string& bad : {std::string(), std::string(257, 'p'), std::string("a\nb"),
                                   std::string("\x7f"), std::string("a\x1f")}) {
        EXPECT_EQ(is_valid_pathname(bad.c_str(), 0), 0u) << bad;
    }
    EXPECT_EQ(is_valid_pathname(nullptr, 0), 0u);
}

TEST(striping, has_five_sizes) {
    ulint valid = 0;
    for (ulint size = 0; size < 1000; ++size)
        valid += asm3_striping_size_is_valid(size);
    EXPECT_EQ(valid, 5u);
    for (ulint size : {0u, 32u, 64u, 128u, 256u})
        EXPECT_EQ(asm3_striping_size_is_valid(size), 1u);
}

TEST(addresses, of_this_machine_are_local) {
    for (const char* ip : {"localhost", "LocalHost", "127.0.0.1", "127.255.1.2", "::1", "[::1]",
                           "0:0:0:0:0:0:0:1", "::ffff:127.0.0.9", "::1%lo", "[::1%lo]"}) {
        EXPECT_EQ(ip_is_local_ip(ip), 1u) << ip;
    }
    for (const char* ip : {"", " ", "192.0.2.1", "2001:db8::1", "localhost ", "127.1", "128.0.0.1",
                           "1.127.0.0", "::2", "[]", "[::1", "::1]", "::1%", "%lo", "[127.0.0.1]",
                           "127.0.0.1%lo", "0.0.0.0", "::", "localhost.example"}) {
        EXPECT_EQ(ip_is_local_ip(ip), 0u) << ip;
    }
    EXPECT_EQ(ip_is_local_ip(nullptr), 0u);
    EXPECT_EQ(ip_is_local_ip(std::string(100000, '1').c_str()), 0u);
}

TEST(addresses, of_every_interface_are_local) {
    ifaddrs* first = nullptr;
    ASSERT_EQ(getifaddrs(&first), 0);
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr == nullptr) continue;
        schar text[INET6_ADDRSTRLEN] = "";
        int family = each->ifa_addr->sa_family;
        const void* address = family == AF_INET
                                  ? static_cast<const void*>(
                                        &reinterpret_cast<sockaddr_in*>(each->ifa_addr)->sin_addr)
                                  : &reinterpret_cast<sockaddr_in6*>(each->ifa_addr)->sin6_addr;
        if (family != AF_INET && family != AF_INET6) continue;
        ASSERT_NE(inet_ntop(family, address, text, sizeof text), nullptr);
        EXPECT_EQ(ip_is_local_ip(text), 1u) << text;
    }
    freeifaddrs(first);
}

TEST(login_texts, are_split_at_the_last_at) {
    const std::string long_part(128, 'x');
    const std::string too_long(129, 'x');
    struct {
        std::string text;
        const char* expected; /* user|password|server|has_user has_password, or null */
    } cases[] = {
        {"server", "||server|00"},
        {"host:5236", "||host:5236|00"},
        {"user@server", "user||server|10"},
        {"user/pass@server", "user|pass|server|11"},
        {"user/@server", "user||server|11"},
        {"user/p@ss/w@rd@server", "user|p@ss/w@rd|server|11"},
        {"a/b", "||a/b|00"},
        {"", nullptr},
        {"@server", nullptr},
        {"/pass@server", nullptr},
        {"user@", nullptr},
        {"@", nullptr},
        {"us\ner@server", nullptr},
        {"server\x7f", nullptr},
        {too_long, nullptr},
        {too_long + "@s", nullptr},
        {"u/" + too_long + "@s", nullptr},
    };
    for (const auto& each : cases) {
        sysname_t user = "?";
        sysname_t password = "?";
        sysname_t server = "?";
        utl_euid_t euid;
        utl_init_uid_ext(&euid);
        lint result =
            utl_resolve_userid_low(each.text.c_str(), user, password, server, &euid, nullptr);
        std::string parts = std::string(user) + "|" + password + "|" + server + "|" +
                            std::to_string(euid.has_user) + std::to_string(euid.has_password);
        EXPECT_EQ(result == 0, each.expected != nullptr) << each.text;
        EXPECT_EQ(parts, each.expected != nullptr ? each.expected : "|||00") << each.text;
    }
    sysname_t user, password, server;
    utl_euid_t euid;
    EXPECT_EQ(utl_resolve_userid_low((long_part + "/" + long_part + "@" + long_part).c_str(), user,
                                     password, server, &euid, nullptr),
              0);
    EXPECT_EQ(server, long_part);
    EXPECT_NE(utl_resolve_userid_low(nullptr, user, password, server, &euid, nullptr), 0);
    EXPECT_STREQ(server, "");
}

}  // namespace

// What the scenarios of the layer do not show: faults one after the other, every key and every
// interface, and calls without what they work on.
#include <arpa/inet.h>
#include <conf.h>
#include <dcr_dll.h>
#include <elog.h>
#include <gtest/gtest.h>
#include <ifaddrs.h>
#include <ini.h>
#include <kq_fault.h>
#include <kq_instance.h>
#include <mal_cfg.h>
#include <mem.h>
#include <netinet/in.h>
#include <os.h>
#include <osfile.h>
#include <utl.h>

#include <cctype>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "support/capture.h"
#include "support/instance.h"

using namespace test_support;

namespace {

TEST(config_files, survive_every_fault) {
    bool met = true;
    for (ulint nth = 1; met; ++nth) {
        SCOPED_TRACE(nth);
        instance_directory directory;
        write_file("kqtimer.ini", "[T]\n");
        write_file("kqmal.ini", "[m]\nMAL_INST_NAME = M\n");
        write_file("kq.ini", "MAL_INI = 1\nTIMER_INI = 1\n");
        descriptor_capture console(2);
        kq_fault_arm("any", nth, 0);
        kqcode_t code = kq_instance_open(".");
        met = kq_fault_hits() > 0;
        kq_fault_disarm();
        EXPECT_EQ(code < 0, met);
        EXPECT_EQ(ini_get_instance_name() == nullptr, met);
        EXPECT_EQ(mal_cfg_get_by_inst_name("M") == nullptr, met);
        EXPECT_EQ(console.text().empty(), !met);
        ASSERT_LT(nth, 100u);
    }
}

TEST(ini_keys, are_found_in_any_case_and_nothing_near_them) {
    ulint found = 0;
    for (ulint index = 0; index < 300; ++index) {
        const other_ini_alterable_t* entry = ini_get_other_ini_info_by_index(index);
        if (entry == nullptr) continue;
        ++found;
        const std::string name = entry->para_name;
        EXPECT_EQ(entry->para_string, name + (entry->is_str ? " = %s\n" : " = %u\n"));
        EXPECT_LE(entry->min_value, entry->max_value) << name;
        std::string mixed = name;
        for (std::size_t i = 0; i < mixed.size(); i += 2)
            mixed[i] = static_cast<char>(std::tolower(mixed[i]));
        EXPECT_EQ(ini_get_other_ini_array_index(name.c_str()), static_cast<lint>(index)) << name;
        EXPECT_EQ(ini_get_other_ini_array_index(mixed.c_str()), static_cast<lint>(index)) << mixed;
        std::vector<std::string> near = {name + "_", name.substr(0, name.size() - 1)};
        for (std::size_t i = 0; i < name.size(); ++i) {
            for (char wrong : {'\x7f', '\x1f', '0', '?'})
                near.push_back(name.substr(0, i) + wrong + name.substr(i + 1));
        }
        for (const std::string& text : near)
            EXPECT_EQ(ini_get_other_ini_array_index(text.c_str()), -1) << text;
    }
    EXPECT_GE(found, 35u);
    EXPECT_EQ(ini_get_other_ini_info_by_index(~0u), nullptr);
}

TEST(addresses, of_every_interface_are_local) {
    ifaddrs* first = nullptr;
    ASSERT_EQ(getifaddrs(&first), 0);
    for (const ifaddrs* each = first; each != nullptr; each = each->ifa_next) {
        int family = each->ifa_addr != nullptr ? each->ifa_addr->sa_family : 0;
        const void* address = &reinterpret_cast<sockaddr_in6*>(each->ifa_addr)->sin6_addr;
        if (family == AF_INET)
            address = &reinterpret_cast<sockaddr_in*>(each->ifa_addr)->sin_addr;
        else if (family != AF_INET6)
            continue;
        schar text[INET6_ADDRSTRLEN] = "";
        ASSERT_NE(inet_ntop(family, address, text, sizeof text), nullptr);
        EXPECT_EQ(ip_is_local_ip(text), 1u) << text;
    }
    freeifaddrs(first);
}

TEST(error_log, is_whole_with_many_threads) {
    instance_directory directory;
    const std::string text(5000, 't');
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < 50; ++line)
                elog_report_ex(4, "%s", text.c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    const std::string all = read_file(directory.error_log());
    const std::string stamp = "2026-01-31 12:00:00.000 ";
    const size_t length = stamp.size() + 4 + text.size() + 1;
    ASSERT_EQ(all.size(), 200 * length);
    for (size_t at = 0; at < all.size(); at += length)
        ASSERT_EQ(all.substr(at + stamp.size(), length - stamp.size()), "[4] " + text + "\n");
}

TEST(dry_runs, do_not_wait) {
    ulint64 before = kq_get_tick_count();
    os_thread_sleep_low(20);
    EXPECT_GE(kq_get_tick_count() - before, 20u);
    os_set_dry_run(1);
    os_thread_sleep_low(60000);
    os_set_dry_run(0);
    EXPECT_LT(kq_get_tick_count() - before, 30000u);
}

// A caller may leave out what it does not want, and whoever hands over nothing gets nothing.
TEST(nothing, is_taken_where_something_should_be) {
    instance_directory directory;
    // As a compiler sees them that does not know formats.
    void (*print)(FILE*, const schar*, ...) = aq_fprintf_inner;
    void (*report)(ulint, const schar*, ...) = elog_report_ex;
    descriptor_capture console(2);
    print(nullptr, "nobody");
    print(stderr, nullptr);
    report(4, nullptr);
    elog_report_ex(2, "%s", "");
    elog_try_report_kqerr(-1, nullptr, 7);
    EXPECT_EQ(console.text(), "");
    const std::string logged = read_file(directory.error_log());
    EXPECT_NE(logged.find(" [2] \n"), logged.npos) << logged;
    EXPECT_NE(logged.find(" [4] code -1 raised at ?:7\n"), logged.npos) << logged;
    EXPECT_EQ(std::count(logged.begin(), logged.end(), '\n'), 2);
    EXPECT_LT(conf_get_global_conf_value(1, nullptr), 0);
    byte count = 0, numbers[DCR_EP_MAX], map[DCR_EP_MAX];
    EXPECT_LT(dcr3_dll_group_get_ok_ep_arr(0, &count, numbers, map), 0);
    EXPECT_EQ(kqerr_get_err_desc_with_langage(-12345, 0, nullptr, nullptr, 0), -12345);
    EXPECT_EQ(kq_strupr(nullptr), nullptr);
    cut_path_end_dir(nullptr);
    ini_set_other_ini_range(200, 0, 1);
    utl_init_uid_ext(nullptr);
    EXPECT_EQ(utl_resolve_userid_low("u/p@s", nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    os_mutex2_create(nullptr);
    os_mutex2_free(nullptr);
    mem_free(nullptr, nullptr);
}

}  // namespace

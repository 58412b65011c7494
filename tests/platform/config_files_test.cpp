// The files of an instance directory: what they are read into and how they are refused.
#include <conf.h>
#include <dcr_dll.h>
#include <gtest/gtest.h>
#include <ini.h>
#include <kq_fault.h>
#include <kq_instance.h>
#include <mal_cfg.h>
#include <ntimer_cfg.h>
#include <utl.h>

#include <algorithm>
#include <map>
#include <string>

#include "support/capture.h"
#include "support/instance.h"

using test_support::descriptor_capture;
using test_support::instance_directory;
using test_support::write_file;

namespace {

// Opens an instance of kq.ini and one other file, which kq.ini switches on.
kqcode_t open_with(const std::string& name, const std::string& text) {
    static const std::map<std::string, std::string> switches = {{"kqmal.ini", "MAL_INI = 1\n"},
                                                                {"kqtimer.ini", "TIMER_INI = 1\n"},
                                                                {"kqdcr.ini", "DCR_INI = 1\n"},
                                                                {"kqsvc.ini", "SVC_INI = 1\n"}};
    if (name != "kq.ini") write_file("kq.ini", switches.at(name));
    write_file(name, text);
    return kq_instance_open(".");
}

TEST(kq_ini, has_defaults) {
    instance_directory directory;
    ASSERT_EQ(open_with("kq.ini", ""), 0);
    EXPECT_STREQ(ini_get_instance_name(), "KQSERVER");
    EXPECT_STREQ(ini_get_str_value(ini_index_instance_name), "KQSERVER");
    EXPECT_STREQ(ini_get_str_value(ini_index_logfile_postfix_name), "log");
    EXPECT_EQ(ini_get_instance_port(), 5236);
    EXPECT_EQ(ini_get_value(0, ini_index_port_num), 5236u);
    for (ulint index : {ini_index_arch_flag, ini_index_mpp_flag, ini_index_hpc_node,
                        ini_index_dfs_flag, ini_index_instance_name}) {
        EXPECT_EQ(ini_get_value(0, index), 0u) << index;
    }
    EXPECT_EQ(ini_get_str_value(ini_index_port_num), nullptr);
    EXPECT_STREQ(global_ini_info.config_path, ".");
    EXPECT_EQ(global_ini_info.mail_flag, 0u);
    EXPECT_EQ(is_dpc_bp_or_mp_or_bs(), 0u);
}

TEST(kq_ini, is_read_and_forgotten) {
    instance_directory directory;
    write_file("kqmal.ini", "");
    ASSERT_EQ(open_with("kq.ini",
                        "instance_name = node\nPORT_NUM = 0x10\nARCH_FLAG=1\nMPP_FLAG=1\n"
                        "LOGFILE_POSTFIX_NAME = arc\nHPC_NODE = 16\nDFS_FLAG = 1\nMAL_INI = 1\n"),
              0);
    EXPECT_STREQ(global_ini_info.instance_name, "node");
    EXPECT_EQ(ini_get_instance_port(), 16);
    EXPECT_EQ(ini_get_value(0, ini_index_arch_flag), 1u);
    EXPECT_EQ(ini_get_value(0, ini_index_mpp_flag), 1u);
    EXPECT_EQ(ini_get_value(0, ini_index_hpc_node), 16u);
    EXPECT_EQ(ini_get_value(0, ini_index_dfs_flag), 1u);
    EXPECT_EQ(global_ini_info.mail_flag, 1u);
    kq_instance_close();
    EXPECT_EQ(ini_get_instance_name(), nullptr);
    EXPECT_EQ(ini_get_value(0, ini_index_arch_flag), 0u);
    EXPECT_STREQ(global_ini_info.config_path, "");
}

TEST(kq_ini, is_changed_in_memory_until_the_next_open) {
    instance_directory directory;
    ASSERT_EQ(open_with("kq.ini", ""), 0);
    std::string postfix(300, 'p');
    ini_set_value(ini_index_hpc_node, 3);
    ini_set_str_value(ini_index_instance_name, "OTHER");
    ini_set_str_value(ini_index_logfile_postfix_name, postfix.c_str());
    EXPECT_EQ(ini_get_value(0, ini_index_hpc_node), 3u);
    EXPECT_STREQ(ini_get_instance_name(), "OTHER");
    EXPECT_EQ(ini_get_str_value(ini_index_logfile_postfix_name), postfix);
    ASSERT_EQ(kq_instance_open("."), 0);
    EXPECT_EQ(ini_get_value(0, ini_index_hpc_node), 0u);
    EXPECT_STREQ(ini_get_instance_name(), "KQSERVER");
}

TEST(kq_ini, knows_the_dpc_modes) {
    instance_directory directory;
    for (const char* mode : {"NONE", "SP", "BP", "mp", "BS"}) {
        ASSERT_EQ(open_with("kq.ini", std::string("DPC_MODE = ") + mode), 0);
        bool expected = std::string_view(mode) != "NONE" && std::string_view(mode) != "SP";
        EXPECT_EQ(is_dpc_bp_or_mp_or_bs(), expected ? 1u : 0u) << mode;
    }
}

TEST(config_files, are_refused_with_file_and_line) {
    instance_directory directory;
    const std::string long_name(129, 'n');
    std::string seventeen;
    for (int i = 0; i < 17; ++i) {
        seventeen += "[n" + std::to_string(i) + "]\nDCR_SEQNO=" + std::to_string(i) +
                     "\nEP_SEQNO=" + std::to_string(i % 16) + "\n";
    }
    struct {
        const char* file;
        std::string text;
        kqcode_t code;
        const char* refusal;
    } cases[] = {
        {"kq.ini", "\nNO_SUCH\x1b = 1\n", -802, "2: unknown key NO_SUCH\\x1B"},
        {"kq.ini", "[section]", -803, "1: a section has no place in this file"},
        {"kq.ini", "word", -803, "1: neither a section nor KEY = VALUE"},
        {"kq.ini", "PORT_NUM = 0", -803, "1: PORT_NUM must be a number from 1 to 65535"},
        {"kq.ini", "PORT_NUM = 65536", -803, "1: PORT_NUM must be a number from 1 to 65535"},
        {"kq.ini", "HPC_NODE = 17", -803, "1: HPC_NODE must be a number from 0 to 16"},
        {"kq.ini", "ARCH_FLAG = yes", -803, "1: ARCH_FLAG must be a number from 0 to 1"},
        {"kq.ini", "INSTANCE_NAME =", -803, "1: INSTANCE_NAME must have 1 to 16 characters"},
        {"kq.ini", "INSTANCE_NAME = ABCDEFGHIJKLMNOPQ", -803,
         "1: INSTANCE_NAME must have 1 to 16 characters"},
        {"kq.ini", "DPC_MODE = XP", -803, "1: DPC_MODE must be NONE, BP, MP, BS or SP"},
        {"kqmal.ini", "MAL_INST_NAME = A", -104, "1: a key before the first section"},
        {"kqmal.ini", "[a]\nMAL_INST_NAME=X\n\n[b]\nMAL_HOST=h\n[c]", -803,
         "4: MAL_INST_NAME is missing"},
        {"kqmal.ini", "[a]", -803, "1: MAL_INST_NAME is missing"},
        {"kqmal.ini", "[a]\nMAL_INST_NAME=X\n[b]\nMAL_INST_NAME=x\n", -801,
         "4: MAL_INST_NAME is given twice"},
        {"kqmal.ini", "[a]\nMAL_INST_NAME=X\nMAL_INST_NAME=Y\n", -801,
         "3: MAL_INST_NAME is given twice"},
        {"kqmal.ini", "[a]\nMAL_INST_PORT=65536\n", -803,
         "2: MAL_INST_PORT must be a number from 0 to 65535"},
        {"kqmal.ini", "[a]\nMAL_INST_NAME=" + long_name, -803,
         "2: MAL_INST_NAME must have 1 to 128 characters"},
        {"kqmal.ini", "[a]\nEP_HOST=h", -802, "2: unknown key EP_HOST"},
        {"kqtimer.ini", "A = 1", -104, "1: a key before the first section"},
        {"kqtimer.ini", "[]", -803, "1: a name has 1 to 128 characters"},
        {"kqtimer.ini", "[" + long_name + "]", -803, "1: a name has 1 to 128 characters"},
        {"kqdcr.ini", "EP_SEQNO = 1", -104, "1: a key before the first section"},
        {"kqdcr.ini", "[a]\nDCR_SEQNO=1\nEP_SEQNO=1\n[A]", -801,
         "4: an endpoint of that name is given twice"},
        {"kqdcr.ini", "[a]\nDCR_SEQNO=1\nEP_SEQNO=1\n[b]\nDCR_SEQNO=1", -803,
         "5: DCR_SEQNO is given twice"},
        {"kqdcr.ini", "[a]\nDCR_SEQNO=1\nEP_SEQNO=1\n[b]\nEP_SEQNO=0x1", -803,
         "5: EP_SEQNO is given twice"},
        {"kqdcr.ini", "[a]\nEP_SEQNO=1\nEP_SEQNO=2", -803, "3: EP_SEQNO is given twice"},
        {"kqdcr.ini", "[a]\nDCR_SEQNO=256", -803, "2: DCR_SEQNO must be a number from 0 to 255"},
        {"kqdcr.ini", "[a]\nEP_SEQNO=16", -803, "2: EP_SEQNO must be a number from 0 to 15"},
        {"kqdcr.ini", "[a]\nSTATE=BAD", -803, "2: STATE must be OK or ERR"},
        {"kqdcr.ini", "[a]\nEP_SEQNO=1\n", -803, "1: DCR_SEQNO is missing"},
        {"kqdcr.ini", "[a]\nDCR_SEQNO=1\n[b]\n", -803, "1: EP_SEQNO is missing"},
        {"kqdcr.ini", seventeen, -803, "49: more than 16 endpoints"},
        {"kqsvc.ini", "[s]", -803, "1: a section has no place in this file"},
        {"kqsvc.ini", long_name + " = h", -803, "1: a name has 1 to 128 characters"},
    };
    for (const auto& each : cases) {
        descriptor_capture console(2);
        EXPECT_EQ(open_with(each.file, each.text), each.code) << each.text;
        EXPECT_EQ(console.text(), std::string("./") + each.file + ":" + each.refusal + "\n");
        EXPECT_EQ(ini_get_instance_name(), nullptr) << each.text;
    }
}

TEST(config_files, must_be_there) {
    instance_directory directory;
    descriptor_capture console(2);
    EXPECT_EQ(kq_instance_open("no/such"), -140);
    EXPECT_EQ(kq_instance_open(nullptr), -140);
    EXPECT_EQ(kq_instance_open(std::string(257, 'd').c_str()), -140);
    EXPECT_EQ(directory.open("DCR_INI = 1\n"), -140);
    EXPECT_EQ(ini_get_instance_name(), nullptr);
}

TEST(config_files, are_read_from_the_working_directory_without_a_path) {
    instance_directory directory;
    write_file("kq.ini", "INSTANCE_NAME = HERE\n");
    ASSERT_EQ(kq_instance_open(""), 0);
    EXPECT_STREQ(ini_get_instance_name(), "HERE");
    EXPECT_STREQ(global_ini_info.config_path, "");
}

// Whatever fails on the way, the instance is closed, and the next open is whole.
TEST(config_files, survive_every_fault) {
    instance_directory directory;
    write_file("kqtimer.ini", "[T]\n");
    write_file("kqmal.ini", "[m]\nMAL_INST_NAME = M\n");
    for (ulint nth = 1;; ++nth) {
        write_file("kq.ini", "MAL_INI = 1\nTIMER_INI = 1\n");
        descriptor_capture console(2);
        kq_fault_arm("any", nth, 0);
        kqcode_t code = kq_instance_open(".");
        bool fired = kq_fault_hits() > 0;
        kq_fault_disarm();
        EXPECT_EQ(code < 0, fired) << nth;
        EXPECT_EQ(ini_get_instance_name() == nullptr, fired) << nth;
        EXPECT_EQ(mal_cfg_get_by_inst_name("M") == nullptr, fired) << nth;
        EXPECT_EQ(console.text().empty(), !fired) << nth;
        if (!fired) break;
        ASSERT_LT(nth, 100u);
    }
}

TEST(mal_registry, finds_instances_by_name_and_site) {
    instance_directory directory;
    ASSERT_EQ(open_with("kqmal.ini",
                        "[x]\nMAL_INST_NAME = One\nMAL_INST_HOST = 10.0.0.1\n"
                        "MAL_INST_PORT = 65535\nMAL_HOST = h\nMAL_PORT = 1\n[x]\n"
                        "MAL_INST_NAME = two\n"),
              0);
    mal_cfg_t* one = mal_cfg_get_by_inst_name("ONE");
    ASSERT_NE(one, nullptr);
    EXPECT_STREQ(one->inst_name, "One");
    EXPECT_STREQ(one->inst_ip, "10.0.0.1");
    EXPECT_EQ(one->inst_port, 65535);
    EXPECT_STREQ(mal_cfg_get_inst_name_by_site(1), "two");
    EXPECT_EQ(mal_cfg_get_inst_name_by_site(2), nullptr);
    EXPECT_EQ(mal_cfg_get_by_inst_name("On"), nullptr);
    EXPECT_EQ(mal_cfg_get_by_inst_name(nullptr), nullptr);
    mal_cfg_sys_enter();
    EXPECT_EQ(mal_cfg_sys_get()->n_mal, 2);
    EXPECT_EQ(mal_cfg_sys_get()->mal_arr, one);
    EXPECT_EQ(mal_cfg_sys_get()->mal_arr[1].inst_port, 0);
    mal_cfg_sys_exit();
    ASSERT_EQ(directory.open(), 0);
    EXPECT_EQ(mal_cfg_sys_get()->n_mal, 0);
    EXPECT_EQ(mal_cfg_get_by_inst_name("ONE"), nullptr);
}

TEST(timer_registry, finds_timers_by_name) {
    instance_directory directory;
    ASSERT_EQ(open_with("kqtimer.ini", "[Daily]\nTYPE = 2\nanything = \n[daily]\n"), 0);
    ASSERT_NE(ntimer_cfg_find_by_name("DAILY"), nullptr);
    EXPECT_STREQ(ntimer_cfg_find_by_name("daily")->name, "Daily");
    EXPECT_EQ(ntimer_cfg_find_by_name("dail"), nullptr);
    EXPECT_EQ(ntimer_cfg_find_by_name(nullptr), nullptr);
    kq_instance_close();
    EXPECT_EQ(ntimer_cfg_find_by_name("DAILY"), nullptr);
}

TEST(cluster_registry, knows_the_group) {
    instance_directory directory;
    usint self = 99;
    usint group = 99;
    EXPECT_LT(dcr3_dll_get_group_seq_by_type(4, "N0", 0, &self, &group), 0);
    ASSERT_EQ(open_with("kqdcr.ini",
                        "[n0]\nDCR_SEQNO=0\nEP_SEQNO=3\nEP_HOST=h\nEP_LSNR_PORT=9\n"
                        "[n1]\nDCR_SEQNO=200\nEP_SEQNO=0\nSTATE=ERR\n"
                        "[n2]\nDCR_SEQNO=1\nEP_SEQNO=15\nSTATE=ok\n"),
              0);
    ASSERT_EQ(dcr3_dll_get_group_seq_by_type(4, "N0", 0, &self, &group), 0);
    EXPECT_EQ(self, 3);
    EXPECT_LT(dcr3_dll_get_group_seq_by_type(4, "n", 0, &self, &group), 0);
    EXPECT_LT(dcr3_dll_get_group_seq_by_type(3, "n0", 0, &self, &group), 0);
    byte count = 99;
    byte numbers[DCR_EP_MAX] = {};
    byte map[DCR_EP_MAX] = {};
    ASSERT_EQ(dcr3_dll_group_get_ok_ep_arr(group, &count, numbers, map), 0);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(numbers[0], 0);
    EXPECT_EQ(numbers[1], 1);
    EXPECT_EQ(dcr3_dll_get_ep_seqno_by_dcr_seqno(0, map), 3);
    EXPECT_EQ(dcr3_dll_get_ep_seqno_by_dcr_seqno(200, map), 0);
    EXPECT_EQ(dcr3_dll_get_ep_seqno_by_dcr_seqno(1, map), 15);
    EXPECT_EQ(dcr3_dll_get_ep_seqno_by_dcr_seqno(77, map), 255);
    ASSERT_EQ(dcr3_dll_group_get_err_ep_arr(group, &count, numbers, map), 0);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(numbers[0], 200);
    EXPECT_LT(dcr3_dll_group_get_ok_ep_arr(static_cast<usint>(group + 1), &count, numbers, map), 0);
    dcr_ep_t endpoint;
    ASSERT_EQ(dcr3_dll_get_ep_info_by_type(4, 0, &endpoint), 0);
    EXPECT_STREQ(endpoint.ep_name, "n0");
    EXPECT_STREQ(endpoint.ep_host, "h");
    EXPECT_EQ(endpoint.ep_seqno, 3);
    EXPECT_EQ(endpoint.ep_lsnr_port, 9);
    EXPECT_LT(dcr3_dll_get_ep_info_by_type(4, 2, &endpoint), 0);
}

TEST(services, are_listed_in_file_order) {
    instance_directory directory;
    kq_global_svc_conf_t conf;
    EXPECT_EQ(conf_get_global_conf_value(1, &conf), 0);
    EXPECT_EQ(conf.svc_nodes.count, 0u);
    EXPECT_EQ(conf.svc_nodes.start, nullptr);
    std::string addresses(100000, ',');
    ASSERT_EQ(open_with("kqsvc.ini", "S1 = a:1, b:2\ns1 =\nS2 = " + addresses), 0);
    ASSERT_EQ(conf_get_global_conf_value(1, &conf), 0);
    ASSERT_EQ(conf.svc_nodes.count, 3u);
    std::string forwards;
    for (kq_lst_node_t* node = conf.svc_nodes.start; node != nullptr; node = node->next) {
        auto* service = static_cast<kq_svc_node_t*>(node->data);
        forwards += std::string(service->name) + "=" + service->ips_str + ";";
    }
    EXPECT_EQ(forwards, "S1=a:1, b:2;s1=;S2=" + addresses + ";");
    EXPECT_EQ(conf.svc_nodes.end->prev->prev, conf.svc_nodes.start);
    EXPECT_EQ(conf.svc_nodes.start->prev, nullptr);
}

}  // namespace

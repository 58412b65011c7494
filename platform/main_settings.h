// What kq.ini says, for the rest of the layer.
#pragma once

#include <string>

#include "kqtype.h"

namespace platform {

struct main_settings_t {
    std::string instance_name = "KQSERVER";
    std::string logfile_postfix_name = "log";
    std::string dpc_mode = "NONE";
    std::string asm_root;
    ulint port_num = 5236;
    ulint arch_flag = 0;
    ulint mpp_flag = 0;
    ulint hpc_node = 0;
    ulint dfs_flag = 0;
    ulint mal_ini = 0;
    ulint timer_ini = 0;
    ulint dcr_ini = 0;
    ulint svc_ini = 0;
};

const main_settings_t& main_settings();

}  // namespace platform

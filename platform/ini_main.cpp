// kq.ini: the main configuration.
#include <cstring>

#include "config_reader.h"
#include "ini.h"
#include "instance_files.h"
#include "main_settings.h"
#include "text.h"

global_ini_info_t global_ini_info;

using namespace platform;

namespace {

using settings = main_settings_t;

constexpr config_row<settings> main_rows[] = {
    {"INSTANCE_NAME", 1, 16, nullptr, &settings::instance_name},
    {"PORT_NUM", 1, 65535, &settings::port_num, nullptr},
    {"ARCH_FLAG", 0, 1, &settings::arch_flag, nullptr},
    {"MPP_FLAG", 0, 1, &settings::mpp_flag, nullptr},
    {"LOGFILE_POSTFIX_NAME", 1, 16, nullptr, &settings::logfile_postfix_name},
    {"HPC_NODE", 0, 16, &settings::hpc_node, nullptr},
    {"DFS_FLAG", 0, 1, &settings::dfs_flag, nullptr},
    {"MAL_INI", 0, 1, &settings::mal_ini, nullptr},
    {"TIMER_INI", 0, 1, &settings::timer_ini, nullptr},
    {"DCR_INI", 0, 1, &settings::dcr_ini, nullptr},
    {"SVC_INI", 0, 1, &settings::svc_ini, nullptr},
    {"DPC_MODE", 2, 4, nullptr, &settings::dpc_mode},
    {"ASM_ROOT", 0, ~0u, nullptr, &settings::asm_root},
};

constexpr std::string_view dpc_modes[] = {"NONE", "BP", "MP", "BS", "SP"};

settings current;
bool is_loaded = false;

class main_reader : public config_reader {
  public:
    using config_reader::config_reader;
    settings read_settings;

  private:
    kqcode_t on_key(const schar* key, const schar* value) override {
        kqcode_t code = store(main_rows, read_settings, key, value);
        if (code < 0) return code;
        for (std::string_view mode : dpc_modes) {
            if (equal_ignoring_case(read_settings.dpc_mode, mode)) return 0;
        }
        return refuse(ARCH_E_INVALID_VALUE, "DPC_MODE must be NONE, BP, MP, BS or SP");
    }
};

ulint* number_of(ulint index) {
    switch (index) {
        case ini_index_port_num:
            return &current.port_num;
        case ini_index_arch_flag:
            return &current.arch_flag;
        case ini_index_mpp_flag:
            return &current.mpp_flag;
        case ini_index_hpc_node:
            return &current.hpc_node;
        case ini_index_dfs_flag:
            return &current.dfs_flag;
        default:
            return nullptr;
    }
}

}  // namespace

const main_settings_t& platform::main_settings() {
    return current;
}

kqcode_t platform::read_main_settings(const std::string& path, const schar* config_dir) {
    main_reader reader(path);
    kqcode_t code = reader.read();
    if (code < 0) return code;
    current = std::move(reader.read_settings);
    copy_text(global_ini_info.config_path, config_dir);
    copy_text(global_ini_info.instance_name, current.instance_name);
    global_ini_info.mail_flag = current.mal_ini;
    is_loaded = true;
    return 0;
}

void platform::forget_main_settings() {
    current = {};
    global_ini_info = {};
    is_loaded = false;
}

ulint ini_get_value(ulint, ulint index) {
    const ulint* number = number_of(index);
    return number != nullptr ? *number : 0;
}

schar* ini_get_str_value(ulint index) {
    if (index == ini_index_instance_name) return global_ini_info.instance_name;
    if (index == ini_index_logfile_postfix_name) return current.logfile_postfix_name.data();
    return nullptr;
}

schar* ini_get_instance_name(void) {
    return is_loaded ? global_ini_info.instance_name : nullptr;
}

usint ini_get_instance_port(void) {
    return static_cast<usint>(current.port_num);
}

void ini_set_value(ulint index, ulint value) {
    ulint* number = number_of(index);
    if (number != nullptr) *number = value;
}

void ini_set_str_value(ulint index, const schar* text) {
    if (text == nullptr) return;
    try {
        if (index == ini_index_instance_name) copy_text(global_ini_info.instance_name, text);
        if (index == ini_index_logfile_postfix_name) current.logfile_postfix_name = text;
    } catch (const std::bad_alloc&) {
        // The old text stays.
    }
}

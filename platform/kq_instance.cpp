#include "kq_instance.h"

#include <cstdio>
#include <new>
#include <string>

#include "arch_cfg.h"
#include "instance_files.h"
#include "main_settings.h"

using namespace platform;

namespace {

// The other files, each with the key of kq.ini that switches it on.
struct instance_file {
    ulint main_settings_t::*is_used;
    const schar* name;
    kqcode_t (*read)(const std::string& path);
};

constexpr instance_file instance_files[] = {
    {&main_settings_t::mal_ini, "kqmal.ini", read_mal_registry},
    {&main_settings_t::timer_ini, "kqtimer.ini", read_timer_registry},
    {&main_settings_t::dcr_ini, "kqdcr.ini", read_cluster_registry},
    {&main_settings_t::svc_ini, "kqsvc.ini", read_services},
};

kqcode_t read_all(const std::string& config_dir) {
    std::string prefix = config_dir.empty() ? "" : config_dir + "/";
    if (config_dir.size() > KQ_PATHNAME_MAX) {
        (void)std::fprintf(stderr, "%skq.ini:0: the directory has more than %d characters\n",
                           prefix.c_str(), +KQ_PATHNAME_MAX);
        return ARCH_E_FILE_OPEN;
    }
    kqcode_t code = read_main_settings(prefix + "kq.ini", config_dir.c_str());
    for (const instance_file& file : instance_files) {
        if (code < 0) return code;
        if (main_settings().*file.is_used != 0) code = file.read(prefix + file.name);
    }
    return code;
}

}  // namespace

kqcode_t kq_instance_open(const schar* config_dir) {
    kq_instance_close();
    if (config_dir == nullptr) return ARCH_E_FILE_OPEN;
    kqcode_t code = ARCH_E_OUT_OF_MEMORY;
    try {
        code = read_all(config_dir);
    } catch (const std::bad_alloc&) {
        (void)std::fprintf(stderr, "%s/kq.ini:0: out of memory\n", config_dir);
    }
    if (code < 0) kq_instance_close();
    return code;
}

void kq_instance_close(void) {
    forget_main_settings();
    forget_mal_registry();
    forget_timer_registry();
    forget_cluster_registry();
    forget_services();
    restore_key_bounds();
}

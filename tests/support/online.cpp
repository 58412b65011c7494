#include "support/online.h"

#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

#include "support/fields.h"

namespace test_support {

directories_in_memory::directories_in_memory()
    : set(getenv("TMPDIR") == nullptr && access("/dev/shm", W_OK) == 0) {
    if (set) setenv("TMPDIR", "/dev/shm", 0);
}

directories_in_memory::~directories_in_memory() {
    if (set) unsetenv("TMPDIR");
}

online_instance::online_instance() {
    std::string mal;
    for (int i = 0; i <= 20; i++) {
        std::string name = i == 0 ? "KQSERVER" : "INST" + std::to_string(i);
        mal += "[" + name + "]\nMAL_INST_NAME = " + name +
               "\nMAL_INST_HOST = 192.0.2.1\nMAL_INST_PORT = 5236\n";
    }
    write_file("kqmal.ini", mal);
    write_file("kqtimer.ini", "[T1]\n[T2]\n");
    if (open("MAL_INI = 1\nTIMER_INI = 1\n") != 0) throw std::runtime_error("no instance");
}

kqcode_t start_from(const std::string& text) {
    write_file("kqarch.ini", text);
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init(nullptr, 1, 1);
}

kqcode_t start_up_aside(kqbool valid_chk, const std::function<void()>& look) {
    arch_cfg_sys_t running = arch_cfg_sys;
    arch_cfg_sys.arch_lst = {};
    arch_cfg_sys_destroy();
    kqcode_t code = arch_cfg_sys_init_with_check(nullptr, 1, valid_chk, 1);
    if (code == 0) {
        look();
        arch_cfg_sys_destroy();
    }
    arch_cfg_sys_init_env();
    running.mutex = arch_cfg_sys.mutex;
    arch_cfg_sys = running;
    return code;
}

std::string registry_text() {
    static schar text[ARCH_CFG_TEXT_SIZE];
    arch_cfg_hold lock;
    kqcode_t code = arch_cfg_sys_write_to_rec(text);
    if (code != 0) throw std::runtime_error("the registry does not fit into a text");
    return text;
}

std::string registry_fields_text() {
    std::string text = differences(registry_fields(), arch_cfg_sys) + "\n";
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        text += "[" + std::string(arch->name) + "]" + differences(record_fields(), *arch) + "\n";
    return text;
}

}  // namespace test_support

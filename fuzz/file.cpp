// Any bytes as kqarch.ini, read and checked as a server does at its start. A refusal has a code and
// leaves nothing behind; what is accepted is a sound registry, whose texts keep to their lines and
// whose destinations are found by their own names, and what reading line by line gives, without what
// start-up knows to be quick. No descriptor stays open.
//
// A first line of "#" and a letter chooses the server by its bits: 1 looks at ASM storage, 2 for
// timers, 4 is a cluster, 8 is MPP, 16 loads and does not check. "#C" is the usual one.
#include <elog.h>
#include <ini.h>
#include <kq_instance.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "file_server.h"

using namespace test_support;

namespace {

struct choice {
    kqbool asm_paths, timers, loads_alone;
};

choice choose(std::string_view text) {
    unsigned bits = text.size() > 1 && text[0] == '#' ? static_cast<unsigned char>(text[1]) : 3;
    ini_set_value(ini_index_hpc_node, (bits & 4) != 0 ? 2 : 0);
    ini_set_value(ini_index_mpp_flag, (bits & 8) != 0);
    return {bits & 1, (bits & 2) != 0, (bits & 16) != 0};
}

kqcode_t hand_over(const kq_ini_line_t* line, void* section) {
    auto record = static_cast<arch_cfg_t**>(section);
    if (line->kind == KQ_INI_BAD) return ARCH_E_INVALID_VALUE;
    if (line->kind == KQ_INI_SECTION) return arch_cfg_create(nullptr, line->key, record);
    return arch_cfg_add_value(nullptr, *record, line->key, line->value);
}

// What the lines come to; the records of a file that is refused are dropped.
kqcode_t read_line_by_line(ulint& sections) {
    arch_cfg_t* section = nullptr;
    arch_cfg_sys_init_env();
    kqcode_t code = kq_ini_walk("kqarch.ini", hand_over, &section);
    sections = arch_cfg_sys.arch_lst.count;
    arch_cfg_sys_destroy();
    return code;
}

void look_at(const arch_cfg_t& arch) {
    for (const schar* text : {arch.name, arch.dest, arch.timer_name, arch.arch_dest_ip})
        demand(strchr(text, '\n') == nullptr, "a text has more than a line");
    demand(arch.n_inst <= ARCH_INST_MAX, "there are too many instances");
    bool is_sought = arch.type == ARCH_TYPE_LOCAL || arch.type == ARCH_TYPE_RAFT ||
                     arch.type == ARCH_TYPE_LEARNER;
    demand(!is_sought || arch_cfg_find_by_dest_low_without_enter(nullptr, arch.dest) != nullptr,
           "a destination is not found by its own name");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static file_server running;
    const int lowest = running.unused_descriptor();
    std::string_view text(reinterpret_cast<const char*>(data), size);
    choice chosen = choose(text);
    running.write(text);
    arch_cfg_sys_destroy();
    ulint sections = 0;
    kqcode_t read = read_line_by_line(sections);
    kqcode_t code =
        arch_cfg_sys_init_with_check(nullptr, chosen.timers, !chosen.loads_alone, chosen.asm_paths);
    demand(code <= 0, "start-up has succeeded with a code");
    demand(code == read || (read == 0 && !chosen.loads_alone), "the lines have another verdict");
    demand(arch_cfg_sys.arch_lst.count == (code == 0 ? sections : 0), "the sections are others");
    demand(list_fault(arch_cfg_sys).empty(), "the list is not sound");
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        look_at(*arch);
    demand(running.unused_descriptor() == lowest, "a descriptor is left open");
    return 0;
}

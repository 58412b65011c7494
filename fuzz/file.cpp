// Any bytes as kqarch.ini, read and checked as a server does at its start. A refusal has a code and
// leaves nothing behind; what is accepted is a sound registry, whose texts keep to their lines and
// whose destinations are found by their own names. No descriptor stays open.
//
// A first line of "#" and a letter chooses the server by its bits: 1 looks at ASM storage, 2 for
// timers, 4 is a cluster, 8 is MPP, 16 loads and does not check. "#C" is the usual one.
#include <elog.h>
#include <ini.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "file_server.h"

using namespace test_support;

namespace {

kqcode_t start(file_server& running, std::string_view text) {
    unsigned chosen = text.size() > 1 && text[0] == '#' ? static_cast<unsigned char>(text[1]) : 3;
    ini_set_value(ini_index_hpc_node, (chosen & 4) != 0 ? 2 : 0);
    ini_set_value(ini_index_mpp_flag, (chosen & 8) != 0);
    running.write(text);
    return arch_cfg_sys_init_with_check(nullptr, (chosen & 2) != 0, (chosen & 16) == 0, chosen & 1);
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
    arch_cfg_sys_destroy();
    kqcode_t code = start(running, {reinterpret_cast<const char*>(data), size});
    demand(code <= 0, "start-up has succeeded with a code");
    demand(code == 0 || arch_cfg_sys.arch_lst.count == 0, "a refusal leaves records");
    demand(list_fault(arch_cfg_sys).empty(), "the list is not sound");
    for (const arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next)
        look_at(*arch);
    demand(running.unused_descriptor() == lowest, "a descriptor is left open");
    return 0;
}

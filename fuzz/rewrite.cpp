// Any bytes as kqarch.ini: what start-up accepts is written back, and reading that gives the same
// text again. Only a vote interval of 0, which is never written, is missed by a Raft group.
#include <arch_cfg.h>

#include "file_server.h"

using namespace test_support;

namespace {

kqcode_t start_again() {
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init(nullptr, 1, 1);
}

kqcode_t write_back() {
    registry_lock lock;
    return arch_cfg_sys_write_to_file();
}

bool misses_its_interval() {
    registry_lock lock;
    return arch_cfg_sys.raft_vote_interval == 0 && arch_cfg_get_cnt_by_type(ARCH_TYPE_RAFT) > 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static file_server running;
    running.write({reinterpret_cast<const char*>(data), size});
    if (start_again() != 0) return 0;
    kqcode_t expected = misses_its_interval() ? ARCH_E_INVALID_VALUE : 0;
    std::string text = registry_text();
    demand(write_back() == 0, "the file cannot be written back");
    kqcode_t code = start_again();
    demand(code == expected, "what was written has another verdict");
    demand(code < 0 || registry_text() == text, "what was written is read as another");
    return 0;
}

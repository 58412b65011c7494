// Any bytes as kqarch.ini: what start-up accepts is written back, and reading that gives the same
// text again. Two kinds of file do not come back, as they are read: a Raft group misses a vote
// interval of 0, which is never written; and a section that is told two types, or a text that its
// type keeps under another key, holds what its type does not write.
#include <kq_instance.h>
#include <strings.h>

#include "file_server.h"

using namespace test_support;

namespace {

struct section_keys {
    std::string type;
    bool is_muddled = false;

    bool has_type(const char* name) const { return strcasecmp(type.c_str(), name) == 0; }
};

kqcode_t note(const kq_ini_line_t* line, void* context) {
    auto& keys = *static_cast<section_keys*>(context);
    bool is_type = strcasecmp(line->key, "ARCH_TYPE") == 0;
    bool is_path = strcasecmp(line->key, "ARCH_INCOMING_PATH") == 0;
    bool is_timer = strcasecmp(line->key, "ARCH_TIMER_NAME") == 0;
    if ((is_type && !keys.type.empty()) || (is_path && !keys.has_type("REMOTE")) ||
        (is_timer && keys.has_type("REMOTE")))
        keys.is_muddled = true;
    if (is_type) keys.type = line->value;
    if (line->kind == KQ_INI_SECTION) keys.type.clear();
    return 0;
}

bool is_muddled() {
    section_keys keys;
    kq_ini_walk("kqarch.ini", note, &keys);
    return keys.is_muddled;
}

kqcode_t start_again() {
    arch_cfg_sys_destroy();
    return arch_cfg_sys_init(nullptr, 1, 1);
}

kqcode_t write_back() {
    arch_cfg_hold lock;
    return arch_cfg_sys_write_to_file();
}

bool misses_its_interval() {
    arch_cfg_hold lock;
    return arch_cfg_sys.raft_vote_interval == 0 && arch_cfg_get_cnt_by_type(ARCH_TYPE_RAFT) > 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static file_server running;
    running.write({reinterpret_cast<const char*>(data), size});
    if (start_again() != 0 || is_muddled()) return 0;
    kqcode_t expected = misses_its_interval() ? ARCH_E_INVALID_VALUE : 0;
    std::string text = registry_text();
    demand(write_back() == 0, "the file cannot be written back");
    kqcode_t code = start_again();
    demand(code == expected, "what was written has another verdict");
    demand(code < 0 || registry_text() == text, "what was written is read as another");
    return 0;
}

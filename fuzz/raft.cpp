// Operations on a Raft group in any order, each compared with the model: the registry, the text
// that it leaves, the number of voters and the roles. Directories are on storage that is not looked
// at, and kqarch.ini cannot be written, so that nothing here waits for a disk.
#include <elog.h>
#include <ini.h>
#include <stdio.h>
#include <stdlib.h>

#include <cstdint>

#include "support/instance.h"
#include "support/raft_history.h"

using namespace test_support;

namespace {

// The two instances that histories are of, each opened when the one before was the other.
class instances {
  public:
    instances() { leave(); }

    void open(bool bp_mode) {
        if (is_open && bp_mode == is_bp_mode) return;
        elog_close();
        std::filesystem::current_path(inside);
        write_file("kqmal.ini", "");
        std::string mode = bp_mode ? "DPC_MODE = BP\n" : "";
        if (directory.open("INSTANCE_NAME = ME\nMAL_INI = 1\n" + mode) != 0) abort();
        snprintf(global_ini_info.config_path, sizeof global_ini_info.config_path, "nowhere");
        leave();
        is_open = true;
        is_bp_mode = bp_mode;
    }

  private:
    // The corpus is found from where the run was started.
    void leave() { std::filesystem::current_path(outside); }

    std::filesystem::path outside = std::filesystem::current_path();
    instance_directory directory;
    std::filesystem::path inside = std::filesystem::current_path();
    bool is_open = false, is_bp_mode = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    choices from(data, size);
    bool bp_mode = from.below(2) != 0;
    static instances both;
    both.open(bp_mode);
    raft_history history(bp_mode, false);
    while (!from.used_up()) {
        std::string fault = history.step(from);
        if (fault.empty()) continue;
        fprintf(stderr, "%s\n", fault.c_str());
        abort();
    }
    return 0;
}

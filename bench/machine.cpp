#include "machine.h"

#include <linux/magic.h>
#include <malloc.h>
#include <sched.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <fstream>

#include "instance.h"

namespace bench {
namespace {

std::string processor_model() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
    return "unknown processor";
}

std::string file_system() {
    struct statfs status;
    const bool known = statfs(scratch_directory().c_str(), &status) == 0;
    return known && status.f_type == TMPFS_MAGIC ? "tmpfs" : "a disk";
}

std::string compiler() {
#if defined(__clang__)
    return "clang " __clang_version__;
#else
    return "gcc " __VERSION__;
#endif
}

}  // namespace

// The last one: interrupts are mostly served by the first.
void stay_on_one_processor() {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
    for (int processor = CPU_SETSIZE - 1; processor >= 0; --processor) {
        if (!CPU_ISSET(processor, &allowed)) continue;
        cpu_set_t one;
        CPU_ZERO(&one);
        CPU_SET(processor, &one);
        (void)sched_setaffinity(0, sizeof one, &one);
        return;
    }
}

void keep_memory() {
    (void)mallopt(M_TRIM_THRESHOLD, 1 << 30);
    (void)mallopt(M_MMAP_THRESHOLD, 1 << 30);
}

std::string describe_machine() {
    return std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " processors (" + processor_model() +
           "), " + compiler() + ", build type " + BENCH_BUILD + ", instances on " + file_system();
}

}  // namespace bench

// Loading and validating, and how both grow with the number of sections.
#include <algorithm>

#include "benchmarks.h"
#include "foreign_peers.h"
#include "peers.h"

namespace bench {
namespace {

// Loads and destroys again and again.
void load_repeatedly(benchmark::State& state, const instance& on) {
    { const loaded_registry once(on); }
    std::size_t loaded = 0;
    for (auto _ : state) {
        (void)arch_cfg_sys_init_with_check(nullptr, 1, 0, 0);
        loaded += arch_cfg_sys.arch_lst.count;
        arch_cfg_sys_destroy();
    }
    check(loaded == on.destinations().size() * static_cast<std::size_t>(state.iterations()),
          "a load failed");
}

}  // namespace

void load(benchmark::State& state, const instance& on) {
    load_repeatedly(state, on);
}

void load_bare(benchmark::State& state, const instance& on) {
    const std::string path = on.config_file();
    std::vector<char> buffer(1 << 20);
    bool is_good = true;
    for (auto _ : state) {
        is_good = read_file_bare(path.c_str(), buffer) && is_good;
        benchmark::DoNotOptimize(buffer.data());
    }
    check(is_good, "the file could not be read");
}

void start(benchmark::State& state, const instance& on) {
    check(arch_cfg_sys_init_with_check(nullptr, 1, 1, 0) == 0, "the instance does not start");
    check(arch_cfg_sys.arch_lst.count == on.destinations().size(), "a destination is missing");
    arch_cfg_sys_destroy();
    kqcode_t worst = 0;
    for (auto _ : state) {
        worst = std::min(worst, arch_cfg_sys_init_with_check(nullptr, 1, 1, 0));
        arch_cfg_sys_destroy();
    }
    check(worst == 0, "a start failed");
}

void parse_file(benchmark::State& state, const instance& on) {
    const std::string path = on.config_file();
    bool is_good = true;
    for (auto _ : state)
        is_good = parse_with_inih(path.c_str()) && is_good;
    check(is_good, "inih cannot read the file");
}

void load_key_file(benchmark::State& state) {
    const instance on(full_instance(), storage::asm_disk_group);
    const std::string path = on.config_file();
    bool is_good = true;
    for (auto _ : state)
        is_good = load_with_glib(path.c_str()) && is_good;
    check(is_good, "GKeyFile cannot load the file");
}

void validate(benchmark::State& state, const instance& on) {
    const loaded_registry loaded(on);
    kqcode_t worst = arch_cfg_sys_validate(1, 0);
    check(worst == 0, "the instance does not validate");
    for (auto _ : state)
        worst = std::min(worst, arch_cfg_sys_validate(1, 0));
    check(worst == 0, "a validation failed");
}

void probe_bare(benchmark::State& state, const instance& on) {
    const std::vector<std::string> directories = on.archive_directories();
    bool is_good = true;
    for (auto _ : state)
        for (const std::string& directory : directories)
            is_good = probe_directory_bare(directory.c_str()) && is_good;
    check(is_good, "a directory could not be probed");
}

void probe(benchmark::State& state) {
    const instance on(small_instance());
    const std::string directory = on.archive_directories().front();
    bool is_good = true;
    for (auto _ : state)
        is_good = arch_cfg_local_dest_check(directory.c_str(), 0) == 1 && is_good;
    check(is_good, "the directory could not be probed");
}

void probe_one_bare(benchmark::State& state) {
    const instance on(small_instance());
    const std::string directory = on.archive_directories().front();
    bool is_good = true;
    for (auto _ : state)
        is_good = create_and_delete_bare(directory.c_str()) && is_good;
    check(is_good, "the directory could not be probed");
}

void create_sections(benchmark::State& state, ulint count) {
    const instance on(section_headers(count));
    load_repeatedly(state, on);
}

void load_sections(benchmark::State& state, ulint count) {
    load_repeatedly(state, instance(local_sections(count)));
}

}  // namespace bench

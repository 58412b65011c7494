// A measured instance on disk, and the registry loaded from it.
#ifndef BENCH_INSTANCE_H
#define BENCH_INSTANCE_H

#include <filesystem>

#include "arch_cfg_hold.h"
#include "description.h"

namespace bench {

// What a benchmark found to be wrong: it is then reported as failed, and not measured.
void check(bool is_good, const std::string& what);

// Where instance directories are made: in memory where there is enough of it, so that no disk is
// measured.
std::filesystem::path scratch_directory();

// Where the archive directories lie: beside kqarch.ini, or on ASM storage, which start-up can be
// asked not to probe.
enum class storage { disk, asm_disk_group };

// A directory with the instance's four files and its archive directories, open in the layer. The
// directories of its destinations are absolute paths into it. One lives at a time.
class instance {
  public:
    explicit instance(description what, storage archives = storage::disk);
    ~instance();
    instance(const instance&) = delete;
    instance& operator=(const instance&) = delete;

    const std::vector<destination>& destinations() const { return what_.destinations; }
    // Those on disk.
    std::vector<std::string> archive_directories() const;
    std::string directory() const { return root_; }
    std::string config_file() const { return root_ / "kqarch.ini"; }

    // Loads kqarch.ini without validation, as a server does.
    void load() const;

  private:
    void write_files() const;

    description what_;
    std::filesystem::path root_;
    std::filesystem::path archive_root_;
};

class loaded_registry {
  public:
    explicit loaded_registry(const instance& from) { from.load(); }
    ~loaded_registry() { arch_cfg_sys_destroy(); }
    loaded_registry(const loaded_registry&) = delete;
    loaded_registry& operator=(const loaded_registry&) = delete;
};

}  // namespace bench

#endif

#include "instance.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "kq_instance.h"

namespace bench {
namespace {

namespace fs = std::filesystem;

// A destination is refused where its file system has no room for one archive file.
constexpr std::uintmax_t enough_space = 1 << 30;

fs::path make_directory() {
    std::string pattern = (scratch_directory() / "arch_cfg_bench.XXXXXX").string();
    check(mkdtemp(pattern.data()) != nullptr, "no directory can be made for the instance");
    return pattern;
}

void write_file(const fs::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    check(file.flush().good(), "a file of the instance cannot be written");
}

bool holds_archives(const destination& dest) {
    return dest.type == ARCH_TYPE_LOCAL || dest.type == ARCH_TYPE_REMOTE;
}

}  // namespace

void check(bool is_good, const std::string& what) {
    if (!is_good) throw std::runtime_error(what);
}

fs::path scratch_directory() {
    const fs::path in_memory = "/dev/shm";
    std::error_code error;
    const fs::space_info space = fs::space(in_memory, error);
    const bool usable =
        !error && space.available >= enough_space && access(in_memory.c_str(), W_OK | X_OK) == 0;
    return usable ? in_memory : fs::temp_directory_path();
}

instance::instance(description what, storage archives)
    : what_(std::move(what)),
      root_(make_directory()),
      archive_root_(archives == storage::disk ? root_ : "+DATA") {
    for (destination& dest : what_.destinations)
        if (holds_archives(dest)) dest.directory = archive_root_ / dest.directory;
    try {
        write_files();
        check(kq_instance_open(root_.c_str()) == 0, "the instance cannot be opened");
    } catch (...) {
        fs::remove_all(root_);
        throw;
    }
}

instance::~instance() {
    kq_instance_close();
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void instance::write_files() const {
    write_file(root_ / "kq.ini", "INSTANCE_NAME = " + std::string(own_name) +
                                     "\nARCH_FLAG = 1\nMAL_INI = 1\nTIMER_INI = 1\n");
    write_file(root_ / "kqmal.ini", kqmal_text(what_));
    write_file(root_ / "kqtimer.ini", kqtimer_text(what_));
    write_file(root_ / "kqarch.ini", kqarch_text(what_));
    for (const std::string& directory : archive_directories())
        fs::create_directory(directory);
}

std::vector<std::string> instance::archive_directories() const {
    std::vector<std::string> found;
    if (archive_root_ != root_) return found;
    for (const destination& dest : what_.destinations)
        if (holds_archives(dest)) found.push_back(dest.directory);
    return found;
}

void instance::load() const {
    check(arch_cfg_sys_init_with_check(nullptr, 1, 0, 0) == 0, "the instance does not load");
    const ulint loaded = arch_cfg_sys.arch_lst.count;
    if (loaded == what_.destinations.size()) return;
    arch_cfg_sys_destroy();
    check(false, "not every destination was loaded");
}

}  // namespace bench

#include "support/instance.h"

#include <elog.h>
#include <kq_instance.h>
#include <stdlib.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test_support {

namespace fs = std::filesystem;

void write_file(const fs::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
    file << text;
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string read_file(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

instance_directory::instance_directory() : before(fs::current_path()) {
    std::string pattern = (fs::temp_directory_path() / "arch_cfg_test.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
    root = pattern;
    fs::create_directory(root / "instance");
    fs::current_path(root / "instance");
    elog_open(error_log().c_str());
    arch_cfg_sys_init_env();
}

instance_directory::~instance_directory() {
    arch_cfg_sys_destroy();
    kq_instance_close();
    elog_close();
    fs::current_path(before);
    std::error_code ignored;
    fs::remove_all(root, ignored);
}

kqcode_t instance_directory::open(const std::string& parameters) {
    std::string text = "ARCH_FLAG = 1\n";
    if (parameters.find("ARCH_FLAG") != std::string::npos) text.clear();
    write_file("kq.ini", text + parameters);
    return kq_instance_open(".");
}

namespace {

template <size_t N>
bool is_terminated(const schar (&text)[N]) {
    return memchr(text, 0, N) != nullptr;
}

std::string record_fault(const arch_cfg_t& arch) {
    bool terminated = is_terminated(arch.name) && is_terminated(arch.dest) &&
                      is_terminated(arch.recv_path) && is_terminated(arch.timer_name) &&
                      is_terminated(arch.arch_dest_ip);
    for (const auto& instance : arch.dest_insts)
        terminated = terminated && is_terminated(instance);
    return terminated ? "" : "a text of a record is not terminated";
}

}  // namespace

std::string list_fault(const arch_cfg_sys_t& registry) {
    ulint count = 0;
    const arch_cfg_t* previous = nullptr;
    for (const arch_cfg_t* arch = registry.arch_lst.start; arch != nullptr;
         arch = arch->link.next) {
        if (arch->link.prev != previous) return "a record's prev is not its predecessor";
        if (std::string fault = record_fault(*arch); !fault.empty()) return fault;
        if (++count > registry.arch_lst.count) return "more records are linked than counted";
        previous = arch;
    }
    if (count != registry.arch_lst.count) return "fewer records are linked than counted";
    if (previous != registry.arch_lst.end) return "the list's end is not its last record";
    return is_terminated(registry.xmal_ip) ? "" : "xmal_ip is not terminated";
}

}  // namespace test_support

// An instance for a test: a fresh directory that the process works in, and what tests do there.
#ifndef TESTS_SUPPORT_INSTANCE_H
#define TESTS_SUPPORT_INSTANCE_H

#include <arch_cfg_hold.h>

#include <filesystem>
#include <string>

namespace test_support {

void write_file(const std::filesystem::path& path, const std::string& text);
std::string read_file(const std::filesystem::path& path);

// While it lives, the process works in a new directory, so that "." is the configuration directory
// and relative archive paths stay inside it. The error log goes to a file beside the directory.
class instance_directory {
  public:
    instance_directory();
    ~instance_directory();
    instance_directory(const instance_directory&) = delete;
    instance_directory& operator=(const instance_directory&) = delete;

    // Writes kq.ini with `parameters`, one "KEY = value" a line, and with archiving on unless they
    // say otherwise, and opens the instance.
    kqcode_t open(const std::string& parameters = "");

    std::filesystem::path error_log() const { return root / "error.log"; }

  private:
    std::filesystem::path root;
    std::filesystem::path before;
};

// What is wrong with a registry's list (count, ends, links, terminators); empty when it is sound.
std::string list_fault(const arch_cfg_sys_t& registry);

}  // namespace test_support

#endif

#include "support/capture.h"

#include <stdio.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <regex>
#include <sstream>
#include <stdexcept>

#include "support/instance.h"

// A sanitizer's report would vanish in the capture; it is sent to the real descriptor.
extern "C" __attribute__((weak)) void __sanitizer_set_report_fd(void* descriptor);

namespace test_support {

std::string visible(const std::string& text) {
    constexpr size_t long_run = 20;
    std::string shown;
    for (size_t at = 0; at < text.size();) {
        char character = text[at];
        size_t run = std::min(text.find_first_not_of(character, at), text.size()) - at;
        char one[8] = {character};
        if (static_cast<unsigned char>(character) < ' ' && character != '\n')
            snprintf(one, sizeof one, "<%02x>", static_cast<unsigned>(character));
        if (run >= long_run) shown += "{" + std::string(one) + "*" + std::to_string(run) + "}";
        for (size_t i = 0; i < run && run < long_run; i++)
            shown += one;
        at += run;
    }
    return std::regex_replace(shown, std::regex(" (\n|$)"), "\\x20$1");
}

descriptor_capture::descriptor_capture(int descriptor)
    : target(descriptor), original(dup(descriptor)), memory(memfd_create("capture", 0)) {
    fflush(nullptr);
    if (original < 0 || memory < 0 || dup2(memory, target) < 0)
        throw std::runtime_error("cannot capture the console");
    if (target == STDERR_FILENO && __sanitizer_set_report_fd != nullptr)
        __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<intptr_t>(original)));
}

descriptor_capture::~descriptor_capture() {
    fflush(nullptr);
    dup2(original, target);
    if (target == STDERR_FILENO && __sanitizer_set_report_fd != nullptr)
        __sanitizer_set_report_fd(reinterpret_cast<void*>(static_cast<intptr_t>(target)));
    close(original);
    close(memory);
}

std::string descriptor_capture::text() const {
    fflush(nullptr);
    std::string text(static_cast<size_t>(lseek(memory, 0, SEEK_END)), '\0');
    if (pread(memory, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()))
        throw std::runtime_error("cannot read what was captured");
    return text;
}

namespace {

std::string prefixed(const std::string& prefix, const std::string& text) {
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        bool cut = stream.eof();
        lines += prefix + visible(line) + (cut ? "<no line feed>\n" : "\n");
    }
    return lines;
}

std::string log_lines(const std::string& text) {
    static const std::regex stamp(R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \[(\d)\] )");
    static const std::regex place(R"(raised at cfg_dll/arch_cfg:\d+$)");
    std::string lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        std::string logged = std::regex_replace(visible(line), stamp, "log $1: ");
        lines += std::regex_replace(logged, place, "raised at cfg_dll/arch_cfg:LINE") + "\n";
    }
    return lines;
}

}  // namespace

output_capture::output_capture(const std::filesystem::path& error_log)
    : log(error_log),
      log_start(std::filesystem::file_size(error_log)),
      standard_output(STDOUT_FILENO),
      standard_error(STDERR_FILENO) {}

std::string output_capture::printed() const {
    return prefixed("stdout: ", standard_output.text()) +
           prefixed("stderr: ", standard_error.text());
}

std::string output_capture::logged() const {
    return log_lines(read_file(log).substr(static_cast<size_t>(log_start)));
}

}  // namespace test_support

#include "capture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>
#include <vector>

#include "elog.h"
#include "text.h"

namespace {

[[noreturn]] void throw_error(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

memory_file& taken_file() {
    static memory_file file;
    return file;
}

bool is_taken = false;

std::string one_line(const std::string& text) {
    std::vector<std::string> lines;
    for (std::string& line : split(text, '\n')) {
        line.erase(line.find_last_not_of(" \r") + 1);
        if (!line.empty()) lines.push_back(std::move(line));
    }
    return join(lines, "; ");
}

// The texts of the log's lines of a level: "2026-01-31 12:00:00.000 [3] text".
std::vector<std::string> logged(const std::string& log, ulint level) {
    std::string mark = " [" + std::to_string(level) + "] ";
    std::vector<std::string> texts;
    for (const std::string& line : split(log, '\n')) {
        size_t at = line.find(" [");
        if (at != line.npos && line.compare(at, mark.size(), mark) == 0)
            texts.push_back(line.substr(at + mark.size()));
    }
    return texts;
}

void flush_streams() {
    std::fflush(stdout);
    std::fflush(stderr);
}

}  // namespace

memory_file::memory_file() : descriptor_(memfd_create("kqarch", MFD_CLOEXEC)) {
    if (descriptor_ < 0) throw_error("cannot make a file in memory");
}

memory_file::~memory_file() {
    close(descriptor_);
}

std::string memory_file::path() const {
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

std::string memory_file::content() const {
    std::string text;
    char block[4096];
    for (;;) {
        ssize_t count = pread(descriptor_, block, sizeof block, static_cast<off_t>(text.size()));
        if (count <= 0) return text;
        text.append(block, static_cast<size_t>(count));
    }
}

void memory_file::clear() {
    if (ftruncate(descriptor_, 0) != 0 || lseek(descriptor_, 0, SEEK_SET) != 0)
        throw_error("cannot empty a file in memory");
}

void memory_file::fill(std::string_view text) {
    clear();
    while (!text.empty()) {
        ssize_t count = write(descriptor_, text.data(), text.size());
        if (count < 0) throw_error("cannot write a file in memory");
        text.remove_prefix(static_cast<size_t>(count));
    }
}

output_taken::output_taken() {
    if (is_taken) return;
    taken_file().clear();
    flush_streams();
    output_ = dup(STDOUT_FILENO);
    errors_ = dup(STDERR_FILENO);
    if (output_ < 0 || errors_ < 0 || dup2(taken_file().descriptor(), STDOUT_FILENO) < 0 ||
        dup2(taken_file().descriptor(), STDERR_FILENO) < 0)
        throw_error("cannot redirect the output");
    is_taken = true;
}

output_taken::~output_taken() {
    if (output_ < 0) return;
    flush_streams();
    dup2(output_, STDOUT_FILENO);
    dup2(errors_, STDERR_FILENO);
    close(output_);
    close(errors_);
    is_taken = false;
}

std::string output_taken::said() {
    flush_streams();
    if (lseek(taken_file().descriptor(), 0, SEEK_CUR) == 0) return "";
    std::string text = one_line(taken_file().content());
    taken_file().clear();
    return text;
}

captured capture(const std::function<kqcode_t()>& call) {
    output_taken taken;
    captured result{call(), {}};
    result.said = taken.said();
    return result;
}

captured_with_log capture_with_log(const std::function<kqcode_t()>& call) {
    memory_file log;
    elog_open(log.path().c_str());
    captured_with_log result{capture(call), {}, {}};
    elog_close();
    std::string content = log.content();
    result.warnings = logged(content, ELOG_WARNING);
    result.refusals = logged(content, ELOG_REFUSAL);
    return result;
}

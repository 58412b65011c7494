#include "capture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>
#include <vector>

#include "text.h"

namespace {

[[noreturn]] void throw_error(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

// Points one descriptor at another for as long as it lives.
class redirection {
  public:
    redirection(int descriptor, int target) : descriptor_(descriptor), saved_(dup(descriptor)) {
        if (saved_ < 0 || dup2(target, descriptor) < 0) throw_error("cannot redirect the output");
    }
    ~redirection() {
        dup2(saved_, descriptor_);
        close(saved_);
    }
    redirection(const redirection&) = delete;
    redirection& operator=(const redirection&) = delete;

  private:
    int descriptor_;
    int saved_;
};

std::string one_line(const std::string& text) {
    std::vector<std::string> lines;
    for (std::string& line : split(text, '\n')) {
        line.erase(line.find_last_not_of(" \r") + 1);
        if (!line.empty()) lines.push_back(std::move(line));
    }
    return join(lines, "; ");
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

captured capture(const std::function<kqcode_t()>& call) {
    static memory_file said;
    said.clear();
    flush_streams();
    captured result{};
    {
        redirection output(STDOUT_FILENO, said.descriptor());
        redirection errors(STDERR_FILENO, said.descriptor());
        result.code = call();
        flush_streams();
    }
    result.said = one_line(said.content());
    return result;
}

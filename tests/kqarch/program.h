// Running kqarch as its users do: by a shell, in a fresh directory.
#ifndef TESTS_KQARCH_PROGRAM_H
#define TESTS_KQARCH_PROGRAM_H

#include <filesystem>
#include <string>

struct run_result {
    int status;
    std::string output;  // the directory is shown as {dir}
    std::string errors;
};

// A fresh directory to run commands in, with kqarch on the PATH. The shell also knows
// `unprivileged COMMAND...`, which gives up root's rights where the tests have them: the files
// are that user's meanwhile.
class workplace {
  public:
    workplace();
    ~workplace();
    workplace(const workplace&) = delete;
    workplace& operator=(const workplace&) = delete;

    // {dir} in `text` stands for the directory.
    void write(const std::string& path, const std::string& text) const;
    run_result run(const std::string& command) const;
    std::string path(const std::string& inside) const { return directory_ / inside; }

  private:
    std::string with_directory(std::string text) const;
    std::string without_directory(std::string text) const;

    std::filesystem::path root_;
    std::filesystem::path directory_;
};

#endif

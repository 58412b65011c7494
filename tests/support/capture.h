// What a call writes to the console and to the error log. The console is caught at its file
// descriptors, because some messages do not go through the server's printer.
#ifndef TESTS_SUPPORT_CAPTURE_H
#define TESTS_SUPPORT_CAPTURE_H

#include <filesystem>
#include <string>

namespace test_support {

// A text in printable form: a run of 20 or more of one character is {c*N}, another control
// character than the line feed <NN>, a blank at a line's end \x20.
std::string visible(const std::string& text);

class descriptor_capture {
  public:
    explicit descriptor_capture(int descriptor);
    ~descriptor_capture();
    descriptor_capture(const descriptor_capture&) = delete;
    descriptor_capture& operator=(const descriptor_capture&) = delete;
    std::string text() const;

  private:
    int target;
    int original;
    int memory;
};

class output_capture {
  public:
    explicit output_capture(const std::filesystem::path& error_log);

    // Lines "stdout: text", then "stderr: text", with <no line feed> where the last one lacks it.
    std::string printed() const;
    // Lines "log LEVEL: text". The source line of a recorded code is LINE.
    std::string logged() const;
    std::string lines() const { return printed() + logged(); }

  private:
    std::filesystem::path log;
    std::uintmax_t log_start;
    descriptor_capture standard_output;
    descriptor_capture standard_error;
};

}  // namespace test_support

#endif

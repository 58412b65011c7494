// What happens while kqarch asks whether to make a change.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "change_support.h"

namespace fs = std::filesystem;

namespace {

// kqarch on a terminal of its own.
class terminal {
  public:
    explicit terminal(const std::vector<std::string>& arguments) {
        child_ = forkpty(&descriptor_, nullptr, nullptr, nullptr);
        if (child_ != 0) return;
        std::vector<char*> words = {const_cast<char*>(KQARCH_PROGRAM)};
        for (const std::string& argument : arguments)
            words.push_back(const_cast<char*>(argument.c_str()));
        words.push_back(nullptr);
        execv(words[0], words.data());
        _exit(127);
    }
    ~terminal() { close(descriptor_); }
    terminal(const terminal&) = delete;
    terminal& operator=(const terminal&) = delete;

    // Reads until the question, or the end.
    bool is_asked() { return read_until("[y/N] "); }

    void answer(const std::string& text) const {
        ASSERT_EQ(write(descriptor_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    int end() {
        read_until("");
        int status = 0;
        waitpid(child_, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const std::string& seen() const { return seen_; }

  private:
    bool read_until(const std::string& text) {
        char block[4096];
        for (;;) {
            if (!text.empty() && seen_.find(text) != seen_.npos) return true;
            ssize_t count = read(descriptor_, block, sizeof block);
            if (count <= 0) return false;  // the terminal of an ended process cannot be read
            seen_.append(block, static_cast<size_t>(count));
        }
    }

    pid_t child_ = -1;
    int descriptor_ = -1;
    std::string seen_;
};

TEST(asking, makes_the_change_for_a_yes_only) {
    for (const std::string answer : {"y\n", "YES\n", "n\n", "\n", "\x04"}) {
        SCOPED_TRACE(answer);
        bool yes = answer[0] == 'y' || answer[0] == 'Y';
        changed_instance instance;
        terminal at({"add", instance.directory(), instance.local_clause()});
        ASSERT_TRUE(at.is_asked()) << at.seen();
        at.answer(answer);
        EXPECT_EQ(at.end(), yes ? 0 : 1) << at.seen();
        EXPECT_EQ(instance.config() != instance.original(), yes);
        EXPECT_EQ(instance.has("kqarch_bak_1.log"), yes);
        EXPECT_EQ(instance.has("kqarch_journal.log"), yes);
    }
}

TEST(asking, is_left_out_where_it_is_not_needed) {
    changed_instance instance;
    for (const char* option : {"--yes", "--dry-run"}) {
        terminal at({"drop", instance.directory(), "KQ3", option});
        EXPECT_FALSE(at.is_asked());
        EXPECT_EQ(at.end(), 0) << at.seen();
        instance.reset();
    }
}

// Whatever is done to kqarch.ini meanwhile, nothing of it is lost.
TEST(asking, refuses_when_the_file_has_changed_meanwhile) {
    for (const char* act :
         {"echo '#' >>kqarch.ini", "rm kqarch.ini", ": >kqarch.ini",
          "cp kqarch.ini new && mv new kqarch.ini", "rm kqarch.ini && mkdir kqarch.ini"}) {
        SCOPED_TRACE(act);
        changed_instance instance;
        terminal at({"add", instance.directory(), instance.local_clause()});
        ASSERT_TRUE(at.is_asked()) << at.seen();
        ASSERT_EQ(std::system(("cd " + instance.directory() + " && " + act).c_str()), 0);
        std::string after = instance.config();
        at.answer("y\n");
        EXPECT_NE(at.end(), 0) << at.seen();
        EXPECT_EQ(instance.config(), after);
        EXPECT_FALSE(fs::exists(fs::path(instance.directory()).parent_path() / "second"));
    }
}

TEST(asking, holds_the_directory) {
    changed_instance instance;
    terminal at({"add", instance.directory(), instance.local_clause()});
    ASSERT_TRUE(at.is_asked());
    EXPECT_EQ(instance.drop("KQ3"), exit_refused);
    EXPECT_EQ(instance.config(), instance.original());
    at.answer("n\n");
    EXPECT_EQ(at.end(), 1);
    EXPECT_EQ(instance.drop("KQ3"), exit_good);
}

}  // namespace

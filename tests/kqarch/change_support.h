// Running changing commands in the test's own process, where calls can be made to fail.
#ifndef TESTS_KQARCH_CHANGE_SUPPORT_H
#define TESTS_KQARCH_CHANGE_SUPPORT_H

#include <filesystem>
#include <string>

#include "output.h"

// An instance directory that archives to one directory of its own, and to a standby.
class changed_instance {
  public:
    changed_instance();
    ~changed_instance();
    changed_instance(const changed_instance&) = delete;
    changed_instance& operator=(const changed_instance&) = delete;

    // Back to how it was made: without backups, journal and lock.
    void reset() const;

    std::string directory() const { return root_ / "db"; }
    std::string config() const { return read("kqarch.ini"); }
    std::string original() const { return original_; }

    // A file of the directory; the empty text when there is none.
    std::string read(const std::string& name) const;
    bool has(const std::string& name) const;

    // The clause of a LOCAL destination beside the directory.
    std::string local_clause() const;

    std::string beside(const std::string& name) const;

    // The exit status; an exception counts as main would take it.
    exit_status add(const std::string& clause) const;
    exit_status drop(const std::string& dest) const;
    exit_status restore(lint64 number) const;

  private:
    std::filesystem::path root_;
    std::string original_;
};

#endif

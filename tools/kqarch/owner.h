// Whose is what kqarch makes: where root runs it, the server's user has to go on with it.
#ifndef KQARCH_OWNER_H
#define KQARCH_OWNER_H

#include <sys/types.h>

#include <set>
#include <string>
#include <vector>

#include "private_file.h"

// The owner of an instance: its directory's or, where only root says what is in that, kqarch.ini's.
class instance_owner {
  public:
    explicit instance_owner(const std::string& directory);

    // Whether the owner may make something in a directory that is open.
    bool may_make_in(int directory) const;

    // Gives away what was just made and is open. Only root may, and nobody else has to.
    void take_over(int made) const;

  private:
    bool known_;
    uid_t user_ = 0;
    gid_t group_ = 0;
};

// Directories and files that something else makes, the module above all: those of the paths that
// were absent when this began belong to the instance's owner when it ends, with the directories
// that were made on the way there.
class handed_over {
  public:
    // Who named the paths: root, or the instance's files, where the owner writes what he likes.
    enum class named_by { root, owner };

    handed_over(const std::string& instance_directory, const std::set<std::string>& paths,
                named_by who);
    ~handed_over();
    handed_over(const handed_over&) = delete;
    handed_over& operator=(const handed_over&) = delete;

  private:
    struct absent_path {
        open_file above;                 // the last directory that is there
        std::vector<std::string> names;  // that are not, from there on
    };

    void watch_all_of(const std::string& path);
    void watch(const std::string& path);
    void hand_over(const absent_path& path) const;

    instance_owner owner_;
    named_by who_;
    std::vector<absent_path> absent_;
};

#endif

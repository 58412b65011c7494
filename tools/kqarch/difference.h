// What a rewrite makes of kqarch.ini, ready to be shown: passwords are ***.
#ifndef KQARCH_DIFFERENCE_H
#define KQARCH_DIFFERENCE_H

#include <string>
#include <vector>

#include "config_file.h"
#include "output.h"
#include "password.h"

// What stands in the file and is never written: a comment, or a key that the server keeps to
// itself.
struct lost_line {
    ulint line;
    std::string what;
};

class difference {
  public:
    // `before` has the bytes and the lines of the file as it stands; `passwords` are those of both
    // texts.
    difference(const config_file& before, const std::string& after, password_list passwords);

    bool empty() const { return before_.text() == after_; }

    // Lost by a rewrite, in file order.
    std::vector<lost_line> lost() const;

    // Prints the unified difference, and sets the field "diff" to its lines.
    void print(const std::string& name_of_after, output& out) const;

    // Warns of what is lost, and sets the field "lost".
    void report_lost(output& out) const;

  private:
    std::string shown_comment(const std::string& line) const;
    std::string shown_line(const std::string& line) const;
    std::string shown(const std::string& line) const;

    const config_file& before_;
    std::string after_;
    password_list passwords_;
};

#endif

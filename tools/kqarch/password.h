// Keeping passwords out of everything that is shown.
//
// A subscriber's ARCH_DEST is `[user[/password]@]server`. The same text may stand where it does
// not belong (in a section of another type, behind a misspelt key, on a line without "="), and the
// module quotes values, whole or in pieces, when it refuses them. So the whole file is searched
// for what could be a password before anything is shown.
#ifndef KQARCH_PASSWORD_H
#define KQARCH_PASSWORD_H

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>

// What is known about the place where a text stands.
enum class text_place {
    line,        // a line that is no KEY = VALUE: a key and the like may stand before the user
    path,        // a directory: a text that begins like a path holds no password
    subscriber,  // a connection text: what stands behind "/" is a password even without "@"
    other
};

// The text with `***` for its password: a/secret@b gives a/***@b.
std::string hide_password(std::string_view text, text_place place);

// The passwords of one kqarch.ini.
class password_list {
  public:
    // Remembers what could be a password in `text`.
    void learn(std::string_view text, text_place place);

    // Remembers all that another list knows.
    void learn(const password_list& other);

    // `text` without any of them, whole or in pieces, in whatever case.
    std::string hide(std::string_view text) const;

  private:
    void add(std::string_view secret);

    std::set<std::string, std::less<>> secrets_;  // upper case
    std::set<size_t> lengths_;                    // that secrets have
};

#endif

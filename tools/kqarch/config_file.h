// The lines of one kqarch.ini, as they stand there: where each section and key is, and which texts
// may hold a password.
#ifndef KQARCH_CONFIG_FILE_H
#define KQARCH_CONFIG_FILE_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kq_instance.h"
#include "password.h"
#include "snapshot.h"

struct config_line {
    ulint number;
    kq_ini_line_kind kind;
    std::string key;    // the section's name, for a header
    std::string value;  // what is wrong, for a line that is neither
    std::string section;
    ulint section_line;  // 0 above the first header
};

class config_file {
  public:
    // Reads the lines; 0, or why that is impossible (then there are no lines).
    kqcode_t read(std::string path);

    // Takes the lines from a text that stands, or is to stand, at `path`.
    kqcode_t parse(std::string text, std::string path);

    const std::string& path() const { return path_; }
    const std::string& text() const { return snapshot_.bytes; }
    const file_snapshot& snapshot() const { return snapshot_; }
    const std::vector<config_line>& lines() const { return lines_; }
    const password_list& passwords() const { return passwords_; }

    // Line numbers, 0 when there is none; names are compared ignoring case. The last line of a key
    // is the one that counts.
    ulint section_line(std::string_view section) const;
    ulint key_line(std::string_view section, std::string_view key) const;
    ulint key_line(std::string_view key) const;

  private:
    kqcode_t read_lines();
    static kqcode_t append(const kq_ini_line_t* line, void* file);
    // Where each section and key stands; asked for when there is something to tell of a line.
    struct places {
        std::map<std::string, ulint> sections;                // by name, upper case
        std::map<std::pair<ulint, std::string>, ulint> keys;  // by header line and key
        std::map<std::string, ulint> last_keys;               // by key
    };
    const places& known_places() const;
    void learn_passwords();
    text_place place_of(const config_line& line) const;
    bool looks_like_subscriber(const config_line& line) const;

    std::string path_;
    file_snapshot snapshot_;
    std::vector<config_line> lines_;
    mutable std::optional<places> places_;
    std::set<ulint> subscriber_sections_;  // their header lines
    std::set<ulint> path_sections_;
    password_list passwords_;
};

#endif

// One reader for each configuration file: it gets the sections and keys of the file, stores them
// by its table of keys, and refuses a line as "FILE:LINE: what is wrong" on standard error.
#pragma once

#include <string>
#include <string_view>

#include "arch_cfg.h"
#include "kq_instance.h"
#include "text.h"

namespace platform {

// A key and where its value goes: a number from `least` to `most`, or a text of so many characters.
template <class record>
struct config_row {
    std::string_view key;
    ulint least;
    ulint most;
    ulint record::*number;
    std::string record::*text;
};

class config_reader {
  public:
    explicit config_reader(const std::string& path) : path_(path) {}
    virtual ~config_reader() = default;

    // Walks the whole file; 0, or the code of the first refusal.
    kqcode_t read();

  protected:
    // Without one, the file has no sections.
    virtual kqcode_t on_section(const schar* name);
    virtual kqcode_t on_key(const schar* key, const schar* value) = 0;
    virtual kqcode_t on_end() { return 0; }

    ulint line() const { return line_; }
    kqcode_t refuse(kqcode_t code, const schar* format, ...) const KQ_PRINTF(3, 4);
    kqcode_t refuse_at(ulint line, kqcode_t code, const schar* format, ...) const KQ_PRINTF(4, 5);
    kqcode_t check_name(const schar* name) const;

    template <class record, std::size_t count>
    kqcode_t store(const config_row<record> (&rows)[count], record& into, const schar* key,
                   const schar* value) const {
        for (const config_row<record>& row : rows) {
            if (!equal_ignoring_case(row.key, key)) continue;
            return row.number != nullptr
                       ? take_number(row.key, value, row.least, row.most, into.*row.number)
                       : take_text(row.key, value, row.least, row.most, into.*row.text);
        }
        return refuse_unknown(key);
    }

  private:
    static kqcode_t take_line(const kq_ini_line_t* line, void* reader) noexcept;

    kqcode_t take(const kq_ini_line_t& line);
    kqcode_t refuse_unknown(const schar* key) const;
    kqcode_t take_number(std::string_view key, const schar* value, ulint least, ulint most,
                         ulint& number) const;
    kqcode_t take_text(std::string_view key, const schar* value, ulint least, ulint most,
                       std::string& text) const;

    std::string path_;
    ulint line_ = 0;
};

}  // namespace platform

#include "loading.h"

#include <exception>
#include <utility>

#include "capture.h"
#include "ini.h"
#include "kq_instance.h"
#include "refusal.h"
#include "text.h"

namespace {

class loader {
  public:
    explicit loader(const config_file& file) : file_(file) {}

    // What start-up has read the file by, through whose frames nothing may be thrown.
    static kqcode_t read(void* self) noexcept {
        auto* reader = static_cast<loader*>(self);
        try {
            for (const config_line& line : reader->file_.lines())
                reader->take(line);
        } catch (...) {
            reader->thrown_ = std::current_exception();
        }
        return 0;
    }

    refused_lines refused() && {
        if (thrown_) std::rethrow_exception(thrown_);
        return std::move(refused_);
    }

  private:
    void take(const config_line& line) {
        if (line.kind == KQ_INI_SECTION)
            begin_section(line);
        else if (line.kind == KQ_INI_KEY)
            apply_key(line);
        else
            skip_bad_line(line);
    }

    void begin_section(const config_line& line) {
        arch_cfg_t* created = nullptr;
        kqcode_t code = arch_cfg_create(&arch_cfg_sys, line.key.c_str(), &created);
        type_refused_ = false;
        current_ = created;
        if (code >= 0) return;
        refuse(line, code, taken_.said());
        arch_init(&stand_in_, line.key.c_str());
        current_ = &stand_in_;
    }

    void apply_key(const config_line& line) {
        std::string value = line.value;
        kqcode_t code = arch_cfg_add_value(&arch_cfg_sys, current_, line.key.c_str(), value.data());
        bool is_type = same_text(line.key, "ARCH_TYPE");
        if (is_type) type_refused_ = code < 0;
        if (code >= 0) return;
        std::string said = taken_.said();
        if (is_type || !follows_from_a_refusal(line, code)) refuse(line, code, said);
    }

    // It may have been a section's header, or a key of the current one: what follows is checked,
    // but changes no destination.
    void skip_bad_line(const config_line& line) {
        refuse(line, ARCH_E_INVALID_VALUE);
        if (current_ == nullptr) arch_init(&stand_in_, "");
        if (current_ != nullptr && current_ != &stand_in_) stand_in_ = *current_;
        stand_in_.link = {};
        current_ = &stand_in_;
    }

    bool follows_from_a_refusal(const config_line& line, kqcode_t code) const {
        bool needs_type = same_text(line.key, "ARCH_DEST") ||
                          same_text(line.key, "ARCH_TIMER_NAME") ||
                          same_text(line.key, "ARCH_INCOMING_PATH");
        if (type_refused_ && needs_type) return true;
        // A section copied whole is one mistake, not two.
        return current_ == &stand_in_ && code == ARCH_E_DEST_EXISTS;
    }

    void refuse(const config_line& line, kqcode_t code, const std::string& said = "") {
        if (refused_.size() < most_of_a_file)
            refused_.first.push_back(describe({line, current_, code, said}, file_));
        else
            ++refused_.more;
    }

    const config_file& file_;
    output_taken taken_;
    refused_lines refused_;
    std::exception_ptr thrown_;
    arch_cfg_t* current_ = nullptr;
    arch_cfg_t stand_in_{};  // takes the keys of a section that does not exist
    bool type_refused_ = false;
};

}  // namespace

// Inside start-up each section and destination is known to be new without a walk over all. It reads
// nothing where archiving is off.
refused_lines load(const config_file& file) {
    loader loading(file);
    arch_cfg_sys_destroy();
    ulint archiving = ini_get_value(0, ini_index_arch_flag);
    ini_set_value(ini_index_arch_flag, 1);
    kq_ini_read_arch_by(loader::read, &loading);
    arch_cfg_sys_init_with_check("", 0, 0, 0);
    kq_ini_read_arch_by(nullptr, nullptr);
    ini_set_value(ini_index_arch_flag, archiving);
    return std::move(loading).refused();
}

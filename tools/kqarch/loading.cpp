#include "loading.h"

#include "capture.h"
#include "refusal.h"
#include "text.h"

namespace {

class loader {
  public:
    explicit loader(const config_file& file) : file_(file) {}

    void take(const config_line& line) {
        if (line.kind == KQ_INI_SECTION)
            begin_section(line);
        else if (line.kind == KQ_INI_KEY)
            apply_key(line);
        else
            skip_bad_line(line);
    }

    std::vector<diagnostic> refused() && { return std::move(refused_); }

  private:
    void begin_section(const config_line& line) {
        arch_cfg_t* created = nullptr;
        captured creation =
            capture([&] { return arch_cfg_create(nullptr, line.key.c_str(), &created); });
        type_refused_ = false;
        current_ = created;
        if (creation.code >= 0) return;
        refuse(line, creation);
        arch_init(&stand_in_, line.key.c_str());
        current_ = &stand_in_;
    }

    void apply_key(const config_line& line) {
        std::string value = line.value;
        captured application = capture(
            [&] { return arch_cfg_add_value(nullptr, current_, line.key.c_str(), value.data()); });
        bool is_type = same_text(line.key, "ARCH_TYPE");
        if (is_type) type_refused_ = application.code < 0;
        if (application.code < 0 && (is_type || !follows_from_a_refusal(line, application.code)))
            refuse(line, application);
    }

    // It may have been a section's header, or a key of the current one: what follows is checked,
    // but changes no destination.
    void skip_bad_line(const config_line& line) {
        refuse(line, {ARCH_E_INVALID_VALUE, ""});
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

    void refuse(const config_line& line, const captured& result) {
        refused_.push_back(describe({line, current_, result.code, result.said}, file_));
    }

    const config_file& file_;
    std::vector<diagnostic> refused_;
    arch_cfg_t* current_ = nullptr;
    arch_cfg_t stand_in_{};  // takes the keys of a section that does not exist
    bool type_refused_ = false;
};

}  // namespace

std::vector<diagnostic> load(const config_file& file) {
    loader loading(file);
    output_taken taken;
    for (const config_line& line : file.lines())
        loading.take(line);
    return std::move(loading).refused();
}

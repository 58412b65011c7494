// What start-up knows about the records while it reads the file and checks the whole.
//
// Each section and each destination has to be new. A walk over the list for each would take a time
// that grows with the square of the file, so that start-up keeps an index beside the list. It lives
// no longer: until then nobody but the reader's callbacks changes what records answer to, and of
// them only that of the current section.
#ifndef ARCH_REGISTRY_READING_H
#define ARCH_REGISTRY_READING_H

#include "arch_cfg.h"
#include "registry/text_index.h"

namespace arch {

// For the process registry, from its construction to the end of its scope.
class reading_index {
  public:
    reading_index() { in_progress_ = this; }
    ~reading_index() { in_progress_ = nullptr; }
    reading_index(const reading_index&) = delete;
    reading_index& operator=(const reading_index&) = delete;

    // That of a registry; null when none is being read into it, or when it knows no answer.
    static reading_index* of(const arch_cfg_sys_t& registry) {
        if (in_progress_ == nullptr || &registry != &arch_cfg_sys) return nullptr;
        const bool knows = !in_progress_->gave_up_ && in_progress_->texts_.is_complete();
        return knows ? in_progress_ : nullptr;
    }

    // A record of that name was appended: its section is the current one.
    void append(const arch_cfg_t& arch, std::string_view name);

    // From now on the list is walked.
    void give_up() { gave_up_ = true; }

    // A record, or none, is about to change: any but the current section's would change unseen.
    // One that is not in the list is none of the index's.
    void change(const arch_cfg_t* arch) { gave_up_ = gave_up_ || is_earlier(arch); }

    // Whether a record is in the list, and not the current section's.
    bool is_earlier(const arch_cfg_t* arch) const {
        const bool is_listed =
            arch != nullptr && (arch->link.prev != nullptr || arch == arch_cfg_sys.arch_lst.start);
        return is_listed && arch != current_section_;
    }

    bool has_section(std::string_view name) const {
        return texts_.contains(text_kind::section, name);
    }

    // Whether another section than the current one has that destination.
    bool has_earlier_destination(std::string_view text) const {
        return texts_.contains(text_kind::destination, text);
    }

    bool has_subscriber() const { return had_subscriber_ || is_subscriber(current_section_); }
    const arch_cfg_t* current_section() const { return current_section_; }

  private:
    static bool is_subscriber(const arch_cfg_t* arch) {
        return arch != nullptr && arch->type == ARCH_TYPE_SUBSCRIBE;
    }

    // Written by start-up alone, while no other thread uses the registry.
    static inline reading_index* in_progress_ = nullptr;

    // The names of all sections, and what all but the current one answer to.
    text_index texts_;
    const arch_cfg_t* current_section_ = nullptr;
    bool had_subscriber_ = false;  // before the current section
    bool gave_up_ = false;
};

}  // namespace arch

#endif

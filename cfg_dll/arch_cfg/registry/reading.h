// What start-up knows about the records while it reads the file and checks the whole.
//
// Each section and each destination has to be new. A walk over the list for each would take a time
// that grows with the square of the file, so that start-up keeps an index beside the list. It lives
// no longer: until then nobody but the reader's callbacks changes what records answer to, and of
// them only that of the current section.
#ifndef ARCH_REGISTRY_READING_H
#define ARCH_REGISTRY_READING_H

#include "registry/text_index.h"

namespace arch {

// For the process registry, from its construction to the end of its scope.
class reading_index {
  public:
    reading_index();
    ~reading_index();
    reading_index(const reading_index&) = delete;
    reading_index& operator=(const reading_index&) = delete;

    // That of a registry; null when none is being read into it, or when it knows no answer.
    static reading_index* of(const arch_cfg_sys_t& registry);

    // A record was appended: its section is the current one.
    void append(const arch_cfg_t& arch);

    // From now on the list is walked.
    void give_up() { gave_up_ = true; }

    // A record, or none, is about to change: any but the current section's would change unseen.
    // One that is not in the list is none of the index's.
    void change(const arch_cfg_t* arch) {
        const bool is_listed =
            arch != nullptr && (arch->link.prev != nullptr || arch == arch_cfg_sys.arch_lst.start);
        gave_up_ = gave_up_ || (is_listed && arch != current_section_);
    }

    bool has_section(const schar* name) const;
    bool has_destination(std::string_view text, const arch_cfg_t* except) const;

  private:
    // The names of all sections, and what all but the current one answer to.
    text_index texts_;
    const arch_cfg_t* current_section_ = nullptr;
    bool gave_up_ = false;
};

}  // namespace arch

#endif

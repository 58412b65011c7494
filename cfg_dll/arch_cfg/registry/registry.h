// The records of a registry: walking, linking, counting, finding.
#ifndef ARCH_REGISTRY_REGISTRY_H
#define ARCH_REGISTRY_REGISTRY_H

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

#include "arch_cfg.h"
#include "common/text.h"

namespace arch {

// How many destinations of a type there may be, of every type that has no limit of its own.
constexpr ulint most_of_type = 8;
constexpr ulint most_learners = 9;

class destination_iterator {
  public:
    explicit destination_iterator(arch_cfg_t* at) : at_(at) {}
    arch_cfg_t& operator*() const { return *at_; }
    destination_iterator& operator++() {
        at_ = at_->link.next;
        return *this;
    }
    bool operator==(const destination_iterator&) const = default;

  private:
    arch_cfg_t* at_;
};

// for (arch_cfg_t& arch : destinations(registry)): in list order; the body unlinks nothing.
class destinations {
  public:
    explicit destinations(const arch_cfg_sys_t& registry) : first_(registry.arch_lst.start) {}
    destination_iterator begin() const { return destination_iterator(first_); }
    destination_iterator end() const { return destination_iterator(nullptr); }

  private:
    arch_cfg_t* first_;
};

// The instance names of a record. A count above what the record has room for comes from a damaged
// record, and is read as all of them.
inline auto instance_names(const arch_cfg_t& arch) {
    return std::span(arch.dest_insts).first(std::min<std::size_t>(arch.n_inst, ARCH_INST_MAX));
}

// LOCAL and REMOTE: `dest` is a directory.
inline bool holds_archives(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_LOCAL || arch.type == ARCH_TYPE_REMOTE;
}

// How long a value may be in a section; `section` is null before the first.
inline std::size_t longest_value(const arch_cfg_t* section) {
    return section != nullptr && holds_archives(*section) ? KQ_PATHNAME_MAX : KQ_SYSNAME_MAX;
}

// `name` is the record's; who has just filled the record has it in reach, and the record not yet.
void append(arch_cfg_sys_t& registry, arch_cfg_t& arch, std::string_view name);
inline void append(arch_cfg_sys_t& registry, arch_cfg_t& arch) {
    append(registry, arch, text_in(arch.name));
}
void unlink(arch_cfg_sys_t& registry, arch_cfg_t& arch);

// Unlinks a record and gives its block back.
void discard(arch_cfg_sys_t& registry, arch_cfg_t& arch);

// How many records of each type there are; a type above the catalogue is counted nowhere.
class type_counts {
  public:
    explicit type_counts(const arch_cfg_sys_t& registry);
    ulint of(arch_cfg_type type) const { return counts_[type]; }
    bool any(arch_cfg_type type) const { return counts_[type] > 0; }

  private:
    std::array<ulint, ARCH_TYPE_COUNT> counts_{};
};

ulint count_of_type(const arch_cfg_sys_t& registry, ulint type);

// The record that a destination text names (the rules stand at arch_cfg_find_by_dest), or null.
// `except` is not looked at.
arch_cfg_t* find_destination(const arch_cfg_sys_t& registry, const schar* text,
                             const arch_cfg_t* except = nullptr);

arch_cfg_t* find_section(const arch_cfg_sys_t& registry, const schar* name);

arch_cfg_t* first_of_type(const arch_cfg_sys_t& registry, ulint type);

// Whether find_section, find_destination and, for a subscriber, first_of_type find one; during
// start-up, without a walk. The texts are terminated.
bool section_exists(const arch_cfg_sys_t& registry, std::string_view name);
bool destination_exists(const arch_cfg_sys_t& registry, std::string_view text,
                        const arch_cfg_t* except);
bool subscriber_exists(const arch_cfg_sys_t& registry);

// Moves a list separated by "/" on to what follows its next piece, null at the end.
inline std::string_view cut_piece(const schar*& list) {
    const schar* first = list;
    const schar* separator = std::strchr(first, '/');
    list = separator != nullptr ? separator + 1 : nullptr;
    return separator != nullptr ? std::string_view(first, separator) : std::string_view(first);
}

// Takes the next piece of such a list (arch_cfg_calc_next_inst_dest).
kqcode_t next_piece(const schar*& cursor, sysname_t& piece);

// Whether a list has at most 16 pieces and none is too long; only such a list is searched.
bool can_be_searched(const schar* list);

// The record that the whole of a text names, or else the first that one of its pieces names.
// `search` finds the record of one text.
template <typename Search>
arch_cfg_t* find_by_list(const schar* list, Search search) {
    if (arch_cfg_t* whole = search(list)) return whole;
    if (!can_be_searched(list)) return nullptr;
    sysname_t piece;
    while (list != nullptr) {
        (void)next_piece(list, piece);
        if (piece[0] == '\0') continue;
        if (arch_cfg_t* found = search(piece)) return found;
    }
    return nullptr;
}

}  // namespace arch

#endif

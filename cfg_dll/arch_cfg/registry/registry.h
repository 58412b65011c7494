// The records of a registry: walking, linking, counting, finding.
#ifndef ARCH_REGISTRY_REGISTRY_H
#define ARCH_REGISTRY_REGISTRY_H

#include <algorithm>
#include <array>
#include <span>

#include "arch_cfg.h"

namespace arch {

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

void append(arch_cfg_sys_t& registry, arch_cfg_t& arch);
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

// Takes the next piece of a list separated by "/" (arch_cfg_calc_next_inst_dest).
kqcode_t next_piece(const schar*& cursor, sysname_t& piece);

}  // namespace arch

#endif

// Finds the records that texts belong to, ignoring case, without a walk over the list.
#ifndef ARCH_REGISTRY_TEXT_INDEX_H
#define ARCH_REGISTRY_TEXT_INDEX_H

#include <array>
#include <span>
#include <string_view>

#include "arch_cfg.h"

namespace arch {

// A hash table, of which a registry that start-up accepts needs no more than the slots inside it.
// What a text hashes to depends on a key that who wrote the text cannot know, so that no file makes
// the searches slow.
class text_index {
  public:
    text_index();
    ~text_index();
    text_index(const text_index&) = delete;
    text_index& operator=(const text_index&) = delete;

    void add(std::string_view text, const arch_cfg_t& owner);

    // False when there was no memory for all that was added: the index knows nothing then.
    bool is_complete() const { return is_complete_; }

    // Whether a text was added for a record of which `has_text` says that it has that text.
    template <typename HasText>
    bool contains(std::string_view text, HasText has_text) const {
        const ulint64 sought = fingerprint(text);
        for (std::size_t at = place_of(sought); slots_[at].owner != nullptr; at = next(at))
            if (slots_[at].fingerprint == sought && has_text(*slots_[at].owner)) return true;
        return false;
    }

  private:
    struct slot {
        ulint64 fingerprint;
        const arch_cfg_t* owner;  // null: free
    };

    ulint64 fingerprint(std::string_view text) const;
    std::size_t place_of(ulint64 fingerprint) const;
    std::size_t next(std::size_t at) const { return (at + 1) & (slots_.size() - 1); }
    void put(const slot& entry);
    bool grow();
    void free_slots();

    std::array<slot, 256> own_slots_{};
    std::span<slot> slots_ = own_slots_;
    std::size_t used_ = 0;
    ulint64 key_;
    bool is_complete_ = true;
};

}  // namespace arch

#endif

// Finds texts that were added, ignoring case, without a walk over the list.
#ifndef ARCH_REGISTRY_TEXT_INDEX_H
#define ARCH_REGISTRY_TEXT_INDEX_H

#include <array>
#include <span>
#include <string_view>

#include "kqtype.h"

namespace arch {

// What a text is added as: a search finds only those of its own kind.
enum class text_kind : byte { section, destination };

// A hash table, of which a registry that start-up accepts needs hardly more than the slots inside
// it. What a text hashes to depends on a key that who wrote the text cannot know, so that no file
// makes the searches slow.
class text_index {
  public:
    text_index();
    ~text_index();
    text_index(const text_index&) = delete;
    text_index& operator=(const text_index&) = delete;

    // `kept` is where the text stays, terminated. It is not read before a search finds it: the
    // record that it stands in has just been cleared, and the processor would wait for that.
    void add(text_kind kind, std::string_view text, const schar* kept);

    // False when there was no memory for all that was added: the index knows nothing then.
    bool is_complete() const { return is_complete_; }

    bool contains(text_kind kind, std::string_view text) const;

  private:
    struct slot {
        ulint64 fingerprint;
        const schar* text;  // null: free
    };

    ulint64 fingerprint(text_kind kind, std::string_view text) const;
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

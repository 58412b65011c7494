// Finds texts that were added, ignoring case, without a walk over the list.
#ifndef ARCH_REGISTRY_TEXT_INDEX_H
#define ARCH_REGISTRY_TEXT_INDEX_H

#include <array>
#include <string_view>

#include "kqtype.h"

namespace arch {

// What a text is added as: a search finds only those of its own kind.
enum class text_kind : byte { section = 1, destination };

// A hash table, of which a registry that start-up accepts needs no more than the slots inside it;
// most of them stay free, so that a search seldom looks at a second one. What a text hashes to
// depends on a key that who wrote the text cannot know, so that no file makes the searches slow.
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
    ulint64 fingerprint(text_kind kind, std::string_view text) const;
    std::size_t place_of(ulint64 fingerprint) const;
    std::size_t next(std::size_t at) const { return (at + 1) & (size_ - 1); }
    void put(ulint64 fingerprint, const schar* text);
    bool grow();
    void free_slots();

    static constexpr std::size_t own_size = 512;
    std::array<ulint64, own_size> own_fingerprints_{};
    std::array<const schar*, own_size> own_texts_;

    // Of each slot the fingerprint, 0 while it is free, and apart, as it is not cleared, the text.
    ulint64* fingerprints_ = own_fingerprints_.data();
    const schar** texts_ = own_texts_.data();
    std::size_t size_ = own_size;
    std::size_t used_ = 0;
    ulint64 key_;
    bool is_complete_ = true;
};

}  // namespace arch

#endif

// Texts compared ignoring case eight characters at a time, for searches through many.
#ifndef ARCH_COMMON_FOLDED_TEXT_H
#define ARCH_COMMON_FOLDED_TEXT_H

#include <algorithm>

#include "common/text.h"

namespace arch {

// In the order of the machine: x86-64 has the first character in the lowest byte.
inline ulint64 word_at(const schar* text) {
    ulint64 word;
    std::memcpy(&word, text, sizeof word);
    return word;
}

// Folds each of eight characters as `fold` does one. In a byte whose upper bit is free, adding what
// is missing to 128 sets that bit for each character from a letter on.
constexpr ulint64 fold_word(ulint64 word) {
    constexpr ulint64 each = 0x0101010101010101;
    const ulint64 low_bits = word & 0x7f * each;
    const ulint64 from_a = low_bits + (0x80 - 'a') * each;
    const ulint64 above_z = low_bits + (0x7f - 'z') * each;
    const ulint64 lower_case = from_a & ~above_z & ~word & 0x80 * each;
    return word - (lower_case >> 2);
}

// The first eight characters of a text, or all of a shorter one.
inline ulint64 head_of(std::string_view text) {
    if (text.size() >= sizeof(ulint64)) return word_at(text.data());
    ulint64 head = 0;
    for (std::size_t i = text.size(); i-- > 0;)
        head = head << 8 | static_cast<byte>(text[i]);
    return head;
}

// A text that fields are compared with. It looks at the first eight characters before the rest, all
// at once and without the bit that is the case of a letter: that decides most comparisons.
class folded_text {
  public:
    explicit folded_text(const schar* text)
        : text_(text), size_(std::strlen(text) + 1), head_(head_of({text, size_})) {
        if (size_ < sizeof head_) head_mask_ = ~(head_mask_ << 8 * size_);
        rough_mask_ = head_mask_ & 0xdfdfdfdfdfdfdfdf;
    }

    template <std::size_t Size>
    bool equals(const schar (&field)[Size]) const {
        static_assert(Size >= sizeof head_);
        return ((word_at(field) ^ head_) & rough_mask_) == 0 && size_ <= Size &&
               whole_equals(field);
    }

  private:
    // Apart, so that the walks that seldom come here stay short.
    [[gnu::noinline]] bool whole_equals(const schar* field) const {
        if ((fold_word(word_at(field)) & head_mask_) != fold_word(head_)) return false;
        for (std::size_t at = sizeof head_; at < size_; at += sizeof head_) {
            // The last eight characters may overlap those before.
            const std::size_t from = std::min(at, size_ - sizeof head_);
            if (fold_word(word_at(field + from)) != fold_word(word_at(text_ + from))) return false;
        }
        return true;
    }

    const schar* text_;
    std::size_t size_;  // with the terminator
    ulint64 head_;
    ulint64 head_mask_ = ~ulint64{0};  // the bytes of the head that are the text's
    ulint64 rough_mask_;               // the same without the case of letters
};

}  // namespace arch

#endif

// Texts compared ignoring case eight characters at a time, for searches through many.
#ifndef ARCH_COMMON_FOLDED_TEXT_H
#define ARCH_COMMON_FOLDED_TEXT_H

#include <algorithm>

#include "common/text.h"

namespace arch {

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

// The first eight characters of a text, or all of a shorter one: pieces that may overlap.
inline ulint64 head_of(std::string_view text) {
    const schar* first = text.data();
    const std::size_t size = text.size();
    if (size >= 8) return word_at(first);
    if (size >= 4)
        return word_at<ulint>(first) | static_cast<ulint64>(word_at<ulint>(first + size - 4))
                                           << 8 * (size - 4);
    ulint64 head = 0;
    for (std::size_t i = 0; i < size; ++i)
        head |= static_cast<ulint64>(static_cast<byte>(first[i])) << 8 * i;
    return head;
}

// The last eight characters of a text, or all of a shorter one.
inline ulint64 tail_of(std::string_view text) {
    return text.size() >= 8 ? word_at(text.data() + text.size() - 8) : head_of(text);
}

// Whether one of eight characters is a control character. Taking 0x20 away borrows from the bit of
// each that is below, adding 1 carries into that of 0x7f; what a borrow reaches beyond stands above
// a control character anyway.
constexpr bool has_control(ulint64 word) {
    constexpr ulint64 each = 0x0101010101010101;
    const ulint64 below_blank = (word - 0x20 * each) & ~word;
    const ulint64 delete_character = ((word & 0x7f * each) + each) & ~word;
    return ((below_blank | delete_character) & 0x80 * each) != 0;
}

inline bool has_control(std::string_view text) {
    constexpr ulint64 blanks = 0x2020202020202020;
    for (; text.size() >= 8; text.remove_prefix(8))
        if (has_control(word_at(text.data()))) return true;
    return has_control(head_of(text) | blanks << 8 * text.size());
}

// Texts of one length ignoring case.
inline bool same_characters(std::string_view left, std::string_view right) {
    if (fold_word(head_of(left)) != fold_word(head_of(right))) return false;
    for (std::size_t at = 8; at < left.size(); at += 8) {
        // The last eight characters may overlap those before.
        const std::size_t from = std::min(at, left.size() - 8);
        if (fold_word(word_at(left.data() + from)) != fold_word(word_at(right.data() + from)))
            return false;
    }
    return true;
}

// Whole texts of known length ignoring case.
inline bool same_text(std::string_view left, std::string_view right) {
    return left.size() == right.size() && same_characters(left, right);
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
        return ((word_at(field) ^ head_) & rough_mask_) == 0 && whole_equals(field, Size);
    }

  private:
    // Apart, so that the walks that seldom come here stay short.
    [[gnu::noinline]] bool whole_equals(const schar* field, std::size_t field_size) const {
        if (size_ > field_size) return false;
        if ((fold_word(word_at(field)) & head_mask_) != fold_word(head_)) return false;
        // From the end, because paths begin alike. The eight characters looked at last may overlap
        // those before.
        for (std::size_t end = size_; end > 8; end = std::max<std::size_t>(end, 16) - 8)
            if (fold_word(word_at(field + end - 8)) != fold_word(word_at(text_ + end - 8)))
                return false;
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

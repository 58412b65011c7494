// The bytes of a configuration message.
//
//   body length   4 bytes          the number of bytes that follow
//   entries       back to back     path length 2 bytes, path; with names: name length 2, name
//
// Integers are little-endian, texts have no terminator. /arch of instance A with names:
//   0A 00 00 00   05 00 '/' 'a' 'r' 'c' 'h'   01 00 'A'
#ifndef ARCH_EXCHANGE_WIRE_H
#define ARCH_EXCHANGE_WIRE_H

#include <span>

#include "common/folded_text.h"

namespace arch {

constexpr ulint body_length_size = 4;
constexpr ulint text_length_size = 2;

// The writers return where they end, in a buffer that the caller has sized with the same walk.
template <ulint Width>
byte* write_number(byte* at, ulint value) {
    for (ulint i = 0; i < Width; ++i)
        at[i] = static_cast<byte>(value >> 8 * i);
    return at + Width;
}

inline byte* write_text(byte* at, std::string_view text) {
    at = write_number<text_length_size>(at, static_cast<ulint>(text.size()));
    copy_characters(reinterpret_cast<schar*>(at), text);
    return at + text.size();
}

// The text in a field, at most `longest` characters: copied in the pass that finds its end.
inline byte* write_field(byte* at, const schar* field, std::size_t longest) {
    schar* const to = reinterpret_cast<schar*>(at + text_length_size);
    std::size_t copied = 0;
    const std::size_t length = find_end(field, longest, [&](std::size_t from, ulint64 word) {
        std::memcpy(to + from, &word, sizeof word);
        copied = from + sizeof word;
    });
    copy_characters(to + copied, {field + copied, length - copied});
    return write_number<text_length_size>(at, static_cast<ulint>(length)) + length;
}

// Reads a peer's bytes and believes no length.
class byte_reader {
  public:
    explicit byte_reader(std::span<const byte> bytes) : rest_(bytes) {}

    bool at_end() const { return rest_.empty(); }

    // False when the text runs past the end or is longer than `longest`.
    bool text(std::size_t longest, std::string_view& read) {
        if (rest_.size() < text_length_size) return false;
        const std::size_t length = static_cast<std::size_t>(rest_[0] | rest_[1] << 8);
        if (length > longest || length > rest_.size() - text_length_size) return false;
        read = {reinterpret_cast<const schar*>(rest_.data()) + text_length_size, length};
        rest_ = rest_.subspan(text_length_size + length);
        return true;
    }

  private:
    std::span<const byte> rest_;
};

}  // namespace arch

#endif

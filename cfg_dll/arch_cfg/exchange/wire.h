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

// Writes into a buffer that the caller has sized with the same walk.
class byte_writer {
  public:
    explicit byte_writer(byte* at) : at_(at) {}

    void number(ulint value, ulint width) {
        for (ulint i = 0; i < width; ++i)
            *at_++ = static_cast<byte>(value >> 8 * i);
    }

    void text(std::string_view text) {
        number(static_cast<ulint>(text.size()), text_length_size);
        copy_characters(reinterpret_cast<schar*>(at_), text);
        at_ += text.size();
    }

    const byte* at() const { return at_; }

  private:
    byte* at_;
};

// Reads a peer's bytes and believes no length.
class byte_reader {
  public:
    explicit byte_reader(std::span<const byte> bytes) : rest_(bytes) {}

    bool at_end() const { return rest_.empty(); }

    // False when the text runs past the end, is longer than `longest` or is no plain text.
    bool text(std::size_t longest, std::string_view& read) {
        if (rest_.size() < text_length_size) return false;
        const std::size_t length = static_cast<std::size_t>(rest_[0] | rest_[1] << 8);
        if (length > longest || length > rest_.size() - text_length_size) return false;
        read = {reinterpret_cast<const schar*>(rest_.data()) + text_length_size, length};
        rest_ = rest_.subspan(text_length_size + length);
        return !has_control(read);
    }

  private:
    std::span<const byte> rest_;
};

}  // namespace arch

#endif

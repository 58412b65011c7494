// Bytes of a configuration message as text.
//
//     05 00 "/arch" 01 00 "A"
//
// Letters, digits and "/._-" stand in double quotes, any other byte as two hexadecimal digits.
#ifndef TESTS_SUPPORT_WIRE_TEXT_H
#define TESTS_SUPPORT_WIRE_TEXT_H

#include <kqtype.h>

#include <string>
#include <vector>

namespace test_support {

std::string wire_text(const byte* bytes, size_t size);

// The bytes of a text in that form, in which a line "entry PATH NAME" or "entry PATH" also stands
// for an entry with its lengths.
std::vector<byte> wire_bytes(const std::string& text);

}  // namespace test_support

#endif

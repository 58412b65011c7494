// Numbers that ini_is_integer has accepted.
#ifndef ARCH_COMMON_NUMBER_H
#define ARCH_COMMON_NUMBER_H

#include <cstdlib>

#include "kqtype.h"

namespace arch {

// The low 32 bits, decimal, octal or hexadecimal as the text begins. A single digit, as flags are,
// is the same in each.
inline ulint number_in(const schar* text) {
    const bool is_one_digit = text[0] >= '0' && text[0] <= '9' && text[1] == '\0';
    return is_one_digit ? static_cast<ulint>(text[0] - '0')
                        : static_cast<ulint>(std::strtoul(text, nullptr, 0));
}

}  // namespace arch

#endif

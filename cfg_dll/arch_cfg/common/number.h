// Numbers that ini_is_integer has accepted.
#ifndef ARCH_COMMON_NUMBER_H
#define ARCH_COMMON_NUMBER_H

#include <cstdlib>

#include "kqtype.h"

namespace arch {

// The low 32 bits, decimal, octal or hexadecimal as the text begins. Nearly all are decimal.
inline ulint number_in(const schar* text) {
    if (text[0] == '0' && text[1] != '\0')
        return static_cast<ulint>(std::strtoul(text, nullptr, 0));
    ulint number = 0;
    for (; *text >= '0' && *text <= '9'; ++text)
        number = 10 * number + static_cast<ulint>(*text - '0');
    return number;
}

}  // namespace arch

#endif

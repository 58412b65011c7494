// Numbers that ini_is_integer has accepted.
#ifndef ARCH_COMMON_NUMBER_H
#define ARCH_COMMON_NUMBER_H

#include <cstddef>
#include <cstdlib>

#include "kqtype.h"

namespace arch {

// The low 32 bits of what strtoul reads, decimal, octal or hexadecimal as the text begins. Nearly all
// are decimal and short.
inline ulint number_in(const schar* text) {
    constexpr std::ptrdiff_t short_enough = 10;
    const schar* at = text;
    ulint number = 0;
    for (; *at >= '0' && *at <= '9'; ++at)
        number = 10 * number + static_cast<ulint>(*at - '0');
    const bool is_octal = text[0] == '0' && at - text > 1;
    if (*at != '\0' || is_octal || at - text > short_enough)
        return static_cast<ulint>(std::strtoul(text, nullptr, 0));
    return number;
}

}  // namespace arch

#endif

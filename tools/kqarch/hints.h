// What to do about a refused line or a failed rule.
#ifndef KQARCH_HINTS_H
#define KQARCH_HINTS_H

#include <string>

#include "kqtype.h"

// The advice for a message, or else the general one for the code.
std::string hint_for(kqcode_t code, const std::string& message);

#endif

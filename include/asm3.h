/* ASM storage. */
#ifndef ASM3_H
#define ASM3_H

#include "kqtype.h"

KQ_BEGIN_C

/* 1 for a striping size that ASM storage has: exactly 0, 32, 64, 128 or 256 (KB). */
kqbool asm3_striping_size_is_valid(ulint striping);

KQ_END_C

#endif

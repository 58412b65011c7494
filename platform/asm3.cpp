#include "asm3.h"

kqbool asm3_striping_size_is_valid(ulint striping) {
    return striping == 0 || striping == 32 || striping == 64 || striping == 128 || striping == 256;
}

// The keys of kqarch.ini counted from 0: their indexes are two runs without gaps.
#ifndef ARCH_FILE_KEY_NUMBERS_H
#define ARCH_FILE_KEY_NUMBERS_H

#include "ini.h"

namespace arch {

constexpr ulint first_run = ini_index_arch_type;
constexpr ulint first_run_size = ini_index_arch_recv_path - ini_index_arch_type + 1;
constexpr ulint second_run = ini_index_arch_asm_mirror;
constexpr ulint second_run_size = ini_index_arch_asm_striping - ini_index_arch_asm_mirror + 1;
constexpr ulint key_count = first_run_size + second_run_size;

// `key_count` for a key of another file, or of none.
constexpr ulint key_number(ulint index) {
    if (index - first_run < first_run_size) return index - first_run;
    if (index - second_run < second_run_size) return first_run_size + index - second_run;
    return key_count;
}

}  // namespace arch

#endif

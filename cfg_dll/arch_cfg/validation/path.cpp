// Whether a directory can take archives.
#include <unistd.h>

#include <cstdio>

#include "arch_cfg.h"
#include "common/text.h"
#include "os.h"
#include "osfile.h"

using namespace arch;

namespace {

constexpr int most_pauses = 30;
constexpr ulint pause_milliseconds = 100;

bool is_unchecked_asm(const schar* path, kqbool asm_path_chk) {
    return asm_path_chk == 0 && os_file_path_is_asm(path) == 1;
}

// Creates a file that no other attempt has, and removes it again.
bool probe(const schar* directory) {
    schar name[512];
    (void)std::snprintf(name, sizeof name, "%s%s.ARCHIVE_%x_%d.DAT", directory, "/",
                        static_cast<ulint>(getpid()), static_cast<lint>(kq_get_tick_count()));
    const os_handle_t file = os_file_create_with_init(name, 4096, 4, 1);
    if (file == OS_HANDLE_INVALID) return false;
    os_file_close(file);
    (void)os_file_delete(name);
    return true;
}

}  // namespace

kqbool arch_cfg_check_local_path_validate(const schar* dest, kqbool asm_path_chk) {
    if (dest == nullptr || std::strlen(dest) > KQ_PATHNAME_MAX) return 0;
    if (is_unchecked_asm(dest, asm_path_chk)) return 1;
    if (os_dir_is_exist(dest) != 0) return 1;
    return os_dir_create(dest);
}

kqbool arch_cfg_local_dest_check(const schar* dest, kqbool asm_path_chk) {
    if (dest == nullptr || dest[0] == '\0') return 0;
    if (arch_cfg_check_local_path_validate(dest, asm_path_chk) == 0) return 0;
    if (is_unchecked_asm(dest, asm_path_chk)) return 1;
    for (int pauses = 0;; ++pauses) {
        if (probe(dest)) return 1;
        if (pauses == most_pauses) return 0;
        os_thread_sleep_low(pause_milliseconds);
    }
}

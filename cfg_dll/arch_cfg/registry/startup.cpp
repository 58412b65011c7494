// Start-up: find the file, load it, check it.
#include <sys/stat.h>

#include <cstdio>

#include "arch_cfg.h"
#include "common/report.h"
#include "common/server.h"
#include "elog.h"
#include "file/ini_file.h"
#include "osfile.h"
#include "registry/reading.h"
#include "registry/registry.h"

using namespace arch;

namespace {

// The file that start-up reads; the default one is created when it is absent, a given one never.
kqcode_t choose_file(const schar* given, file_path& path) {
    if (given != nullptr) {
        const std::string_view text = given;
        if (text.size() > KQ_PATHNAME_MAX) return ARCH_E_FILE_OPEN;
        copy_text(path, text);
        return 0;
    }
    config_file(path);
    if (os_file_is_exist(path) != 0) return 0;
    const os_handle_t created = os_file_create_normal(path);
    if (created == OS_HANDLE_INVALID) return ARCH_E_FILE_OPEN;
    os_file_close_normal(created);
    return 0;
}

// A subscriber's connection text may hold a password: the file is then nobody's but its owner's.
void warn_of_readers(const file_path& path) {
    const bool has_subscriber = subscriber_exists(arch_cfg_sys);
    struct stat status;
    if (has_subscriber && stat(path, &status) == 0 && (status.st_mode & (S_IRGRP | S_IROTH)) != 0)
        warn("%s names a subscriber, and others than its owner may read it.", path);
}

}  // namespace

kqcode_t arch_cfg_sys_init_with_check(const schar* path_in, kqbool timer_chk, kqbool valid_chk,
                                      kqbool asm_path_chk) {
    arch_cfg_sys_init_env();
    if (!archiving_is_on()) return 0;

    file_path path;
    if (const kqcode_t code = choose_file(path_in, path); code < 0) return code;

    reading_index index;
    if (const kqcode_t code = ini_read_other_info_for_posix(path, INI_READ_ARCH); code < 0) {
        arch_cfg_sys_destroy();
        return code;
    }
    warn_of_readers(path);
    if (valid_chk == 0) return 0;

    const kqcode_t code = arch_cfg_sys_validate(timer_chk, asm_path_chk);
    if (code < 0) {
        arch_cfg_sys_destroy();
        aq_fprintf_inner(stderr, "Validate kqarch.ini error, code=%d\n", code);
    }
    return code;
}

kqcode_t arch_cfg_sys_init(const schar* path_in, kqbool timer_chk, kqbool asm_path_chk) {
    return arch_cfg_sys_init_with_check(path_in, timer_chk, 1, asm_path_chk);
}

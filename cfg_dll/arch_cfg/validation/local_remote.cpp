// The rules of destinations that hold archive files: LOCAL and REMOTE.
//
// The length of the path itself needs no rule here: the sample file's name, which holds the path,
// has been found short enough before.
#include "common/report.h"
#include "common/server.h"
#include "mal_cfg.h"
#include "osfile.h"
#include "validation/rules.h"

namespace arch {
namespace {

bool will_run_out_of_space(const arch_cfg_sys_t& registry, const arch_cfg_t& arch,
                           const sample_file& sample) {
    const ulint64 bytes = ulint64{arch.file_size} << 20;
    return os_file_check_overflow(sample.path(), registry.arch_asm_mirror, bytes) != 0;
}

// The sizes of both types; REMOTE is called local here too.
kqcode_t validate_sizes(const arch_cfg_t& arch) {
    if (arch.space_limit != 0 && !in_key_range(ini_index_arch_space_limit, arch.space_limit))
        return refuse(
            ARCH_E_INVALID_SPACE_LIMIT,
            "Local archive [%s] ARCH_SPACE_LIMIT invalid, out of scope(0,1024~2147483647)\n",
            arch.name);
    if (arch.flush_buf_size != 0 &&
        !in_key_range(ini_index_arch_flush_buf_size, arch.flush_buf_size))
        return refuse(ARCH_E_INVALID_FLUSH_BUF_SIZE,
                      "Local archive [%s] ARCH_FLUSH_BUF_SIZE invalid, out of scope(0,128)\n",
                      arch.name);
    if (!in_key_range(ini_index_arch_file_size, arch.file_size))
        return refuse(ARCH_E_INVALID_FILE_SIZE,
                      "Local archive [%s] ARCH_FILE_SIZE invalid, out of scope(64~2048)\n",
                      arch.name);
    return 0;
}

// The name of the remote instance, and its place in kqmal.ini.
kqcode_t validate_remote_instance(const schar* instance) {
    if (archiving_is_on() && global_ini_info.mail_flag == 0)
        return refuse(ARCH_E_MAL_NOT_CONFIGURED,
                      "Mal sys not configured, please check MAL_INI in kq.ini\n");
    if (instance[0] == '\0')
        return refuse(ARCH_E_INVALID_DEST, "ARCH_DEST instance name is not configured\n");
    if (std::strlen(instance) > ARCH_INST_NAME_MAX)
        return refuse(ARCH_E_INVALID_DEST, "ARCH_DEST name %s too long(max %d)\n", instance,
                      ARCH_INST_NAME_MAX);
    if (archiving_is_on() && mal_cfg_get_by_inst_name(instance) == nullptr)
        return refuse(ARCH_E_INVALID_DEST, "Instance %s cannot find in kqmal.ini\n", instance);
    return 0;
}

}  // namespace

kqcode_t validate_local(const arch_cfg_sys_t& registry, const arch_cfg_t& arch,
                        const sample_file& sample, check_options options) {
    if (will_run_out_of_space(registry, arch, sample))
        return refuse(ARCH_E_OUT_OF_SPACE, "ARCH_DEST[%s] will be out of space.\n", arch.dest);
    if (arch_cfg_local_dest_check(arch.dest, options.asm_path_chk) == 0)
        return refuse(ARCH_E_INVALID_DEST,
                      "ARCH_DEST[%s] invalid, check dest directory privilege.\n", arch.dest);
    if (const kqcode_t code = validate_sizes(arch); code < 0) return code;
    if (!in_key_range(ini_index_arch_hang_flag, arch.hang_flag))
        return refuse(ARCH_E_INVALID_HANG_FLAG,
                      "Local archive [%s] ARCH_HANG_FLAG invalid, out of scope(0,1)\n", arch.name);
    return 0;
}

kqcode_t validate_remote(const arch_cfg_sys_t& registry, const arch_cfg_t& arch,
                         const sample_file& sample, check_options options) {
    if (will_run_out_of_space(registry, arch, sample))
        return refuse(ARCH_E_OUT_OF_SPACE, "ARCH_DEST name %s will be out of space.\n", arch.dest);
    if (arch_cfg_local_dest_check(arch.dest, options.asm_path_chk) == 0)
        return refuse(ARCH_E_INVALID_DEST,
                      "ARCH_INCOMING_PATH %s invalid or has not directory privilege.\n", arch.dest);
    if (const kqcode_t code = validate_remote_instance(arch.timer_name); code < 0) return code;
    return validate_sizes(arch);
}

}  // namespace arch

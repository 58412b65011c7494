// The rules that every destination obeys, and the way to those of its type.
#include "common/report.h"
#include "common/server.h"
#include "osfile.h"
#include "registry/registry.h"
#include "utl.h"
#include "validation/rules.h"

using namespace arch;

namespace arch {
namespace {

bool may_delay(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_ASYNC || arch.type == ARCH_TYPE_SUBSCRIBE;
}

bool may_fail_over(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_REALTIME || arch.type == ARCH_TYPE_TIMELY;
}

// A list of several instances leaves `dest` empty.
bool lacks_destination(const arch_cfg_t& arch) {
    return arch.dest[0] == '\0' && arch.n_inst <= 1;
}

kqcode_t refuse_missing_destination(const arch_cfg_t& arch) {
    if (arch.type == ARCH_TYPE_REMOTE) {
        (void)refuse_printed(ARCH_E_INVALID_DEST,
                             "ARCH_INCOMING_PATH not configured in archive %s.\n", arch.name);
        return refuse_logged(ARCH_E_INVALID_DEST, "ARCH_INCOMING_PATH not configured in archive %s",
                             arch.name);
    }
    (void)refuse_printed(ARCH_E_INVALID_DEST, "ARCH_DEST not configured in archive %s.\n",
                         arch.name);
    return refuse_logged(ARCH_E_INVALID_DEST, "ARCH_DEST not configured in archive %s", arch.name);
}

kqcode_t validate_common(const arch_cfg_t& arch, const sample_file& sample) {
    if (lacks_destination(arch)) return refuse_missing_destination(arch);
    if (holds_archives(arch) && !sample.is_valid())
        return refuse(ARCH_E_INVALID_DEST, "ARCH_DEST name %s too long(max %d)\n", arch.dest,
                      KQ_PATHNAME_MAX);
    if (holds_archives(arch) && os_file_path_is_dfs(arch.dest) != 0)
        return refuse(ARCH_E_INVALID_DEST, "DFS path is not supported for ARCH_DEST(%s)\n",
                      arch.dest);
    if (!may_delay(arch) && arch.arch_send_delay != 0)
        return refuse(ARCH_E_INVALID_DEST,
                      "ARCH_SEND_DELAY is only supported for async archive type\n");
    if (!may_fail_over(arch) && arch.arch_failover != ARCH_UNSET_FLAG)
        return refuse(ARCH_E_PARA_NOT_ALLOWED,
                      "Only realtime or timely archive can configure ARCH_FAILOVER\n");
    return 0;
}

}  // namespace

sample_file::sample_file(const arch_cfg_t& arch) {
    if (!holds_archives(arch)) return;
    const schar* postfix = ini_get_str_value(ini_index_logfile_postfix_name);
    append(text_in(arch.dest));
    append("/");
    append(text_in(arch.name));
    append("_20160808121212123_0.");
    append(postfix != nullptr ? postfix : "");
    path_[length_] = '\0';
}

void sample_file::append(std::string_view text) {
    const std::string_view fitting = text.substr(0, sizeof path_ - 1 - length_);
    copy_characters(path_ + length_, fitting);
    length_ += fitting.size();
}

bool sample_file::is_valid() const {
    return length_ <= KQ_PATHNAME_MAX && is_valid_pathname(path_, 1) != 0;
}

kqcode_t validate_destination(const arch_cfg_sys_t& registry, arch_cfg_t& arch,
                              check_options options) {
    const sample_file sample(arch);
    if (const kqcode_t code = validate_common(arch, sample); code < 0) return code;
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return validate_local(registry, arch, sample, options);
        case ARCH_TYPE_REALTIME:
        case ARCH_TYPE_TIMELY:
            return validate_applying(registry, arch);
        case ARCH_TYPE_SYNC:
            return validate_sync(arch);
        case ARCH_TYPE_ASYNC:
            return validate_async(arch, options);
        case ARCH_TYPE_REMOTE:
            return validate_remote(registry, arch, sample, options);
        case ARCH_TYPE_RAFT:
        case ARCH_TYPE_LEARNER:
            return validate_raft_member(arch);
        case ARCH_TYPE_SUBSCRIBE:
            return validate_subscriber(arch, options);
        default:
            return refuse(ARCH_E_INVALID_TYPE, "Invalid ARCH_TYPE in archive %s ", arch.name);
    }
}

}  // namespace arch

kqcode_t arch_cfg_validate(arch_cfg_t* arch, kqbool timer_chk, kqbool asm_path_chk) {
    if (arch == nullptr) return 0;
    return validate_destination(arch_cfg_sys, *arch, {timer_chk != 0, asm_path_chk});
}

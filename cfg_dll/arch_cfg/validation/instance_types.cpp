// The rules of destinations that name instances: SYNC, ASYNC, REALTIME and TIMELY.
#include "common/report.h"
#include "common/server.h"
#include "ntimer_cfg.h"
#include "os.h"
#include "validation/rules.h"

namespace arch {
namespace {

constexpr ulint longest_send_delay = 1440;

// What a standby does when neither its section nor the settings say.
kqbool default_wait_apply(const arch_cfg_sys_t& registry, const arch_cfg_t& arch) {
    if (registry.wait_apply != ARCH_UNSET_FLAG) return registry.wait_apply;
    return arch.type == ARCH_TYPE_TIMELY ? 1 : 0;
}

}  // namespace

kqcode_t validate_sync(const arch_cfg_t& arch) {
    if (text_in(arch.dest).size() > ARCH_INST_NAME_MAX)
        return refuse_log_bare(ARCH_E_INVALID_DEST, "ARCH_DEST name %s too long(max %d)\n",
                               arch.dest, ARCH_INST_NAME_MAX);
    if (archiving_is_on() && global_ini_info.mail_flag == 0)
        return refuse(ARCH_E_MAL_NOT_CONFIGURED,
                      "Mal sys not configured, MAL_INI not configured in kq.ini or archive "
                      "dest(%s) not configured in kqmal.ini\n",
                      arch.dest);
    return arch_cfg_inst_check_in_mal(&arch, ARCH_TYPE_SYNC);
}

kqcode_t validate_async(const arch_cfg_t& arch, check_options options) {
    if (arch.timer_name[0] == '\0')
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is ASYNC type, but not configured timer ARCH_TIMER_NAME in "
                      "kqarch.ini.\n",
                      arch.name);
    if (options.timers && ntimer_cfg_find_by_name(arch.timer_name) == nullptr)
        return refuse(ARCH_E_TIMER_NOT_FOUND,
                      "Archive [%s] is ASYNC type, but timer %s not found, please check "
                      "kqtimer.ini configuration and TIMER_INI in kq.ini.\n",
                      arch.name, arch.timer_name);
    if (arch.arch_send_delay > longest_send_delay)
        return refuse(ARCH_E_INVALID_SEND_DELAY,
                      "Archive [%s] is ASYNC type, but ARCH_SEND_DELAY is not valid value in "
                      "kqarch.ini.\n",
                      arch.name);
    return arch_cfg_inst_check_in_mal(&arch, ARCH_TYPE_ASYNC);
}

// The defaults are settled before kqmal.ini is asked, and stay when that refuses.
kqcode_t validate_applying(const arch_cfg_sys_t& registry, arch_cfg_t& arch) {
    if (arch.wait_apply == ARCH_UNSET_FLAG) arch.wait_apply = default_wait_apply(registry, arch);
    if (arch.type == ARCH_TYPE_REALTIME && arch.n_inst > 1 && arch.wait_apply == 1)
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is REALTIME type, and archive dest is DSC cluster, not "
                      "allowed to set ARCH_WAIT_APPLY or WAIT_APPLY to 1.\n",
                      arch.name);
    if (arch.arch_failover == ARCH_UNSET_FLAG) os_interlock_write(&arch.arch_failover, 0u);
    return arch_cfg_inst_check_in_mal(&arch, arch.type);
}

}  // namespace arch

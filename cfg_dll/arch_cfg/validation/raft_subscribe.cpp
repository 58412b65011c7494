// The rules of Raft members (RAFT, LEARNER) and of the subscriber.
#include "common/report.h"
#include "common/server.h"
#include "ntimer_cfg.h"
#include "utl.h"
#include "validation/rules.h"

namespace arch {
namespace {

// Longer than its field, which holds the limit, a destination cannot be.
bool is_empty(const pathname_t& dest) {
    return dest[0] == '\0';
}

kqcode_t refuse_center_id(const arch_cfg_t& arch) {
    const other_ini_alterable_t& key = *ini_get_other_ini_info_by_index(ini_index_arch_center_id);
    if (arch.type == ARCH_TYPE_RAFT)
        return refuse(ARCH_E_INVALID_VALUE,
                      "ARCH_CENTER_ID value is invalid in [%s], must between %d and %d.\n",
                      arch.name, printable(key.min_value), printable(key.max_value));
    return refuse(ARCH_E_INVALID_VALUE,
                  "ARCH_CENTER_ID not value is invalid in [%s], must between %d and %d.\n",
                  arch.name, printable(key.min_value), printable(key.max_value));
}

}  // namespace

kqcode_t validate_raft_member(const arch_cfg_t& arch) {
    if (is_empty(arch.dest))
        return refuse(ARCH_E_INVALID_DEST, "ARCH_DEST name %s is empty or too long(max %d)\n",
                      arch.dest, KQ_PATHNAME_MAX);
    const bool has_address = arch.arch_dest_ip[0] != '\0' && arch.arch_dest_port != 0;
    if (is_dpc_bp_or_mp_or_bs() == 0 && !has_address)
        return refuse(ARCH_E_INVALID_VALUE,
                      "Current database is not in BP mode, need config ARCH_DEST_IP and "
                      "ARCH_DEST_PORT in kqarch.ini, ARCH_NAME is %s\n",
                      arch.name);
    const other_ini_alterable_t& id = *ini_get_other_ini_info_by_index(ini_index_arch_dest_id);
    if (!in_range(id, arch.arch_dest_id))
        return refuse(ARCH_E_INVALID_VALUE,
                      "ARCH_DEST_ID not config or value is invalid in [%s], must between %d and "
                      "%d.\n",
                      arch.name, printable(id.min_value), printable(id.max_value));
    if (!in_key_range(ini_index_arch_center_id, arch.arch_center_id)) return refuse_center_id(arch);
    return 0;
}

kqcode_t check_subscriber_values(const arch_cfg_t& arch) {
    if (!in_key_range(ini_index_arch_send_delay, arch.arch_send_delay))
        return refuse(ARCH_E_INVALID_SEND_DELAY,
                      "Archive [%s] is SUBSCRIBE type, but ARCH_SEND_DELAY is not valid value in "
                      "kqarch.ini.\n",
                      arch.name);
    if (!in_key_range(ini_index_arch_subscribe_mode, arch.arch_subscb_mode))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is SUBSCRIBE type, but ARCH_SUBSCRIBE_MODE is not valid value "
                      "in kqarch.ini.\n",
                      arch.name);
    if (!in_key_range(ini_index_arch_threshold_per_second, arch.arch_threshold_per_second))
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is SUBSCRIBE type, but ARCH_THRESHOLD_PER_SECOND is not valid "
                      "value in kqarch.ini.\n",
                      arch.name);
    return 0;
}

kqcode_t validate_subscriber(const arch_cfg_t& arch, check_options options) {
    if (is_empty(arch.dest))
        return refuse(ARCH_E_INVALID_DEST, "ARCH_DEST name %s is empty or too long(max %d)\n",
                      arch.dest, KQ_PATHNAME_MAX);
    if (arch.timer_name[0] == '\0')
        return refuse(ARCH_E_INVALID_VALUE,
                      "Archive [%s] is SUBSCRIBE type, but not configured timer ARCH_TIMER_NAME "
                      "in kqarch.ini.\n",
                      arch.name);
    if (options.timers && ntimer_cfg_find_by_name(arch.timer_name) == nullptr)
        return refuse(ARCH_E_TIMER_NOT_FOUND,
                      "Archive [%s] is SUBSCRIBE type, but timer %s not found, please check "
                      "kqtimer.ini configuration and TIMER_INI in kq.ini.\n",
                      arch.name, arch.timer_name);
    return check_subscriber_values(arch);
}

}  // namespace arch

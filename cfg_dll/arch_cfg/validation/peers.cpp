// The communication configuration beside this one, and two questions that the server asks.
#include "arch_cfg_hold.h"
#include "common/report.h"
#include "common/server.h"
#include "mal_cfg.h"
#include "registry/registry.h"

using namespace arch;

namespace {

kqcode_t refuse_without_mal() {
    return refuse_printed(ARCH_E_MAL_NOT_CONFIGURED,
                          "Mal sys not configured, please check MAL_INI in kq.ini\n");
}

void warn_of_unnamed(const arch_cfg_sys_t& registry, const mal_cfg_sys_t& peers) {
    for (usint i = 0; i < peers.n_mal; ++i) {
        const schar* name = peers.mal_arr[i].inst_name;
        if (same_text(name, global_ini_info.instance_name)) continue;
        if (!destination_exists(registry, name, nullptr))
            warn(
                "Instance(%s) not configured in local kqarch.ini, if it is not in data watch "
                "system, you can ignore this warnning info!",
                name);
    }
}

bool is_shipped_to_instances(const arch_cfg_t& arch) {
    return arch.type == ARCH_TYPE_TIMELY || arch.type == ARCH_TYPE_REALTIME ||
           arch.type == ARCH_TYPE_ASYNC;
}

}  // namespace

kqcode_t arch_cfg_inst_check_in_mal(const arch_cfg_t* arch, usint dst_type) {
    if (!archiving_is_on()) return 0;
    if (global_ini_info.mail_flag == 0) return refuse_without_mal();
    for (const auto& name : instance_names(*arch)) {
        const mal_cfg_t* peer = mal_cfg_get_by_inst_name(name);
        if (peer == nullptr)
            return refuse_printed(ARCH_E_INVALID_DEST, "Instance %s cannot find in kqmal.ini\n",
                                  name);
        if (dst_type == ARCH_TYPE_TIMELY && (peer->inst_ip[0] == '\0' || peer->inst_port == 0))
            return refuse_printed(
                ARCH_E_MAL_NOT_CONFIGURED,
                "Timely arch %s has not configured MAL_INST_HOST or MAL_INST_PORT in kqmal.ini\n",
                name);
    }
    return 0;
}

kqcode_t mal_cfg_inst_check_in_arch(void) {
    if (!archiving_is_on()) return 0;
    if (global_ini_info.mail_flag == 0) return refuse_without_mal();
    mal_cfg_sys_enter();
    warn_of_unnamed(arch_cfg_sys, *mal_cfg_sys_get());
    mal_cfg_sys_exit();
    return 0;
}

kqbool arch_cfg_has_dsc_arch_dest(void) {
    if (arch_cfg_sys.has_inited != 1) return 0;
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys))
        if (is_shipped_to_instances(arch) && arch.n_inst > 1) return 1;
    return 0;
}

kqbool arch_cfg_has_local_or_sync(void) {
    const arch_cfg_hold hold;
    return first_of_type(arch_cfg_sys, ARCH_TYPE_LOCAL) != nullptr ||
           first_of_type(arch_cfg_sys, ARCH_TYPE_SYNC) != nullptr;
}

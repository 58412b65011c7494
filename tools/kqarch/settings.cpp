#include "settings.h"

#include <algorithm>

#include "ini.h"
#include "os.h"
#include "password.h"
#include "text.h"

namespace {

constexpr ulint64 always = ~0ULL;  // no value is the marker of a setting that is not configured

setting number(const char* name, const char* field, ulint64 value, const std::string& unit = "",
               ulint64 unset = always) {
    if (value == unset) return {name, field, "", nullptr};
    std::string shown = std::to_string(value);
    if (!unit.empty()) shown = unit[1] == 'B' ? shown + " " + unit : count_of(value, unit);
    return {name, field, shown, value};
}

setting text(const char* name, const char* field, const std::string& value) {
    if (value.empty()) return {name, field, "", nullptr};
    return {name, field, visible(value), visible(value)};
}

setting on_off(const char* name, const char* field, ulint64 value) {
    if (value == ARCH_UNSET_FLAG) return {name, field, "by default", nullptr};
    return {name, field, value == 0 ? "no" : "yes", value != 0};
}

std::string instance_list(const arch_cfg_t& arch) {
    std::vector<std::string> names;
    for (size_t i = 0; i < std::min<size_t>(arch.n_inst, ARCH_INST_MAX); ++i)
        names.emplace_back(arch.dest_insts[i]);
    return join(names, "/");
}

}  // namespace

std::vector<setting> global_settings() {
    const arch_cfg_sys_t& sys = arch_cfg_sys;
    auto global = [](const char* key, ulint64 value, ulint64 unset, const char* unit = "") {
        return number(key, key, value, unit, unset);
    };
    return {
        global("ARCH_WAIT_APPLY", sys.wait_apply, ARCH_UNSET_FLAG),
        global("ARCH_RESERVE_TIME", sys.arch_reserve_time, ARCH_UNSET_LONG, "minute"),
        global("ARCH_LOCAL_SHARE", sys.arch_local_share, ARCH_UNSET_FLAG),
        global("ARCH_LOCAL_SHARE_CHECK", sys.arch_local_share_check, ARCH_UNSET_FLAG),
        global("XMAL_HB_INTERVAL", sys.xmal_hb_interval, ARCH_UNSET_LONG, "second"),
        global("RAFT_HB_INTERVAL", sys.raft_hb_interval, 0, "second"),
        global("RAFT_VOTE_INTERVAL", os_interlock_read(&sys.raft_vote_interval), ARCH_UNSET_LONG,
               "second"),
        text("XMAL_IP", "XMAL_IP", hide_password(sys.xmal_ip, text_place::other)),
        global("XMAL_PORT", sys.xmal_port, 0),
        global("RAFT_SELF_ID", sys.raft_self_id, ARCH_UNSET_SHORT),
        global("RAFT_LEARNER", os_interlock_read(&sys.raft_learner), 0),
        global("ARCH_ASM_MIRROR", sys.arch_asm_mirror, ARCH_UNSET_FLAG),
        global("ARCH_ASM_STRIPING", sys.arch_asm_striping, ARCH_UNSET_SHORT, "KB"),
        global("RAFT_PKG_INTERVAL", sys.raft_pkg_interval, 0),
        global("SELF_CENTER_ID", sys.self_center_id, 0),
    };
}

std::string destination_of(const arch_cfg_t& arch) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return hide_password(visible(arch.dest), text_place::path);
        case ARCH_TYPE_REMOTE:
            return hide_password(visible(arch.timer_name), text_place::other);
        case ARCH_TYPE_SUBSCRIBE:
            return hide_password(visible(arch.dest), text_place::subscriber);
        default:
            return hide_password(visible(instance_list(arch)), text_place::other);
    }
}

std::vector<setting> sizes_of(const arch_cfg_t& arch) {
    if (!has_directory(arch.type)) return {};
    setting limit = number("space limit", "space_limit_mb", arch.space_limit, "MB");
    if (arch.space_limit == 0) limit.shown = "unlimited";
    setting buffer = number("flush buffer", "flush_buf_size_mb", arch.flush_buf_size, "MB");
    if (arch.flush_buf_size == 0) buffer.shown = "none";
    return {number("file size", "file_size_mb", arch.file_size, "MB"), limit, buffer};
}

std::vector<setting> own_settings_of(const arch_cfg_t& arch) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return {on_off("hang", "hang_flag", arch.hang_flag)};
        case ARCH_TYPE_REMOTE:
            return {
                text("incoming path", "incoming_path", hide_password(arch.dest, text_place::path))};
        case ARCH_TYPE_REALTIME:
        case ARCH_TYPE_TIMELY:
            return {on_off("wait for apply", "wait_apply", arch.wait_apply),
                    on_off("failover", "failover", arch.arch_failover)};
        case ARCH_TYPE_SYNC:
            return {
                number("recover time", "recover_time_seconds", arch.arch_recover_time, "second")};
        case ARCH_TYPE_ASYNC:
            return {text("timer", "timer", hide_password(arch.timer_name, text_place::other)),
                    number("send delay", "send_delay_minutes", arch.arch_send_delay, "minute")};
        case ARCH_TYPE_RAFT:
        case ARCH_TYPE_LEARNER:
            return {number("id", "dest_id", arch.arch_dest_id, "", ARCH_UNSET_SHORT),
                    text("address", "dest_ip", hide_password(arch.arch_dest_ip, text_place::other)),
                    number("port", "dest_port", arch.arch_dest_port, "", 0),
                    number("centre", "center_id", arch.arch_center_id, "", 0)};
        case ARCH_TYPE_SUBSCRIBE:
            return {number("mode", "mode", arch.arch_subscb_mode),
                    text("timer", "timer", hide_password(arch.timer_name, text_place::other)),
                    number("threshold", "threshold_per_second", arch.arch_threshold_per_second),
                    number("send delay", "send_delay_minutes", arch.arch_send_delay, "minute")};
        default:
            return {};
    }
}

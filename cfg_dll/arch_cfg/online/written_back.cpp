#include "online/written_back.h"

#include <algorithm>

#include "common/server.h"
#include "elog.h"
#include "registry/registry.h"

namespace arch {
namespace {

constexpr ulint list_key = ini_index_arch_dest;
constexpr ulint timer_key = ini_index_arch_timer_name;

kqcode_t refuse_key(kqcode_t code, const arch_cfg_t& arch, ulint key) {
    elog_report_ex(ELOG_REFUSAL, "%s archive: %s would not be read back from kqarch.ini as it is",
                   arch_cfg_get_arch_name_by_type(arch.type),
                   ini_get_other_ini_info_by_index(key)->para_name);
    return code;
}

kqcode_t check_text(const arch_cfg_t& arch, ulint key, std::string_view text) {
    if (!survives_reading(text)) return refuse_key(ARCH_E_INVALID_DEST, arch, key);
    if (text.size() > longest_value(&arch)) return refuse_key(ARCH_E_TOO_LONG, arch, key);
    return 0;
}

// Whether a name can be one of a list: blanks inside the list belong to the names.
bool is_instance_name(std::string_view name) {
    return name.find('/') == std::string_view::npos &&
           std::none_of(name.begin(), name.end(), is_control);
}

// The list as it is written: the first entry also when the record counts none.
kqcode_t check_instances(const arch_cfg_t& arch) {
    const std::size_t count = std::max<std::size_t>(instance_names(arch).size(), 1);
    std::size_t length = count - 1;
    for (const auto& entry : std::span(arch.dest_insts).first(count)) {
        const std::string_view name = text_in(entry);
        if (!is_instance_name(name)) return refuse_key(ARCH_E_INVALID_DEST, arch, list_key);
        length += name.size();
    }
    const bool outer_blank = text_in(arch.dest_insts[0]).starts_with(' ') ||
                             text_in(arch.dest_insts[count - 1]).ends_with(' ');
    if (length == 0 || outer_blank) return refuse_key(ARCH_E_INVALID_DEST, arch, list_key);
    if (count > 1 && arch.type == ARCH_TYPE_SYNC)
        return refuse_key(ARCH_E_TOO_MANY_INSTS, arch, list_key);
    if (length > longest_value(&arch)) return refuse_key(ARCH_E_TOO_LONG, arch, list_key);
    return 0;
}

kqcode_t check_number(const arch_cfg_t& arch, ulint key, ulint number) {
    return in_key_range(key, number) ? 0 : refuse_key(ARCH_E_INVALID_VALUE, arch, key);
}

kqcode_t check_remote(const arch_cfg_t& arch) {
    const kqcode_t code = check_text(arch, ini_index_arch_dest, text_in(arch.timer_name));
    return code < 0 ? code : check_text(arch, ini_index_incoming_path, text_in(arch.dest));
}

kqcode_t check_subscriber(const arch_cfg_t& arch) {
    const kqcode_t code = check_text(arch, ini_index_arch_dest, text_in(arch.dest));
    return code < 0 ? code : check_text(arch, timer_key, text_in(arch.timer_name));
}

kqcode_t check_sync(const arch_cfg_t& arch) {
    const kqcode_t code = check_instances(arch);
    return code < 0 ? code
                    : check_number(arch, ini_index_arch_recover_time, arch.arch_recover_time);
}

kqcode_t check_async(const arch_cfg_t& arch) {
    const kqcode_t code = check_instances(arch);
    return code < 0 ? code : check_text(arch, timer_key, text_in(arch.timer_name));
}

// REALTIME and TIMELY, whose defaults are settled.
kqcode_t check_applying(const arch_cfg_t& arch) {
    if (const kqcode_t code = check_instances(arch); code < 0) return code;
    const kqcode_t code = check_number(arch, ini_index_arch_wait_apply, arch.wait_apply);
    return code < 0 ? code : check_number(arch, ini_index_arch_failover, arch.arch_failover);
}

}  // namespace

kqcode_t check_written_back(const arch_cfg_t& arch) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return check_text(arch, ini_index_arch_dest, text_in(arch.dest));
        case ARCH_TYPE_REMOTE:
            return check_remote(arch);
        case ARCH_TYPE_SUBSCRIBE:
            return check_subscriber(arch);
        case ARCH_TYPE_SYNC:
            return check_sync(arch);
        case ARCH_TYPE_ASYNC:
            return check_async(arch);
        default:
            return check_applying(arch);
    }
}

}  // namespace arch

#include "online/written_back.h"

#include "common/server.h"
#include "elog.h"
#include "registry/registry.h"

namespace arch {
namespace {

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

kqcode_t check_instances(const arch_cfg_t& arch) {
    std::size_t joined = 0;
    for (const auto& name : instance_names(arch)) {
        const std::string_view text = text_in(name);
        if (!survives_reading(text) || text.find('/') != std::string_view::npos)
            return refuse_key(ARCH_E_INVALID_DEST, arch, ini_index_arch_dest);
        joined += text.size() + (joined > 0 ? 1 : 0);
    }
    if (joined > longest_value(&arch))
        return refuse_key(ARCH_E_TOO_LONG, arch, ini_index_arch_dest);
    return 0;
}

}  // namespace

kqcode_t check_written_back(const arch_cfg_t& arch) {
    switch (arch.type) {
        case ARCH_TYPE_LOCAL:
            return check_text(arch, ini_index_arch_dest, text_in(arch.dest));
        case ARCH_TYPE_REMOTE: {
            const kqcode_t code = check_text(arch, ini_index_arch_dest, text_in(arch.timer_name));
            if (code < 0) return code;
            return check_text(arch, ini_index_incoming_path, text_in(arch.dest));
        }
        case ARCH_TYPE_SUBSCRIBE: {
            const kqcode_t code = check_text(arch, ini_index_arch_dest, text_in(arch.dest));
            if (code < 0) return code;
            return check_text(arch, ini_index_arch_timer_name, text_in(arch.timer_name));
        }
        default: {
            const kqcode_t code = check_instances(arch);
            if (code < 0 || arch.type != ARCH_TYPE_ASYNC) return code;
            return check_text(arch, ini_index_arch_timer_name, text_in(arch.timer_name));
        }
    }
}

}  // namespace arch

// Dropping a destination.
#include "arch_cfg_hold.h"
#include "registry/registry.h"

using namespace arch;

namespace {

bool is_registered(const arch_cfg_sys_t& registry, const arch_cfg_t* asked) {
    for (const arch_cfg_t& arch : destinations(registry))
        if (&arch == asked) return true;
    return false;
}

kqcode_t drop_and_rewrite(arch_cfg_t& arch) KQ_REQUIRES(arch_cfg_sys.mutex) {
    discard(arch_cfg_sys, arch);
    return arch_cfg_sys_write_to_file();
}

}  // namespace

kqcode_t arch_cfg_drop_low(arch_cfg_t* dst_arch) {
    const arch_cfg_hold hold;
    if (!is_registered(arch_cfg_sys, dst_arch)) return ARCH_E_DEST_NOT_FOUND;
    return drop_and_rewrite(*dst_arch);
}

// One hold of the lock, so that what was found is what is dropped.
kqcode_t arch_cfg_drop(const schar* dest) {
    if (dest == nullptr || dest[0] == '\0') return ARCH_E_DEST_NOT_FOUND;
    const arch_cfg_hold hold;
    arch_cfg_t* found =
        find_by_list(dest, [](const schar* text) { return find_destination(arch_cfg_sys, text); });
    if (found == nullptr) return ARCH_E_DEST_NOT_FOUND;
    return drop_and_rewrite(*found);
}

// Sections: making a record for one, and naming a new one.
#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "arch_cfg_hold.h"
#include "common/text.h"
#include "elog.h"
#include "ini.h"
#include "os.h"
#include "registry/registry.h"

using namespace arch;

namespace {

kqcode_t create_section(arch_cfg_sys_t& registry, std::string_view name, arch_cfg_t*& created) {
    if (section_exists(registry, name)) {
        created = nullptr;
        return ARCH_E_DUPLICATE_NAME;
    }
    auto* arch = static_cast<arch_cfg_t*>(os_malloc(sizeof(arch_cfg_t)));
    if (arch == nullptr) return ARCH_E_OUT_OF_MEMORY;
    arch_init(arch, name.data());
    append(registry, *arch, name);
    created = arch;
    return 0;
}

// The number behind a prefix, wherever that stands in a section's name; false when there is none.
bool number_behind(const schar* name, const schar* prefix, ulint& number) {
    const schar* found = std::strstr(name, prefix);
    if (found == nullptr) return false;
    const schar* digits = found + std::strlen(prefix);
    if (ini_is_integer(digits) == 0) return false;
    number = static_cast<ulint>(std::strtoul(digits, nullptr, 10));
    return true;
}

}  // namespace

kqcode_t arch_cfg_create(void* cfg_sys, const schar* subname, arch_cfg_t** arch_out) {
    if (subname == nullptr) subname = "";
    if (std::strstr(subname, "STANDBY_ARCHIVE") != nullptr) {
        aq_fprintf_inner(stdout, "Invalid archive name, cannot include 'STANDBY_ARCHIVE'!\n");
        return ARCH_E_INVALID_VALUE;
    }
    const std::string_view name = subname;
    if (name.size() > KQ_SYSNAME_MAX) return ARCH_E_TOO_LONG;

    arch_cfg_t* ignored = nullptr;
    arch_cfg_t*& created = arch_out != nullptr ? *arch_out : ignored;
    if (cfg_sys != nullptr)
        return create_section(*static_cast<arch_cfg_sys_t*>(cfg_sys), name, created);
    const arch_cfg_hold hold;
    return create_section(arch_cfg_sys, name, created);
}

void arch_cfg_get_name(ulint type, schar* subname) {
    constexpr int most_numbers = 10000;
    if (type >= ARCH_TYPE_COUNT || arch_cfg_name_pre[type] == nullptr) return;

    const schar* prefix = arch_cfg_name_pre[type];
    int numbers = 0;
    ulint highest = 0;
    for (const arch_cfg_t& arch : destinations(arch_cfg_sys)) {
        ulint number = 0;
        if (!number_behind(arch.name, prefix, number)) continue;
        highest = std::max(highest, number);
        if (++numbers == most_numbers) break;
    }
    // With no number in use this is 1; behind the largest number it wraps.
    (void)std::snprintf(subname, sizeof(sysname_t), "%s%d", prefix, static_cast<lint>(highest + 1));
}

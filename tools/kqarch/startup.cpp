#include "startup.h"

#include <algorithm>

#include "loading.h"
#include "validation.h"

const diagnostic& startup::decisive() const {
    auto found = std::find_if(problems.begin(), problems.end(),
                              [this](const diagnostic& one) { return one.code == code; });
    return found != problems.end() ? *found : problems.front();
}

startup start_up(const config_file& file) {
    arch_cfg_sys_destroy();
    arch_cfg_sys_init_env();
    refused_lines refused = load(file);
    if (!refused.empty()) {
        kqcode_t code = refused.first.front().code;
        return {code, false, std::move(refused.first)};
    }
    dry_run nothing_is_created;
    validation result = validate(file, {});
    return {result.code, true, std::move(result.failures)};
}

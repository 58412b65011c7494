#include "validation.h"

#include <algorithm>

#include "capture.h"
#include "catalogue.h"
#include "hints.h"
#include "instance.h"
#include "placement.h"
#include "text.h"

namespace {

diagnostic describe_failure(const captured& result, const placement& place,
                            const config_file& file) {
    const code_entry* entry = find_code(result.code);
    std::string text = !result.said.empty() ? result.said : place.text;
    if (text.empty() && entry != nullptr) text = entry->meaning;
    const password_list& passwords = file.passwords();
    return {.file = file.path(),
            .line = place.line,
            .code = result.code,
            .section = passwords.hide(place.section),
            .key = place.key,
            .text = passwords.hide(text),
            .hint = hint_for(result.code, text)};
}

struct failed_destination {
    arch_cfg_t* arch;
    captured result;
};

std::vector<failed_destination> failed_destinations(const validation_options& options)
    KQ_REQUIRES(arch_cfg_sys.mutex) {
    std::vector<failed_destination> failed;
    for (arch_cfg_t* arch = arch_cfg_sys.arch_lst.start; arch; arch = arch->link.next) {
        captured result = capture([&]() KQ_NO_THREAD_ANALYSIS {
            return arch_cfg_validate(arch, options.timers, options.asm_paths);
        });
        if (result.code < 0) failed.push_back({arch, result});
    }
    return failed;
}

std::vector<diagnostic> every_failure(const captured& whole, const config_file& file,
                                      const validation_options& options) {
    registry_hold hold;
    std::vector<diagnostic> failures;
    bool whole_is_new = true;
    for (const failed_destination& failed : failed_destinations(options)) {
        const captured& result = failed.result;
        failures.push_back(
            describe_failure(result, place_in(*failed.arch, result.said, file), file));
        if (result.code == whole.code && result.said == whole.said) whole_is_new = false;
    }
    if (whole_is_new)
        failures.push_back(
            describe_failure(whole, place_in_whole(whole.code, whole.said, file), file));
    return failures;
}

}  // namespace

validation validate(const config_file& file, const validation_options& options) {
    captured_with_log whole =
        capture_with_log([&] { return arch_cfg_sys_validate(options.timers, options.asm_paths); });
    validation result{
        .code = std::min(whole.code, 0), .failures = {}, .log_warnings = std::move(whole.warnings)};
    if (whole.code < 0) result.failures = every_failure(whole, file, options);
    return result;
}

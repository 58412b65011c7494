#include "validation.h"

#include <algorithm>

#include "capture.h"
#include "catalogue.h"
#include "directory_fault.h"
#include "hints.h"
#include "instance.h"
#include "osfile.h"
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

// What to do, where the destination tells more than the message.
std::string cause_in(const arch_cfg_t& arch, const captured& result) {
    if (arch.type == ARCH_TYPE_NONE)
        return "Add ARCH_TYPE as the section's first line, and then what the type needs; `kqarch "
               "explain` lists the types.";
    if (result.code == ARCH_E_OUT_OF_SPACE) return hint_for_space(arch.dest);
    bool unusable = result.said.find("directory privilege") != result.said.npos;
    return unusable ? hint_for_directory(arch.dest) : "";
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
    arch_cfg_hold hold;
    std::vector<diagnostic> failures;
    bool whole_is_new = true;
    for (const failed_destination& failed : failed_destinations(options)) {
        const captured& result = failed.result;
        diagnostic failure =
            describe_failure(result, place_in(*failed.arch, result.said, file), file);
        std::string cause = cause_in(*failed.arch, result);
        if (!cause.empty()) failure.hint = file.passwords().hide(cause);
        failures.push_back(std::move(failure));
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
    if (whole.code >= 0) return result;
    // A server that refuses looks no further: what is only asked to tell more changes nothing.
    os_set_dry_run(1);
    result.failures = every_failure(whole, file, options);
    return result;
}

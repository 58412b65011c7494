#include "validation.h"

#include <algorithm>

#include "capture.h"
#include "catalogue.h"
#include "elog.h"
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

// The texts of the log's lines of level 3: "2026-01-31 12:00:00.000 [3] text".
std::vector<std::string> warnings_of(const std::string& log) {
    constexpr std::string_view level = " [3] ";
    std::vector<std::string> warnings;
    for (const std::string& line : split(log, '\n')) {
        size_t at = line.find(" [");
        if (at != line.npos && line.compare(at, level.size(), level) == 0)
            warnings.push_back(line.substr(at + level.size()));
    }
    return warnings;
}

}  // namespace

validation validate(const config_file& file, const validation_options& options) {
    memory_file log;
    elog_open(log.path().c_str());
    captured whole =
        capture([&] { return arch_cfg_sys_validate(options.timers, options.asm_paths); });
    elog_close();
    validation result{.code = std::min(whole.code, 0),
                      .failures = {},
                      .log_warnings = warnings_of(log.content())};
    if (whole.code < 0) result.failures = every_failure(whole, file, options);
    return result;
}

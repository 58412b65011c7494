// A plugin's line for monitoring: "KQARCH STATE - text | performance data".
#include <algorithm>

#include "output_form.h"
#include "text.h"

namespace {

constexpr const char* state_names[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
enum state { state_ok, state_warning, state_critical, state_unknown };

constexpr size_t longest_text = 600;  // monitors cut the whole line at 1 to 8 KB

// A server that does not start counts more than one that nothing is known of.
int state_of(const account& said, exit_status status) {
    if (status == exit_refused || summary_of(said, "would_not_start") > 0) return state_critical;
    if (status != exit_good) return state_unknown;
    return summary_of(said, "warnings") > 0 ? state_warning : state_ok;
}

// What decides the state comes first; notes decide none.
std::string worst_finding(const account& said) {
    auto worst = std::min_element(
        said.found.begin(), said.found.end(),
        [](const diagnostic& left, const diagnostic& right) { return left.level < right.level; });
    if (worst == said.found.end() || worst->level == severity::note) return "";
    return (worst->file.empty() ? "" : place_of(*worst) + ": ") + worst->text;
}

// The performance data begins at "|", and some monitors take "\n" for the start of a line.
std::string plugin_text(std::string_view text) {
    std::string escaped;
    for (char letter : text)
        escaped += letter == '|' ? "\\x7c" : letter == '\\' ? "\\x5c" : std::string(1, letter);
    return shortened(with_unseen_shown(visible(escaped)), longest_text);
}

std::string performance_data(const account& said) {
    std::string data;
    if (!said.fields.contains("summary")) return data;
    for (const char* name : {"directories", "destinations", "warnings", "errors"})
        data += (data.empty() ? " | " : " ") + std::string(name) + "=" +
                std::to_string(summary_of(said, name));
    return data;
}

std::string nagios_line(const account& said, exit_status status) {
    std::string finding = worst_finding(said);
    bool both = !said.headline.empty() && !finding.empty();
    return std::string("KQARCH ") + state_names[state_of(said, status)] + " - " +
           plugin_text(said.headline + (both ? "; " : "") + finding) + performance_data(said) +
           "\n";
}

}  // namespace

const output_form nagios_form{"nagios", nagios_line, state_of};

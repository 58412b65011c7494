#include "results.h"

#include <algorithm>

namespace bench {

// CPU time, because a machine that others use too takes the processor away now and then.
void results::ReportRuns(const std::vector<Run>& runs) {
    std::vector<Run> shown;
    for (const Run& run : runs) {
        failed_ = failed_ || run.error_occurred;
        const bool is_repetition = run.run_type == Run::RT_Iteration;
        if (is_repetition && !run.error_occurred) add(run);
        if (!is_repetition || run.repetitions <= 1 || run.error_occurred) shown.push_back(run);
    }
    ConsoleReporter::ReportRuns(shown);
}

void results::add(const Run& run) {
    const bool is_process = !run.run_name.time_type.empty();
    times_[run.run_name.function_name].push_back(is_process ? run.GetAdjustedRealTime()
                                                            : run.GetAdjustedCPUTime());
}

bool results::find(const std::string& name, summary& found) const {
    const auto at = times_.find(name);
    if (at == times_.end()) return false;
    std::vector<double> sorted = at->second;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t count = sorted.size();
    found.median = sorted[count / 2];
    found.spread = (sorted[3 * count / 4] - sorted[count / 4]) / found.median;
    return true;
}

}  // namespace bench

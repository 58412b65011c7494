// What the runs of each benchmark gave, collected while the library prints it.
#ifndef BENCH_RESULTS_H
#define BENCH_RESULTS_H

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

// Times of one operation in nanoseconds, over the repetitions.
struct summary {
    double median = 0;
    double spread = 0;  // of the middle half, as a part of the median
};

class results : public benchmark::ConsoleReporter {
  public:
    results() : benchmark::ConsoleReporter(OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override;

    bool any_failed() const { return failed_; }

    // The summary of a benchmark; false where it was not measured.
    bool find(const std::string& name, summary& found) const;

  private:
    void add(const Run& run);

    std::map<std::string, std::vector<double>> times_;
    bool failed_ = false;
};

}  // namespace bench

#endif

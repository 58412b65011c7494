// Everything that is measured: what is registered, and the rows of docs/performance.md.
#ifndef BENCH_CATALOGUE_H
#define BENCH_CATALOGUE_H

#include <span>

#include "benchmarks.h"

namespace bench {

struct instance_kind {
    const char* name;
    const char* title;
    description (*describe)();
};

// Measured on each kind of instance: the benchmarks NAME/KIND and NAME/KIND/peer.
struct instance_row {
    const char* name;
    const char* title;
    void (*ours)(benchmark::State&, const instance&);
    const char* peer_title;
    void (*peer)(benchmark::State&, const instance&);
    storage archives = storage::disk;
};

// Measured once: NAME and NAME/peer.
struct single_row {
    const char* name;
    const char* title;
    void (*ours)(benchmark::State&);
    const char* peer_title;
    void (*peer)(benchmark::State&);
};

// Measured with a growing number of sections: NAME/COUNT.
struct growth_row {
    const char* name;
    const char* title;
    void (*ours)(benchmark::State&, ulint count);
    std::span<const ulint> counts;
};

// A ratio to reach: how many times as much as benchmark `peer` one of `ours` takes. Where one of
// `ours` does the work of several of `peer`, `share` is one over their number.
struct goal {
    const char* what;
    const char* beside;
    const char* ours;
    const char* peer;
    double to_reach;
    double share = 1;
};

std::span<const instance_kind> instance_kinds();
std::span<const instance_row> instance_rows();
std::span<const single_row> single_rows();
std::span<const growth_row> growth_rows();
std::span<const goal> goals();

void register_benchmarks();

}  // namespace bench

#endif

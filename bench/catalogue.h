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
};

// Measured without an instance: NAME and NAME/peer.
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
};

std::span<const instance_kind> instance_kinds();
std::span<const instance_row> instance_rows();
std::span<const single_row> single_rows();
std::span<const growth_row> growth_rows();
std::span<const ulint> growth_counts();

void register_benchmarks();

}  // namespace bench

#endif

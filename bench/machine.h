// The machine that is measured on.
#ifndef BENCH_MACHINE_H
#define BENCH_MACHINE_H

#include <string>

namespace bench {

// Keeps the process on one processor, because a move to another costs it its caches.
void stay_on_one_processor();

// Lets the allocator keep what it has once got: what the kernel takes for fresh pages, which large
// registries would ask for again in each run, is nobody's merit.
void keep_memory();

// Processor, compiler, and where the instances lie, in one line.
std::string describe_machine();

}  // namespace bench

#endif

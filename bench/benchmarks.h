// The functions that are measured. Each checks its result, and throws when it is wrong.
#ifndef BENCH_BENCHMARKS_H
#define BENCH_BENCHMARKS_H

#include <benchmark/benchmark.h>

#include "instance.h"

namespace bench {

// loading.cpp
void load(benchmark::State& state, const instance& on);
void load_bare(benchmark::State& state, const instance& on);
void start(benchmark::State& state, const instance& on);
void parse_file(benchmark::State& state, const instance& on);
void load_key_file(benchmark::State& state);
void validate(benchmark::State& state, const instance& on);
void probe_bare(benchmark::State& state, const instance& on);
void probe(benchmark::State& state);
void probe_one_bare(benchmark::State& state);
void create_sections(benchmark::State& state, ulint count);
void load_sections(benchmark::State& state, ulint count);

// look_up.cpp
void find_name(benchmark::State& state, const instance& on);
void find_name_bare(benchmark::State& state, const instance& on);
void find_no_name(benchmark::State& state, const instance& on);
void find_no_name_bare(benchmark::State& state, const instance& on);
void find_list(benchmark::State& state, const instance& on);
void find_list_bare(benchmark::State& state, const instance& on);
void find_no_list(benchmark::State& state, const instance& on);
void find_no_list_bare(benchmark::State& state, const instance& on);
void find_type(benchmark::State& state, const instance& on);
void find_type_bare(benchmark::State& state, const instance& on);
void find_no_type(benchmark::State& state, const instance& on);
void find_no_type_bare(benchmark::State& state, const instance& on);

void find_name_of_fifty(benchmark::State& state);
void find_name_of_fifty_bare(benchmark::State& state);
void find_no_name_of_fifty(benchmark::State& state);
void find_no_name_of_fifty_bare(benchmark::State& state);

// writing.cpp
void write_text(benchmark::State& state, const instance& on);
void print_text(benchmark::State& state, const instance& on);
void write_sections(benchmark::State& state, ulint count);

// exchange.cpp
void encode_message(benchmark::State& state);
void encode_message_only(benchmark::State& state);
void pack_message(benchmark::State& state);
void decode_message(benchmark::State& state);
void decode_message_plainly(benchmark::State& state);

// changing.cpp
void parse_clause(benchmark::State& state);
void parse_clause_plainly(benchmark::State& state);
void add_destination(benchmark::State& state);
void drop_destination(benchmark::State& state);
void rewrite_file_bare(benchmark::State& state);

// keys_and_lock.cpp
void find_key(benchmark::State& state);
void find_key_bare(benchmark::State& state);
void find_no_key(benchmark::State& state);
void find_no_key_bare(benchmark::State& state);
void enter_and_exit(benchmark::State& state);
void lock_and_unlock(benchmark::State& state);

// processes.cpp; measured by the processor time of the process
void run_kqarch(benchmark::State& state);
void run_nothing(benchmark::State& state);
void run_nginx(benchmark::State& state);

}  // namespace bench

#endif

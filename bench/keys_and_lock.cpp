// Finding a key's index, and taking the registry lock.
#include <cctype>

#include "benchmarks.h"
#include "ini.h"
#include "peers.h"

namespace bench {
namespace {

using texts = std::vector<std::string>;

// Each key once, its letters alternating in case.
texts known_keys(const key_list& keys) {
    texts found;
    for (std::string name : keys.names()) {
        for (std::size_t i = 0; i < name.size(); i += 2)
            name[i] = static_cast<char>(std::tolower(name[i]));
        found.push_back(name);
    }
    return found;
}

// Misspelt keys, by turns with two letters exchanged and with one too many.
texts unknown_keys(const key_list& keys) {
    texts found = known_keys(keys);
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (i % 2 == 0)
            std::swap(found[i][1], found[i][2]);
        else
            found[i] += 'X';
    }
    return found;
}

// Module and peer have to agree on every key before one of them is measured.
void check_agreement(const key_list& peer, const texts& searched, bool is_known) {
    for (const std::string& key : searched) {
        const lint index = ini_get_other_ini_array_index(key.c_str());
        check(index == peer.find(key.c_str()), "module and peer disagree on " + key);
        check((index >= 0) == is_known, "found or not against expectation: " + key);
    }
}

void measure(benchmark::State& state, const texts& searched) {
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(searched.size())))
        for (const std::string& key : searched)
            benchmark::DoNotOptimize(ini_get_other_ini_array_index(key.c_str()));
}

void measure_bare(benchmark::State& state, const key_list& peer, const texts& searched) {
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(searched.size())))
        for (const std::string& key : searched)
            benchmark::DoNotOptimize(peer.find(key.c_str()));
}

}  // namespace

void find_key(benchmark::State& state) {
    const key_list peer;
    const texts searched = known_keys(peer);
    check_agreement(peer, searched, true);
    measure(state, searched);
}

void find_key_bare(benchmark::State& state) {
    const key_list peer;
    const texts searched = known_keys(peer);
    check_agreement(peer, searched, true);
    measure_bare(state, peer, searched);
}

void find_no_key(benchmark::State& state) {
    const key_list peer;
    const texts searched = unknown_keys(peer);
    check_agreement(peer, searched, false);
    measure(state, searched);
}

void find_no_key_bare(benchmark::State& state) {
    const key_list peer;
    const texts searched = unknown_keys(peer);
    check_agreement(peer, searched, false);
    measure_bare(state, peer, searched);
}

void enter_and_exit(benchmark::State& state) {
    arch_cfg_sys_init_env();
    for (auto _ : state) {
        arch_cfg_sys_enter();
        benchmark::ClobberMemory();
        arch_cfg_sys_exit();
    }
    arch_cfg_sys_destroy();
}

void lock_and_unlock(benchmark::State& state) {
    bare_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        benchmark::ClobberMemory();
        mutex.unlock();
    }
}

}  // namespace bench

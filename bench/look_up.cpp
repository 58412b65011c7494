// Look-ups by name, by list and by type: those that find something and those that do not.
#include <algorithm>
#include <cstring>
#include <random>

#include "benchmarks.h"
#include "peers.h"

namespace bench {
namespace {

using texts = std::vector<std::string>;

// People write names in any case.
std::string mixed_case(std::string text) {
    for (std::size_t i = 0; i < text.size(); i += 2)
        if (text[i] >= 'A' && text[i] <= 'Z') text[i] = static_cast<char>(text[i] - 'A' + 'a');
    return text;
}

// Not in the order of the list, and the same in each run.
texts shuffled(texts ordered) {
    std::shuffle(ordered.begin(), ordered.end(), std::mt19937(1));
    return ordered;
}

texts all_names(const instance& on) {
    texts names;
    for (const destination& dest : on.destinations()) {
        if (dest.type == ARCH_TYPE_LOCAL) names.push_back(dest.directory);
        for (const std::string& name : dest.instances)
            names.push_back(mixed_case(name));
    }
    return shuffled(names);
}

// As each destination has them.
texts all_lists(const instance& on) {
    texts lists;
    for (const destination& dest : on.destinations())
        lists.push_back(mixed_case(dest_text(dest)));
    return shuffled(lists);
}

// Names of the same form that no destination has.
texts unknown_names() {
    return {"RT99_01", "rt01_99", "ASYNC99", "node99", "VOTER99", "learner99", "/archive/local99"};
}

texts unknown_lists() {
    return {"RT99_01/RT99_02/RT99_03", "async97/async98/async99", "NODE98/NODE99"};
}

// Which destination a record is.
int place_of(const arch_cfg_t* found) {
    int place = 0;
    if (found == nullptr) return -1;
    for (const arch_cfg_t* before = found->link.prev; before != nullptr; before = before->link.prev)
        ++place;
    return place;
}

arch_cfg_t* look_up_list(const char* text) {
    return arch_cfg_find_by_dest(text, 0);
}

// Module and peer have to agree on every text before one of them is measured.
using ours = arch_cfg_t* (*)(const char*);
using bare = int (name_list::*)(const char*) const;

template <ours Ours, bare Bare>
void check_agreement(const name_list& peer, const texts& searched, bool is_known) {
    for (const std::string& text : searched) {
        const int place = place_of(Ours(text.c_str()));
        check(place == (peer.*Bare)(text.c_str()), "module and peer disagree on " + text);
        check((place >= 0) == is_known, "found or not against expectation: " + text);
    }
}

template <ours Ours, bare Bare>
void measure(benchmark::State& state, const instance& on, const texts& searched, bool is_known) {
    const loaded_registry loaded(on);
    check_agreement<Ours, Bare>(name_list(on.destinations()), searched, is_known);
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(searched.size())))
        for (const std::string& text : searched)
            benchmark::DoNotOptimize(Ours(text.c_str()));
}

template <ours Ours, bare Bare>
void measure_bare(benchmark::State& state, const instance& on, const texts& searched,
                  bool is_known) {
    const loaded_registry loaded(on);
    const name_list peer(on.destinations());
    check_agreement<Ours, Bare>(peer, searched, is_known);
    while (state.KeepRunningBatch(static_cast<benchmark::IterationCount>(searched.size())))
        for (const std::string& text : searched)
            benchmark::DoNotOptimize((peer.*Bare)(text.c_str()));
}

// Room for the destinations of the largest instance.
using copies = sysname_t[64];

void check_types(const instance& on, const name_list& peer, usint type, bool is_known) {
    copies of_module;
    copies of_peer;
    usint count = 0;
    check(on.destinations().size() <= std::size(of_module), "too many destinations");
    arch_cfg_get_arch_arr_by_type(type, &count, of_module);
    check(count == peer.copy_type(type, of_peer), "module and peer disagree on a type");
    check((count > 0) == is_known, "a type is found or not against expectation");
    for (usint i = 0; i < count; ++i)
        check(std::strcmp(of_module[i], of_peer[i]) == 0, "module and peer differ in a text");
}

void measure_type(benchmark::State& state, const instance& on, usint type, bool is_known) {
    const loaded_registry loaded(on);
    check_types(on, name_list(on.destinations()), type, is_known);
    copies copied;
    usint count = 0;
    for (auto _ : state) {
        arch_cfg_get_arch_arr_by_type(type, &count, copied);
        benchmark::DoNotOptimize(count);
    }
}

void measure_type_bare(benchmark::State& state, const instance& on, usint type, bool is_known) {
    const loaded_registry loaded(on);
    const name_list peer(on.destinations());
    check_types(on, peer, type, is_known);
    copies copied;
    for (auto _ : state)
        benchmark::DoNotOptimize(peer.copy_type(type, copied));
}

usint last_type(const instance& on) {
    return on.destinations().back().type;
}

}  // namespace

void find_name(benchmark::State& state, const instance& on) {
    measure<arch_cfg_find_by_dest_low, &name_list::find>(state, on, all_names(on), true);
}

void find_name_bare(benchmark::State& state, const instance& on) {
    measure_bare<arch_cfg_find_by_dest_low, &name_list::find>(state, on, all_names(on), true);
}

void find_no_name(benchmark::State& state, const instance& on) {
    measure<arch_cfg_find_by_dest_low, &name_list::find>(state, on, unknown_names(), false);
}

void find_no_name_bare(benchmark::State& state, const instance& on) {
    measure_bare<arch_cfg_find_by_dest_low, &name_list::find>(state, on, unknown_names(), false);
}

void find_list(benchmark::State& state, const instance& on) {
    measure<look_up_list, &name_list::find_list>(state, on, all_lists(on), true);
}

void find_list_bare(benchmark::State& state, const instance& on) {
    measure_bare<look_up_list, &name_list::find_list>(state, on, all_lists(on), true);
}

void find_no_list(benchmark::State& state, const instance& on) {
    measure<look_up_list, &name_list::find_list>(state, on, unknown_lists(), false);
}

void find_no_list_bare(benchmark::State& state, const instance& on) {
    measure_bare<look_up_list, &name_list::find_list>(state, on, unknown_lists(), false);
}

void find_type(benchmark::State& state, const instance& on) {
    measure_type(state, on, last_type(on), true);
}

void find_type_bare(benchmark::State& state, const instance& on) {
    measure_type_bare(state, on, last_type(on), true);
}

void find_no_type(benchmark::State& state, const instance& on) {
    measure_type(state, on, ARCH_TYPE_SUBSCRIBE, false);
}

void find_no_type_bare(benchmark::State& state, const instance& on) {
    measure_type_bare(state, on, ARCH_TYPE_SUBSCRIBE, false);
}

void find_name_of_fifty(benchmark::State& state) {
    find_name(state, instance(fifty_destinations()));
}

void find_name_of_fifty_bare(benchmark::State& state) {
    find_name_bare(state, instance(fifty_destinations()));
}

void find_no_name_of_fifty(benchmark::State& state) {
    find_no_name(state, instance(fifty_destinations()));
}

void find_no_name_of_fifty_bare(benchmark::State& state) {
    find_no_name_bare(state, instance(fifty_destinations()));
}

}  // namespace bench

#include "catalogue.h"

#include <exception>
#include <functional>

namespace bench {
namespace {

constexpr const char* strcasecmp_walk = "strcasecmp over all names under a bare mutex";

constexpr instance_kind kinds[] = {
    {"small", "1 LOCAL, 2 REALTIME", small_instance},
    {"full", "8 LOCAL, 8 REALTIME, 8 ASYNC, 8 REMOTE", full_instance},
    {"raft", "1 LOCAL, 8 RAFT, 9 LEARNER", raft_instance},
};

constexpr instance_row by_instance[] = {
    {"start", "load, apply and validate, no directory probed, and destroy", start,
     "inih, doing nothing with it", parse_file, storage::asm_disk_group},
    {"load", "load from disk, not validated, and destroy", load,
     "open, read and close the same file", load_bare},
    {"validate", "validate the whole registry", validate,
     "the system calls that probe its directories", probe_bare},
    {"find_name", "look-up by name, found", find_name, strcasecmp_walk, find_name_bare},
    {"find_no_name", "look-up by name, not found", find_no_name, strcasecmp_walk,
     find_no_name_bare},
    {"find_list", "look-up by list, found", find_list, strcasecmp_walk, find_list_bare},
    {"find_no_list", "look-up by list, not found", find_no_list, strcasecmp_walk,
     find_no_list_bare},
    {"find_type", "look-up by type, found", find_type, "walk and copy under a bare mutex",
     find_type_bare},
    {"find_no_type", "look-up by type, not found", find_no_type, "walk and copy under a bare mutex",
     find_no_type_bare},
    {"write", "write the whole text", write_text, "one snprintf a line", print_text},
};

constexpr single_row singly[] = {
    {"find_name_of_50", "look-up by name, 50 records, found", find_name_of_fifty, strcasecmp_walk,
     find_name_of_fifty_bare},
    {"find_no_name_of_50", "the same, not found", find_no_name_of_fifty, strcasecmp_walk,
     find_no_name_of_fifty_bare},
    {"find_key", "key to index, any case", find_key, "strcasecmp over all keys", find_key_bare},
    {"find_no_key", "the same, no such key", find_no_key, "strcasecmp over all keys",
     find_no_key_bare},
    {"enter_exit", "enter and exit", enter_and_exit, "a bare mutex of the same kind",
     lock_and_unlock},
    {"clause", "parse a clause of four keywords", parse_clause, "split into texts and dispatch",
     parse_clause_plainly},
    {"encode", "length and encoding of 16 paths with names", encode_message,
     "msgpack-c packing them", pack_message},
    {"encode_only", "the encoding alone", encode_message_only, "msgpack-c packing them",
     pack_message},
    {"decode", "decode 16 paths and check 8 against them", decode_message,
     "the same with a malloc a node", decode_message_plainly},
    {"probe", "probe a directory", probe, "its system calls", probe_one_bare},
    {"add", "add a REALTIME destination, file rewritten", add_destination,
     "the system calls of a rewrite", rewrite_file_bare},
    {"drop", "drop it, file rewritten", drop_destination, "the system calls of a rewrite",
     rewrite_file_bare},
};

constexpr ulint counts[] = {10, 100, 1000, 10000};

constexpr growth_row growing[] = {
    {"create", "load sections without a line, and destroy", create_sections, counts},
    {"load_sections", "load them from disk, not validated, and destroy", load_sections, counts},
    // More do not fit into the text's buffer.
    {"write_sections", "write their text", write_sections, std::span(counts).first(3)},
};

// A wrong result ends the benchmark as a failed one.
benchmark::internal::Benchmark* add(const std::string& name,
                                    const std::function<void(benchmark::State&)>& body) {
    return benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State& state) {
        try {
            body(state);
        } catch (const std::exception& wrong) {
            state.SkipWithError(wrong.what());
        }
    });
}

}  // namespace

std::span<const instance_kind> instance_kinds() {
    return kinds;
}

std::span<const instance_row> instance_rows() {
    return by_instance;
}

std::span<const single_row> single_rows() {
    return singly;
}

std::span<const growth_row> growth_rows() {
    return growing;
}

void register_benchmarks() {
    for (const instance_row& row : by_instance) {
        for (const instance_kind& kind : kinds) {
            const std::string name = std::string(row.name) + "/" + kind.name;
            add(name,
                [=](auto& state) { row.ours(state, instance(kind.describe(), row.archives)); });
            add(name + "/peer",
                [=](auto& state) { row.peer(state, instance(kind.describe(), row.archives)); });
        }
    }
    for (const single_row& row : singly) {
        add(row.name, row.ours);
        add(std::string(row.name) + "/peer", row.peer);
    }
    add("key_file/full/peer", load_key_file);
    add("process/kqarch", run_kqarch)->UseManualTime();
    add("process/true", run_nothing)->UseManualTime();
    add("process/nginx", run_nginx)->UseManualTime();
    for (const growth_row& row : growing)
        for (const ulint count : row.counts)
            add(std::string(row.name) + "/" + std::to_string(count),
                [=](auto& state) { row.ours(state, count); });
}

}  // namespace bench

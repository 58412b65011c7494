// The ratios to reach, in the order of docs/performance.md.
#include "catalogue.h"

namespace bench {
namespace {

constexpr const char* inih = "inih with a handler that does nothing";
constexpr const char* itself = "itself";
constexpr const char* walk = "a linear strcasecmp walk under a robust mutex";
constexpr const char* msgpack = "msgpack-c packing them";

constexpr goal all_goals[] = {
    {"load, apply and validate, no directory probed: full", inih, "start/full", "start/full/peer",
     0.50},
    {"the same, raft", inih, "start/raft", "start/raft/peer", 0.45},
    {"the same, small", inih, "start/small", "start/small/peer", 0.65},
    {"the same, full", "GKeyFile load", "start/full", "key_file/full/peer", 0.36},
    {"a section without a line at 10,000 over one at 100", itself, "create/10000", "create/100",
     1.5, 0.01},
    {"a LOCAL section at 10,000 over one at 100", itself, "load_sections/10000",
     "load_sections/100", 1.5, 0.01},
    {"whole text of full", "one snprintf a line with a kept end", "write/full", "write/full/peer",
     0.20},
    {"a line of a text of 1,000 sections over one of 100", itself, "write_sections/1000",
     "write_sections/100", 1.1, 0.1},
    {"look-up, 50 records, hit", walk, "find_name_of_50", "find_name_of_50/peer", 0.65},
    {"look-up, 50 records, miss", walk, "find_no_name_of_50", "find_no_name_of_50/peer", 0.65},
    {"key name to index", "linear strcasecmp over the names", "find_key", "find_key/peer", 0.15},
    {"clause of four keywords, record reset included", "std::string split and dispatch", "clause",
     "clause/peer", 0.45},
    {"length and encoding of 16 paths with names", msgpack, "encode", "encode/peer", 1.2},
    {"the encoding alone", msgpack, "encode_only", "encode_only/peer", 0.9},
    {"decode and check against 8", "the same with a malloc a node", "decode", "decode/peer", 0.9},
    {"enter and exit", "a bare robust error-checking mutex pair", "enter_exit", "enter_exit/peer",
     1.2},
    {"directory probe", "the same system calls bare", "probe", "probe/peer", 1.15},
    {"`kqarch check` of full, whole process", "/bin/true", "process/kqarch", "process/true", 1.5},
    {"the same", "`nginx -t` with 32 upstreams", "process/kqarch", "process/nginx", 0.33},
};

}  // namespace

std::span<const goal> goals() {
    return all_goals;
}

}  // namespace bench

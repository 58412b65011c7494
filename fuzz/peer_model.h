// What the configuration message and its check ought to be, written a second time and simpler.
#ifndef FUZZ_PEER_MODEL_H
#define FUZZ_PEER_MODEL_H

#include <arch_cfg.h>

#include <optional>
#include <string>
#include <vector>

namespace test_support {

// A LOCAL or REMOTE destination: its path, and whose archives it holds.
struct archive_path {
    bool is_remote;
    std::string path;
    std::string owner;
};

// The entries of a message, without the length before them.
std::vector<byte> message_of(const std::vector<archive_path>& own, bool with_names);

// The entries that a message holds; nothing for one that is malformed.
std::optional<std::vector<archive_path>> read_message(const byte* body, size_t size,
                                                      bool with_names);

// What a node of those paths, in a cluster of `nodes`, answers to a message.
kqcode_t answer_of(const std::vector<archive_path>& own, ulint nodes, const byte* body, size_t size,
                   bool is_shared);

// Makes the process registry hold those paths and nothing else. The lock is free before and after.
void fill_registry(const std::vector<archive_path>& own);

}  // namespace test_support

#endif

// A block of exactly the size of what the module is handed, watched by the address sanitizer.
#ifndef FUZZ_WATCHED_BLOCK_H
#define FUZZ_WATCHED_BLOCK_H

#include <os.h>

#include <cstring>
#include <memory>
#include <string_view>

struct block_deleter {
    void operator()(void* block) const { os_free(block); }
};

template <class Value>
using watched_block = std::unique_ptr<Value[], block_deleter>;

template <class Value>
watched_block<Value> make_block(size_t count) {
    return watched_block<Value>(static_cast<Value*>(os_malloc(count * sizeof(Value))));
}

inline watched_block<schar> make_text(std::string_view text) {
    auto block = make_block<schar>(text.size() + 1);
    memcpy(block.get(), text.data(), text.size());
    block[text.size()] = '\0';
    return block;
}

#endif

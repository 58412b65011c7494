#include "mem.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <new>
#include <utility>

#include "fault.h"

using namespace platform;

struct kqenv_struct {
    // What stands before each block: its place in the pool's list and the size asked for.
    struct alignas(std::max_align_t) block_header {
        block_header* prev;
        block_header* next;
        ulint64 size;
    };

    std::mutex mutex;
    ulint64 limit = 0;
    ulint64 used = 0;
    ulint count = 0;
    block_header* first = nullptr;
    // Blocks that were given back, to be handed out again: small ones, each list of one size.
    std::array<block_header*, 33> kept{};
};

namespace {

using block_header = kqenv_struct::block_header;

// The largest block that is kept. The address sanitizer has to see each block end.
#if defined(__SANITIZE_ADDRESS__)
constexpr ulint64 largest_kept = 0;
#elif defined(__has_feature)
constexpr ulint64 largest_kept = __has_feature(address_sanitizer) ? 0 : 512;
#else
constexpr ulint64 largest_kept = 512;
#endif

void link_block(kqenv_struct& pool, block_header* header) {
    header->prev = nullptr;
    header->next = pool.first;
    if (pool.first != nullptr) pool.first->prev = header;
    pool.first = header;
    pool.used += header->size;
    ++pool.count;
}

void unlink_block(kqenv_struct& pool, block_header* header) {
    (header->prev != nullptr ? header->prev->next : pool.first) = header->next;
    if (header->next != nullptr) header->next->prev = header->prev;
    pool.used -= header->size;
    --pool.count;
}

// The list that blocks of a size are kept in; null for one that is not kept.
block_header** kept_of(kqenv_struct& pool, ulint64 size) {
    return size <= largest_kept ? &pool.kept[size / 16] : nullptr;
}

block_header* take_kept(kqenv_struct& pool, ulint64 size) {
    block_header** const kept = kept_of(pool, size);
    if (kept == nullptr || *kept == nullptr || (*kept)->size != size) return nullptr;
    return std::exchange(*kept, (*kept)->next);
}

// False when the block is not to be kept.
bool keep(kqenv_struct& pool, block_header* header) {
    block_header** const kept = kept_of(pool, header->size);
    if (kept == nullptr || (*kept != nullptr && (*kept)->size != header->size)) return false;
    header->next = std::exchange(*kept, header);
    return true;
}

void free_list(block_header* header) {
    while (header != nullptr)
        std::free(std::exchange(header, header->next));
}

}  // namespace

void* mem_malloc_ex(kqenv_t env, ulint64 size, const schar*, ulint) {
    if (fault_here(fault_point::mem_malloc_ex, ENOMEM) || env == nullptr) return nullptr;
    if (size > std::numeric_limits<std::size_t>::max() - sizeof(block_header)) return nullptr;
    std::lock_guard hold(env->mutex);
    ulint64 limit = env->limit != 0 ? env->limit : std::numeric_limits<ulint64>::max();
    if (size > limit - env->used) return nullptr;
    block_header* header = take_kept(*env, size);
    if (header == nullptr)
        header = static_cast<block_header*>(std::malloc(sizeof(block_header) + size));
    if (header == nullptr) return nullptr;
    header->size = size;
    link_block(*env, header);
    return header + 1;
}

void mem_free(kqenv_t env, void* block) {
    if (env == nullptr || block == nullptr) return;
    block_header* header = static_cast<block_header*>(block) - 1;
    {
        std::lock_guard hold(env->mutex);
        unlink_block(*env, header);
        if (keep(*env, header)) return;
    }
    std::free(header);
}

kqenv_t mem_env_create(ulint64 limit) {
    auto* env = new (std::nothrow) kqenv_struct;
    if (env != nullptr) env->limit = limit;
    return env;
}

ulint mem_env_destroy(kqenv_t env) {
    if (env == nullptr) return 0;
    ulint still_held = env->count;
    free_list(env->first);
    for (block_header* kept : env->kept)
        free_list(kept);
    delete env;
    return still_held;
}

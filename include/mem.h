/* The memory pool of a caller: blocks are taken from an environment and given back to it. */
#ifndef MEM_H
#define MEM_H

#include "kqtype.h"

KQ_BEGIN_C

typedef struct kqenv_struct* kqenv_t;

/* A block of `size` bytes of the pool, or null when the pool's limit or memory is used up.
 * `file` and `line` are the place that asked, for the pool's accounting. */
void* mem_malloc_ex(kqenv_t env, ulint64 size, const schar* file, ulint line);

/* Gives a block back to the pool that it came from; null is allowed. */
void mem_free(kqenv_t env, void* block);

/* The stand-in layer's pool. `limit` is the number of bytes that may be out at a time, 0 for no
 * limit. Null when there is no memory. */
kqenv_t mem_env_create(ulint64 limit);

/* Ends the pool, freeing what is still out; returns how many blocks were still held. */
ulint mem_env_destroy(kqenv_t env);

KQ_END_C

#endif

/* The OS layer: memory, interlocked access, pauses, ticks, halt. */
#ifndef OS_H
#define OS_H

#include "kqtype.h"

KQ_BEGIN_C

/* A block of `size` bytes, or null. Given back with os_free; null may be freed. */
void* os_malloc(ulint64 size);
void os_free(void* block);

/* Atomic access to a field, at the width of the field: `raft_cnt` has 16 bits, `raft_learner` 32.
 * Macros, so that no call can widen or cut it. */
#define os_interlock_read(field) __atomic_load_n((field), __ATOMIC_SEQ_CST)
#define os_interlock_write(field, value) __atomic_store_n((field), (value), __ATOMIC_SEQ_CST)

/* Pauses the calling thread for so many milliseconds. */
void os_thread_sleep_low(ulint milliseconds);

/* Milliseconds of a clock that only goes forward. */
ulint64 kq_get_tick_count(void);

/* Prints `text` on standard error and ends the process by abort; `code` is for the server's own
 * record of why it halted. Does not return. */
#if defined(__GNUC__)
__attribute__((noreturn))
#endif
void kq_sys_halt(const schar* text, lint code);

KQ_END_C

#endif

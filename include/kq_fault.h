/* The stand-in layer: making calls fail, for tests. Off unless armed. */
#ifndef KQ_FAULT_H
#define KQ_FAULT_H

#include "kqtype.h"

KQ_BEGIN_C

/* The `nth` call from now (1 is the next) of `what` fails as the real thing does, with `for_good`
 * every later one too. `what` is one of os_malloc, mem_malloc_ex, file_open, file_read,
 * file_write, file_sync, file_close, file_create, file_delete, file_copy, dir_create, any (of
 * these), or interrupted: a call of open, write, fsync or close that a signal interrupts. Arming
 * again replaces what was armed. The module's own calls of open, write, fsync and close count too
 * in a program that links the CMake target arch_cfg::platform. */
void kq_fault_arm(const schar* what, ulint nth, kqbool for_good);
void kq_fault_disarm(void);

/* How many calls were made to fail since it was armed. */
ulint kq_fault_hits(void);

KQ_END_C

#endif

// The linker leads some calls of the module here (--wrap): blocks are counted, pauses left out, and a
// thread can be made to end in the middle of a critical section.
#ifndef TESTS_MODULE_LED_CALLS_H
#define TESTS_MODULE_LED_CALLS_H

#include <kqtype.h>

namespace test_support {

// The level that the registry lock was last given.
ulint lock_level();

// How many blocks of os_malloc are out.
ulint blocks_held();

// What came of a call of the module in this thread: a single critical section, or none.
struct watched_call {
    ulint end_at = 0;     // the point, from 1, at which the thread is to end; 0 for none
    ulint64 order = 0;    // the section's place among all; 0 for none
    bool ended = false;   // whether the thread did
    bool inside = false;  // whether the lock is held
    void* block = nullptr;
};

// Watches the calls of this thread; null for no more.
void watch(watched_call* call);

}  // namespace test_support

#endif

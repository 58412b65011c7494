/* The OS layer's mutex, and the lock annotations of clang's thread-safety analysis.
 *
 * A function marked KQ_REQUIRES(m) is called with m held, one marked KQ_EXCLUDES(m) takes m
 * itself and is called without it. With clang and -Wthread-safety the compiler checks every
 * call in C and in C++; elsewhere the annotations are documentation. */
#ifndef OSMUTEX_H
#define OSMUTEX_H

#include <pthread.h>

#include "kqtype.h"

#if defined(__clang__)
#define KQ_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define KQ_THREAD_ATTRIBUTE(x)
#endif
#define KQ_CAPABILITY(name) KQ_THREAD_ATTRIBUTE(capability(name))
#define KQ_SCOPED_CAPABILITY KQ_THREAD_ATTRIBUTE(scoped_lockable)
#define KQ_ACQUIRE(...) KQ_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define KQ_RELEASE(...) KQ_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define KQ_REQUIRES(...) KQ_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define KQ_EXCLUDES(...) KQ_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define KQ_NO_THREAD_ANALYSIS KQ_THREAD_ATTRIBUTE(no_thread_safety_analysis)

KQ_BEGIN_C

typedef struct KQ_CAPABILITY("mutex") os_mutex_struct {
    pthread_mutex_t the_mutex; /* robust, error-checking; lockers use it directly */
    usint wait_time;
    ulint owner; /* thread id of the holder; all ones where it is not recorded */
} os_mutex_t;

/* Makes a robust, non-recursive, error-checking mutex: a holder that ends is reported to the next
 * locker (EOWNERDEAD), and a thread that locks what it already holds gets EDEADLK at once. */
void os_mutex2_create(os_mutex_t* mutex);

/* Places the mutex in the server's lock order; a mutex of a higher level is taken first. */
void os_mutex2_set_level(os_mutex_t* mutex, ulint level);

/* Frees the mutex. A later lock of it fails with EINVAL; freeing it twice does no harm. */
void os_mutex2_free(os_mutex_t* mutex);

KQ_END_C

#endif

#include "osmutex.h"

#include "os.h"

namespace {

constexpr ulint owner_not_recorded = ~0u;

int make_mutex(pthread_mutex_t& mutex) {
    pthread_mutexattr_t attributes;
    int result = pthread_mutexattr_init(&attributes);
    if (result != 0) return result;
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    result = pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return result;
}

}  // namespace

void os_mutex2_create(os_mutex_t* mutex) {
    if (mutex == nullptr) return;
    mutex->wait_time = 0;
    mutex->owner = owner_not_recorded;
    if (make_mutex(mutex->the_mutex) != 0) kq_sys_halt("os_mutex2_create failure", -1);
}

// The server checks its lock order by the levels; this layer has too few locks to order.
void os_mutex2_set_level(os_mutex_t*, ulint) {}

// The C library marks a destroyed mutex as one of no known kind: locking it is EINVAL, and
// destroying it again only marks it again.
void os_mutex2_free(os_mutex_t* mutex) {
    if (mutex == nullptr) return;
    mutex->owner = owner_not_recorded;
    pthread_mutex_destroy(&mutex->the_mutex);
}

// The radio daemon's mutex on a host.
#include "qti_shared_mutex.h"

namespace qtimutex {

QtiSharedMutex::QtiSharedMutex() : mutex_(PTHREAD_MUTEX_INITIALIZER) {}

// Leaves the lock alone: a timer's thread may still take it while the process ends.
QtiSharedMutex::~QtiSharedMutex() {}  // NOLINT(modernize-use-equals-default)

void QtiSharedMutex::lock()
{
    pthread_mutex_lock(&mutex_);
}

void QtiSharedMutex::unlock()
{
    pthread_mutex_unlock(&mutex_);
}

}  // namespace qtimutex

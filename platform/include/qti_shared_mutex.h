/* The radio daemon's mutex, for state that is also reached while the process ends. */
#ifndef QTI_SHARED_MUTEX_H
#define QTI_SHARED_MUTEX_H

#include <pthread.h>

namespace qtimutex {

/* A plain, non-recursive mutex. It is BasicLockable, so std::condition_variable_any and std::lock_guard take it.
 *
 * File-scope instances are built before main, and their destructors run at exit while a library thread may still be
 * busy: lock and unlock stay usable after the destructor, which therefore leaves the lock itself alone.
 * Threads: any; unlock on the thread that locked. */
class QtiSharedMutex {
 public:
    QtiSharedMutex();
    ~QtiSharedMutex();
    QtiSharedMutex(const QtiSharedMutex &) = delete;
    QtiSharedMutex &operator=(const QtiSharedMutex &) = delete;

    void lock();
    void unlock();

 private:
    pthread_mutex_t mutex_;
};

}  // namespace qtimutex
#endif

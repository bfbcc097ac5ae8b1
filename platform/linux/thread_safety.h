// The platform's mutex, its lock and its condition, and the words that say which mutex guards what. They are std::mutex and
// its like with the annotations that clang's thread-safety analysis reads: script/lint refuses an access to a member
// GUARDED_BY a mutex, or a call of a function that REQUIRES one, without it. For other compilers the words are nothing.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define RBK_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define RBK_THREAD_SAFETY(attribute)
#endif

#define CAPABILITY(kind)          RBK_THREAD_SAFETY(capability(kind))
#define SCOPED_CAPABILITY         RBK_THREAD_SAFETY(scoped_lockable)
#define GUARDED_BY(mutex)         RBK_THREAD_SAFETY(guarded_by(mutex))
#define REQUIRES(...)             RBK_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define ACQUIRE(...)              RBK_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define RETURN_CAPABILITY(mutex)  RBK_THREAD_SAFETY(lock_returned(mutex))
#define RELEASE(...)              RBK_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define ASSERT_CAPABILITY(mutex)  RBK_THREAD_SAFETY(assert_capability(mutex))
#define NO_THREAD_SAFETY_ANALYSIS RBK_THREAD_SAFETY(no_thread_safety_analysis)

namespace rbk::platform {

class CAPABILITY("mutex") Mutex {
 public:
    void lock() ACQUIRE() { mutex_.lock(); }
    void unlock() RELEASE() { mutex_.unlock(); }

 private:
    friend class Condition;
    std::mutex mutex_;
};

// Holds a mutex for a scope.
class SCOPED_CAPABILITY MutexLock {
 public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() RELEASE() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

 private:
    Mutex& mutex_;
};

// Lets go of a held mutex for a scope, and takes it again at its end.
class SCOPED_CAPABILITY MutexUnlock {
 public:
    explicit MutexUnlock(Mutex& mutex) RELEASE(mutex) : mutex_(mutex) { mutex_.unlock(); }
    ~MutexUnlock() RELEASE() { mutex_.lock(); }  // of this object: the mutex is held again
    MutexUnlock(const MutexUnlock&) = delete;
    MutexUnlock& operator=(const MutexUnlock&) = delete;

 private:
    Mutex& mutex_;
};

// A condition variable. Waits have no predicate: the loop around them stands where the analysis sees what it reads.
class Condition {
 public:
    void wait(Mutex& mutex) REQUIRES(mutex)
    {
        std::unique_lock lock(mutex.mutex_, std::adopt_lock);
        condition_.wait(lock);
        lock.release();  // the caller goes on holding it
    }

    // False when the time has run out.
    template <typename Clock, typename Duration>
    bool wait_until(Mutex& mutex, std::chrono::time_point<Clock, Duration> deadline) REQUIRES(mutex)
    {
        std::unique_lock lock(mutex.mutex_, std::adopt_lock);
        const bool in_time = condition_.wait_until(lock, deadline) == std::cv_status::no_timeout;
        lock.release();
        return in_time;
    }

    void notify_one() { condition_.notify_one(); }
    void notify_all() { condition_.notify_all(); }

 private:
    std::condition_variable condition_;
};

}  // namespace rbk::platform

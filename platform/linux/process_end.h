// The end of the process, for the libraries and for the threads that are in them.
//
// It begins in an exit handler, and the thread that runs the handler is the one that ends the process. A call into a
// library then is any other thread's last: it doesn't return, as if the process had been killed in the middle of it. So a
// worker that outlives main says nothing of a modem that is switched off under it.
#pragma once

#include <functional>

#include "platform/linux/thread_safety.h"

namespace rbk::platform {

// From now on the caller is the thread that ends the process.
void begin_process_end();
bool process_ends();

// Stands first in each operation of a library, above all locks of the library, and so acts last: where the process has ended
// before the operation or during it, its thread stays there for good, unless it is the one that ends the process.
class LibraryCall {
 public:
    LibraryCall() = default;
    ~LibraryCall();
    LibraryCall(const LibraryCall&) = delete;
    LibraryCall& operator=(const LibraryCall&) = delete;
};

// A thread of a library's own, from its first use to the end of the process.
class LibraryThread {
 public:
    // Starts it, where it hasn't been started yet. False, after a complaint that names it, when there is no thread to be
    // had. Threads: one at a time.
    bool start(const char* what, std::function<void()> body);
    bool is_current() const;
    // At the end of the process, once `body` has been told to return: waits until it has, or until the thread is kept in a
    // call into a library, which is as good. Nothing else can be waited for: a callback that does neither gets a second,
    // and then the process goes without it.
    void await_end();

 private:
    friend class LibraryCall;
    void ended();

    Mutex mutex_;
    Condition changed_;
    bool started_ GUARDED_BY(mutex_) = false;
    bool ended_ GUARDED_BY(mutex_) = false;
};

}  // namespace rbk::platform

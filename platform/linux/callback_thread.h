// The end of a library's callback thread, in the exit handler of a process.
#pragma once

#include <chrono>
#include <thread>
#include <utility>

#include "platform/linux/thread_safety.h"

namespace rbk::platform {

// A callback that is under way has this long to return; then the process goes without it.
inline constexpr std::chrono::milliseconds kCallbackGrace{1000};

// Joins the thread, which has been told to stop, once no callback runs; `ended` tells of each callback's end. A thread
// whose callback doesn't return is left behind, and so is the one that ends the process itself.
template <typename Idle>
void end_callback_thread(Mutex& mutex, std::thread& thread, Condition& ended, Idle idle)
    REQUIRES(mutex) NO_THREAD_SAFETY_ANALYSIS  // of its body: which mutex `idle` needs stays unknown here
{
    if (!thread.joinable()) return;
    const bool own = thread.get_id() == std::this_thread::get_id();
    const auto deadline = std::chrono::steady_clock::now() + kCallbackGrace;
    bool joins = !own;
    while (joins && !idle()) joins = ended.wait_until(mutex, deadline) || idle();
    std::thread stopped = std::move(thread);
    const MutexUnlock unlocked(mutex);
    if (joins)
        stopped.join();
    else
        stopped.detach();
}

}  // namespace rbk::platform

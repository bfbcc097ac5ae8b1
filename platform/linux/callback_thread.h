// The end of a library's callback thread, in the exit handler of a process.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace rbk::platform {

// A callback that is under way has this long to return; then the process goes without it.
inline constexpr std::chrono::milliseconds kCallbackGrace{1000};

// Joins the thread, which has been told to stop, once no callback runs; `ended` tells of each callback's end. A thread
// whose callback doesn't return is left behind, and so is the one that ends the process itself. Releases the lock.
template <typename Idle>
void end_callback_thread(std::unique_lock<std::mutex>& lock, std::thread& thread, std::condition_variable& ended,
                         Idle idle)
{
    if (!thread.joinable()) return;
    const bool own = thread.get_id() == std::this_thread::get_id();
    const bool joins = !own && ended.wait_for(lock, kCallbackGrace, idle);
    std::thread stopped = std::move(thread);
    lock.unlock();
    if (joins)
        stopped.join();
    else
        stopped.detach();
}

}  // namespace rbk::platform

// Waiting for what comes on another thread or from another process.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace rbk::test {

// Whether it came. A busy machine takes its time; what hasn't come after that never will.
template <typename Condition>
bool wait_until(Condition met)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!met() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return met();
}

// What callbacks on other threads have said, for the thread that waits for it.
class Told {
 public:
    void add(std::string what)
    {
        const std::lock_guard lock(mutex_);
        said_.push_back(std::move(what));
        came_.notify_all();
    }
    // All of it, once there are `count`; fewer when no more come within twenty seconds.
    std::vector<std::string> wait(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        came_.wait_for(lock, std::chrono::seconds(20), [&] { return said_.size() >= count; });
        return said_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::vector<std::string> said_;
};

}  // namespace rbk::test

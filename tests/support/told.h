// What callbacks on other threads have said, for the thread that waits for it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace rbk::test {

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

// The one thread of a modem: descriptors that became ready, timers that ran out, and what was put off until later.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <vector>

#include "simulator/fd.h"

namespace rbk::sim {

// Everything but stop() belongs to the thread that calls run(), or comes before it.
class EventLoop {
 public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;
    using Ready = std::function<void(std::uint32_t events)>;  // events as epoll gives them
    using WatchId = std::uint64_t;

    // Throws std::system_error when the kernel has no descriptor left.
    EventLoop();

    // Calls `ready` whenever `fd` shows one of `events`. The descriptor stays the caller's and outlives its watch.
    WatchId watch(int fd, std::uint32_t events, Ready ready);
    void change(WatchId watch, std::uint32_t events);
    void unwatch(WatchId watch);

    // Calls `task` once, `delay` from now; tasks with equal times run in the order of their calls.
    void after(Clock::duration delay, Task task);
    // Calls `task` as soon as the handler that runs now has returned, before any other one.
    void defer(Task task) { deferred_.push_back(std::move(task)); }

    void run();   // until stop()
    void stop();  // from any thread or signal handler, also before run()

 private:
    struct Watched {
        int fd;
        Ready ready;
    };

    int wait_ms() const;
    void run_due_timers();
    void run_deferred();

    Fd epoll_;
    Fd wake_;
    std::atomic<bool> stopped_ = false;
    WatchId last_watch_ = 0;  // 0 stands for wake_
    std::unordered_map<WatchId, Watched> watched_;
    std::multimap<Clock::time_point, Task> timers_;
    std::vector<Task> deferred_;
};

}  // namespace rbk::sim

// The one thread of a modem: descriptors that became ready, timers that ran out, and what was put off until later.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "simulator/base/fd.h"

namespace rbk::sim {

// Everything but stop() belongs to the thread that calls run(), or comes before it.
class EventLoop {
 public:
    using Clock = std::chrono::steady_clock;
    using Task = std::function<void()>;
    using Ready = std::function<void(std::uint32_t events)>;  // events as epoll gives them
    using WatchId = std::uint64_t;
    using TimerId = std::pair<Clock::time_point, std::uint64_t>;  // when it is due; never given out twice

    // Throws std::system_error when the kernel has no descriptor left.
    EventLoop();

    // Calls `ready` whenever `fd` shows one of `events`. The descriptor stays the caller's and outlives its watch.
    WatchId watch(int fd, std::uint32_t events, Ready ready);
    void change(WatchId watch, std::uint32_t events);
    void unwatch(WatchId watch);

    // Calls `task` once, `delay` from now; tasks with equal times run in the order of their calls.
    TimerId after(Clock::duration delay, Task task);
    // The same in two steps, for a task that has to know its timer.
    TimerId new_timer(Clock::duration delay) { return {Clock::now() + delay, ++last_timer_}; }
    void set(TimerId timer, Task task) { timers_.emplace(timer, std::move(task)); }
    // Without effect once the task runs.
    void cancel(TimerId timer) { timers_.erase(timer); }
    std::size_t timer_count() const { return timers_.size(); }  // that are still to come
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
    std::uint64_t last_timer_ = 0;
    std::map<TimerId, Task> timers_;
    std::vector<Task> deferred_;
};

}  // namespace rbk::sim

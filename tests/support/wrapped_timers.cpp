// One-shot SIGEV_THREAD timers for builds under thread sanitizer, which can't run the system's own: one thread waits for
// all of them and starts a thread for each callback.
#include <pthread.h>
#include <signal.h>
#include <time.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

struct Timer {
    sigevent event{};
    std::optional<Clock::time_point> due;
};

struct Carrier {
    std::mutex mutex;
    std::condition_variable changed;
    std::map<timer_t, Timer> timers;
};

// Never destroyed: its thread runs until the process is gone.
Carrier& carrier()
{
    static auto* const one = new Carrier;
    return *one;
}

void carry()
{
    Carrier& all = carrier();
    std::unique_lock lock(all.mutex);
    for (;;) {
        std::optional<Clock::time_point> next;
        for (auto& [id, timer] : all.timers) {
            if (timer.due && *timer.due <= Clock::now()) {
                timer.due.reset();
                std::thread(timer.event.sigev_notify_function, timer.event.sigev_value).detach();
            }
            if (timer.due && (!next || *timer.due < *next)) next = timer.due;
        }
        if (next) {
            all.changed.wait_until(lock, *next);
        } else {
            all.changed.wait(lock);
        }
    }
}

}  // namespace

extern "C" {

int carried_timer_create(const sigevent& event, timer_t* timer)
{
    Carrier& all = carrier();
    const std::scoped_lock lock(all.mutex);
    if (all.timers.empty()) std::thread(carry).detach();
    *timer = reinterpret_cast<timer_t>(all.timers.size() + 1);
    all.timers[*timer].event = event;
    return 0;
}

int carried_timer_settime(timer_t timer, const itimerspec& due)
{
    Carrier& all = carrier();
    const std::scoped_lock lock(all.mutex);
    const auto found = all.timers.find(timer);
    if (found == all.timers.end()) {
        errno = EINVAL;
        return -1;
    }
    const auto wait = std::chrono::seconds(due.it_value.tv_sec) + std::chrono::nanoseconds(due.it_value.tv_nsec);
    found->second.due.reset();
    if (wait.count() != 0) found->second.due = Clock::now() + wait;
    all.changed.notify_all();
    return 0;
}

}  // extern "C"

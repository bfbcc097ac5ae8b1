// One-shot SIGEV_THREAD timers for builds under thread sanitizer, which can't run the system's own: each time that one is
// set a thread sleeps in its stead, and calls back unless it has been set again.
#include <signal.h>
#include <time.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

struct Timer {
    sigevent event{};
    std::atomic<unsigned> times_set{0};
};

}  // namespace

extern "C" {

int carried_timer_create(const sigevent& event, timer_t* timer)
{
    *timer = new Timer{event};  // stays, as the system's would
    return 0;
}

int carried_timer_settime(timer_t timer, const itimerspec& due)
{
    auto* const one = static_cast<Timer*>(timer);
    const unsigned own = ++one->times_set;
    const auto wait = std::chrono::seconds(due.it_value.tv_sec) + std::chrono::nanoseconds(due.it_value.tv_nsec);
    if (wait.count() == 0) return 0;
    std::thread([one, own, wait] {
        std::this_thread::sleep_for(wait);
        if (one->times_set == own) one->event.sigev_notify_function(one->event.sigev_value);
    }).detach();
    return 0;
}

}  // extern "C"

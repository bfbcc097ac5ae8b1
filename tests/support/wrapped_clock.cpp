// steady_clock::now, and the waits of condition variables that end by it. Linked with --wrap for both.
#include <pthread.h>

#include <atomic>

#include "support/test_clock.h"

using std::chrono::nanoseconds;
using Time = std::chrono::steady_clock::time_point;

extern "C" Time __real__ZNSt6chrono3_V212steady_clock3nowEv();
extern "C" int __real_pthread_cond_clockwait(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*);

namespace {

std::atomic<nanoseconds> g_ahead{nanoseconds{0}};
std::atomic<Time> g_stopped_at{Time{}};  // the beginning: it goes

}  // namespace

extern "C" Time __wrap__ZNSt6chrono3_V212steady_clock3nowEv()
{
    const Time stopped_at = g_stopped_at;
    return stopped_at != Time{} ? stopped_at : __real__ZNSt6chrono3_V212steady_clock3nowEv() + g_ahead.load();
}

extern "C" int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                             const timespec* end)
{
    const Time wanted(std::chrono::seconds(end->tv_sec) + nanoseconds(end->tv_nsec));
    const nanoseconds left = wanted - std::chrono::steady_clock::now();
    const auto real_end = (__real__ZNSt6chrono3_V212steady_clock3nowEv() + left).time_since_epoch().count();
    const timespec until{real_end / 1'000'000'000, real_end % 1'000'000'000};
    return __real_pthread_cond_clockwait(condition, mutex, clock, &until);
}

namespace rbk::test::test_clock {

void move_on(nanoseconds by)
{
    g_ahead = g_ahead.load() + by;
}

void stop()
{
    g_stopped_at = std::chrono::steady_clock::now();
}

}  // namespace rbk::test::test_clock

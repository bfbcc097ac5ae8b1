// steady_clock::now and the waits of condition variables that end by it. Linked with --wrap for both.
#include <pthread.h>

#include <atomic>
#include <chrono>

#include "support/test_clock.h"

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

extern "C" {
steady_clock::time_point __real__ZNSt6chrono3_V212steady_clock3nowEv();
steady_clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv();
int __real_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* end);
int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* end);
}

namespace {

std::atomic<nanoseconds> g_ahead{nanoseconds{0}};
std::atomic<nanoseconds> g_stopped_at{nanoseconds{0}};  // 0: it goes

nanoseconds real_now()
{
    return __real__ZNSt6chrono3_V212steady_clock3nowEv().time_since_epoch();
}

}  // namespace

namespace rbk::test {

void test_clock::move_on(nanoseconds by)
{
    g_ahead = g_ahead.load() + by;
}

void test_clock::stop()
{
    g_stopped_at = steady_clock::now().time_since_epoch();
}

void test_clock::go_on()
{
    g_stopped_at = nanoseconds{0};
}

}  // namespace rbk::test

steady_clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv()
{
    const nanoseconds stopped_at = g_stopped_at;
    return steady_clock::time_point(stopped_at.count() != 0 ? stopped_at : real_now() + g_ahead.load());
}

int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex, clockid_t clock,
                                  const timespec* end)
{
    const nanoseconds left =
        std::chrono::seconds(end->tv_sec) + nanoseconds(end->tv_nsec) - steady_clock::now().time_since_epoch();
    const nanoseconds real_end = real_now() + left;
    const timespec until{real_end.count() / 1'000'000'000, real_end.count() % 1'000'000'000};
    return __real_pthread_cond_clockwait(condition, mutex, clock, &until);
}

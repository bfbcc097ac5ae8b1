// The timer service: numbers, firing, stopping, and what fails.
#include <atomic>
#include <thread>

#include "qti_shared_mutex.h"
#include "support/embedded_run.h"
#include "support/on_calls.h"
#include "velmor_utils_timer.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

constexpr unsigned long kNeverHere = 360'000;  // seconds; a hundredth of it is an hour

std::atomic<int> g_fired;  // sum of the numbers that callbacks were given

void count(sigval value)
{
    g_fired += value.sival_int;
}

class TimerTest : public EmbeddedRun {};

TEST_F(TimerTest, FiresAtOnceWithItsNumberAndStaysKnownUntilItIsStopped)
{
    EXPECT_EQ(velmor_timer_start(count, 0), 1U);
    EXPECT_EQ(velmor_timer_start(count, 0), 2U);
    EXPECT_TRUE(wait_until([] { return g_fired == 1 + 2; }));
    EXPECT_EQ(calls(), (Lines{"timer_settime 0.000000001", "timer_settime 0.000000001"}));
    for (const uint32_t found : {1U, 0U}) EXPECT_EQ(velmor_timer_stop(1), found);
    EXPECT_EQ(velmor_timer_stop(0), 0U);
    EXPECT_EQ(velmor_timer_stop(2), 1U);
    EXPECT_EQ(log_count("velmor_timer_stop: Cancel timer with ID 1, timeout_s = 0\n"), 1U);
    EXPECT_EQ(log_count("velmor_timer_stop: Not find the timer_callback, timer_id = 1\n"), 1U);
}

TEST_F(TimerTest, StoppedOnesAreDisarmedAndTheOthersFire)
{
    for (uint32_t id = 1; id <= 4; ++id) EXPECT_EQ(velmor_timer_start(count, id == 3 ? 1 : kNeverHere), id);
    for (const uint32_t id : {2U, 1U, 4U}) EXPECT_EQ(velmor_timer_stop(id), 1U) << "middle, head and end of the list";
    EXPECT_TRUE(wait_until([] { return g_fired != 0; }));
    EXPECT_EQ(g_fired, 3);
    const std::string never = "timer_settime 360000.000000000";
    const std::string disarmed = "timer_settime 0.000000000";
    EXPECT_EQ(calls(), (Lines{never, never, "timer_settime 1.000000000", never, disarmed, disarmed, disarmed}));
    EXPECT_EQ(velmor_timer_stop(3), 1U);
    EXPECT_EQ(velmor_timer_start(count, kNeverHere), 5U);
    EXPECT_EQ(log_count("velmor_timer_start_do: Set timer with ID 5, timeout_s = 360000\n"), 1U);
}

TEST_F(TimerTest, FailuresOfTheSystemAreToldAndAStartThatFailsUsesItsNumberUp)
{
    for (const char* operation : {"timer_create", "timer_settime"}) {
        setenv("RBK_TEST_FAIL", operation, 1);
        EXPECT_EQ(velmor_timer_start(count, kNeverHere), 0U) << operation;
    }
    unsetenv("RBK_TEST_FAIL");
    EXPECT_EQ(log_count("velmor_sys_timer_create: fail to timer_create, timer_id = 1, timeout_s = 360000\n"), 1U);
    EXPECT_EQ(log_count("velmor_sys_timer_create: fail to timer_settime, sys_timerid = 0x"), 1U);
    EXPECT_EQ(log_count("velmor_timer_start_do: velmor_sys_timer_create failed\n"), 2U);
    EXPECT_EQ(velmor_timer_start(count, kNeverHere), 3U);
    setenv("RBK_TEST_FAIL", "timer_settime", 1);
    EXPECT_EQ(velmor_timer_stop(3), 1U) << "goes on when the timer can't be disarmed";
    EXPECT_EQ(log_count("velmor_timer_stop: fail to timer_settime, sys_timerid = 0x"), 1U);
    EXPECT_EQ(log_count("Cancel timer with ID 3"), 1U);
}

// Those that an operation locks, in their order.
std::vector<qtimutex::QtiSharedMutex*> mutexes_of(void (*operation)())
{
    std::vector<qtimutex::QtiSharedMutex*> mutexes;
    const OnCalls hook([&](std::string_view, const void* lock) {
        if (lock == nullptr) return;
        mutexes.push_back(const_cast<qtimutex::QtiSharedMutex*>(static_cast<const qtimutex::QtiSharedMutex*>(lock)));
    });
    operation();
    return mutexes;
}

TEST_F(TimerTest, NumberAndListAreChangedUnderTheirMutexes)
{
    void (*const start)() = [] { velmor_timer_start(count, kNeverHere); };
    void (*const stop)() = [] { velmor_timer_stop(1); };
    for (const auto& [operation, locked] : {std::pair{start, 2U}, {stop, 1U}}) {
        const auto mutexes = mutexes_of(operation);
        ASSERT_EQ(mutexes.size(), locked);
        for (qtimutex::QtiSharedMutex* mutex : mutexes) {
            mutex->lock();
            std::atomic<bool> asks{false}, done{false};
            const OnCalls hook([&](std::string_view, const void* lock) { asks = asks || lock == mutex; });
            std::thread other([&] { operation(), done = true; });
            EXPECT_TRUE(wait_until([&] { return asks || done; }));
            EXPECT_FALSE(done);
            mutex->unlock();
            other.join();
        }
    }
}

}  // namespace
}  // namespace rbk::test

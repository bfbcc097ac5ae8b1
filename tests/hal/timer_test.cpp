// The timer service: numbers, firing, stopping, and what fails.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/home.h"
#include "support/program.h"
#include "velmor_utils_timer.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

std::atomic<int> g_fired;    // sum of the numbers that callbacks were given
std::atomic<int> g_stopped;  // what the last callback's own stop answered, and 1

void count(sigval value)
{
    g_fired += value.sival_int;
}

void stop_itself(sigval value)
{
    g_stopped = 1 + static_cast<int>(velmor_timer_stop(static_cast<uint32_t>(value.sival_int)));
}

template <typename Condition>
bool soon(Condition condition)
{
    for (int i = 0; i < 5000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return condition();
}

class TimerTest : public HomeTest {
 protected:
    // Whether the shell showed a line that ends so.
    static bool shows(const std::string& out, const std::string& end)
    {
        for (const std::string& line : lines_of(out))
            if (line.ends_with(end)) return true;
        return false;
    }
};

TEST_F(TimerTest, FiresAtOnceWithItsNumberAndStaysKnownUntilItIsStopped)
{
    EXPECT_EQ(velmor_timer_start(count, 0), 1u);
    EXPECT_EQ(velmor_timer_start(count, 0), 2u);
    EXPECT_TRUE(soon([] { return g_fired == 1 + 2; }));
    EXPECT_EQ(calls(), (Lines{"timer_settime 0.000000001", "timer_settime 0.000000001"}));
    EXPECT_TRUE(shows(output_of([] { EXPECT_EQ(velmor_timer_stop(1), 1u); }), "Cancel timer with ID 1, timeout_s = 0"));
    EXPECT_TRUE(
        shows(output_of([] { EXPECT_EQ(velmor_timer_stop(1), 0u); }), "Not find the timer_callback, timer_id = 1"));
    EXPECT_EQ(velmor_timer_stop(0), 0u);
    EXPECT_EQ(velmor_timer_stop(2), 1u);
}

TEST_F(TimerTest, StoppedOnesDoNotFireAndTheOthersDo)
{
    const std::string out = output_of([] {
        for (uint32_t id = 1; id <= 4; ++id) EXPECT_EQ(velmor_timer_start(count, 60), id);
        EXPECT_EQ(velmor_timer_stop(2), 1u);  // from the middle, the head and the end of the list
        EXPECT_EQ(velmor_timer_stop(1), 1u);
        EXPECT_EQ(velmor_timer_stop(4), 1u);
    });
    EXPECT_TRUE(shows(out, "Set timer with ID 4, timeout_s = 60")) << out;
    EXPECT_EQ(calls(), (Lines{"timer_settime 60.000000000", "timer_settime 60.000000000", "timer_settime 60.000000000",
                              "timer_settime 60.000000000", "timer_settime 0.000000000", "timer_settime 0.000000000",
                              "timer_settime 0.000000000"}));
    EXPECT_TRUE(soon([] { return g_fired != 0; }));
    EXPECT_EQ(g_fired, 3);
    EXPECT_EQ(velmor_timer_stop(3), 1u);
    EXPECT_EQ(velmor_timer_start(count, 60), 5u);
}

TEST_F(TimerTest, CallbackStopsItsOwnTimer)
{
    const uint32_t timer = velmor_timer_start(stop_itself, 5);
    EXPECT_TRUE(soon([] { return g_stopped != 0; }));
    EXPECT_EQ(g_stopped, 1 + 1);
    EXPECT_EQ(velmor_timer_stop(timer), 0u);
}

TEST_F(TimerTest, FailedStartIsToldAndUsesItsNumberUp)
{
    const struct {
        const char* operation;
        const char* message;
    } rows[] = {{"timer_create", "velmor_sys_timer_create: fail to timer_create, timer_id = 1, timeout_s = 5"},
                {"timer_settime", "velmor_sys_timer_create: fail to timer_settime, sys_timerid = 0x"}};
    for (const auto& row : rows) {
        setenv("RBK_TEST_FAIL", row.operation, 1);
        const std::string out = output_of([] { EXPECT_EQ(velmor_timer_start(count, 5), 0u); });
        EXPECT_NE(out.find(row.message), std::string::npos) << out;
        EXPECT_TRUE(shows(out, "velmor_timer_start_do: velmor_sys_timer_create failed")) << out;
    }
    unsetenv("RBK_TEST_FAIL");
    EXPECT_EQ(velmor_timer_start(count, 5), 3u);
}

TEST_F(TimerTest, StopGoesOnWhenTheTimerCannotBeDisarmed)
{
    EXPECT_EQ(velmor_timer_start(count, 3600), 1u);
    setenv("RBK_TEST_FAIL", "timer_settime", 1);
    const std::string out = output_of([] { EXPECT_EQ(velmor_timer_stop(1), 1u); });
    EXPECT_NE(out.find("velmor_timer_stop: fail to timer_settime, sys_timerid = 0x"), std::string::npos) << out;
    EXPECT_TRUE(shows(out, "Cancel timer with ID 1, timeout_s = 3600")) << out;
}

TEST_F(TimerTest, ThreadsStartAndStopSideBySide)
{
    std::atomic<int> found{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 50; ++n) found += static_cast<int>(velmor_timer_start(count, 3600) != 0);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(found, 200);
    for (uint32_t id = 1; id <= 200; ++id) EXPECT_EQ(velmor_timer_stop(id), 1u) << id;
}

}  // namespace
}  // namespace rbk::test

// The modem's limits and counts: what one client may keep, what it gets however late it reads, and what all of that costs.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using test::wait_until;

// The answer to an envelope.
std::string envelope(const std::string& data)
{
    return "extended r2 " + show_tlvs(tlvs_of("env 0: " + data));
}

// ---- What a client leaves unread, and what it leaves behind ----

TEST(Client, OneThatDoesNotReadIsDroppedAndStallsNobody)
{
    const struct {
        const char* catches;
        const char* scenario;
        ClientLimits limits;
    } rows[] = {
        {"BoundInBytes", "", {100UL * 1024, milliseconds(60000)}},
        {"BoundInAge", "", {SIZE_MAX, milliseconds(50)}},
        {"BoundOfWhatIsPutOff",
         "[[fault]]\nservice = 'extended'\nqmi_id = 3\naction = 'delay'\nms = 60000\n",
         {100UL * 1024, milliseconds(60000)}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.catches);
        const RunningModem modem(row.scenario, std::nullopt, row.limits);
        WireClient stalled = modem.connect();
        WireClient other = modem.connect();
        for (int i = 0; i < 2000; ++i) stalled.send("extended 2 env 3: 01");
        EXPECT_EQ(other.ask("extended 2 env 0: 01"), envelope("01"));
        pollfd hung_up{stalled.socket().fd(), 0, 0};
        EXPECT_TRUE(wait_until([&] { return ::poll(&hung_up, 1, 0) == 1; }));
        EXPECT_EQ(other.ask("extended 2 env 0: 01"), envelope("01"));
    }
}

TEST(Client, WhatWasSentCountsNoMore)
{
    const RunningModem modem("[[fault]]\nservice = 'extended'\naction = 'delay'\nms = 1\n", std::nullopt,
                             {10UL * 1024, milliseconds(60000)});
    WireClient client = modem.connect();
    for (int i = 0; i < 50; ++i) ASSERT_EQ(client.ask("extended 2 env 0: 01"), envelope("01"));
}

TEST(Client, DatagramsThatNoneIsAreDropped)
{
    const RunningModem modem;
    WireClient client = modem.connect();
    client.send("extended 2 env 0: A1");
    // Without an address, and longer than any message.
    EXPECT_EQ(::send(client.socket().fd(), "123", 3, MSG_NOSIGNAL), 3);
    const Bytes long_one(link::kLongestDatagram + 1);
    EXPECT_GT(::send(client.socket().fd(), long_one.data(), long_one.size(), MSG_NOSIGNAL), 0);
    client.send("extended 2 env 0: B2");
    for (const char* data : {"A1", "B2"}) EXPECT_EQ(client.next(), envelope(data));
}

// ---- What it costs ----

// A wait that is cut to whole milliseconds from below, or to none, is a busy loop until the timer is due.
TEST(Loop, SleepsUntilATimerIsDue)
{
    RunningModem modem("[[indication]]\nservice = 'sar'\nmessage = 7\nbytes = ''\nevery_ms = 1\n");
    WireClient client = modem.connect();
    client.ask("sar 2");
    clockid_t clock{};
    ASSERT_EQ(::pthread_getcpuclockid(modem.thread(), &clock), 0);
    const auto spent = processor_time(clock);
    for (int i = 0; i < 200; ++i) ASSERT_EQ(client.next(), "sar i7 ");
    EXPECT_LT(processor_time(clock) - spent, milliseconds(100)) << "of 200 that it waits";
}

}  // namespace
}  // namespace rbk::sim

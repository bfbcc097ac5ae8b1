// The modem's limits and counts: what one client may keep, what it gets however late it reads, and what all of that costs.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <random>

#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using test::wait_until;

constexpr char kRestart[] = "extended 2 env 4: w2 @8 w31 w4 w0x1000 @512";

// The answer to an envelope.
std::string envelope(const std::string& data)
{
    return "extended r2 " + show_tlvs(tlvs_of("env 0: " + data));
}

// ---- The router ----

TEST(Router, AServiceComesBackElsewhere)
{
    const RunningModem modem("[modem]\nrestart_ms = 1\n");
    WireClient client = modem.connect();
    const link::Address before = client.lookup(WireClient::kExtended).at(0).address;
    client.ask(kRestart);
    EXPECT_EQ(client.next(), "- extended");
    EXPECT_EQ(client.next(), "+ extended");
    EXPECT_NE(client.lookup(WireClient::kExtended).at(0).address, before) << "a late request would reach it";
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

TEST(Client, OneThatReadsLateGetsEverythingInOrder)
{
    const RunningModem modem;
    WireClient client = modem.connect();
    for (int i = 1; i <= 2000; ++i) client.send("extended 2 env 3: w" + std::to_string(i));
    for (int i = 1; i <= 2000; ++i) ASSERT_EQ(client.next(), envelope("w" + std::to_string(i)));
}

TEST(Client, RubbishIsDroppedAndTheNextRequestAnswered)
{
    const RunningModem modem;
    WireClient client = modem.connect();
    std::mt19937 random(20240607);
    const auto number = [&](std::uint32_t below) { return static_cast<std::uint32_t>(random() % below); };
    const char* const places[] = {"extended", "vs", "nas", "uim", "sar", "pdc", "diag", "router", "nobody"};
    for (int i = 0; i < 3000; ++i) {
        Bytes bytes(number(i % 50 == 0 ? 5000 : 40));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(number(i % 2 == 0 ? 256 : 4));
        // Every other one with a sound head, so that its TLVs are looked at.
        if (bytes.size() >= 7 && i % 2 == 1) {
            bytes[0] = 0;
            store_le(&bytes[3], static_cast<std::uint16_t>(number(0x30)));
            store_le(&bytes[5], static_cast<std::uint16_t>(bytes.size() - 7));
        }
        std::string text(places[i % std::size(places)]);
        text += " raw";
        for (const std::uint8_t byte : bytes) text += " " + show_bytes(Bytes{byte});
        client.send(text);
        while (!client.next(milliseconds(0)).empty()) continue;
    }
    // Without an address, and longer than any message.
    EXPECT_EQ(::send(client.socket().fd(), "123", 3, MSG_NOSIGNAL), 3);
    const Bytes long_one(link::kLongestDatagram + 1);
    EXPECT_GT(::send(client.socket().fd(), long_one.data(), long_one.size(), MSG_NOSIGNAL), 0);
    client.lookup(1);
    while (!client.next(milliseconds(0)).empty()) continue;
    EXPECT_EQ(client.ask("extended 2 env 0: A1"), envelope("A1"));
}

// ---- Configurations ----

TEST(Pdc, AReportIsStreamedInFrames)
{
    const TempDir folder;
    write_file(folder.path() / "diff.xml", std::string(32768, 'a') + std::string(32768, 'b') + "c");
    const RunningModem modem("[pdc]\nreport = '" + (folder.path() / "diff.xml").string() +
                             "'\nindication_ms = 0\n[[pdc.config]]\nid = 'A1'\n");
    WireClient client = modem.connect();
    EXPECT_EQ(client.ask("pdc 2C 01: w1 01A1 10: w5"), "pdc r2C 02:00000000");
    for (const char* frame : {"11: w0 12: h32768 61*32768", "11: w1 12: h32768 62*32768", "11: w-1 12: h1 63"})
        EXPECT_EQ(client.next(), "pdc i2C " + show_tlvs(tlvs_of(std::string("01: h0 10: w5 ") + frame)));
}

// ---- Diag ----

TEST(Diag, StreamsEndWithTheirRegistrationAndTheirClient)
{
    const RunningModem modem("[[diag.stream]]\nkind = 'log'\nbytes = '10'\nevery_ms = 20\n");
    WireClient client = modem.connect();
    const auto start = [&] {
        EXPECT_EQ(client.ask("diag dci_register 1"), "diag =1001");
        EXPECT_EQ(client.ask("diag dci_stream 1"), "diag =1001");
        EXPECT_EQ(client.next(), "diag packet 10");
    };
    start();
    EXPECT_EQ(client.ask("diag dci_release 1"), "diag =1001");
    const auto began = std::chrono::steady_clock::now();
    start();
    for (int i = 0; i < 9; ++i) EXPECT_EQ(client.next(), "diag packet 10");
    EXPECT_GE(std::chrono::steady_clock::now() - began, milliseconds(200)) << "the earlier stream goes on beside it";
    client.send("diag lsm_deinit 0");
    std::string word = client.ask("diag dci_stream 1");  // its answer stands behind all that the stream had sent
    while (word == "diag packet 10") word = client.next();
    EXPECT_EQ(word, "diag =-1") << "the registration outlives the library";
    EXPECT_EQ(client.next(milliseconds(60)), "");
}

// ---- What it costs ----

// A wait that is cut to whole milliseconds from below, or to none, is a busy loop until the timer is due.
TEST(Loop, SleepsUntilATimerIsDue)
{
    RunningModem modem("[[indication]]\nservice = 'sar'\nmessage = 7\nbytes = ''\nevery_ms = 1\n");
    WireClient client = modem.connect();
    client.ask("sar 2");
    const auto began = std::chrono::steady_clock::now();
    const auto spent = modem.processor_time();
    for (int i = 0; i < 200; ++i) ASSERT_EQ(client.next(), "sar i7 ");
    EXPECT_LT(modem.processor_time() - spent, (std::chrono::steady_clock::now() - began) / 2);
}

}  // namespace
}  // namespace rbk::sim

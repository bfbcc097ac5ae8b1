// Fault rules, indications that nobody asked for, restarts, and clients that don't read.
#include <gtest/gtest.h>

#include "simulator/scenario_reader.h"
#include "support/wait_until.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

using std::chrono::milliseconds;

// What comes to a client: 'r' a response, 'i' an indication, '+' and '-' services that come and go, each message with its
// number. Waits for as many as `expected` has, and a little for what isn't expected.
std::string traffic(WireClient& client, const std::string& expected)
{
    std::string seen;
    while (true) {
        const auto received = client.receive(milliseconds(seen.size() < expected.size() ? 5000 : 40));
        if (!received) return seen;
        seen += seen.empty() ? "" : " ";
        if (received->control) {
            seen += received->control->type == QRTR_TYPE_NEW_SERVER ? "+" : "-";
        } else {
            seen.append(received->kind == 2 ? "r" : "i").append(std::to_string(received->message));
        }
    }
}

std::string fault(const std::string& keys)
{
    std::string scenario("[modem]\nrestart_ms = 30\n[[fault]]\nservice = 'extended'\n");
    return scenario.append(keys).append("\n");
}

const Bytes kEcho = envelope_tlvs(3, 4, Bytes{0xA1, 0xB2, 0xC3, 0xD4});

TEST(Fault, EachActionDoesWhatItSays)
{
    struct {
        const char* catches;
        std::string keys;
        std::string traffic;  // after one request with message 2
    } const rows[] = {
        {"NoRuleForThisMessage", "message = 3\naction = 'silent'", "r2"},
        {"Silent", "action = 'silent'", ""},
        {"Delay", "action = 'delay'\nms = 20", "r2"},
        {"DelayTooShort", "action = 'delay'\nms = 60000", ""},
        {"Indicate", "action = 'indicate'\nindication = 0x24\nbytes = '01 01 00 07'", "r2 i36"},
        {"IndicateRequestsNumber", "action = 'indicate'\nbytes = ''", "r2 i2"},
        {"Down", "action = 'down'", "- +"},
        {"OtherRequestId", "qmi_id = 4\naction = 'silent'", "r2"},
        {"RequestId", "qmi_id = 3\naction = 'silent'", ""},
        {"OtherPrefix", "prefix = 'A1 B3'\naction = 'silent'", "r2"},
        {"Prefix", "prefix = 'A1 B2'\naction = 'silent'", ""},
        {"PrefixBehindDataLen", "prefix = 'A1 B2 C3 D4 00'\naction = 'silent'", "r2"},
        {"OnIndication", "on = 'indication'\naction = 'silent'", "r2"},
    };
    for (const auto& row : rows) {
        RunningModem modem(fault(row.keys));
        WireClient client = modem.connect();
        client.send(client.extended(), 2, kEcho);
        EXPECT_EQ(traffic(client, row.traffic), row.traffic) << row.catches;
    }
}

TEST(Fault, ErrorResultAndRawChangeTheAnswer)
{
    const Bytes nv = nv_record(kNvRead, 0, 550).bytes;
    struct {
        const char* catches;
        std::string keys;
        std::uint32_t qmi_id;
        Bytes data;
        std::size_t offset;  // in the answer's TLVs
        std::uint32_t word;
    } const rows[] = {
        {"Error", "action = 'error'\ncode = 52", 2, nv, 3, 52},
        {"ErrorBelow0", "action = 'error'\ncode = -1", 2, nv, 3, 0xFFFFFFFF},
        {"ResultOfNvEfs", "action = 'result'\ncode = -5", 2, nv, 17 + 16, 0xFFFFFFFB},
        {"ResultOfLegacyRead", "action = 'result'\ncode = -5", 1, nv, 17 + 4, 0xFFFFFFFB},
        {"ResultOfCommon", "action = 'result'\ncode = -5", 4, common_record(2, 35).bytes, 17 + 4, 0xFFFFFFFB},
        {"ResultWhereNoneIs", "action = 'result'\ncode = -5", 3, Bytes{1, 2, 3, 4, 5}, 17 + 4, 5},
        {"Raw", "action = 'raw'\nbytes = '05 05 00 61 62 63 64 65'", 2, nv, 3, 0x64636261},
    };
    for (const auto& row : rows) {
        RunningModem modem(fault(row.keys));
        WireClient client = modem.connect();
        const auto answer =
            client.ask(2, envelope_tlvs(row.qmi_id, static_cast<std::uint32_t>(row.data.size()), row.data));
        ASSERT_TRUE(answer) << row.catches;
        EXPECT_EQ(peek_le<std::uint32_t>(answer->tlvs, row.offset), row.word) << row.catches;
    }
}

TEST(Fault, WhatFollowsFromARequestFollowsItsAnswer)
{
    const TempDir folder;
    write_file(folder.path() / "two_frames", std::string(40000, 'a'));
    const std::string pdc = "[modem]\nrestart_ms = 30\n[pdc]\nindication_ms = 1\nreport = '" +
                            (folder.path() / "two_frames").string() +
                            "'\n[[pdc.config]]\nid = 'A1'\n[[fault]]\nservice = 'pdc'\n";
    const std::string nas = "[nas]\nscan_ms = 1\n[[fault]]\nservice = 'nas'\n";
    const std::string late = "action = 'delay'\nms = 40\n";
    const Bytes restart = envelope_tlvs(4, 512, common_record(2, 31, Bytes{0, 0x10, 0, 0}).bytes);
    const Bytes validate = {0x01, 6, 0, 1, 0, 0, 0, 1, 0xA1};
    const Bytes activate = {0x01, 4, 0, 1, 0, 0, 0};
    struct {
        const char* catches;
        std::string scenario;
        std::uint32_t service;
        std::uint16_t message;
        Bytes tlvs;
        std::string traffic;
    } const rows[] = {
        {"RestartBeforeItsAnswer", fault(late), 0xFFE4, 2, restart, "r2 - +"},
        {"OutcomeBeforeItsAnswer", pdc + late, 36, 0x27, activate, "r39 i39"},
        {"FramesBeforeTheirAnswer", pdc + late, 36, 0x2C, validate, "r44 i44 i44"},
        {"FramesThatAreReplaced", pdc + "action = 'indicate'\nindication = 3\nbytes = ''\n", 36, 0x2C, validate,
         "r44 i3"},
        {"EarlyFrameAfterItsAnswer", pdc + "on = 'indication'\naction = 'early'\n", 36, 0x2C, validate, "i44 r44 i44"},
        {"DownBeforeTheAnswer", pdc + late + "[[fault]]\nservice = 'pdc'\non = 'indication'\naction = 'down'\n", 36,
         0x27, activate, "r39 - +"},
        {"ScanResultBeforeItsAnswer", nas + late, 3, 0x85, {}, "r133 i133 i133"},
    };
    for (const auto& row : rows) {
        RunningModem modem(row.scenario);
        WireClient client = modem.connect();
        client.send(client.lookup(row.service).at(0).address, row.message, row.tlvs);
        EXPECT_EQ(traffic(client, row.traffic), row.traffic) << row.catches;
    }
}

TEST(Fault, ARequestIsCarriedOutOrLeftUndone)
{
    struct {
        const char* action;
        bool done;
    } const rows[] = {
        {"'silent'", false},       {"'error'\ncode = 1", false},  {"'raw'\nbytes = ''", false},     {"'down'", false},
        {"'delay'\nms = 1", true}, {"'result'\ncode = -5", true}, {"'indicate'\nbytes = ''", true},
    };
    for (const auto& row : rows) {
        RunningModem modem(fault("nth = 1\naction = " + std::string(row.action)));
        WireClient client = modem.connect();
        const Bytes record = nv_record(kNvWrite, 0, 77, Bytes{1}).bytes;
        client.send(client.extended(), 2, envelope_tlvs(2, 544, record));
        // A lookup's answer comes behind the request's; it is empty while the service is down.
        EXPECT_TRUE(test::wait_until([&] { return !client.lookup(0xFFE4).empty(); })) << row.action;
        EXPECT_EQ(std::filesystem::exists(modem.state() / "nv/0/77"), row.done) << row.action;
    }
}

TEST(Fault, CountsItsOwnMatchesAndTheFirstRuleDecides)
{
    RunningModem modem(fault("nth = 2\naction = 'error'\ncode = 10") +
                       "[[fault]]\nservice = 'extended'\nfrom = 3\naction = 'error'\ncode = 20\n"
                       "[[fault]]\nservice = 'extended'\nnth = 2\naction = 'error'\ncode = 30\n"
                       "[[fault]]\nservice = 'extended'\nnth = 9\naction = 'silent'\n"
                       "[[fault]]\nservice = 'diag'\ncall = 'send'\naction = 'error'\ncode = 1\n");
    WireClient client = modem.connect();
    for (const std::uint32_t first_word : {0u, 10u, 20u, 20u}) {
        EXPECT_EQ(peek_le<std::uint32_t>(client.ask(2, kEcho)->tlvs, 3), first_word);
    }
    modem.stop();
    const auto unused = modem.modem().faults().unused();
    ASSERT_EQ(unused.size(), 2u);
    EXPECT_NE(unused[0].find("scenario.toml:18: the fault rule for extended never matched often enough: 4 of 9 times"),
              std::string::npos)
        << unused[0];
    EXPECT_NE(unused[1].find("scenario.toml:22: the fault rule for diag never matched"), std::string::npos)
        << unused[1];
    EXPECT_EQ(modem.modem().faults().for_call("diag", "send")->code, 1);
    EXPECT_EQ(modem.modem().faults().for_call("diag", "lsm_init"), nullptr);
}

TEST(Indication, ComesUnaskedAndByTheRulesForIt)
{
    const std::string once = "[[indication]]\nservice = 'extended'\nmessage = 7\nbytes = '01 04 00 01 02 03 04'\n";
    struct {
        const char* catches;
        std::string scenario;
        std::string traffic;
    } const rows[] = {
        {"Once", once, "r2 i7"},
        {"Later", once + "after_ms = 60000\n", "r2"},
        {"OfAnotherService", "[[indication]]\nservice = 'vs'\nmessage = 7\nbytes = ''\n", "r2"},
        {"Silent", once + fault("on = 'indication'\naction = 'silent'"), "r2"},
        {"Twice", once + fault("on = 'indication'\nmessage = 7\naction = 'twice'"), "r2 i7 i7"},
        {"OtherMessage", once + fault("on = 'indication'\nmessage = 8\naction = 'twice'"), "r2 i7"},
        {"Instead", once + fault("on = 'indication'\naction = 'indicate'\nindication = 9\nbytes = ''"), "r2 i9"},
        {"Before", once + fault("on = 'indication'\naction = 'indicate'\nindication = 9\nbytes = ''\nalso = true"),
         "r2 i9 i7"},
        {"Delay", once + fault("on = 'indication'\naction = 'delay'\nms = 60000"), "r2"},
        {"Down", once + fault("on = 'indication'\naction = 'down'"), "r2 - +"},
    };
    for (const auto& row : rows) {
        RunningModem modem(row.scenario);
        WireClient client = modem.connect();
        client.send(client.extended(), 2, kEcho);
        EXPECT_EQ(traffic(client, row.traffic), row.traffic) << row.catches;
    }
}

TEST(Indication, ComesAgainUntilItsClientHasGone)
{
    RunningModem modem("[[indication]]\nservice = 'extended'\nmessage = 7\nbytes = ''\nafter_ms = 1\nevery_ms = 1\n");
    WireClient client = modem.connect();
    {
        WireClient gone = modem.connect();
        ASSERT_TRUE(gone.ask(2, kEcho));
    }
    client.send(client.extended(), 2, kEcho);
    ASSERT_EQ(client.receive()->kind, 2);
    for (int i = 0; i < 20; ++i) ASSERT_EQ(client.receive()->message, 7);
}

// ---- Services that come and go ----

TEST(Restart, TakesTheServicesAwayAndBringsThemBack)
{
    RunningModem modem("[modem]\nservices = ['extended']\nrestart_ms = 30\n");
    WireClient asker = modem.connect();
    WireClient watcher = modem.connect();
    const link::Address before = watcher.extended();
    ASSERT_EQ(watcher.lookup(0xFFE4).size(), 1u);
    watcher.lookup(0xFFF0);  // of no service: what it watches is told of once
    asker.send(asker.extended(), 2, envelope_tlvs(4, 512, common_record(2, 31, Bytes{0, 0x10, 0, 0}).bytes));
    EXPECT_EQ(traffic(asker, "r2 - +"), "r2 - +");
    EXPECT_EQ(traffic(watcher, "- +"), "- +");
    EXPECT_NE(watcher.lookup(0xFFE4).at(0).address, before) << "a stale address still reaches the service";
    watcher.send(before, 2, kEcho);
    const auto answer = watcher.receive();
    ASSERT_TRUE(answer && answer->control);
    EXPECT_EQ(answer->control->type, static_cast<std::uint32_t>(QRTR_TYPE_DEL_CLIENT));
    EXPECT_EQ(answer->control->address, before);
}

TEST(Lookup, RowsMatchServiceAndInstance)
{
    RunningModem modem("[modem]\nservices = ['extended']\nboot_ms = 60\n");
    WireClient client = modem.connect();
    EXPECT_TRUE(client.lookup(0xFFE4).empty()) << "there before it has booted";
    EXPECT_EQ(traffic(client, "+"), "+");
    EXPECT_EQ(client.lookup(0xFFE4, 1).size(), 1u);
    EXPECT_EQ(client.lookup(0).size(), 1u);
    EXPECT_TRUE(client.lookup(0xFFE4, 2).empty());
    EXPECT_TRUE(client.lookup(3).empty());
    const link::ControlPacket row = client.lookup(0xFFE4).at(0);
    EXPECT_EQ(row.instance & 0xFF, 1u);
}

TEST(Client, OneThatDoesNotReadIsDroppedAndStallsNobody)
{
    const std::string late = fault("qmi_id = 3\naction = 'delay'\nms = 60000");
    struct {
        const char* catches;
        std::string scenario;
        ClientLimits limits;
    } const rows[] = {
        {"BoundInBytes", "", {100UL * 1024, milliseconds(60000)}},
        {"BoundInAge", "", {SIZE_MAX, milliseconds(50)}},
        {"BoundOfWhatIsPutOff", late, {100UL * 1024, milliseconds(60000)}},
    };
    for (const auto& row : rows) {
        RunningModem modem(row.scenario, std::nullopt, row.limits);
        WireClient stalled = modem.connect();
        WireClient other = modem.connect();
        const link::Address to = stalled.extended();
        for (int i = 0; i < 2000; ++i) stalled.send(to, 2, kEcho);
        EXPECT_EQ(other.envelope(0, Bytes{1}).data_len, 1u) << row.catches;
        std::this_thread::sleep_for(milliseconds(120));
        while (stalled.receive(milliseconds(1000))) {
        }
        EXPECT_TRUE(stalled.closed()) << row.catches;
        EXPECT_EQ(other.envelope(0, Bytes{1}).data_len, 1u) << row.catches;
    }
}

TEST(Client, WhatIsPutOffEndsWithIt)
{
    RunningModem modem(fault("qmi_id = 3\naction = 'delay'\nms = 60000") +
                       "[[indication]]\nservice = 'extended'\nmessage = 7\nbytes = ''\nafter_ms = 60000\n"
                       "[nas]\nscan_ms = 60000\n");
    WireClient other = modem.connect();
    {
        WireClient gone = modem.connect();
        const link::Address nas = gone.lookup(3).at(0).address;
        for (int i = 0; i < 10; ++i) gone.send(nas, i % 2 == 0 ? 0x21 : 0x85, {});
        for (int i = 0; i < 10; ++i) gone.send(gone.extended(), 2, kEcho);
        EXPECT_EQ(gone.envelope(0, Bytes{1}).data_len, 1u);
    }
    for (int i = 0; i < 3; ++i) other.lookup(3);  // by the last answer the modem has met the other's end
    modem.stop();
    EXPECT_EQ(modem.modem().loop().timer_count(), 0u);
}

TEST(Client, OneThatReadsLateGetsEverythingInOrder)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const link::Address to = client.extended();
    for (int i = 0; i < 2000; ++i) client.send(to, 2, kEcho);
    for (int i = 1; i <= 2000; ++i) {
        const auto answer = client.receive();
        ASSERT_TRUE(answer) << i;
        ASSERT_EQ(answer->transaction, i);
    }
}

}  // namespace
}  // namespace rbk::sim

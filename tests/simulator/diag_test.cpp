// The modem's diag, frame by frame: fault rules, DCI clients, and whatever else a client may send.
#include <gtest/gtest.h>
#include <poll.h>

#include "platform/link/diag_frame.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

using link::DiagCall;
using link::DiagHead;
using link::DiagKind;
using std::chrono::milliseconds;

class DiagWire {
 public:
    explicit DiagWire(RunningModem& modem) : client_(modem.connect())
    {
        const auto rows = client_.lookup(link::kDiagService);
        if (rows.size() == 1) address_ = rows[0].address;
    }
    void send_raw(ByteView bytes) { client_.send_raw(address_, bytes); }
    void call(DiagCall call, std::int32_t dci, ByteView bytes = {})
    {
        const auto head = link::pack_diag({DiagKind::call, static_cast<std::uint8_t>(call), 7, dci});
        Bytes frame(head.begin(), head.end());
        frame.insert(frame.end(), bytes.begin(), bytes.end());
        send_raw(frame);
    }
    // What comes next: "=<code>" an answer, the first byte of a packet, '-' the service that goes, '+' one that comes;
    // empty when nothing does.
    std::string next(int wait_ms = 5000)
    {
        bool closed = false;
        pollfd ready{client_.socket().fd(), POLLIN, 0};
        if (::poll(&ready, 1, wait_ms) <= 0) return "";
        const auto datagram = client_.socket().receive(room_, closed);
        if (!datagram) return "closed";
        if (datagram->peer.port == QRTR_PORT_CTRL) return datagram->bytes[0] == QRTR_TYPE_DEL_SERVER ? "-" : "+";
        const auto frame = link::parse_diag(datagram->bytes);
        if (!frame) return "?";
        if (frame->head.kind == DiagKind::answer) {
            EXPECT_EQ(frame->head.sequence, 7);
            return "=" + std::to_string(frame->head.code);
        }
        return frame->bytes.empty() ? "empty" : std::to_string(frame->bytes[0]);
    }
    // All that comes until it is quiet: waits for as many words as `expected` has, and a little for what isn't expected.
    std::string traffic(const std::string& expected)
    {
        std::string seen;
        while (true) {
            const std::string word = next(seen.size() < expected.size() ? 5000 : 40);
            if (word.empty()) return seen;
            seen.append(seen.empty() ? "" : " ").append(word);
            if (word == "closed") return seen;
        }
    }
    std::string ask(const std::string& expected, ByteView request = Bytes{0x4B, 0x12})
    {
        call(DiagCall::send, 0, request);
        return traffic(expected);
    }

 private:
    WireClient client_;
    link::Address address_;
    Bytes room_ = Bytes(link::kLongestDatagram);
};

TEST(Diag, FaultRulesDecideAboutRequestsAndPackets)
{
    struct {
        const char* catches;
        std::string rule;
        std::string traffic;  // after one request, which is answered by the packets 1 and 2
    } const rows[] = {
        {"OtherPrefix", "prefix = '4B 13'\naction = 'silent'", "=0 1 2"},
        {"Silent", "prefix = '4B 12'\naction = 'silent'", "=0"},
        {"Delay", "action = 'delay'\nms = 60000", "=0"},
        {"Error", "action = 'error'\ncode = -9", "=-9"},
        {"Raw", "action = 'raw'\nbytes = '09 09'", "=0 9"},
        {"Indicate", "action = 'indicate'\nalso = true\nbytes = '09'", "=0 9 1 2"},
        {"Down", "action = 'down'", "- +"},
        {"LostCall", "call = 'send'\naction = 'error'\ncode = 5", "=5"},
        {"OtherCall", "call = 'dci_send'\naction = 'error'\ncode = 5", "=0 1 2"},
        {"LostPacket", "on = 'indication'\nprefix = '01'\naction = 'silent'", "=0 2"},
        {"ReplacedPacket", "on = 'indication'\nnth = 2\naction = 'raw'\nbytes = '08'", "=0 1 8"},
        {"DoublePacket", "on = 'indication'\nnth = 1\naction = 'twice'", "=0 1 1 2"},
        {"DownBeforeItsPacket", "on = 'indication'\nprefix = '02'\naction = 'down'", "=0 1 - +"},
        {"LatePacket", "on = 'indication'\nprefix = '01'\naction = 'delay'\nms = 20", "=0 2 1"},
    };
    for (const auto& row : rows) {
        RunningModem modem("[modem]\nrestart_ms = 20\nservices = ['diag']\n[[fault]]\nservice = 'diag'\n" + row.rule +
                           "\n[[diag.response]]\nrequest = '4B'\npackets = [ { bytes = '01', after_ms = 1 }, { bytes = "
                           "'02', after_ms = 2 } ]\n");
        DiagWire wire(modem);
        EXPECT_EQ(wire.ask(row.traffic), row.traffic) << row.catches;
    }
}

TEST(Diag, FirstRowThatBeginsTheRequestAnswers)
{
    RunningModem modem(
        "[[diag.response]]\nrequest = '4B 12'\npackets = [ { bytes = '02', after_ms = 20 }, { bytes = '01' } ]\n"
        "[[diag.response]]\nrequest = '4B'\npackets = [ { fill = 3, size = 16384 }, { bytes = '' } ]\n");
    DiagWire wire(modem);
    EXPECT_EQ(wire.ask("=0 1 2"), "=0 1 2");
    EXPECT_EQ(wire.ask("=0 3 empty", Bytes{0x4B}), "=0 3 empty");
    EXPECT_EQ(wire.ask("=0", Bytes{0x7C}), "=0") << "the built-in row stands beside those of the file";
}

TEST(Diag, DciCallsAreForClientsThatAreRegistered)
{
    RunningModem modem("[[diag.stream]]\nkind = 'log'\nbytes = '10'\nevery_ms = 1\n");
    DiagWire wire(modem);
    const Bytes request{0x7C};
    for (const DiagCall call :
         {DiagCall::dci_send, DiagCall::dci_stream, DiagCall::dci_signal, DiagCall::dci_release}) {
        wire.call(call, 1, request);
        EXPECT_EQ(wire.traffic("=-1"), "=-1");
    }
    wire.call(DiagCall::dci_register, 0);
    EXPECT_EQ(wire.traffic("=-1"), "=-1");
    wire.call(DiagCall::dci_register, 1);
    EXPECT_EQ(wire.traffic("=1001"), "=1001");
    wire.call(DiagCall::dci_send, 1, request);
    EXPECT_EQ(wire.traffic("=1001 124"), "=1001 124");
    wire.call(DiagCall::dci_stream, 1);
    for (const char* word : {"=1001", "16", "16"}) EXPECT_EQ(wire.next(), word);
    wire.call(DiagCall::lsm_deinit, 0);
    wire.call(DiagCall::dci_register, 0);  // its answer stands behind all that the stream had sent
    std::string word = "16";
    while (word == "16") word = wire.next();
    EXPECT_EQ(word, "=-1");
    EXPECT_EQ(wire.traffic(""), "") << "the stream goes on after the client's end";
    for (int i = 0; i < 40; ++i) wire.call(DiagCall::dci_register, i + 1);
    std::string expected;
    for (int i = 0; i < 40; ++i) expected.append(i == 0 ? "" : " ").append(i < 16 ? "=1001" : "=-1");
    EXPECT_EQ(wire.traffic(expected), expected) << "registrations without bound";
}

TEST(Diag, AStreamEndsWithItsRegistration)
{
    RunningModem modem("[[diag.stream]]\nkind = 'log'\nbytes = '10'\nevery_ms = 20\n");
    DiagWire wire(modem);
    const auto start = [&] {
        wire.call(DiagCall::dci_register, 1);
        wire.call(DiagCall::dci_stream, 1);
        for (int i = 0; i < 2; ++i) EXPECT_EQ(wire.next(), "=1001");
    };
    start();
    wire.call(DiagCall::dci_release, 1);
    EXPECT_EQ(wire.next(), "=1001");
    const auto began = std::chrono::steady_clock::now();
    start();
    for (int i = 0; i < 10; ++i) EXPECT_EQ(wire.next(), "16");
    EXPECT_GE(std::chrono::steady_clock::now() - began, milliseconds(200)) << "the earlier stream goes on beside it";
}

TEST(Diag, RubbishIsDroppedAndTheNextCallAnswered)
{
    RunningModem modem("");
    DiagWire wire(modem);
    const auto head = link::pack_diag({DiagKind::call, 200, 7, 1});
    const auto packet = link::pack_diag({DiagKind::packet, 0, 7, 1});
    const Bytes rows[] = {{},
                          {0x80},
                          Bytes(15, 0x80),
                          Bytes(16, 0xFF),
                          Bytes(7),
                          Bytes(30000, 0x81),
                          Bytes(head.begin(), head.end()),
                          Bytes(packet.begin(), packet.end())};
    for (const Bytes& row : rows) wire.send_raw(row);
    EXPECT_EQ(wire.ask("=0", Bytes{}), "=0");
    EXPECT_EQ(wire.ask("=0 124", Bytes(16384, 0x7C)), "=0 124");
}

}  // namespace
}  // namespace rbk::sim

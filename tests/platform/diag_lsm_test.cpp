// The diag library: what it refuses, to whom packets go, and what a stop and a release promise.
#include "diag_lsm.h"

#include <unistd.h>

#include <cerrno>

#include "link/diag_frame.h"
#include "platform/fake_peer.h"
#include "support/embedded_run.h"
#include "support/test_clock.h"

namespace rbk::test {
namespace {

using link::DiagKind;
using link::DiagPacket;
using Lines = std::vector<std::string>;

// What callbacks were called with, in order: "<context> <bytes>".
Told heard;
char primary[] = "primary", remote[] = "remote", dci[] = "dci", log_name[] = "log", event_name[] = "event";

void on_response(std::uint8_t* ptr, std::int32_t len, void* context)
{
    heard.add(static_cast<const char*>(context) + (" " + hex({ptr, ptr + len})));
}
std::int32_t on_packet(std::uint8_t* ptr, std::int32_t len, void* context)
{
    on_response(ptr, len, context);
    return 0;
}
const diag_dci_stream_cb on_log = [](std::uint8_t* ptr, std::int32_t len) { on_response(ptr, len, log_name); };
const diag_dci_stream_cb on_event = [](std::uint8_t* ptr, std::int32_t len) { on_response(ptr, len, event_name); };

// A callback that takes its time.
std::promise<void> entered, goes_on;
void on_slow(std::uint8_t* ptr, std::int32_t len, void* context)
{
    entered.set_value();
    goes_on.get_future().wait();
    on_response(ptr, len, context);
}
void await_slow_callback()
{
    EXPECT_EQ(entered.get_future().wait_for(std::chrono::seconds(20)), std::future_status::ready);
}

// ---- The library's calls ----

const std::uint8_t kRequest[DIAG_REQUEST_MAX + 1] = {0x7C};
std::int32_t client;
std::uint8_t buffer[16];
std::uint16_t mask;

const auto make_client = [] {
    constexpr std::uint16_t kMpss = DIAG_CON_MPSS;
    constexpr std::int32_t kSignalType = 18;
    return diag_register_dci_client(&client, &kMpss, 0, &kSignalType);
};
std::int32_t ask_with(diag_dci_response_cb callback)
{
    return diag_send_dci_async_req(client, kRequest, 1, buffer, sizeof buffer, callback, dci);
}
const auto ask = [] { return ask_with(on_response); };
const auto start_streams = [] { return diag_register_dci_stream_proc(client, on_log, on_event); };
const auto ask_for_support = [] { return diag_get_dci_support_list_proc(0, &mask); };
const auto release_client = [] { return diag_release_dci_client(&client); };
const auto send_request = [] { return diag_callback_send_data(0, kRequest, 1); };

// ---- Against the modem ----

class DiagLsm : public EmbeddedRun {};

// The errors of calls before a start and after a stop, and between them, when `client` is nobody; 0 where it isn't tried.
const struct Refusal {
    const char* of;
    std::int32_t (*call)();
    int stopped, started;
} kRefusals[] = {
    {"Send", send_request, ENOTCONN, 0},
    {"NewClient", make_client, ENOTCONN, 0},
    {"Mode", [] { return diag_switch_logging(CALLBACK_MODE, nullptr); }, ENOTCONN, 0},
    {"Callback", [] { return diag_register_callback(on_packet, primary); }, ENOTCONN, 0},
    {"Remote", [] { return diag_register_remote_callback(on_packet, 1, remote); }, ENOTCONN, 0},
    {"RemoteMask", [] { return diag_has_remote_device(&mask); }, ENOTCONN, 0},
    {"Support", ask_for_support, ENOTCONN, 0},
    {"Ask", ask, ENOTCONN, EBADF},
    {"Signal", [] { return diag_register_dci_signal_data(client, 64); }, ENOTCONN, EBADF},
    {"Streams", start_streams, ENOTCONN, EBADF},
    {"Release", release_client, ENOTCONN, EBADF},
    {"LongerThanTheLongest", [] { return diag_callback_send_data(0, kRequest, DIAG_REQUEST_MAX + 1); }, EMSGSIZE,
     EMSGSIZE},
    {"EmptyRequest", [] { return diag_callback_send_data(0, kRequest, 0); }, EINVAL, EINVAL},
    {"NoRequest", [] { return diag_callback_send_data(0, nullptr, 1); }, EINVAL, EINVAL},
    {"RemoteBelowAll", [] { return diag_register_remote_callback(on_packet, 0, remote); }, EINVAL, EINVAL},
    {"RemoteAboveAll", [] { return diag_register_remote_callback(on_packet, DIAG_REMOTE_MAX + 1, remote); }, EINVAL,
     EINVAL},
};

TEST_F(DiagLsm, RefusesAllBeforeItsStartAndWhatIsWrong)
{
    for (const bool started : {false, true, false}) {
        if (started) {
            EXPECT_NE(Diag_LSM_Init(nullptr), 0);
            EXPECT_NE(Diag_LSM_Init(nullptr), 0) << "started already";
            EXPECT_EQ(make_client(), DIAG_DCI_NO_ERROR);
            EXPECT_EQ(diag_callback_send_data(0, kRequest, DIAG_REQUEST_MAX), 0);
            client += 1;
        }
        for (const Refusal& row : kRefusals) {
            const int error = started ? row.started : row.stopped;
            if (error == 0) continue;
            errno = 0;
            EXPECT_EQ(row.call(), DIAG_REFUSED) << row.of;
            EXPECT_EQ(errno, error) << row.of;
        }
        EXPECT_EQ(Diag_LSM_DeInit() != 0, started);
    }
}

TEST_F(DiagLsm, ProcessEndsWithACallbackThatNeverDoes)
{
    scenario("[[diag.response]]\nrequest = '7C'\npackets = [ { bytes = '01' } ]\n");
    const auto end = [] {
        Diag_LSM_Init(nullptr);
        make_client();
        ask_with([](std::uint8_t*, std::int32_t, void*) {
            entered.set_value();
            for (;;) ::pause();
        });
        await_slow_callback();
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

// ---- Against a peer that says anything ----

constexpr link::Address kDiag{1, 20};
constexpr link::Address kExtended{1, 7};
constexpr link::ControlPacket kDiagRow{QRTR_TYPE_NEW_SERVER, link::kDiagService, 1, kDiag};

class DiagPeer : public PeerTest {
 protected:
    // The answer to the call that was heard.
    Bytes answer(std::int32_t code = 0, std::int32_t value = 3) const
    {
        Bytes bytes = heard_;
        bytes.resize(link::kDiagHeadSize);
        bytes[0] = static_cast<std::uint8_t>(DiagKind::answer);
        store_le(&bytes[8], value);
        store_le(&bytes[12], code);
        return bytes;
    }
    template <typename Call>
    auto make(Call call, std::int32_t code)
    {
        auto result = begin(call);
        peer_.say(kDiag, answer(code));
        return result.get();
    }
    // The library has been started, and wants packets of the one processor.
    void start(bool first = true)
    {
        auto started = begin([] { return wait_until([] { return Diag_LSM_Init(nullptr) != 0; }); });
        if (first) {
            peer_.tell_servers({kDiagRow, {QRTR_TYPE_NEW_SERVER, 0xFFE4, 1, kExtended}});
            heard_ = peer_.hear();
        }
        peer_.say(kDiag, answer());
        EXPECT_TRUE(started.get());
        EXPECT_EQ(diag_register_callback(on_packet, primary), 0);
        EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), 0);
    }
    void give_packet(std::uint8_t byte, DiagPacket what = DiagPacket::response, std::int32_t processor = 0,
                     std::size_t size = 1)
    {
        const auto head = link::pack_diag({DiagKind::packet, static_cast<std::uint8_t>(what), 0, client, processor});
        Bytes packet(head.begin(), head.end());
        packet.resize(packet.size() + size, byte);
        peer_.say(kDiag, packet);
    }
    // A callback runs, and behind it wait two packets.
    void hold_a_callback()
    {
        start();
        EXPECT_EQ(make(make_client, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
        EXPECT_EQ(make([] { return ask_with(on_slow); }, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
        give_packet(1, DiagPacket::dci_response);
        await_slow_callback();
        give_packet(2, DiagPacket::dci_response);
        give_packet(3);
        EXPECT_EQ(make(send_request, 0), 0) << "with the answer they have come";
    }
};

TEST_F(DiagPeer, PacketsGoToWhomTheyAreFor)
{
    setenv("RBK_TRACE", (home() / "trace").c_str(), 1);
    start();
    EXPECT_EQ(diag_has_remote_device(&mask), 0);
    EXPECT_EQ(mask, 3);
    EXPECT_EQ(diag_register_remote_callback(on_packet, DIAG_REMOTE_MAX, remote), 0);
    EXPECT_EQ(make(make_client, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(make(ask_for_support, 7), 7);
    EXPECT_EQ(diag_switch_logging(USB_MODE, nullptr), 0);
    give_packet(1);
    EXPECT_EQ(make(ask, 5), 5);
    give_packet(3, DiagPacket::dci_response, 0, sizeof buffer + 1);
    give_packet(4, DiagPacket::dci_response, 0, 2);
    give_packet(5, DiagPacket::dci_log);
    give_packet(6, DiagPacket::dci_response);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 0404", "dci 06"}))
        << "dropped: of USB mode, longer than the room, for no callback";
    EXPECT_EQ(buffer[0], 6);
    EXPECT_EQ(buffer[1], 4);
    EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), 0);
    EXPECT_EQ(make(start_streams, 6), 6);
    for (const std::int32_t processor : {1, DIAG_REMOTE_MAX + 1, -1, DIAG_REMOTE_MAX, 0})
        give_packet(7, DiagPacket::response, processor);
    give_packet(8, DiagPacket::dci_log);
    give_packet(9, DiagPacket::dci_event);
    EXPECT_EQ(heard.wait(6), (Lines{"dci 0404", "dci 06", "remote 07", "primary 07", "log 08", "event 09"}));
    EXPECT_NE(read_file(home() / "trace").find(" < diag len=2 0404\n"), std::string::npos);
    EXPECT_EQ(make(release_client, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(client, 0);
}

TEST_F(DiagPeer, NothingButItsAnswerEndsACall)
{
    start();
    const struct {
        const char* catches;
        link::Address from = kDiag;
        DiagKind kind = DiagKind::answer;
        std::uint8_t what = 0, sequence = 0;  // more than the call's
        std::size_t size = link::kDiagHeadSize;
    } rows[] = {{.catches = "AnswerOfAnotherServiceTaken", .from = kExtended},
                {.catches = "CallTaken", .kind = DiagKind::call},
                {.catches = "AnswerToAnotherCallTaken", .what = 1},
                {.catches = "AnswerToALaterCallTaken", .sequence = 1},
                {.catches = "CutAnswerTaken", .size = link::kDiagHeadSize - 1}};
    for (const auto& row : rows) {
        auto sent = begin(send_request);
        Bytes stray = answer(1);
        stray[0] = static_cast<std::uint8_t>(row.kind);
        stray[1] = static_cast<std::uint8_t>(stray[1] + row.what);
        stray[2] = static_cast<std::uint8_t>(stray[2] + row.sequence);
        stray.resize(row.size);
        peer_.say(row.from, stray);
        peer_.say(kDiag, answer(0));
        EXPECT_EQ(sent.get(), 0) << row.catches;
    }
}

TEST_F(DiagPeer, ACallThatIsNeverAnsweredIsGivenUp)
{
    start();
    auto error = begin([] { return send_request() == DIAG_REFUSED ? errno : 0; });
    pass_time(error, std::chrono::seconds(5));
    EXPECT_EQ(error.get(), ETIMEDOUT);
}

TEST_F(DiagPeer, ReleaseWaitsForTheCallbackThatRuns)
{
    hold_a_callback();
    auto released = std::async(std::launch::async, release_client);
    EXPECT_FALSE(peer_.hears(20)) << "told the modem while it runs";
    goes_on.set_value();
    heard_ = peer_.hear();
    peer_.say(kDiag, answer(DIAG_DCI_NO_ERROR));
    EXPECT_EQ(released.get(), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 01", "primary 03"})) << "a packet for nobody is dropped";
}

TEST_F(DiagPeer, StopWaitsForTheCallbackThatRuns)
{
    hold_a_callback();
    auto stopped = begin(Diag_LSM_DeInit);
    EXPECT_TRUE(still_waits(stopped));
    goes_on.set_value();
    EXPECT_NE(stopped.get(), 0);
    start(false);
    give_packet(4);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 01", "primary 04"})) << "packets of an ended session are dropped";
}

TEST_F(DiagPeer, AModemThatGoesEndsTheSessionUntilTheNextStart)
{
    hold_a_callback();
    auto error = begin([] { return send_request() == DIAG_REFUSED ? errno : 0; });
    peer_.tell({QRTR_TYPE_DEL_SERVER, link::kDiagService, 1, kDiag});
    EXPECT_EQ(error.get(), ENOTCONN);
    EXPECT_EQ(send_request(), DIAG_REFUSED);
    peer_.tell(kDiagRow);
    start(false);
    EXPECT_EQ(ask(), DIAG_REFUSED) << "clients went with the modem";
    goes_on.set_value();
    give_packet(4);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 01", "primary 04"})) << "packets of an ended session are dropped";
}

}  // namespace
}  // namespace rbk::test

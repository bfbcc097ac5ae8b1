// The diag library: what it refuses, to whom packets go, and what a stop and a release promise.
#include "diag_lsm.h"

#include <cerrno>
#include <future>

#include "platform/fake_peer.h"
#include "platform/link/diag_frame.h"
#include "support/embedded_run.h"
#include "support/test_clock.h"
#include "support/told.h"

namespace rbk::test {
namespace {

using link::DiagCall;
using link::DiagKind;
using link::DiagPacket;
using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

// What callbacks were called with, in order: "<context> <bytes>".
Told heard;

void on_response(std::uint8_t* ptr, std::int32_t len, void* context)
{
    heard.add(static_cast<const char*>(context) + (" " + hex({ptr, ptr + len})));
}
std::int32_t on_packet(std::uint8_t* ptr, std::int32_t len, void* context)
{
    on_response(ptr, len, context);
    return 0;
}
char primary[] = "primary", remote_2[] = "remote 2", dci[] = "dci", log_name[] = "log", event_name[] = "event";
void on_log(std::uint8_t* ptr, std::int32_t len)
{
    on_response(ptr, len, log_name);
}
void on_event(std::uint8_t* ptr, std::int32_t len)
{
    on_response(ptr, len, event_name);
}

// A callback that takes its time.
std::promise<void> entered, goes_on;
void on_slow(std::uint8_t* ptr, std::int32_t len, void* context)
{
    entered.set_value();
    goes_on.get_future().wait();
    on_response(ptr, len, context);
}

const std::uint8_t kRequest[] = {0x7C};
std::int32_t client;
std::uint8_t buffer[16];

std::int32_t make_client()
{
    constexpr std::uint16_t kMpss = DIAG_CON_MPSS;
    constexpr std::int32_t kSignalType = 18;
    return diag_register_dci_client(&client, &kMpss, 0, &kSignalType);
}
std::int32_t ask(diag_dci_response_cb callback = on_response)
{
    return diag_send_dci_async_req(client, kRequest, 1, buffer, sizeof buffer, callback, dci);
}
std::int32_t send_request()
{
    return diag_callback_send_data(0, kRequest, 1);
}

// ---- Against the modem ----

class DiagLsm : public EmbeddedRun {};

TEST_F(DiagLsm, RefusesEverythingBeforeTheStartAndAfterTheStop)
{
    for (int round = 0; round < 2; ++round) {
        std::uint16_t mask = 0xABCD;
        client = 1;
        errno = 0;
        EXPECT_EQ(send_request(), DIAG_REFUSED);
        EXPECT_EQ(errno, ENOTCONN);
        EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), DIAG_REFUSED);
        EXPECT_EQ(diag_register_callback(on_packet, primary), DIAG_REFUSED);
        EXPECT_EQ(diag_register_remote_callback(on_packet, 1, primary), DIAG_REFUSED);
        EXPECT_EQ(diag_has_remote_device(&mask), DIAG_REFUSED);
        EXPECT_EQ(diag_get_dci_support_list_proc(0, &mask), DIAG_REFUSED);
        EXPECT_EQ(mask, 0xABCD);
        EXPECT_EQ(make_client(), DIAG_REFUSED);
        EXPECT_EQ(client, 1);
        EXPECT_EQ(diag_register_dci_signal_data(1, 64), DIAG_REFUSED);
        EXPECT_EQ(diag_register_dci_stream_proc(1, on_log, on_event), DIAG_REFUSED);
        EXPECT_EQ(ask(), DIAG_REFUSED);
        EXPECT_EQ(diag_release_dci_client(&client), DIAG_REFUSED);
        EXPECT_EQ(Diag_LSM_DeInit(), 0);
        EXPECT_TRUE(trace().empty());
        if (round == 1) break;
        EXPECT_NE(Diag_LSM_Init(nullptr), 0);
        EXPECT_EQ(make_client(), DIAG_DCI_NO_ERROR);
        EXPECT_NE(Diag_LSM_Init(nullptr), 0) << "started already";
        EXPECT_NE(Diag_LSM_DeInit(), 0);
    }
}

TEST_F(DiagLsm, RefusesUnknownClientsAndBadArguments)
{
    EXPECT_NE(Diag_LSM_Init(nullptr), 0);
    EXPECT_EQ(make_client(), DIAG_DCI_NO_ERROR);
    client += 1;
    errno = 0;
    EXPECT_EQ(ask(), DIAG_REFUSED);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(diag_register_dci_signal_data(client, 64), DIAG_REFUSED);
    EXPECT_EQ(diag_register_dci_stream_proc(client, on_log, on_event), DIAG_REFUSED);
    EXPECT_EQ(diag_release_dci_client(&client), DIAG_REFUSED);
    EXPECT_EQ(diag_release_dci_client(nullptr), DIAG_REFUSED);

    const std::vector<std::uint8_t> longest(DIAG_REQUEST_MAX + 1, 0x7C);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), DIAG_REQUEST_MAX), 0);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), DIAG_REQUEST_MAX + 1), DIAG_REFUSED);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), 0), DIAG_REFUSED);
    EXPECT_EQ(diag_callback_send_data(0, nullptr, 1), DIAG_REFUSED);
    EXPECT_EQ(diag_register_remote_callback(on_packet, 0, primary), DIAG_REFUSED);
    EXPECT_EQ(diag_register_remote_callback(on_packet, 17, primary), DIAG_REFUSED);
}

TEST_F(DiagLsm, PacketsGoToTheCallbackOfTheirProcessor)
{
    scenario(
        "[diag]\nremote_mask = 0x0003\n[[diag.response]]\nrequest = '7C'\npackets = [\n"
        "{ bytes = '01', processor = 1 }, { bytes = '02', processor = 2 }, { bytes = '00' } ]\n");
    ASSERT_NE(Diag_LSM_Init(nullptr), 0);
    std::uint16_t mask = 0;
    EXPECT_EQ(diag_has_remote_device(&mask), 0);
    EXPECT_EQ(mask, 3);
    EXPECT_EQ(diag_register_callback(on_packet, primary), 0);
    EXPECT_EQ(diag_register_remote_callback(on_packet, 2, remote_2), 0);
    for (const auto mode : {USB_MODE, CALLBACK_MODE}) {
        EXPECT_EQ(diag_switch_logging(mode, nullptr), 0);
        EXPECT_EQ(send_request(), 0);
        ASSERT_TRUE(wait_until([&] { return trace().size() >= (mode == USB_MODE ? 4u : 8u); }));
    }
    EXPECT_EQ(heard.wait(2), (Lines{"remote 2 02", "primary 00"})) << "the first ones go to USB";
    EXPECT_EQ(trace()[1].head, "diag len=1");
    EXPECT_EQ(trace()[1].bytes, "01");
}

TEST_F(DiagLsm, DciPacketsUseTheRequestsBuffer)
{
    scenario(
        "[[diag.response]]\nrequest = '7C'\npackets = [ { fill = 1, size = 17 }, { fill = 2, size = 16 }, "
        "{ bytes = '03' } ]\n[[diag.stream]]\nkind = 'event'\nbytes = '60'\nevery_ms = 1\n");
    EXPECT_NE(Diag_LSM_Init(nullptr), 0);
    EXPECT_EQ(make_client(), DIAG_DCI_NO_ERROR);
    std::uint16_t peripherals = 0;
    EXPECT_EQ(diag_get_dci_support_list_proc(0, &peripherals), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(peripherals, DIAG_CON_MPSS);
    EXPECT_EQ(diag_register_dci_signal_data(client, 64), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(ask(), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 02020202020202020202020202020202", "dci 03"})) << "longer ones are dropped";
    EXPECT_EQ(buffer[0], 3);
    EXPECT_EQ(buffer[1], 2);
    EXPECT_EQ(diag_register_dci_stream_proc(client, on_log, on_event), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait(3)[2], "event 60");
    EXPECT_EQ(diag_release_dci_client(&client), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(client, 0);
}

TEST_F(DiagLsm, ProcessEndsWithACallbackUnderWay)
{
    scenario("[[diag.response]]\nrequest = '7C'\npackets = [ { bytes = '01' } ]\n");
    const auto end = [] {
        Diag_LSM_Init(nullptr);
        make_client();
        ask(on_slow);
        entered.get_future().wait();
        std::exit(0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
}

// ---- Against a peer that says anything ----

constexpr link::Address kDiag{1, 20};
constexpr link::Address kExtended{1, 7};
constexpr link::ControlPacket kDiagRow{QRTR_TYPE_NEW_SERVER, link::kDiagService, 1, kDiag};

class DiagPeer : public HomeTest {
 protected:
    DiagPeer() { setenv("RBK_MODEM", ("unix:" + (home() / "peer").string()).c_str(), 1); }

    // A call of the library, begun; the answer to it that the modem would give.
    template <typename Call>
    auto begin(Call call)
    {
        auto result = std::async(std::launch::async, call);
        call_ = peer_.hear();
        return result;
    }
    Bytes answer(std::int32_t code = 0) const
    {
        Bytes bytes(call_.begin(), call_.begin() + link::kDiagHeadSize);
        bytes[0] = static_cast<std::uint8_t>(DiagKind::answer);
        store_le(&bytes[12], code);
        return bytes;
    }
    template <typename Call>
    auto make(Call call, std::int32_t code = 0)
    {
        auto result = begin(call);
        peer_.say(kDiag, answer(code));
        return result.get();
    }
    // The library has been started, and wants packets of the one processor.
    void start(bool first = true)
    {
        auto started = begin([] {
            while (Diag_LSM_Init(nullptr) == 0) std::this_thread::yield();  // until the server is known
            return true;
        });
        if (first) {
            peer_.tell_servers({kDiagRow, {QRTR_TYPE_NEW_SERVER, 0xFFE4, 1, kExtended}});
            call_ = peer_.hear();
        }
        peer_.say(kDiag, answer());
        EXPECT_TRUE(started.get());
        EXPECT_EQ(diag_register_callback(on_packet, primary), 0);
        EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), 0);
    }
    void give_packet(std::uint8_t byte, DiagPacket what = DiagPacket::response)
    {
        const auto head = link::pack_diag({DiagKind::packet, static_cast<std::uint8_t>(what), 0, client});
        Bytes packet(head.begin(), head.end());
        packet.push_back(byte);
        peer_.say(kDiag, packet);
    }
    // A callback runs, and behind it wait two packets.
    void hold_a_callback()
    {
        start();
        EXPECT_EQ(make(make_client, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
        EXPECT_EQ(make([] { return ask(on_slow); }, DIAG_DCI_NO_ERROR), DIAG_DCI_NO_ERROR);
        give_packet(1, DiagPacket::dci_response);
        entered.get_future().wait();
        give_packet(2, DiagPacket::dci_response);
        give_packet(3);
        EXPECT_EQ(make(send_request), 0) << "with the answer they have come";
    }
    template <typename Result>
    static void let_it_go_on(const std::future<Result>& whoever_waits)
    {
        std::this_thread::sleep_for(milliseconds(20));
        EXPECT_EQ(whoever_waits.wait_for(milliseconds(0)), std::future_status::timeout) << "a callback runs";
        goes_on.set_value();
    }

    FakePeer peer_{home() / "peer"};
    Bytes call_;
};

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
    test_clock::move_on(std::chrono::seconds(4));
    peer_.say(kDiag, {});  // whoever waits looks at the clock
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(error.wait_for(milliseconds(0)), std::future_status::timeout) << "given up too early";
    test_clock::move_on(std::chrono::seconds(1));
    peer_.say(kDiag, {});
    EXPECT_EQ(error.get(), ETIMEDOUT);
}

TEST_F(DiagPeer, ReleaseWaitsForTheCallbackThatRuns)
{
    hold_a_callback();
    auto released = std::async(std::launch::async, [] { return diag_release_dci_client(&client); });
    let_it_go_on(released);
    call_ = peer_.hear();
    peer_.say(kDiag, answer(DIAG_DCI_NO_ERROR));
    EXPECT_EQ(released.get(), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait(2), (Lines{"dci 01", "primary 03"})) << "a packet for nobody is dropped";
}

TEST_F(DiagPeer, StopWaitsForTheCallbackThatRuns)
{
    hold_a_callback();
    auto stopped = begin(Diag_LSM_DeInit);
    let_it_go_on(stopped);
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

// The diag library against the embedded modem: what it refuses, to whom packets go, and what a stop and a release promise.
#include "diag_lsm.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

// What callbacks were called with, in order: "<context> <bytes>".
struct Heard {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> lines;

    void add(const std::string& who, const std::uint8_t* bytes, std::int32_t len)
    {
        const std::lock_guard lock(mutex);
        lines.push_back(who + " " + hex({bytes, bytes + len}));
        changed.notify_all();
    }
    std::vector<std::string> wait_for(std::size_t count)
    {
        std::unique_lock lock(mutex);
        changed.wait_for(lock, std::chrono::seconds(10), [&] { return lines.size() >= count; });
        return lines;
    }
};
Heard heard;

std::int32_t on_packet(std::uint8_t* ptr, std::int32_t len, void* context)
{
    heard.add(static_cast<const char*>(context), ptr, len);
    return 0;
}
void on_response(std::uint8_t* ptr, std::int32_t len, void* context)
{
    heard.add(static_cast<const char*>(context), ptr, len);
}
void on_log(std::uint8_t* ptr, std::int32_t len)
{
    heard.add("log", ptr, len);
}
void on_event(std::uint8_t* ptr, std::int32_t len)
{
    heard.add("event", ptr, len);
}

char primary[] = "primary";
char remote_2[] = "remote 2";
char dci[] = "dci";
const std::uint8_t kRequest[] = {0x7C};
const std::uint16_t kMpss = DIAG_CON_MPSS;
const std::int32_t kSignalType = 18;

class DiagLsm : public EmbeddedRun {
 public:
    // A client with a packet buffer of its own, registered.
    std::int32_t client = 0;
    std::uint8_t buffer[16] = {};
    void make_client()
    {
        ASSERT_NE(Diag_LSM_Init(nullptr), 0);
        ASSERT_EQ(diag_register_dci_client(&client, &kMpss, 0, &kSignalType), DIAG_DCI_NO_ERROR);
        ASSERT_GT(client, 0);
    }
    std::int32_t ask() { return diag_send_dci_async_req(client, kRequest, 1, buffer, sizeof buffer, on_response, dci); }
};

using Lines = std::vector<std::string>;

TEST_F(DiagLsm, RefusesEverythingBeforeTheStartAndAfterTheStop)
{
    for (int round = 0; round < 2; ++round) {
        std::uint16_t mask = 0xABCD;
        client = 1;
        errno = 0;
        EXPECT_EQ(diag_callback_send_data(0, kRequest, 1), DIAG_REFUSED);
        EXPECT_EQ(errno, ENOTCONN);
        EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), DIAG_REFUSED);
        EXPECT_EQ(diag_register_callback(on_packet, primary), DIAG_REFUSED);
        EXPECT_EQ(diag_register_remote_callback(on_packet, 1, primary), DIAG_REFUSED);
        EXPECT_EQ(diag_has_remote_device(&mask), DIAG_REFUSED);
        EXPECT_EQ(diag_get_dci_support_list_proc(0, &mask), DIAG_REFUSED);
        EXPECT_EQ(mask, 0xABCD);
        EXPECT_EQ(diag_register_dci_client(&client, &kMpss, 0, &kSignalType), DIAG_REFUSED);
        EXPECT_EQ(client, 1);
        EXPECT_EQ(diag_register_dci_signal_data(1, 64), DIAG_REFUSED);
        EXPECT_EQ(diag_register_dci_stream_proc(1, on_log, on_event), DIAG_REFUSED);
        EXPECT_EQ(ask(), DIAG_REFUSED);
        EXPECT_EQ(diag_release_dci_client(&client), DIAG_REFUSED);
        EXPECT_EQ(Diag_LSM_DeInit(), 0);
        EXPECT_TRUE(trace().empty());
        if (round == 0) {
            make_client();
            EXPECT_NE(Diag_LSM_Init(nullptr), 0) << "started already";
            EXPECT_NE(Diag_LSM_DeInit(), 0);
        }
    }
}

TEST_F(DiagLsm, RefusesUnknownClientsAndBadArguments)
{
    make_client();
    client += 1;
    errno = 0;
    EXPECT_EQ(ask(), DIAG_REFUSED);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(diag_register_dci_signal_data(client, 64), DIAG_REFUSED);
    EXPECT_EQ(diag_register_dci_stream_proc(client, on_log, on_event), DIAG_REFUSED);
    EXPECT_EQ(diag_release_dci_client(&client), DIAG_REFUSED);

    const std::vector<std::uint8_t> longest(DIAG_REQUEST_MAX + 1, 0x7C);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), DIAG_REQUEST_MAX), 0);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), DIAG_REQUEST_MAX + 1), DIAG_REFUSED);
    EXPECT_EQ(errno, EMSGSIZE);
    EXPECT_EQ(diag_callback_send_data(0, longest.data(), 0), DIAG_REFUSED);
    EXPECT_EQ(diag_callback_send_data(0, nullptr, 1), DIAG_REFUSED);
    EXPECT_EQ(diag_register_remote_callback(on_packet, 0, primary), DIAG_REFUSED);
    EXPECT_EQ(diag_register_remote_callback(on_packet, 17, primary), DIAG_REFUSED);
    EXPECT_EQ(diag_release_dci_client(nullptr), DIAG_REFUSED);
}

TEST_F(DiagLsm, ModemWithoutDiagCannotBeStarted)
{
    scenario("[modem]\nservices = ['nas', 'extended']\n");
    EXPECT_EQ(Diag_LSM_Init(nullptr), 0);
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
    EXPECT_EQ(diag_switch_logging(CALLBACK_MODE, nullptr), 0);
    EXPECT_EQ(diag_callback_send_data(0, kRequest, 1), 0);
    EXPECT_EQ(heard.wait_for(2), (Lines{"remote 2 02", "primary 00"}));
    EXPECT_EQ(diag_switch_logging(USB_MODE, nullptr), 0);
    EXPECT_EQ(diag_callback_send_data(0, kRequest, 1), 0);
    EXPECT_EQ(diag_callback_send_data(0, kRequest, 1), 0);
    ASSERT_TRUE(wait_until([this] { return trace().size() >= 12; }));
    EXPECT_EQ(heard.wait_for(0).size(), 2U) << "packets go to USB";
    EXPECT_EQ(trace()[1].head, "diag len=1");
    EXPECT_EQ(trace()[1].bytes, "01");
}

TEST_F(DiagLsm, DciPacketsUseTheRequestsBuffer)
{
    scenario(
        "[[diag.response]]\nrequest = '7C'\npackets = [ { fill = 1, size = 17 }, { fill = 2, size = 16 }, "
        "{ bytes = '03' } ]\n[[diag.stream]]\nkind = 'event'\nbytes = '60'\nevery_ms = 1\n");
    make_client();
    std::uint16_t peripherals = 0;
    EXPECT_EQ(diag_get_dci_support_list_proc(0, &peripherals), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(peripherals, DIAG_CON_MPSS);
    EXPECT_EQ(diag_register_dci_signal_data(client, 64), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(ask(), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait_for(2), (Lines{"dci 02020202020202020202020202020202", "dci 03"}))
        << "longer ones are dropped";
    EXPECT_EQ(buffer[0], 3);
    EXPECT_EQ(buffer[1], 2);
    EXPECT_EQ(diag_register_dci_stream_proc(client, on_log, on_event), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait_for(3)[2], "event 60");
    EXPECT_EQ(diag_release_dci_client(&client), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(client, 0);
}

// A callback that takes its time: whoever ends a client or the library must wait for it.
std::atomic<int> slow_calls = 0;
std::atomic<bool> slow_running = false;
void on_slow(std::uint8_t*, std::int32_t, void*)
{
    slow_running = true;
    ++slow_calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    slow_running = false;
}

TEST_F(DiagLsm, StopAndReleaseWaitForTheCallbackThatRuns)
{
    scenario("[[diag.response]]\nrequest = '7C'\npackets = [ { bytes = '01' }, { bytes = '02' }, { bytes = '03' } ]\n");
    for (const bool release : {true, false}) {
        make_client();
        slow_calls = 0;
        ASSERT_EQ(diag_send_dci_async_req(client, kRequest, 1, buffer, sizeof buffer, on_slow, dci), DIAG_DCI_NO_ERROR);
        ASSERT_TRUE(wait_until([] { return slow_running.load(); }));
        if (release)
            EXPECT_EQ(diag_release_dci_client(&client), DIAG_DCI_NO_ERROR);
        else
            EXPECT_NE(Diag_LSM_DeInit(), 0);
        EXPECT_FALSE(slow_running);
        const int calls_then = slow_calls;
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        EXPECT_EQ(slow_calls, calls_then) << "packets of a client that has ended are dropped";
    }
}

TEST_F(DiagLsm, RestartOfTheModemEndsTheSessionUntilTheNextStart)
{
    scenario("[modem]\nrestart_ms = 20\n[[fault]]\nservice = 'diag'\nprefix = '99'\naction = 'down'\n");
    make_client();
    const std::uint8_t fatal[] = {0x99};
    errno = 0;
    EXPECT_EQ(diag_callback_send_data(0, fatal, 1), DIAG_REFUSED);
    EXPECT_EQ(errno, ENOTCONN);
    EXPECT_EQ(ask(), DIAG_REFUSED);
    bool started = false;
    for (int i = 0; i < 1000 && !started; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        started = Diag_LSM_Init(nullptr) != 0;
    }
    ASSERT_TRUE(started);
    EXPECT_EQ(ask(), DIAG_REFUSED) << "clients went with the modem";
    make_client();
    EXPECT_EQ(ask(), DIAG_DCI_NO_ERROR);
    EXPECT_EQ(heard.wait_for(1), Lines{"dci 7C02000053494D2E312E30"});
}

TEST_F(DiagLsm, ProcessEndsWithACallbackUnderWay)
{
    EXPECT_EXIT(
        {
            scenario("[[diag.response]]\nrequest = '7C'\npackets = [ { bytes = '01' } ]\n");
            make_client();
            diag_send_dci_async_req(client, kRequest, 1, buffer, sizeof buffer, on_slow, dci);
            wait_until([] { return slow_running.load(); });
            std::exit(slow_running ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace rbk::test

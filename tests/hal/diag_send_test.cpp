// Raw diag requests in both modes, with and without an answer: limits, time-outs, fragments, failing calls.
#include "velmor_diag_send.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include <sys/resource.h>

#include "support/embedded_run.h"
#include "support/program.h"

namespace rbk::test {
namespace {

constexpr std::int32_t kUntouched = 0x5A;

std::string response(const std::string& request, const std::string& packets)
{
    return "[[diag.response]]\nrequest = '" + request + "'\npackets = [ " + packets + " ]\n";
}

std::string packet_of(int fill, int size, int after_ms = 0)
{
    return "{ fill = " + std::to_string(fill) + ", size = " + std::to_string(size) +
           ", after_ms = " + std::to_string(after_ms) + " },";
}

std::string failing(const std::string& call, int code)
{
    return "[[fault]]\nservice = 'diag'\ncall = '" + call + "'\naction = 'error'\ncode = " + std::to_string(code) +
           "\n";
}

std::string fault(const std::string& more)
{
    return "[[fault]]\nservice = 'diag'\n" + more + "\n";
}

enum class Mode { callback, dci };

struct Reply {
    std::int32_t result = -1;
    std::int32_t len = kUntouched;
    std::vector<std::uint8_t> bytes;  // what was written of the buffer
};

class DiagSend : public EmbeddedRun {
 public:
    // Waits are as long as they say: an answer must not lose against a shortened time-out on a busy machine.
    DiagSend() { setenv("RBK_TEST_DIVISOR", "1", 1); }
    static void shorten_waits(const char* divisor = "100") { setenv("RBK_TEST_DIVISOR", divisor, 1); }

    static Reply send(Mode mode, const std::vector<std::uint8_t>& request, std::uint32_t wait_ms = 3000,
                      std::int32_t capacity = 20000)
    {
        Reply reply;
        reply.len = capacity;
        reply.bytes.assign(20000, kUntouched);
        const auto operation = mode == Mode::callback ? velmor_diag_cmd_send_with_result_by_callback_mode
                                                      : velmor_diag_cmd_send_with_result_by_dci_mode;
        reply.result = operation(request.data(), static_cast<std::uint32_t>(request.size()), wait_ms,
                                 reply.bytes.data(), &reply.len);
        const auto last =
            std::find_if(reply.bytes.rbegin(), reply.bytes.rend(), [](auto b) { return b != kUntouched; });
        reply.bytes.erase(last.base(), reply.bytes.end());
        return reply;
    }
    // A time-out may slip through the gap between the wait thread's post and its flag, which the next send then finds:
    // one of several tells it for certain.
    static Reply send_into_silence(Mode mode, std::uint32_t wait_ms)
    {
        Reply reply;
        for (int i = 0; i < 5 && reply.result != 1; ++i) {
            settle();
            reply = send(mode, {0x99}, wait_ms);
        }
        return reply;
    }
    // The wait thread of an earlier send would take a later one's wait for its own: it ends within its step of 1 ms.
    static void settle() { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }
    std::size_t polls()
    {
        const std::vector<std::string> lines = calls();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), "usleep 100000"));
    }
    // Waits until a worker has said `words`.
    bool said(const std::string& words) const
    {
        for (int i = 0; i < 5000 && log_count(words) == 0; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return log_count(words) != 0;
    }
};

// ---- Checks ----

TEST_F(DiagSend, RequestsAreCheckedByTheirLength)
{
    const std::vector<std::uint8_t> bytes(5000, 0x7C);
    struct {
        const char* catches;
        const std::uint8_t* data;
        std::int32_t len;
        std::int32_t result;
    } const rows[] = {
        {"NullDumped", nullptr, 1, 1},
        {"EmptyRequestSent", bytes.data(), 0, 1},
        {"OneByteRefused", bytes.data(), 1, 0},
        {"LongestRefused", bytes.data(), 4096, 0},
        {"LimitNotInclusive", bytes.data(), 4097, 1},
        {"NegativeTakenForLong", bytes.data(), -1, 1},
    };
    for (const auto& row : rows)
        EXPECT_EQ(velmor_diag_comand_input_check(row.data, row.len), row.result) << row.catches;
}

TEST_F(DiagSend, PlaceForTheAnswerIsChecked)
{
    std::uint8_t byte = 0;
    struct {
        const char* catches;
        bool with_buffer;
        std::int32_t len;
        std::int32_t result;
    } const rows[] = {{"NullBufferTaken", false, 1, 1},
                      {"EmptyBufferTaken", true, 0, 1},
                      {"NegativeTakenForRoom", true, INT32_MIN, 1},
                      {"OneByteRefused", true, 1, 0}};
    for (const auto& row : rows)
        EXPECT_EQ(velmor_diag_comand_output_check(row.with_buffer ? &byte : nullptr, &row.len), row.result)
            << row.catches;
    EXPECT_EQ(velmor_diag_comand_output_check(&byte, nullptr), 1);
}

TEST_F(DiagSend, PacketsAreCheckedByTheirLengthAndNamedByTheirProcessor)
{
    const std::vector<std::uint8_t> bytes(10300, 0x7C);
    struct {
        std::uint32_t len;
        std::int32_t processor;
        std::int32_t result;
        const char* says;
    } const rows[] = {
        {1, 0, 0, "response from 0[MSM], len = 1 ="},
        {4096, 1, 0, "response from 1[MDM], len = 4096 ="},
        {4097, 2, 0, "print_data_with_hex, invalid data len(4097)"},
        {10240, 3, 0, "response from 3[Unknown], len = 10240 ="},
        {10241, -1, 1, "Invalid parameter, len = 10241"},
        {0, 0, 1, "Invalid parameter, len = 0"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(velmor_diag_cmd_response_check(bytes.data(), row.len, &row.processor), row.result) << row.says;
        EXPECT_EQ(log_count(row.says), 1U) << row.says;
    }
    EXPECT_EQ(velmor_diag_cmd_response_check(bytes.data(), 2, nullptr), 0);
    EXPECT_EQ(velmor_diag_cmd_response_check(nullptr, 2, nullptr), 1);
    EXPECT_EQ(log_count("context_data is null"), 2U);
    EXPECT_EQ(log_count("response from -1[Unknown], len = 2 ="), 2U);
}

TEST_F(DiagSend, DumpIsOneLineOfUpperCaseBytes)
{
    const std::uint8_t bytes[] = {0x0A, 0xFF, 0x00};
    velmor_print_data_with_hex(bytes, 3);
    velmor_print_data_with_hex(bytes, 0);
    velmor_print_data_with_hex(nullptr, 3);
    const std::vector<std::uint8_t> longest(4096, 0xAB);
    velmor_print_data_with_hex(longest.data(), 4096);
    const std::string text = read_file(home() / "log");
    EXPECT_NE(text.find("data hex show, len(3), data: 0A FF 00\n"), std::string::npos);
    EXPECT_NE(text.find("print_data_with_hex, invalid data len(0)\n"), std::string::npos);
    EXPECT_NE(text.find("print_data_with_hex, data is null\n"), std::string::npos);
    std::size_t line = text.find("data hex show, len(4096), data: ");
    ASSERT_NE(line, std::string::npos);
    line = text.find("AB", line);
    EXPECT_EQ(text.find('\n', line) - line, 12287U);
}

TEST_F(DiagSend, StartsAreCountedAndOneStopEndsThem)
{
    velmor_diag_init_with_result();
    velmor_diag_init_with_result();
    EXPECT_EQ(g_diag_init_status, 2);
    EXPECT_EQ(log_count("diag init done, g_diag_init_status = 1"), 1U);
    velmor_diag_deinit_with_result();
    EXPECT_EQ(g_diag_init_status, 0);
}

// ---- Answers ----

struct AnswerCase {
    const char* catches;
    Mode mode;
    std::string packets;
    std::int32_t capacity;
    std::int32_t len;
    std::uint8_t last;  // byte of the answer
};

const AnswerCase kAnswers[] = {
    {"OneByteLost", Mode::callback, packet_of(1, 1), 20000, 1, 1},
    {"LongestPacketRefused", Mode::callback, packet_of(2, 10240), 20000, 10240, 2},
    {"BufferOverrun", Mode::callback, packet_of(3, 5000), 100, 100, 3},
    {"WholeFragmentAwaitsMore", Mode::callback, packet_of(4, 4096), 20000, 4096, 4},
    {"BadPacketTakenForTheAnswer", Mode::callback, packet_of(5, 10241) + packet_of(6, 7), 20000, 7, 6},
    {"EmptyPacketTakenForTheAnswer", Mode::callback, packet_of(0, 0) + packet_of(7, 7), 20000, 7, 7},
    {"DciOneByteLost", Mode::dci, packet_of(8, 1), 20000, 1, 8},
    {"DciFragmentsNotJoined", Mode::dci, packet_of(9, 4096) + packet_of(10, 904), 20000, 5000, 10},
    {"DciThirdFragmentLost", Mode::dci, packet_of(9, 4096) + packet_of(10, 4096) + packet_of(11, 1), 20000, 8193, 11},
    {"DciBufferOverrun", Mode::dci, packet_of(12, 4096) + packet_of(13, 904), 4097, 4097, 13},
    {"DciBadPacketJoined", Mode::dci, packet_of(14, 4096) + packet_of(15, 10241) + packet_of(16, 4), 20000, 4100, 16},
    {"DciOtherProcessorTaken", Mode::dci, "{ bytes = '63', processor = 1 }," + packet_of(17, 2, 5), 20000, 2, 17},
};

class DiagAnswer : public DiagSend, public testing::WithParamInterface<AnswerCase> {};

TEST_P(DiagAnswer, ComesBackWhole)
{
    const AnswerCase& row = GetParam();
    scenario(response("4B 12", row.packets));
    const Reply reply = send(row.mode, {0x4B, 0x12, 0x99}, 30000, row.capacity);
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.len, row.len);
    ASSERT_EQ(reply.bytes.size(), static_cast<std::size_t>(row.len));
    EXPECT_EQ(reply.bytes.back(), row.last);
    ASSERT_FALSE(requests().empty());
    EXPECT_EQ(requests().front().head + " " + requests().front().bytes, "diag len=3 4B1299");
    EXPECT_EQ(g_diag_init_status, 0);
}
INSTANTIATE_TEST_SUITE_P(All, DiagAnswer, testing::ValuesIn(kAnswers),
                         [](const auto& row) { return row.param.catches; });

TEST_F(DiagSend, RemoteProcessorsAnswerToo)
{
    scenario("[diag]\nremote_mask = 5\n" + response("7C", "{ bytes = '7C 33', processor = 3 }"));
    const Reply reply = send(Mode::callback, {0x7C});
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(hex(reply.bytes), "7C33");
    EXPECT_EQ(log_count("g_diag_channel = [0]MSM, data_primary = 0, remote_mask = [5] APSS"), 1U);
    EXPECT_EQ(log_count("register remote call back, data_remote = 1"), 1U);
    EXPECT_EQ(log_count("register remote call back, data_remote = 3"), 1U);
    EXPECT_EQ(log_count("register remote call back"), 2U);
    EXPECT_EQ(log_count("response from 3[Unknown]"), 1U);
}

TEST_F(DiagSend, StreamsAreDumpedAndReachNobody)
{
    scenario(response("7C", packet_of(0x7C, 3, 200)) +
             "[[diag.stream]]\nkind = 'log'\nbytes = '10 AA'\nevery_ms = 5\n"
             "[[diag.stream]]\nkind = 'event'\nbytes = '60 BB'\nevery_ms = 5\n");
    EXPECT_EQ(hex(send(Mode::dci, {0x7C}).bytes), "7C7C7C");
    EXPECT_GE(log_count("data hex show, len(2), data: 10 AA"), 2U);
    EXPECT_GE(log_count("data hex show, len(2), data: 60 BB"), 2U);
}

TEST_F(DiagSend, EmptyPacketIsJudgedByItsLength)
{
    scenario(response("7C", packet_of(0, 0) + packet_of(7, 7)));
    EXPECT_EQ(send(Mode::callback, {0x7C}).len, 7);
    EXPECT_EQ(log_count("Invalid parameter, len = 0"), 1U);
    EXPECT_EQ(log_count("ptr is null"), 0U);
}

TEST_F(DiagSend, AnswerOfManyPacketsNeedsNoMoreRoomThanItsOwn)
{
    constexpr int kPackets = 500;
    std::string packets;
    for (int i = 0; i < kPackets; ++i) packets += packet_of(i % 251, 4096);
    scenario(response("7C", packets + packet_of(1, 1)));
    setenv("RBK_LOGCAT", "/dev/null", 1);
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(send(Mode::dci, {0x7C}, 60000).len, 20000);
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 600 * 1024)
        << "kB, of which a sanitizer takes most; all blocks: 1 GB";
}

TEST_F(DiagSend, ModemThatIsDownIsToldAndSentToAllTheSame)
{
    scenario("[diag]\nmpss_up = false\n");
    EXPECT_EQ(send(Mode::dci, {0x7C}).result, 0);
    EXPECT_EQ(log_count("MPSS on ch:0: DOWN"), 1U);
    EXPECT_EQ(log_count("MPSS on ch:0: UP"), 0U);
}

// ---- Time-outs ----

struct WaitCase {
    const char* catches;
    Mode mode;
    std::uint32_t wait_ms;
    std::size_t polls;
};
const WaitCase kWaits[] = {
    {"ZeroWaitsForEver", Mode::callback, 0, 30},
    {"LimitNotInclusive", Mode::callback, 60001, 30},
    {"HalfAStepIsNone", Mode::callback, 50, 1},
    {"StepsRoundedUp", Mode::callback, 399, 3},
    {"DciHasADefault", Mode::dci, 0, 1},
    {"DciHasALimit", Mode::dci, 60100, 601},
    {"DciTopBitTakenForLong", Mode::dci, 0x80000000, 1},
};

class DiagWait : public DiagSend, public testing::WithParamInterface<WaitCase> {};

TEST_P(DiagWait, EndsAfterItsSteps)
{
    shorten_waits();
    const WaitCase& row = GetParam();
    send(row.mode, {0x99}, row.wait_ms);
    EXPECT_EQ(polls(), row.polls);
    EXPECT_EQ(log_count("stop waiting"), 1U);
    const Reply reply = send_into_silence(row.mode, 100);
    EXPECT_EQ(reply.result, 1);
    EXPECT_EQ(reply.len, 0);
}
INSTANTIATE_TEST_SUITE_P(All, DiagWait, testing::ValuesIn(kWaits), [](const auto& row) { return row.param.catches; });

TEST_F(DiagSend, LongestTimeOutIsKept)
{
    EXPECT_EQ(send(Mode::callback, {0x7C}, 60000).result, 0);
    EXPECT_EQ(log_count("Command time = 600 * 100ms"), 1U);
    EXPECT_EQ(log_count("Time out is invalid, set default"), 0U);
}

TEST_F(DiagSend, AnswerOfWholeFragmentsCostsTheWholeTimeOut)
{
    shorten_waits("20");  // 2 s for both packets
    scenario(response("4B", packet_of(1, 4096) + packet_of(2, 4096)));
    const Reply reply = send(Mode::dci, {0x4B}, 40000);
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.len, 8192);
    EXPECT_EQ(reply.bytes.size(), 8192U);
    EXPECT_EQ(polls(), 400U);
    EXPECT_EQ(log_count("stop waiting, receive success, length is times of 4096"), 1U);
}

TEST_F(DiagSend, TimeOutOfALaterSendFindsTheEarlierLength)
{
    shorten_waits("10");
    scenario(fault("from = 2\naction = 'silent'"));
    ASSERT_EQ(send(Mode::dci, {0x7C}, 60000).len, 11);
    shorten_waits();
    const Reply reply = send_into_silence(Mode::dci, 100);
    EXPECT_EQ(reply.result, 1);
    EXPECT_EQ(reply.len, 11);
    EXPECT_TRUE(reply.bytes.empty()) << "the earlier answer's bytes are gone";
}

TEST_F(DiagSend, TimeOutInCallbackModeHandsTheEarlierAnswerOut)
{
    shorten_waits("10");
    scenario(response("7C", packet_of(0x7C, 9)) + response("4B", packet_of(0x4B, 4096)));
    ASSERT_EQ(send(Mode::callback, {0x7C}, 60000).result, 0);
    Reply reply = send_into_silence(Mode::callback, 100);
    EXPECT_EQ(reply.result, 1);
    EXPECT_EQ(hex(reply.bytes), "7C7C7C7C7C7C7C7C7C");
    settle();
    send(Mode::callback, {0x4B}, 60000);
    settle();
    reply = send(Mode::callback, {0x99}, 100);
    EXPECT_EQ(reply.result, 0) << "a length of whole fragments passes for an answer";
    EXPECT_EQ(reply.len, 4096);
}

// ---- Failing calls ----

struct FailureCase {
    const char* catches;
    Mode mode;
    std::string scenario;
    const char* says;
    bool released;
};
const FailureCase kFailures[] = {
    {"RefusedSendWaited", Mode::callback, failing("send", 3), "ret_send = 3, will wait callback", false},
    {"RefusedRequestWaited", Mode::callback, fault("prefix = '7C'\naction = 'error'\ncode = 4"),
     "Fail to send diag cmd", false},
    {"FailedStartHangs", Mode::callback, failing("lsm_init", 1), "LSM init failed", false},
    {"AbsentDiagHangs", Mode::callback, "[modem]\nservices = ['nas']\n", "ret_send = -1, will wait callback", false},
    {"LostModemHangs", Mode::callback, fault("action = 'down'"), "ret_send = -1, will wait callback", false},
    {"DciFailedStartHangs", Mode::dci, failing("lsm_init", 1), "Could not register with DCI, err: -1, errno: 107 ch:0",
     false},
    {"RegistrationsCodeUnread", Mode::dci, failing("dci_register", 0),
     "Could not register with DCI, err: 0, errno: ", false},
    {"SignalsCodeUnread", Mode::dci, failing("dci_signal", 1002),
     "Could not register signal for DCI Data for ch:0, err: 1002, errno: ", true},
    {"SupportListsCodeUnread", Mode::dci, failing("dci_support", -7),
     "Could not get support list for ch 0, err: -7, errno: ", true},
    {"StreamsCodeUnread", Mode::dci, failing("dci_stream", 5),
     "Unable to register DCI stream for ch:0, err: 5, errno: ", true},
    {"DciSendsCodeUnread", Mode::dci, failing("dci_send", 6),
     "Error sending SEND_REQUEST_ASYNC to peripheral 6 for ch:0", true},
};

class DiagFailure : public DiagSend, public testing::WithParamInterface<FailureCase> {};

TEST_P(DiagFailure, IsToldAndStopsTheLibrary)
{
    const FailureCase& row = GetParam();
    scenario(row.scenario);
    const Reply reply = send(row.mode, {0x7C});
    EXPECT_EQ(reply.result, 1);
    EXPECT_EQ(reply.len, 20000) << "untouched";
    EXPECT_EQ(log_count(row.says), 1U);
    EXPECT_EQ(log_count("Releasing DCI connection"), row.released ? 1U : 0U);
    EXPECT_EQ(log_count("velmor daig is created"), 0U) << "no wait thread";
    EXPECT_EQ(g_diag_init_status, 0);
}
INSTANTIATE_TEST_SUITE_P(All, DiagFailure, testing::ValuesIn(kFailures),
                         [](const auto& row) { return row.param.catches; });

TEST_F(DiagSend, RefusedArgumentsStartNothing)
{
    for (const Mode mode : {Mode::callback, Mode::dci}) {
        EXPECT_EQ(send(mode, std::vector<std::uint8_t>(4097)).result, 1);
        EXPECT_EQ(send(mode, {0x7C}, 3000, 0).result, 1);
    }
    EXPECT_EQ(log_count("velmor_diag_comand_param_check fail"), 2U);
    EXPECT_EQ(log_count("velmor_diag_comand_output_check fail"), 2U);
    EXPECT_TRUE(trace().empty());
}

TEST_F(DiagSend, LibraryStopsBeforeTheClientIsReleased)
{
    ASSERT_EQ(send(Mode::dci, {0x7C}).result, 0);
    EXPECT_EQ(log_count("Releasing DCI connection, err: -1, errno: 107"), 1U);
}

// ---- Races that are meant ----

TEST_F(DiagSend, PacketsThatReplaceEachOtherAreNeverTorn)
{
    std::string burst;
    for (int i = 1; i <= 12; ++i) burst += packet_of(i, 1 + i * 800);
    scenario(response("7C", burst));
    for (int round = 0; round < 20; ++round) {
        const Reply reply = send(Mode::callback, {0x7C});
        EXPECT_EQ(reply.result, 0);
        EXPECT_EQ((reply.len - 1) % 800, 0);
    }
}

TEST_F(DiagSend, LatePacketsFindNothingThatIsGone)
{
    std::string burst = packet_of(1, 4096) + packet_of(2, 10);
    for (int i = 0; i < 12; ++i) burst += packet_of(3 + i, i % 2 == 0 ? 100 : 4096);
    scenario(response("7C", burst));
    for (int round = 0; round < 20; ++round) EXPECT_EQ(send(Mode::dci, {0x7C}).result, 0);
}

TEST_F(DiagSend, SendsWaitForEachOther)
{
    std::vector<std::thread> senders;
    std::atomic<int> succeeded = 0;
    for (int i = 0; i < 6; ++i)
        senders.emplace_back([&] {
            const Reply reply = send(Mode::callback, {0x7C});
            if (reply.result == 0 && reply.len == 11) ++succeeded;
        });
    for (std::thread& sender : senders) sender.join();
    EXPECT_EQ(succeeded, 6);
}

// ---- Without result ----

TEST_F(DiagSend, CallbackWorkerSendsAndSleeps)
{
    const std::uint8_t request[] = {0x7C};
    EXPECT_EQ(velmor_diag_cmd_send_without_result_by_callback_mode(request, 1), 0);
    ASSERT_TRUE(said("will sleep 3s before quit"));
    EXPECT_EQ(log_count("velmor_diag_cmd_response_by_callback_no_handle: len = 11"), 1U);
    EXPECT_EQ(log_count("ret_send = 0, will wait callback"), 1U);
    EXPECT_EQ(log_count("conf = 0, diag_work_mode = 0"), 1U);
    const std::vector<std::string> slept = calls();
    ASSERT_FALSE(slept.empty());
    EXPECT_EQ(slept[0], "usleep 200000");
}

TEST_F(DiagSend, DciWorkerReleasesBeforeTheStop)
{
    shorten_waits("2");  // half a second for packets to pass
    scenario("[[diag.stream]]\nkind = 'log'\nbytes = '10 AA'\nevery_ms = 5\n" + failing("dci_release", 7));
    const std::uint8_t request[] = {0x7C};
    EXPECT_EQ(velmor_diag_cmd_send_without_result_by_dci_mode(request, 1), 0);
    ASSERT_TRUE(said("will sleep 3s before quit"));
    EXPECT_EQ(log_count("conf = 0, diag_work_mode = 1"), 1U);
    EXPECT_EQ(log_count("by_dci_no_handle: len = 11"), 1U);
    EXPECT_GE(log_count("by_dci_log_stream_no_handle: len = 2"), 1U);
    EXPECT_EQ(
        log_count("velmor_diag_cmd_send_without_result_by_dci_mode_thread_proc: Releasing DCI connection, err: 7"), 1U);
    EXPECT_EQ(calls().front(), "sleep 1");
}

struct WorkerCase {
    const char* catches;
    bool dci;
    std::string scenario;
    const char* says;
    bool passes;  // time for packets to pass
};
const WorkerCase kWorkers[] = {
    {"RefusedSendEndsAtOnce", false, failing("send", 1), "ret_send = 1, will wait callback", true},
    {"FailedStartSends", false, failing("lsm_init", 1), "LSM init failed", false},
    {"DciFailedStartSends", true, failing("lsm_init", 1), "LSM init failed", false},
    {"FailedRegistrationReleased", true, failing("dci_register", 9), "Could not register with DCI, err: 9", false},
    {"FailedSignalSends", true, failing("dci_signal", 9), "Could not register signal for DCI Data", false},
    {"FailedListSends", true, failing("dci_support", 9), "Could not get support list for ch 0, err: 9", false},
    {"FailedStreamSends", true, failing("dci_stream", 9), "Unable to register DCI stream for ch:0, err: 9", false},
    {"FailedSendWaited", true, failing("dci_send", 9), "Error sending SEND_REQUEST_ASYNC to peripheral 9", false},
};

class DiagWorker : public DiagSend, public testing::WithParamInterface<WorkerCase> {};

TEST_P(DiagWorker, TellsItsFailureToTheLogAlone)
{
    shorten_waits();
    scenario(GetParam().scenario);
    const std::uint8_t request[] = {0x7C};
    EXPECT_EQ((GetParam().dci ? velmor_diag_cmd_send_without_result_by_dci_mode
                              : velmor_diag_cmd_send_without_result_by_callback_mode)(request, 1),
              0);
    ASSERT_TRUE(said("will sleep 3s before quit"));
    EXPECT_EQ(log_count(GetParam().says), 1U);
    const std::vector<std::string> slept = calls();
    const auto last = std::find(slept.begin(), slept.end(), "usleep 3000000");
    EXPECT_EQ(last - slept.begin(), GetParam().passes ? 1 : 0);
}
INSTANTIATE_TEST_SUITE_P(All, DiagWorker, testing::ValuesIn(kWorkers),
                         [](const auto& row) { return row.param.catches; });

TEST_F(DiagSend, RefusedRequestStartsNoWorker)
{
    const std::vector<std::uint8_t> request(4097);
    EXPECT_EQ(velmor_diag_cmd_send_without_result_by_callback_mode(request.data(), 0), 1);
    EXPECT_EQ(velmor_diag_cmd_send_without_result_by_dci_mode(request.data(), 4097), 1);
    EXPECT_EQ(velmor_diag_cmd_send_without_result_by_dci_mode(nullptr, 1), 1);
    EXPECT_EQ(log_count("velmor_diag_comand_input_check fail"), 3U);
    EXPECT_EQ(log_count("velmor daig is created"), 0U);
}

}  // namespace
}  // namespace rbk::test

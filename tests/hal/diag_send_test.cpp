// Raw diag requests in both modes, with and without an answer: limits, time-outs, fragments, failing calls. Who comes
// first is decided where two threads meet, by holding one up.
#include "velmor_diag_send.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <functional>
#include <mutex>
#include <thread>

#include "support/embedded_run.h"
#include "support/on_calls.h"
#include "velmor_diag_rsp.h"

namespace rbk::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

constexpr std::int32_t kRoom = 20000;
constexpr std::uint8_t kUntouched = 0x5A;

// ---- Scenarios ----

std::string response(const std::string& request, const std::string& packets)
{
    return "[[diag.response]]\nrequest = '" + request + "'\npackets = [ " + packets + " ]\n";
}
std::string packet_of(int fill, int size, int after_ms = 0)
{
    return "{ fill = " + std::to_string(fill) + ", size = " + std::to_string(size) +
           ", after_ms = " + std::to_string(after_ms) + " },";
}
std::string failing(const std::string& call, int code, int nth)
{
    return "[[fault]]\nservice = 'diag'\ncall = '" + call + "'\naction = 'error'\ncode = " + std::to_string(code) +
           "\nnth = " + std::to_string(nth) + "\n";
}
const std::string kStreams =
    "[[diag.stream]]\nkind = 'log'\nbytes = '10 AA'\nevery_ms = 5\n"
    "[[diag.stream]]\nkind = 'event'\nbytes = '60 BB'\nevery_ms = 5\n";

// ---- The sends ----

enum class Mode { callback, dci };
constexpr Mode kModes[] = {Mode::dci, Mode::callback};  // the other way a DCI answer would be joined to an earlier one

struct Reply {
    std::int32_t result = -1;
    std::int32_t len = 0;
    Bytes bytes;  // what was written of the buffer
};

Reply send(Mode mode, const Bytes& request, std::uint32_t wait_ms = 60000, std::int32_t capacity = kRoom)
{
    Reply reply{-1, capacity, Bytes(kRoom, kUntouched)};
    const auto operation = mode == Mode::callback ? velmor_diag_cmd_send_with_result_by_callback_mode
                                                  : velmor_diag_cmd_send_with_result_by_dci_mode;
    reply.result =
        operation(request.data(), static_cast<std::uint32_t>(request.size()), wait_ms, reply.bytes.data(), &reply.len);
    while (!reply.bytes.empty() && reply.bytes.back() == kUntouched) reply.bytes.pop_back();
    return reply;
}

std::int32_t send_without_result(Mode mode, const Bytes& request)
{
    const auto operation = mode == Mode::callback ? velmor_diag_cmd_send_without_result_by_callback_mode
                                                  : velmor_diag_cmd_send_without_result_by_dci_mode;
    return operation(request.data(), static_cast<std::uint32_t>(request.size()));
}

// Whether no thread of a send is left, beside its caller.
bool threads_have_ended()
{
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task"))
        if (read_file(thread.path() / "comm") == "VELM DIAG\n") return false;
    return true;
}

// The calls while it lives, without the steps of waits. Workers leave packets time to pass until a condition is met.
class Recorded {
 public:
    explicit Recorded(std::function<bool()> passed = [] { return true; }) : passed_(std::move(passed)) {}
    Lines calls() const
    {
        const std::lock_guard lock(mutex_);
        return calls_;
    }
    std::ptrdiff_t count(const std::string& call) const
    {
        const Lines all = calls();
        return std::count_if(all.begin(), all.end(), [&](const std::string& each) { return each.starts_with(call); });
    }

 private:
    std::function<bool()> passed_;
    mutable std::mutex mutex_;
    Lines calls_;
    OnCalls hook_{[this](std::string_view call, const void* lock) {
        if (call == "sleep 1" || call == "usleep 200000") wait_until(passed_);
        if (lock != nullptr || call == "usleep 100000" || call.starts_with("sem_")) return;
        const std::lock_guard guard(mutex_);
        calls_.emplace_back(call);
    }};
};

class DiagSend : public EmbeddedRun {
 public:
    // Waits are as long as they say: an answer must not lose against a shortened time-out.
    DiagSend() { shorten_waits("1"); }
    static void shorten_waits(const char* divisor) { setenv("RBK_TEST_DIVISOR", divisor, 1); }
    std::size_t steps() const { return log_count("wait_thread_proc, cnt_of_100ms = "); }
};

// ---- Checks ----

TEST_F(DiagSend, RequestsAndPlacesForAnswersAreChecked)
{
    const Bytes bytes(4097, 0x7C);
    for (const auto& [len, result] : {std::pair{0, 1}, {1, 0}, {4096, 0}, {4097, 1}, {-1, 1}})
        EXPECT_EQ(velmor_diag_comand_input_check(bytes.data(), len), result) << len;
    for (const auto& [len, result] : {std::pair{0, 1}, {INT32_MIN, 1}, {1, 0}})
        EXPECT_EQ(velmor_diag_comand_output_check(bytes.data(), &len), result) << len;
    const std::int32_t one = 1;
    EXPECT_EQ(velmor_diag_comand_input_check(nullptr, 1), 1);
    EXPECT_EQ(velmor_diag_comand_output_check(nullptr, &one), 1);
    EXPECT_EQ(velmor_diag_comand_output_check(bytes.data(), nullptr), 1);
    const Recorded recorded;
    for (const Mode mode : kModes) EXPECT_EQ(send(mode, {0x7C}, 3000, 0).result, 1);
    EXPECT_EQ(recorded.calls(), Lines{}) << "nothing has been started";
}

// ---- Answers ----

TEST_F(DiagSend, AnswersComeBackWholeAndNothingElse)
{
    struct {
        const char* catches;
        Mode mode;
        std::string packets;
        std::int32_t len;
        std::uint8_t last;  // byte of the answer
        const char* says;
    } const rows[] = {
        {"ThirdFragmentLost", Mode::dci, packet_of(9, 4096) + packet_of(10, 4096) + packet_of(11, 1), 8193, 11,
         "response from -1[Unknown], len = 4096 ="},
        {"BadPacketJoined", Mode::dci, packet_of(14, 4096) + packet_of(15, 10241) + packet_of(16, 4), 4100, 16,
         "Invalid parameter, len = 10241"},
        {"OtherProcessorTaken", Mode::dci, "{ bytes = '63', processor = 1 }," + packet_of(17, 2, 20), 2, 17,
         "len(2), data: 11 11\n"},
        {"LongestPacketRefused", Mode::callback, packet_of(2, 10240), 10240, 2,
         "print_data_with_hex, invalid data len(10240)"},
        {"BadPacketsTaken", Mode::callback, packet_of(0, 0) + packet_of(5, 10241) + packet_of(7, 7), 7, 7,
         "response from 0[MSM], len = 10241 ="},
        {"RemoteDropped", Mode::callback, "{ bytes = '7C', processor = 1 }", 1, 0x7C,
         "response from 1[MDM], len = 1 ="},
        {"LastRemoteDropped", Mode::callback, "{ bytes = '33', processor = 3 }", 1, 0x33, "response from 3[Unknown]"},
    };
    std::string responses = "[diag]\nremote_mask = 5\n" + kStreams;
    for (std::uint8_t i = 0; i < std::size(rows); ++i) responses += response(hex({0x4B, i}), rows[i].packets);
    scenario(responses);
    for (std::uint8_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].catches);
        const Reply reply = send(rows[i].mode, {0x4B, i, 0x99});
        EXPECT_EQ(reply.result, 0);
        EXPECT_EQ(reply.len, rows[i].len);
        ASSERT_EQ(reply.bytes.size(), static_cast<std::size_t>(rows[i].len));
        EXPECT_EQ(reply.bytes.back(), rows[i].last);
        EXPECT_GE(log_count(rows[i].says), 1U);
    }
    for (const char* words :
         {"len(2), data: 10 AA\n", "len(2), data: 60 BB\n",
          "g_diag_channel = [0]MSM, data_primary = 0, remote_mask = [5] APSS\n",
          "register remote call back, data_remote = 1\n", "register remote call back, data_remote = 3\n"})
        EXPECT_GE(log_count(words), 1U) << words;
    EXPECT_EQ(log_count("register remote call back"), 2 * log_count("register call back"));
}

// ---- What the library is asked for, and by how many at once ----

const std::string kDciClient = "diag_register_dci_client 2 0 18";
const std::string kDciSignal = "diag_register_dci_signal_data SIGRTMIN+30";

TEST_F(DiagSend, LibraryIsStartedUsedAndGivenBackInThisOrder)
{
    scenario("[diag]\nmpss_up = false\n" + kStreams + response("7C", packet_of(0x7C, 11)));
    struct {
        void (*send)();
        Lines calls;
        Lines passes;  // words of a worker's packets
    } const rows[] = {
        {[] { send(Mode::dci, {0x7C}); },
         {"Diag_LSM_Init", kDciClient, kDciSignal, "Diag_LSM_DeInit", "diag_release_dci_client"},
         {}},
        {[] { send(Mode::callback, {0x7C}); },
         {"Diag_LSM_Init", "diag_switch_logging 6", "diag_switch_logging 1", "Diag_LSM_DeInit"},
         {}},
        {[] { send_without_result(Mode::dci, {0x7C}); },
         {"Diag_LSM_Init", kDciClient, kDciSignal, "sleep 1", "diag_release_dci_client", "Diag_LSM_DeInit",
          "usleep 3000000"},
         {"by_dci_no_handle: len = 11", "by_dci_log_stream_no_handle: len = 2", "event_stream_no_handle: len = 2"}},
        {[] { send_without_result(Mode::callback, {0x7C}); },
         {"Diag_LSM_Init", "diag_switch_logging 6", "usleep 200000", "diag_switch_logging 1", "Diag_LSM_DeInit",
          "usleep 3000000"},
         {"by_callback_no_handle: len = 11"}},
    };
    for (const auto& row : rows) {
        const auto passed = [&](const std::string& words) { return log_count(words) != 0; };
        const Recorded recorded([&] { return std::all_of(row.passes.begin(), row.passes.end(), passed); });
        row.send();
        EXPECT_TRUE(wait_until([&] { return recorded.calls().size() >= row.calls.size(); }));
        EXPECT_EQ(recorded.calls(), row.calls);
        for (const std::string& words : row.passes) EXPECT_TRUE(passed(words)) << words;
    }
    for (const char* words : {"diag_work_mode = 0", "diag_work_mode = 1", "DCI connection, err: -1, errno: 107",
                              "_by_dci_mode_thread_proc: Releasing DCI connection, err: 1001"})
        EXPECT_EQ(log_count(words), 1U) << words;
    EXPECT_EQ(log_count("MPSS on ch:0: DOWN") - log_count("MPSS on ch:0: UP"), 2U);
    EXPECT_EQ(g_diag_init_status, 0);
}

// Each that begins while another is at work waits for it.
TEST_F(DiagSend, SendsAndWorkersWaitForTheirLike)
{
    shorten_waits("10");
    scenario(response("7C", packet_of(0x7C, 11, 20)));
    const Recorded recorded;
    std::vector<std::thread> senders;
    for (const Mode mode : {Mode::callback, Mode::dci, Mode::callback, Mode::dci})
        senders.emplace_back([mode] { EXPECT_EQ(send(mode, {0x7C}).result, 0); });
    for (std::thread& sender : senders) sender.join();
    for (const Mode mode : kModes) send_without_result(mode, {0x7C});
    EXPECT_TRUE(wait_until([&] { return recorded.count("Diag_LSM_DeInit") == 6; }));
    Lines of_library = recorded.calls();
    std::erase_if(of_library, [](const std::string& call) { return !call.starts_with("Diag_"); });
    ASSERT_EQ(of_library.size(), 12U);
    for (std::size_t i = 0; i < of_library.size(); ++i)
        EXPECT_EQ(of_library[i], i % 2 == 0 ? "Diag_LSM_Init" : "Diag_LSM_DeInit");
}

// ---- Time-outs ----

struct WaitCase {
    const char* catches;
    Mode mode;
    std::uint32_t wait_ms;
    std::size_t steps;
};
const WaitCase kWaits[] = {
    {"ZeroWaitsForEver", Mode::callback, 0, 30},
    {"LimitNotInclusive", Mode::callback, 60001, 30},
    {"LimitReplaced", Mode::callback, 60000, 600},
    {"StepsRoundedUp", Mode::callback, 399, 3},
    {"DciHasADefault", Mode::dci, 0, 1},
    {"DciHasALimit", Mode::dci, 60100, 601},
    {"DciTopBitTakenForLong", Mode::dci, 1U << 31, 1},
};

TEST_F(DiagSend, SilenceEndsAfterItsSteps)
{
    shorten_waits("1000");
    const OnCalls told_first("sem_wait", threads_have_ended);  // that it was a time-out
    std::size_t steps_before = 0;
    for (const WaitCase& row : kWaits) {
        SCOPED_TRACE(row.catches);
        const Reply reply = send(row.mode, {0x99}, row.wait_ms);
        EXPECT_EQ(reply.result, 1);
        EXPECT_EQ(reply.len, 0);
        EXPECT_EQ(steps() - steps_before, row.steps);
        steps_before = steps();
    }
    EXPECT_EQ(log_count(": stop waiting\n"), std::size(kWaits));
}

TEST_F(DiagSend, WaitThreadEndsWithItsSender)
{
    shorten_waits("1000");
    std::atomic<bool> sent{false};
    const OnCalls held("usleep 100000", [&] { return sent.load(); });
    EXPECT_EQ(send(Mode::callback, {0x7C}).result, 0);
    sent = true;
    EXPECT_TRUE(wait_until(threads_have_ended));
    EXPECT_EQ(steps(), 1U);
    EXPECT_EQ(log_count("stop waiting"), 0U);
}

// Both packets are there before the last step; nobody but the wait thread knows that they are all.
TEST_F(DiagSend, AnswerOfWholeFragmentsCostsTheWholeTimeOut)
{
    shorten_waits("1000");
    scenario(response("4B", packet_of(1, 4096) + packet_of(2, 4096)));
    const OnCalls held("usleep 100000", [&] { return log_count("data_size = 4096\n") == 2; });
    const Reply reply = send(Mode::dci, {0x4B}, 300);
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(reply.bytes.size(), 8192U);
    EXPECT_EQ(steps(), 3U);
    EXPECT_EQ(log_count("stop waiting, receive success, length is times of 4096"), 1U);
}

TEST_F(DiagSend, TimeOutOfALaterSendFindsTheEarlierLength)
{
    shorten_waits("10");
    scenario(response("7C", packet_of(0x7C, 9)) + response("4B", packet_of(0x4B, 4096)));
    const auto send_into_silence = [](Mode mode) {
        EXPECT_TRUE(wait_until(threads_have_ended));
        const OnCalls told_first("sem_wait", threads_have_ended);
        return send(mode, {0x99}, 100);
    };
    for (const Mode mode : kModes) {
        EXPECT_EQ(send(mode, {0x7C}).len, 9);
        const Reply reply = send_into_silence(mode);
        EXPECT_EQ(reply.result, 1);
        EXPECT_EQ(reply.len, 9);
        EXPECT_EQ(hex(reply.bytes), mode == Mode::dci ? "" : "7C7C7C7C7C7C7C7C7C") << "of DCI they are gone";
    }
    EXPECT_EQ(send(Mode::callback, {0x4B}).len, 4096);
    EXPECT_EQ(send_into_silence(Mode::callback).result, 0) << "a length of whole fragments passes for an answer";
}

// The wait thread posts first and says then that it was a time-out.
TEST_F(DiagSend, TimeOutThatIsToldTooLateIsTheNextSends)
{
    std::atomic<bool> sent{false};
    const OnCalls held("sem_post", [&] { return sent.load(); });
    EXPECT_EQ(send(Mode::dci, {0x99}, 100).result, 0);
    sent = true;
    EXPECT_TRUE(wait_until(threads_have_ended));
    const Reply next = send(Mode::dci, {0x7C});
    EXPECT_EQ(next.result, 1);
    EXPECT_EQ(next.len, 11);
}

// ---- Failing calls ----

TEST_F(DiagSend, FailuresAreToldAndTheLibraryGivenBack)
{
    shorten_waits("100");
    struct {
        Mode mode;
        const char* call;
        int code;
        const char* says;
        std::ptrdiff_t stops, releases;  // by one send
    } const rows[] = {
        {Mode::dci, "lsm_init", 1, "LSM init failed", 0, 0},
        {Mode::callback, "send", 3, "ret_send = 3, will wait callback", 1, 0},
        {Mode::dci, "dci_register", 0, "Could not register with DCI, err: 0, errno: ", 1, 0},
        {Mode::dci, "dci_signal", 1002, "Could not register signal for DCI Data for ch:0, err: 1002, errno: ", 1, 1},
        {Mode::dci, "dci_support", -7, "Could not get support list for ch 0, err: -7, errno: ", 1, 1},
        {Mode::dci, "dci_stream", 5, "Unable to register DCI stream for ch:0, err: 5, errno: ", 1, 1},
        {Mode::dci, "dci_send", 6, "Error sending SEND_REQUEST_ASYNC to peripheral 6 for ch:0", 1, 1},
    };
    std::string faults;
    for (const auto& row : rows)
        for (const int nth : {1, 2}) faults += failing(row.call, row.code, nth);
    scenario(faults);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.call);
        const Recorded recorded;
        const Reply reply = send(row.mode, {0x7C});
        EXPECT_EQ(reply.result, 1);
        EXPECT_EQ(reply.len, kRoom) << "untouched";
        EXPECT_EQ(log_count(row.says), 1U);
        EXPECT_EQ(recorded.count("Diag_LSM_DeInit"), 1) << "also where it hasn't started";
        EXPECT_EQ(recorded.count("diag_release_dci_client"), row.releases);
        EXPECT_EQ(send_without_result(row.mode, {0x7C}), 0) << "it is told to the log alone";
        EXPECT_TRUE(wait_until([&] { return recorded.count("usleep 3000000") == 1; }));
        EXPECT_EQ(log_count(row.says), 2U);
        EXPECT_EQ(recorded.count("Diag_LSM_DeInit"), 1 + row.stops);
        EXPECT_EQ(recorded.count("diag_release_dci_client"), 2 * row.releases);
        EXPECT_EQ(recorded.count("diag_switch_logging 1"), row.mode == Mode::callback ? 2 : 0);
        EXPECT_EQ(recorded.count("sleep 1"), 0) << "nothing to pass";
    }
    EXPECT_EQ(log_count("velmor_diag_cmd_send_with_result_wait_thread_proc"), 0U) << "nobody waits";
}

// ---- Blocks that two threads know ----

diag_rsp_block* block_of(std::int32_t len, int fill)
{
    diag_rsp_block* block = diag_rsp_make(len);
    std::memset(diag_rsp_bytes(block), fill, static_cast<std::size_t>(len));
    return block;
}

// Bytes that are allocated; none under a sanitizer, which has an allocator of its own.
std::size_t allocated()
{
    const struct mallinfo2 now = mallinfo2();
    return now.uordblks + now.hblkhd;
}

constexpr std::int32_t kBlock = 8192;
std::atomic<diag_rsp_block*> place;
diag_rsp_block* newer;
std::uint8_t* answer;  // a page fault stands before its first byte

TEST(DiagBlocks, BlockIsReplacedWhileItIsCopied)
{
    mallopt(M_PERTURB, 0xA5);  // what has been freed can't be taken for what stood there
    const std::size_t before = allocated();
    answer = static_cast<std::uint8_t*>(mmap(nullptr, kBlock, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    std::signal(SIGSEGV, [](int) {
        diag_rsp_replace(place, newer);
        mprotect(answer, kBlock, PROT_READ | PROT_WRITE);
    });
    newer = block_of(kBlock, 2);
    diag_rsp_replace(place, block_of(kBlock, 1));
    diag_rsp_hand_out(place, answer, kBlock);
    EXPECT_EQ(Bytes(answer, answer + kBlock), Bytes(kBlock, 1));
    munmap(answer, kBlock);

    diag_rsp_block* block = block_of(kBlock, 3);
    diag_rsp_replace(place, block);
    diag_rsp_retire(place);
    EXPECT_EQ(place, nullptr);
    EXPECT_EQ(Bytes(diag_rsp_bytes(block), diag_rsp_bytes(block) + kBlock), Bytes(kBlock, 3)) << "until the stop";
    diag_rsp_free_retired();
    EXPECT_EQ(allocated(), before);
    for (int i = 0; i < 3; ++i) diag_rsp_replace(place, block_of(kBlock, i));
    EXPECT_LT(allocated(), before + 2 * kBlock) << "what nobody copies goes at once";
}

}  // namespace
}  // namespace rbk::test

// The QMI client library against the simulated modem, over each carrier; the kernel's QRTR sockets are stood in for.
#include "qmi_client.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <future>
#include <mutex>
#include <thread>

#include "platform/counted_new.h"
#include "platform/link/bytes.h"
#include "platform/linux/callback_queue.h"
#include "support/embedded_run.h"
#include "support/home.h"
#include "support/modem_process.h"

namespace rbk::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// ---- The extended service, as far as it is needed here: the modem gives the data of request ids 0, 3 and 5 back ----

struct envelope {
    uint32_t qmi_id;
    uint32_t data_len;
    uint8_t data_valid;
    uint8_t data[550];
};
constexpr idl_field envelope_fields[] = {IDL_WORD(0x01, envelope, qmi_id), IDL_WORD(0x02, envelope, data_len),
                                         IDL_OPT_BYTES(0x10, envelope, data)};
constexpr idl_message messages[] = {idl_make<envelope>(2, REQUEST, envelope_fields, 567, 560),
                                    idl_make<envelope>(2, RESPONSE, envelope_fields, 567, 560),
                                    idl_make<envelope>(3, INDICATION, envelope_fields, 567, 560)};
IDL_PROVE(messages);
constexpr qmi_idl_service_object extended = idl_service(0xFFE4, 1, 1, messages, 567);
constexpr qmi_idl_service_object nowhere = idl_service(0xFFF0, 1, 1, messages, 567);

envelope echo_request(std::uint8_t first)
{
    envelope request{3, 4, 1, {first, 2, 3, 4}};
    return request;
}

// What a callback has said, for the thread that waits for it.
class Told {
 public:
    void add(std::string what)
    {
        const std::lock_guard lock(mutex_);
        said_.push_back(std::move(what));
        came_.notify_all();
    }
    // The first `count` of them; fewer when no more come within ten seconds.
    std::vector<std::string> wait(std::size_t count)
    {
        std::unique_lock lock(mutex_);
        came_.wait_for(lock, std::chrono::seconds(10), [&] { return said_.size() >= count; });
        return said_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::vector<std::string> said_;
};

class QmiClient : public HomeTest, public testing::WithParamInterface<const char*> {
 protected:
    // The modem that the scenario describes, reached over the case's carrier.
    void use_modem(const std::string& scenario = "")
    {
        write_file(home() / "scenario.toml", scenario);
        const std::string file = (home() / "scenario.toml").string();
        if (std::string(GetParam()) == "embedded") {
            ::setenv("RBK_SCENARIO", file.c_str(), 1);
            return;
        }
        process_.emplace(home(), std::vector<std::string>{"--scenario", file});
        if (std::string(GetParam()) == "unix") {
            ::setenv("RBK_MODEM", process_->address().c_str(), 1);
        } else {
            ::setenv("RBK_TEST_QRTR", process_->address().substr(sizeof "unix:" - 1).c_str(), 1);
            ::setenv("RBK_MODEM", "qrtr", 1);
        }
    }

    static qmi_service_info only_server()
    {
        qmi_service_info info{};
        uint32_t entries = 1;
        uint32_t services = 0;
        EXPECT_EQ(qmi_client_get_service_list(&extended, &info, &entries, &services), 0);
        EXPECT_EQ(services, 1u);
        return info;
    }

    static qmi_client_handle open(qmi_client_ind_cb ind_cb = nullptr, void* data = nullptr)
    {
        const qmi_service_info info = only_server();
        qmi_client_handle client = nullptr;
        EXPECT_EQ(qmi_client_init(&info, &extended, ind_cb, data, nullptr, &client), 0);
        return client;
    }

    static int32_t send(qmi_client_handle client, const envelope& request, envelope& response,
                        uint32_t timeout_ms = 10000)
    {
        return qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, timeout_ms);
    }

    // From here on `wait_for_request` tells when a request has gone out.
    void trace_to_file() { ::setenv("RBK_TRACE", trace_file().c_str(), 1); }
    void wait_for_request() const
    {
        const auto end = steady_clock::now() + std::chrono::seconds(10);
        while (lines_of(read_file(trace_file())).empty() && steady_clock::now() < end)
            std::this_thread::sleep_for(milliseconds(1));
    }
    std::string trace_file() const { return (home() / "trace").string(); }

    std::optional<ModemProcess> process_;
};

void tell_error(qmi_client_handle, int32_t error, void* told)
{
    static_cast<Told*>(told)->add("error " + std::to_string(error));
}

constexpr char kSilence[] = "[[fault]]\nservice = \"extended\"\naction = \"silent\"\n";

INSTANTIATE_TEST_SUITE_P(Over, QmiClient, testing::Values("embedded", "unix", "qrtr"),
                         [](const auto& carrier) { return std::string(carrier.param); });

// ---- Requests ----

TEST_P(QmiClient, GivesEachOfManyCallersItsOwnAnswer)
{
    use_modem();
    qmi_client_handle client = open();
    std::vector<std::thread> callers;
    std::atomic<int> wrong = 0;
    for (int caller = 0; caller < 8; ++caller)
        callers.emplace_back([&, caller] {
            for (int i = 0; i < 100; ++i) {
                const envelope request = echo_request(static_cast<std::uint8_t>(caller * 16 + i % 16));
                envelope response{};
                if (send(client, request, response) != 0 || response.data_len != request.data_len ||
                    std::memcmp(response.data, request.data, sizeof request.data) != 0)
                    ++wrong;
            }
        });
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(wrong, 0);
}

TEST_P(QmiClient, AllocatesNothingOnTheSendPathAfterTheFirst)
{
    if (std::string(GetParam()) == "embedded") return use_modem();  // its modem allocates in the same process
    use_modem();
    qmi_client_handle client = open();
    const envelope request = echo_request(1);
    envelope response{};
    ASSERT_EQ(send(client, request, response), 0);
    const std::uint64_t before = allocations();
    for (int i = 0; i < 100; ++i) ASSERT_EQ(send(client, request, response), 0);
    EXPECT_EQ(allocations() - before, 0u);
}

struct FailureCase {
    const char* catches;
    const char* rule;
    std::int32_t result;
};

TEST_P(QmiClient, EachFailureHasItsResultAndLeavesTheAnswerUntouched)
{
    // One rule for each request, in this order: the modem counts matches from its start.
    const FailureCase cases[] = {
        {"SilenceTakenForAnAnswer", "nth = 1\naction = \"silent\"", -3},
        {"RubbishStored", "nth = 2\naction = \"raw\"\nbytes = \"01 04 00 00 00\"", -1},
        {"MissingTlvAccepted", "nth = 3\naction = \"raw\"\nbytes = \"01 04 00 00 00 00 00\"", -1},
        {"LostServiceNotTold", "nth = 4\naction = \"down\"", -2},
    };
    std::string scenario;
    for (const FailureCase& each : cases)
        scenario += std::string("[[fault]]\nservice = \"extended\"\nmessage = 2\n") + each.rule + "\n";
    use_modem(scenario);
    qmi_client_handle client = open();
    for (const FailureCase& each : cases) {
        SCOPED_TRACE(each.catches);
        envelope response;
        std::memset(&response, 0x5A, sizeof response);
        const envelope before = response;
        EXPECT_EQ(send(client, echo_request(1), response, each.result == -3 ? 50 : 10000), each.result);
        EXPECT_EQ(std::memcmp(&response, &before, sizeof before), 0);
    }
    envelope response;
    EXPECT_EQ(send(client, echo_request(1), response), -2) << "a client came back to life with its service";
}

TEST_P(QmiClient, RefusesWhatCannotBeSent)
{
    use_modem();
    qmi_client_handle client = open();
    const envelope request = echo_request(1);
    envelope response{};
    EXPECT_EQ(qmi_client_send_msg_sync(client, 9, &request, sizeof request, &response, sizeof response, 100), -1);
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, 4, &response, sizeof response, 100), -1);
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, 4, 100), -1);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(qmi_client_release(client), -1);
    EXPECT_EQ(send(client, request, response), -1) << "a released handle was followed";
    EXPECT_EQ(qmi_client_message_decode(client, INDICATION, 3, nullptr, 0, &response, sizeof response), -1);
    const qmi_service_info none{};
    EXPECT_EQ(qmi_client_init(&none, &extended, nullptr, nullptr, nullptr, &client), -2);
}

TEST_P(QmiClient, ReleaseEndsARequestInFlight)
{
    trace_to_file();
    use_modem(kSilence);
    qmi_client_handle client = open();
    auto result = std::async(std::launch::async, [&] {
        envelope response{};
        return send(client, echo_request(1), response, 60000);
    });
    wait_for_request();
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(result.get(), -2);
}

// ---- Services that come and go ----

TEST_P(QmiClient, FindsAServiceThatComesUpLate)
{
    use_modem("[modem]\nboot_ms = 150\n");
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    uint32_t services = 9;
    EXPECT_EQ(qmi_client_notifier_init(&extended, &wait_here, &notifier), 0);
    EXPECT_NE(qmi_client_get_service_list(&extended, nullptr, nullptr, &services), 0);
    EXPECT_EQ(services, 0u);
    EXPECT_EQ(qmi_cci_os_signal_wait(&wait_here, 10000), 1);
    EXPECT_EQ(qmi_client_get_service_list(&extended, nullptr, nullptr, &services), 0);
    EXPECT_EQ(services, 1u);
    EXPECT_EQ(qmi_cci_os_signal_wait(&wait_here, 1), 0) << "one change woke twice";
}

TEST_P(QmiClient, InitInstanceWaitsNoLongerThanAsked)
{
    use_modem();
    qmi_client_handle client = nullptr;
    EXPECT_EQ(qmi_client_init_instance(&extended, QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, nullptr, 4, &client), 0);
    EXPECT_NE(client, nullptr) << "a busy machine turned a present service into an absent one";
    client = nullptr;
    const auto start = steady_clock::now();
    EXPECT_EQ(qmi_client_init_instance(&nowhere, QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, nullptr, 40, &client), -3);
    EXPECT_GE(steady_clock::now() - start, milliseconds(40));
    EXPECT_EQ(client, nullptr);
    EXPECT_EQ(qmi_client_init_instance(&extended, 7, nullptr, nullptr, nullptr, 1, &client), -3);
}

TEST_P(QmiClient, TellsOfALostServiceOnceAndFindsItAgain)
{
    use_modem("[modem]\nrestart_ms = 50\n[[fault]]\nservice = \"extended\"\nnth = 1\naction = \"down\"\n");
    qmi_client_handle client = open();
    Told told;
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    qmi_client_notifier_init(&extended, &wait_here, &notifier);
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &told), 0);
    envelope response{};
    EXPECT_EQ(send(client, echo_request(1), response), -2);
    EXPECT_EQ(told.wait(1), std::vector<std::string>{"error -2"});

    uint32_t services = 0;
    while (qmi_client_get_service_list(&extended, nullptr, nullptr, &services) != 0)
        ASSERT_EQ(qmi_cci_os_signal_wait(&wait_here, 10000), 1);
    EXPECT_EQ(send(open(), echo_request(1), response), 0);

    // Registered when it has gone already: told all the same.
    Told told_late;
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &told_late), 0);
    EXPECT_EQ(told_late.wait(1), std::vector<std::string>{"error -2"});
    EXPECT_EQ(told.wait(1).size(), 1u) << "told twice";
}

TEST(QmiClientOverUnix, FindsAModemThatIsStartedAgain)
{
    const TempDir dir;
    std::optional<ModemProcess> modem(std::in_place, dir.path());
    ::setenv("RBK_MODEM", modem->address().c_str(), 1);
    qmi_client_handle client = nullptr;
    ASSERT_EQ(qmi_client_init_instance(&extended, QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, nullptr, 0, &client), 0);
    Told told;
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &told), 0);
    modem->end(SIGKILL);
    const envelope request = echo_request(1);
    envelope response{};
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, 10000), -2);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(told.wait(0), std::vector<std::string>{"error -2"});
    modem.emplace(dir.path());
    ASSERT_EQ(qmi_client_init_instance(&extended, QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, nullptr, 1000, &client),
              0);
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, 10000), 0);
}

// ---- Indications ----

constexpr char kIndication[] =
    "[[indication]]\nservice = \"extended\"\nmessage = 3\n"
    "bytes = \"01 04 00 06 00 00 00 02 04 00 02 00 00 00\"\nafter_ms = 5\n";

struct Listener {
    Told told;
    std::thread::id thread;
    std::function<std::string(qmi_client_handle, const void*, uint32_t)> act;
};

void on_indication(qmi_client_handle client, uint32_t msg_id, void* buffer, uint32_t buffer_len, void* data)
{
    auto& listener = *static_cast<Listener*>(data);
    listener.thread = std::this_thread::get_id();
    listener.told.add(std::to_string(msg_id) + ": " + listener.act(client, buffer, buffer_len));
}

TEST_P(QmiClient, HandsAnIndicationToEachClientOnAThreadOfItsOwn)
{
    use_modem(kIndication);
    Listener first;
    Listener second;
    first.act = second.act = [](qmi_client_handle client, const void* buffer, uint32_t length) {
        envelope decoded;
        const int32_t result =
            qmi_client_message_decode(client, INDICATION, 3, buffer, length, &decoded, sizeof decoded);
        return std::to_string(result) + " " + std::to_string(decoded.qmi_id);
    };
    qmi_client_handle client = open(on_indication, &first);
    open(on_indication, &second);
    envelope response{};
    ASSERT_EQ(send(client, echo_request(1), response), 0);
    EXPECT_EQ(first.told.wait(1), std::vector<std::string>{"3: 0 6"});
    EXPECT_EQ(second.told.wait(1), std::vector<std::string>{"3: 0 6"});
    EXPECT_NE(first.thread, std::this_thread::get_id());
}

// Twenty rows, each said a thousand times a second and in their order.
TEST_P(QmiClient, LosesNothingOfTwentyThousandIndicationsASecond)
{
    std::string scenario;
    for (int row = 0; row < 20; ++row)
        scenario += "[[indication]]\nservice = \"extended\"\nmessage = 3\nevery_ms = 1\nbytes = \"" +
                    hex({static_cast<std::uint8_t>(row)}) + " 00 00\"\n";
    use_modem(scenario);
    struct Flood {
        std::atomic<int> count = 0;
        std::atomic<int> out_of_order = 0;
        Told lost;
    };
    static Flood flood;
    const auto on_row = [](qmi_client_handle, uint32_t, void* buffer, uint32_t, void*) {
        if (*static_cast<std::uint8_t*>(buffer) != flood.count++ % 20) ++flood.out_of_order;
    };
    qmi_client_handle client = open(on_row);
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &flood.lost), 0);
    envelope response{};
    ASSERT_EQ(send(client, echo_request(1), response), 0);
    while (flood.count < 20000 && flood.lost.wait(0).empty()) std::this_thread::sleep_for(milliseconds(5));
    EXPECT_EQ(flood.lost.wait(0), std::vector<std::string>{}) << "after " << flood.count << ": the modem gave it up";
    EXPECT_EQ(flood.out_of_order, 0);
    EXPECT_EQ(send(client, echo_request(1), response), 0);
    qmi_client_release(client);
}

TEST_P(QmiClient, ALostServiceTakesNoIndicationBack)
{
    std::string scenario;
    for (const char* rule :
         {"nth = 1\naction = \"indicate\"\nindication = 3\nbytes = \"01 00 00\"",
          "nth = 2\naction = \"indicate\"\nindication = 3\nbytes = \"02 01 00 00\"", "nth = 3\naction = \"down\""})
        scenario += std::string("[[fault]]\nservice = \"extended\"\nmessage = 2\n") + rule + "\n";
    use_modem(scenario);
    std::promise<void> lost;
    Listener listener;
    listener.act = [has_lost = lost.get_future().share()](qmi_client_handle, const void*, uint32_t length) {
        has_lost.wait();
        return std::to_string(length);
    };
    qmi_client_handle client = open(on_indication, &listener);
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &listener.told), 0);
    envelope response{};
    EXPECT_EQ(send(client, echo_request(1), response), 0);
    EXPECT_EQ(send(client, echo_request(1), response), 0);
    EXPECT_EQ(send(client, echo_request(1), response), -2);
    lost.set_value();
    EXPECT_EQ(listener.told.wait(3), (std::vector<std::string>{"3: 3", "3: 4", "error -2"}));
}

// Two clients whose loss is still queued, behind a callback of a third one: released from outside, and from that callback.
TEST_P(QmiClient, ReleaseTellsALostServiceFirst)
{
    use_modem(
        "[[fault]]\nservice = \"extended\"\nnth = 1\naction = \"indicate\"\nindication = 3\nbytes = \"\"\n"
        "[[fault]]\nservice = \"extended\"\nnth = 2\naction = \"down\"\n");
    Told told;
    Told told_other;
    qmi_client_handle client = open();
    qmi_client_handle other = open();
    ASSERT_EQ(qmi_client_register_error_cb(client, tell_error, &told), 0);
    ASSERT_EQ(qmi_client_register_error_cb(other, tell_error, &told_other), 0);
    std::promise<void> entered;
    std::promise<void> goes_on;
    Listener busy;
    busy.act = [&](qmi_client_handle, const void*, uint32_t) {
        entered.set_value();
        goes_on.get_future().wait();
        return std::to_string(qmi_client_release(other));
    };
    open(on_indication, &busy);
    envelope response{};
    EXPECT_EQ(send(client, echo_request(1), response), 0);
    entered.get_future().wait();
    EXPECT_EQ(send(client, echo_request(1), response), -2);
    auto released = std::async(std::launch::async, [&] { return qmi_client_release(client); });
    EXPECT_EQ(released.wait_for(milliseconds(50)), std::future_status::timeout) << "and the loss hasn't been told";
    goes_on.set_value();
    EXPECT_EQ(released.get(), 0);
    EXPECT_EQ(told.wait(0), std::vector<std::string>{"error -2"});
    EXPECT_EQ(busy.told.wait(1), std::vector<std::string>{"3: 0"});
    EXPECT_TRUE(told_other.wait(0).empty()) << "called after its release";
}

TEST_P(QmiClient, ACallbackMayReleaseButNotSend)
{
    use_modem(kIndication);
    Listener listener;
    listener.act = [](qmi_client_handle client, const void*, uint32_t) {
        const envelope request = echo_request(1);
        envelope response{};
        const int32_t sent =
            qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, 1000);
        return std::to_string(sent) + " " + std::to_string(qmi_client_release(client));
    };
    qmi_client_handle client = open(on_indication, &listener);
    envelope response{};
    ASSERT_EQ(send(client, echo_request(1), response), 0);
    EXPECT_EQ(listener.told.wait(1), std::vector<std::string>{"3: -1 0"});
}

TEST_P(QmiClient, ReleaseWaitsForARunningCallbackWhichStillDecodes)
{
    use_modem(kIndication);
    std::promise<void> entered;
    std::atomic<int32_t> decoded = -7;
    Listener listener;
    listener.act = [&](qmi_client_handle client, const void* buffer, uint32_t length) {
        entered.set_value();
        std::this_thread::sleep_for(milliseconds(100));
        envelope structure;
        decoded = qmi_client_message_decode(client, INDICATION, 3, buffer, length, &structure, sizeof structure);
        return std::string();
    };
    qmi_client_handle client = open(on_indication, &listener);
    envelope response{};
    ASSERT_EQ(send(client, echo_request(1), response), 0);
    entered.get_future().wait();
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(decoded, 0);
}

struct Sized {
    std::size_t bytes = 0;
    std::size_t size() const { return bytes; }
};

TEST(CallbackQueue, IsBoundedButForWhatHasNoBytes)
{
    platform::CallbackQueue<Sized> queue;
    constexpr std::size_t most = queue.kMost;
    const auto push = [&](std::vector<std::size_t> sizes) {
        for (const std::size_t size : sizes) queue.push({size});
    };
    const auto pop_all = [&] {
        std::vector<std::size_t> sizes;
        while (!queue.empty()) sizes.push_back(queue.pop().bytes);
        return sizes;
    };
    push({most - 1, 2, 1, 1, 0});
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1, 0})) << "what has no room is lost, but no lost service";
    push({most - 1, 1});
    queue.erase_if([](const Sized& event) { return event.bytes == 1; });
    push({2, 1});
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1})) << "what was erased makes room, what stays doesn't";
}

// ---- The end of the process ----

// What a callback does while the process ends.
struct EndCase {
    const char* catches;
    void (*in_callback)();
};
std::atomic<bool> callback_entered;
std::atomic<bool> callback_may_run;  // when the process has ended
std::atomic<bool> library_has_ended;
steady_clock::time_point end_begun;
qmi_client_handle ended_client;

void list_services()
{
    uint32_t services = 0;
    qmi_client_get_service_list(&extended, nullptr, nullptr, &services);
}

const EndCase kEndCases[] = {
    {"CallbackLeftBehind",
     [] {
         callback_may_run = false;
         std::this_thread::sleep_for(milliseconds(50));
         callback_may_run = true;
     }},
    {"CallbackInACallWaitedFor",
     [] {
         for (;;) list_services();
     }},
    {"CallbackCannotEndTheProcess", [] { std::exit(0); }},
};

// In an exit handler that is older than the library's.
void check_ended_library()
{
    bool right = callback_may_run && steady_clock::now() - end_begun < milliseconds(900);
    library_has_ended = true;
    const envelope request = echo_request(1);
    envelope response{};
    right = right &&
            qmi_client_send_msg_sync(ended_client, 2, &request, sizeof request, &response, sizeof response, 60000) != 0;
    right = right && qmi_client_release(ended_client) == 0;
    std::this_thread::sleep_for(milliseconds(50));  // for whoever returns now
    if (!right) ::_exit(1);
}

// Of all threads but the one that ends the process no call returns: those that are under way then, and later ones.
TEST_P(QmiClient, TheEndOfTheProcessKeepsEveryOtherThread)
{
    trace_to_file();
    use_modem(std::string(kIndication) + kSilence);
    for (const EndCase& each : kEndCases) {
        SCOPED_TRACE(each.catches);
        std::filesystem::remove(trace_file());
        const auto end = [&] {
            std::atexit(check_ended_library);
            callback_may_run = true;
            static Listener listener;
            listener.act = [&](qmi_client_handle, const void*, uint32_t) {
                callback_entered = true;
                end_begun = steady_clock::now();
                each.in_callback();
                return std::string();
            };
            ended_client = open(on_indication, &listener);
            std::thread([] {
                while (!library_has_ended) std::this_thread::sleep_for(milliseconds(1));
                list_services();
                ::_exit(2);
            }).detach();
            std::thread([] {
                envelope response{};
                send(ended_client, echo_request(1), response, 60000);
                ::_exit(3);
            }).detach();
            while (!callback_entered) std::this_thread::sleep_for(milliseconds(1));
            if (each.in_callback == kEndCases[2].in_callback) {
                envelope response{};
                send(ended_client, echo_request(1), response, 60000);
                ::_exit(4);
            }
            end_begun = steady_clock::now();
            std::exit(0);
        };
        EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
    }
}

// ---- Trace ----

TEST_P(QmiClient, TracesWhatWentOverItsLinkInOrder)
{
    trace_to_file();
    use_modem(kIndication);
    Listener listener;
    listener.act = [](qmi_client_handle, const void*, uint32_t) { return std::string(); };
    qmi_client_handle client = open(on_indication, &listener);
    envelope response{};
    ASSERT_EQ(send(client, echo_request(0xA1), response), 0);
    listener.told.wait(1);

    const std::vector<std::string> lines = lines_of(read_file(trace_file()));
    ASSERT_EQ(lines.size(), 3u);
    const std::string zeros(2 * 546, '0');
    const std::string heads[] = {
        " > svc=0xFFE4 req txn=1 msg=0x0002 len=567 010400030000000204000400000010"
        "2602A1020304" +
            zeros,
        " < svc=0xFFE4 rsp txn=1 msg=0x0002 len=567 010400000000000204000400000010"
        "2602A1020304" +
            zeros,
        " < svc=0xFFE4 ind txn=0 msg=0x0003 len=14 0104000600000002040002000000",
    };
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(lines[i].substr(lines[i].find(' ')), heads[i]);
}

}  // namespace
}  // namespace rbk::test

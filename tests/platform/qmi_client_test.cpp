// The QMI client library: against the simulated modem, and against a peer that says what no modem would.
// The kernel's QRTR sockets are stood in for.
#include "qmi_client.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <functional>
#include <thread>

#include "platform/fake_peer.h"
#include "platform/linux/callback_queue.h"
#include "support/embedded_run.h"
#include "support/modem_process.h"
#include "support/test_clock.h"

namespace rbk::test {

extern std::atomic<int> allocations;  // counted_new.cpp

namespace {

using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

// ---- The extended service, as far as it is needed here: the modem gives the data of request id 3 back ----

struct envelope {
    uint32_t qmi_id;
    uint32_t data_len;
    uint8_t data_valid;
    uint8_t data[550];
};
constexpr idl_field envelope_fields[] = {IDL_WORD(0x01, envelope, qmi_id), IDL_WORD(0x02, envelope, data_len),
                                         IDL_OPT_BYTES(0x10, envelope, data)};
constexpr idl_message message(std::uint16_t id, qmi_idl_type_of_message kind)
{
    return idl_make<envelope>(id, kind, envelope_fields, 567, 560);
}
constexpr idl_message messages[] = {message(2, REQUEST), message(2, RESPONSE), message(3, INDICATION)};
constexpr qmi_idl_service_object extended = idl_service(0xFFE4, 1, 1, messages, 567);
constexpr qmi_idl_service_object other_service = idl_service(0xFFF0, 1, 1, messages, 567);
constexpr std::size_t kFirstOfData = link::kQmiHeadSize + 7 + 7 + 3;  // in an envelope's datagram

int32_t send(qmi_client_handle client, std::uint8_t first, envelope& response, uint32_t timeout_ms = 10000)
{
    const envelope request{3, 4, 1, {first, 2, 3, 4}};
    return qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, timeout_ms);
}
int32_t send(qmi_client_handle client, uint32_t timeout_ms = 10000)
{
    envelope response;
    return send(client, 1, response, timeout_ms);
}

int32_t count_services(const qmi_idl_service_object& service = extended)
{
    uint32_t services = 0;
    const int32_t result = qmi_client_get_service_list(&service, nullptr, nullptr, &services);
    return result == 0 ? static_cast<int32_t>(services) : result;
}

// What its clients' callbacks have said, and what their indications set off.
struct Listener {
    ~Listener()
    {
        for (qmi_client_handle client : clients) qmi_client_release(client);
    }
    std::vector<qmi_client_handle> clients;
    Told told;
    std::thread::id thread;
    std::function<std::string(qmi_client_handle, const void*, uint32_t)> act =
        [](qmi_client_handle, const void*, uint32_t length) { return std::to_string(length); };
};

qmi_client_handle open(Listener* listener = nullptr, uint32_t instance = QMI_CLIENT_INSTANCE_ANY,
                       const qmi_idl_service_object& service = extended)
{
    const auto on_indication = [](qmi_client_handle client, uint32_t msg_id, void* buffer, uint32_t size, void* data) {
        auto& to = *static_cast<Listener*>(data);
        to.thread = std::this_thread::get_id();
        to.told.add(std::to_string(msg_id) + ": " + to.act(client, buffer, size));
    };
    const auto on_error = [](qmi_client_handle, int32_t error, void* data) {
        static_cast<Listener*>(data)->told.add("error " + std::to_string(error));
    };
    qmi_client_handle client = nullptr;
    EXPECT_EQ(qmi_client_init_instance(&service, instance, listener != nullptr ? +on_indication : nullptr, listener,
                                       nullptr, 0, &client),
              0);
    if (listener != nullptr) {
        listener->clients.push_back(client);
        EXPECT_EQ(qmi_client_register_error_cb(client, on_error, listener), 0);
    }
    return client;
}

// ---- Against the modem ----

constexpr char kIndication[] =
    "[[indication]]\nservice = 'extended'\nmessage = 3\nbytes = '01 04 00 06 00 00 00 02 04 00 02 00 00 00'\n";

class QmiClient : public EmbeddedRun {};

TEST_F(QmiClient, AllocatesNothingOnTheSendPathAfterTheFirst)
{
    unsetenv("RBK_TRACE");
    const ModemProcess modem(home());
    setenv("RBK_MODEM", modem.address().c_str(), 1);
    qmi_client_handle client = open();
    ASSERT_EQ(send(client), 0);
    const int before = allocations;
    for (int i = 0; i < 100; ++i) ASSERT_EQ(send(client), 0);
    EXPECT_EQ(allocations - before, 0);
}

// What depends on the carrier.
class QmiClientOver : public QmiClient, public testing::WithParamInterface<const char*> {
 protected:
    // The modem that the scenario describes.
    void use_modem(const std::string& text)
    {
        scenario(text);
        if (GetParam() == std::string("embedded")) return;
        process_.emplace(home(), Lines{"--scenario", getenv("RBK_SCENARIO")});
        unsetenv("RBK_SCENARIO");
        setenv("RBK_MODEM", "qrtr", 1);
        setenv("RBK_TEST_QRTR", process_->address().substr(sizeof "unix:" - 1).c_str(), 1);
    }
    std::optional<ModemProcess> process_;
};
INSTANTIATE_TEST_SUITE_P(Carrier, QmiClientOver, testing::Values("embedded", "qrtr"),
                         [](const auto& carrier) { return std::string(carrier.param); });

TEST_P(QmiClientOver, AnswersIndicationsAndALostServiceReachTheirClients)
{
    const std::string rules = "[modem]\nrestart_ms = 20\n[[fault]]\nservice = 'extended'\nnth = 2\naction = 'down'\n";
    use_modem(rules + kIndication);
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    EXPECT_EQ(qmi_client_notifier_init(&extended, &wait_here, &notifier), 0);
    Listener listener;
    listener.act = [](qmi_client_handle client, const void* bytes, uint32_t size) {
        envelope decoded{};
        EXPECT_EQ(qmi_client_message_decode(client, INDICATION, 3, bytes, size, &decoded, sizeof decoded), 0);
        return std::to_string(decoded.qmi_id);
    };
    qmi_client_handle client = open(&listener);
    envelope response{};
    EXPECT_EQ(send(client, 0xA1, response), 0);
    EXPECT_EQ(response.data[0], 0xA1);
    EXPECT_EQ(listener.told.wait(1), Lines{"3: 6"});
    EXPECT_NE(listener.thread, std::this_thread::get_id());
    EXPECT_EQ(trace().at(1).head, "svc=0xFFE4 rsp txn=1 msg=0x0002 len=567");

    EXPECT_EQ(send(client), -2);
    EXPECT_EQ(listener.told.wait(2), (Lines{"3: 6", "error -2"}));
    while (count_services() != 1) ASSERT_EQ(qmi_cci_os_signal_wait(&wait_here, 10000), 1);
    EXPECT_EQ(send(open()), 0);
    EXPECT_EQ(send(client), -2) << "a client came back to life with its service";
    Told late;
    const auto on_error = [](qmi_client_handle, int32_t, void* told) { static_cast<Told*>(told)->add("late"); };
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &late), 0);
    EXPECT_EQ(late.wait(1).size(), 1u) << "registered when it had gone already";
    EXPECT_EQ(listener.told.wait(0).size(), 2u) << "told twice";
}

TEST_F(QmiClient, GivesEachOfManyCallersItsOwnAnswer)
{
    qmi_client_handle client = open();
    std::vector<std::thread> callers;
    std::atomic<int> wrong = 0;
    for (int caller = 0; caller < 8; ++caller)
        callers.emplace_back([&, caller] {
            for (int i = 0; i < 100; ++i) {
                const auto first = static_cast<std::uint8_t>(caller * 16 + i % 16);
                envelope response{};
                if (send(client, first, response) != 0 || response.data[0] != first || response.data[3] != 4) ++wrong;
            }
        });
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(QmiClient, FindsAModemThatIsStartedAgain)
{
    std::optional<ModemProcess> modem(home());
    setenv("RBK_MODEM", modem->address().c_str(), 1);
    Listener listener;
    qmi_client_handle client = open(&listener);
    modem->end(SIGKILL);
    EXPECT_EQ(send(client), -2);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(listener.told.wait(0), Lines{"error -2"});
    modem.emplace(home());
    EXPECT_EQ(send(open()), 0);
}

// Twenty rows, each said a thousand times a second and in their order, while nobody asks: a caller would read them.
TEST_F(QmiClient, LosesNothingOfTwentyThousandIndicationsASecond)
{
    unsetenv("RBK_TRACE");
    std::string rows;
    for (std::uint8_t row = 0; row < 20; ++row)
        rows += "[[indication]]\nservice = 'extended'\nmessage = 3\nevery_ms = 1\nbytes = '" + hex({row}) + " 00 00'\n";
    scenario(rows);
    std::atomic<int> count = 0, out_of_order = 0;
    Listener flood;
    flood.act = [&](qmi_client_handle, const void* bytes, uint32_t) {
        if (*static_cast<const std::uint8_t*>(bytes) != count++ % 20) ++out_of_order;
        return "";
    };
    EXPECT_EQ(send(open(&flood)), 0);
    EXPECT_TRUE(wait_until([&] { return count >= 20000; })) << count;
    EXPECT_EQ(out_of_order, 0);
}

// ---- Against a peer that says anything ----

constexpr link::Address kServer{1, 7};
constexpr link::Address kSecondServer{1, 8};  // of the same service
constexpr link::Address kOtherServer{1, 9};   // of another one
constexpr link::Address kStranger{1, 10};
constexpr link::ControlPacket kServerRow{QRTR_TYPE_NEW_SERVER, 0xFFE4, 0x101, kServer};
constexpr link::ControlPacket kSecondRow{QRTR_TYPE_NEW_SERVER, 0xFFE4, 0x201, kSecondServer};
constexpr link::ControlPacket kOtherRow{QRTR_TYPE_NEW_SERVER, 0xFFF0, 0x101, kOtherServer};
constexpr link::ControlPacket kServerLost{QRTR_TYPE_DEL_SERVER, 0xFFE4, 0x101, kServer};

class QmiPeer : public PeerTest {
 protected:
    // The router has told of all servers.
    void start()
    {
        auto extended_listed = begin([] { return count_services(); });
        peer_.tell_servers({kServerRow, kSecondRow});
        EXPECT_EQ(extended_listed.get(), 2);
        auto other_listed = begin([] { return count_services(other_service); });
        peer_.tell_servers({kOtherRow});
        EXPECT_EQ(other_listed.get(), 1);
    }
    void answer(Bytes request)
    {
        request.at(0) = 2;
        peer_.say(kServer, request);
    }
    void indicate(link::Address from, std::uint8_t length)
    {
        Bytes bytes{4, 0, 0, 3, 0, length, 0};
        bytes.resize(bytes.size() + length);
        peer_.say(from, bytes);
    }
};

// A message that comes before the answer.
struct Stray {
    const char* catches;
    link::Address from = kServer;
    std::uint8_t kind = 2, transaction = 0, message = 2;  // the transaction: above the request's
    std::size_t told = 567, sent = 567;                   // bytes of TLVs, by its head and in fact
    std::int32_t result = 0;                              // of the request
    std::uint8_t data = 0x11;                             // in its answer: 0x11 of the true one, 0x66 of this
};
constexpr std::size_t kMost = link::kLongestTlvs;
const Stray kStrays[] = {
    {.catches = "AnswerOfAnotherServerTaken", .from = kSecondServer},
    {.catches = "AnswerOfAStrangerTaken", .from = kStranger},
    {.catches = "AnswerOfAnotherTransactionTaken", .transaction = 1},
    {.catches = "AnswerOfAnotherMessageTaken", .message = 3, .result = -1, .data = 0},
    {.catches = "RequestTaken", .kind = 0},
    {.catches = "UnknownKindTaken", .kind = 1},
    {.catches = "IndicationTaken", .kind = 4},
    {.catches = "TailTaken", .sent = 568},
    {.catches = "CutMessageTaken", .told = 568},
    {.catches = "CutTlvTaken", .told = 566, .sent = 566, .result = -1, .data = 0},
    {.catches = "MissingTlvTaken", .told = 7, .sent = 7, .result = -1, .data = 0},
    {.catches = "LongestRefused", .told = kMost, .sent = kMost, .data = 0x66},
    {.catches = "LongerThanAnyTaken", .told = kMost + 100, .sent = kMost + 100},
    {.catches = "CutDatagramTaken", .told = kMost, .sent = kMost + 100},
    {.catches = "CutDatagramWithoutAddressTaken", .told = kMost + link::kAddressSize, .sent = kMost + 100},
};

class QmiPeerOver : public QmiPeer, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Carrier, QmiPeerOver, testing::Values("unix", "qrtr"),
                         [](const auto& carrier) { return std::string(carrier.param); });

TEST_P(QmiPeerOver, NothingButItsAnswerEndsARequest)
{
    if (GetParam() == std::string("qrtr")) setenv("RBK_MODEM", "qrtr", 1);
    setenv("RBK_TEST_QRTR", (home() / "peer").c_str(), 1);
    setenv("RBK_QMI_TIMEOUT_SCALE", "1e300", 1);
    start();
    qmi_client_handle client = open();
    for (const Stray& stray : kStrays) {
        SCOPED_TRACE(stray.catches);
        envelope response{};
        auto sent = begin([&] { return send(client, 0x11, response); });
        EXPECT_EQ(sent.wait_for(milliseconds(2)), std::future_status::timeout) << "a large scale made a short wait";
        Bytes bytes = heard_;
        bytes.at(0) = stray.kind;
        bytes.at(1) = static_cast<std::uint8_t>(bytes[1] + stray.transaction);
        bytes.at(3) = stray.message;
        bytes.at(kFirstOfData) = 0x66;
        store_le(&bytes[5], static_cast<std::uint16_t>(stray.told));
        if (stray.told >= 570) {  // a TLV that nobody knows fills the message
            bytes.insert(bytes.end(), {0x77, 0, 0});
            store_le(&bytes[bytes.size() - 2], static_cast<std::uint16_t>(stray.told - 570));
        }
        bytes.resize(link::kQmiHeadSize + stray.sent);
        peer_.say(stray.from, bytes);
        answer(heard_);
        EXPECT_EQ(sent.get(), stray.result);
        EXPECT_EQ(response.data[0], stray.data);
    }
}

// What stands in the buffer behind seven bytes is an earlier datagram's, and makes of them the loss of the server.
TEST_F(QmiPeer, ADatagramShorterThanItsAddressIsDropped)
{
    start();
    auto sent = begin([client = open()] { return send(client); });
    peer_.say({0, 0xFF000000}, link::pack_control(kServerLost));
    peer_.say_raw(Bytes{0, 0, 0, 0, 0xFE, 0xFF, 0xFF});
    answer(heard_);
    EXPECT_EQ(sent.get(), 0);
}

TEST_F(QmiPeer, ServersAreListedOnceAndWithinTheTable)
{
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    EXPECT_EQ(qmi_client_notifier_init(&extended, &wait_here, &notifier), 0);
    auto listed = begin([] { return count_services(); });
    peer_.tell_servers({kOtherRow});
    EXPECT_EQ(listed.get(), -2);
    auto waited = std::async(std::launch::async, [&] { return qmi_cci_os_signal_wait(&wait_here, 10000); });
    EXPECT_TRUE(still_waits(waited)) << "woken by another service";
    peer_.tell(kServerRow);
    EXPECT_EQ(waited.get(), 1);
    EXPECT_EQ(qmi_cci_os_signal_wait(&wait_here, 1), 0) << "one change woke twice";
    peer_.tell(kServerRow);
    peer_.tell(kSecondRow);
    qmi_service_info table[3] = {};
    uint32_t services = 0;
    const auto is_second_told = [&] {
        uint32_t entries = 3;
        qmi_client_get_service_list(&extended, table, &entries, &services);
        return std::ranges::count(table, kSecondServer.port, &qmi_service_info::port) != 0;
    };
    ASSERT_TRUE(wait_until(is_second_told));

    std::ranges::fill(table, qmi_service_info{});
    uint32_t entries = 1;
    EXPECT_EQ(qmi_client_get_service_list(&extended, table, &entries, &services), 0);
    EXPECT_EQ(entries, 1u);
    EXPECT_EQ(services, 2u) << "a server told twice is one";
    EXPECT_EQ(table[0].port, kServer.port);
    EXPECT_EQ(table[1].port, 0u) << "written past the caller's table";
    EXPECT_EQ(qmi_client_get_service_list(&extended, table, nullptr, &services), -1);
}

// A router that never ends its answer: the wait is bounded, nobody else waits again, and a late end is taken.
TEST_F(QmiPeer, ALookupThatNeverEndsIsGivenUp)
{
    auto listed = begin([] { return count_services(); });
    peer_.tell(kServerRow);
    pass_time(listed, std::chrono::seconds(5));
    EXPECT_EQ(listed.get(), -4);
    EXPECT_EQ(count_services(), -4);
    peer_.tell_servers({});
    auto again = begin([] {
        while (count_services() == -4) std::this_thread::yield();  // until the late end is read
        return count_services();
    });
    peer_.tell_servers({kSecondRow});
    EXPECT_EQ(again.get(), 2);
}

// The end of an answer doesn't name its service.
TEST_F(QmiPeer, LookupsGoOneAtATime)
{
    auto first = begin([] { return count_services(); });
    auto second = std::async(std::launch::async, [] { return count_services(other_service); });
    EXPECT_FALSE(peer_.hears(50));
    peer_.tell_servers({kServerRow});
    EXPECT_EQ(first.get(), 1);
    EXPECT_EQ(peer_.hear().at(4), 0xF0);
    peer_.tell_servers({kOtherRow});
    EXPECT_EQ(second.get(), 1);
}

// Request 1 stays in flight while 65,534 others run out of their time, most of them on a full link.
TEST_F(QmiPeer, AFullLinkIsNoLostModemAndNoNumberIsUsedTwice)
{
    setenv("RBK_QMI_TIMEOUT_SCALE", "1e-9", 1);  // no time at all, but for those that wait for ever
    start();
    qmi_client_handle client = open();
    auto first = begin([&] { return send(client, 0); });
    int other_results = 0;
    for (int i = 2; i <= 0xFFFF; ++i) other_results += static_cast<int>(send(client, 1) != -3);
    EXPECT_EQ(other_results, 0);
    auto last = std::async(std::launch::async, [&] { return send(client, 0); });
    const auto number_of = [](const Bytes& request) { return load_le<std::uint16_t>(&request.at(1)); };
    Bytes latest = peer_.hear();
    int queued = 0;
    for (; number_of(latest) == queued + 2; ++queued) latest = peer_.hear();
    EXPECT_GT(queued, 20) << "the link never had room";
    EXPECT_LT(queued, 60000) << "the link was never full";
    EXPECT_EQ(number_of(latest), 2) << "neither 0 nor that of the first";
    answer(latest);
    EXPECT_EQ(last.get(), 0);
    answer(heard_);
    EXPECT_EQ(first.get(), 0);
}

TEST_F(QmiPeer, ASignalEndsNoWait)
{
    start();
    std::signal(SIGUSR1, [](int) {});
    std::atomic<pthread_t> waiting{};
    auto sent = begin([&, client = open()] {
        waiting = ::pthread_self();
        return send(client);
    });
    for (int i = 0; i < 20; ++i) {
        ::pthread_kill(waiting, SIGUSR1);
        std::this_thread::sleep_for(milliseconds(1));
    }
    answer(heard_);
    EXPECT_EQ(sent.get(), 0);
}

TEST_F(QmiPeer, ARequestWaitsForItsTimeOutOnTheScaleOfTheRun)
{
    setenv("RBK_QMI_TIMEOUT_SCALE", "2", 1);
    start();
    auto sent = begin([client = open()] { return send(client, 30000); });
    pass_time(sent, std::chrono::seconds(60));
    EXPECT_EQ(sent.get(), -3);
}

TEST_F(QmiPeer, IndicationsGoToTheClientsOfTheirServer)
{
    start();
    Listener first, second, other;
    open(&first, 1);
    open(&first, 1);
    open(&second, 2);
    open(&other, 1, other_service);
    indicate(kServer, 1);
    indicate(kStranger, 2);
    indicate(kSecondServer, 3);
    indicate(kOtherServer, 4);
    EXPECT_EQ(other.told.wait(1), Lines{"3: 4"});
    EXPECT_EQ(second.told.wait(0), Lines{"3: 3"});
    EXPECT_EQ(first.told.wait(0), (Lines{"3: 1", "3: 1"}));
}

// While a callback runs an indication and the loss of the service come. Another client is released from outside, and a
// third one from the callback.
TEST_F(QmiPeer, ALostServiceIsToldToEachClientInItsTurn)
{
    start();
    Listener busy, outside, inside;
    std::promise<void> entered, goes_on;
    qmi_client_handle busy_client = open(&busy, 1);
    qmi_client_handle client = open(&outside, 1);
    qmi_client_handle client_inside = open(&inside, 1);
    busy.act = [&](qmi_client_handle, const void*, uint32_t length) {
        if (length != 1) return std::to_string(length);
        entered.set_value();
        goes_on.get_future().wait();
        return "released " + std::to_string(qmi_client_release(client_inside));
    };
    indicate(kServer, 1);
    entered.get_future().wait();
    indicate(kServer, 2);
    peer_.tell(kServerLost);
    EXPECT_EQ(send(busy_client), -2) << "and with that all clients know of it";
    auto released = std::async(std::launch::async, [&] { return qmi_client_release(client); });
    EXPECT_TRUE(still_waits(released)) << "and the loss hasn't been told";
    goes_on.set_value();
    EXPECT_EQ(released.get(), 0);
    EXPECT_EQ(outside.told.wait(0), Lines{"error -2"}) << "its indications are dropped, its loss is told";
    EXPECT_EQ(busy.told.wait(3), (Lines{"3: released 0", "3: 2", "error -2"})) << "a lost service takes nothing back";
    EXPECT_EQ(inside.told.wait(0), Lines{}) << "called after its release";
}

TEST_F(QmiPeer, ReleaseEndsWhatIsUnderWay)
{
    start();
    std::promise<void> entered, goes_on;
    Listener listener;
    listener.act = [&](qmi_client_handle client, const void* bytes, uint32_t size) {
        const int32_t sent = send(client);
        entered.set_value();
        goes_on.get_future().wait();
        envelope decoded;
        const int32_t result = qmi_client_message_decode(client, INDICATION, 3, bytes, size, &decoded, sizeof decoded);
        return std::to_string(sent) + " " + std::to_string(result) + " " + std::to_string(qmi_client_release(client));
    };
    qmi_client_handle client = open(&listener);
    auto sent = begin([&] { return send(client, 0); });
    peer_.say(kServer, Bytes{4, 0, 0, 3, 0, 14, 0, 1, 4, 0, 6, 0, 0, 0, 2, 4, 0, 0, 0, 0, 0});
    entered.get_future().wait();
    auto released = std::async(std::launch::async, [&] { return qmi_client_release(client); });
    EXPECT_EQ(sent.get(), -2);
    EXPECT_TRUE(still_waits(released)) << "the callback runs";
    goes_on.set_value();
    EXPECT_EQ(released.get(), 0);
    EXPECT_EQ(listener.told.wait(1), Lines{"3: -1 0 -1"}) << "no send from a callback; decodes, though released";
}

TEST_F(QmiPeer, RefusesWhatCannotBeSent)
{
    start();
    qmi_client_handle client = open();
    envelope room{};
    const auto send_sized = [&](uint32_t message, uint32_t request_size, uint32_t response_size) {
        return qmi_client_send_msg_sync(client, message, &room, request_size, &room, response_size, 100);
    };
    EXPECT_EQ(send_sized(9, sizeof room, sizeof room), -1);
    EXPECT_EQ(send_sized(2, 4, sizeof room), -1);
    EXPECT_EQ(send_sized(2, sizeof room, 4), -1);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(qmi_client_release(client), -1);
    EXPECT_EQ(send(client), -1) << "a released handle was followed";
    EXPECT_EQ(qmi_client_message_decode(client, INDICATION, 3, nullptr, 0, &room, sizeof room), -1);
    qmi_service_info server{};
    EXPECT_EQ(qmi_client_init(&server, &extended, nullptr, nullptr, nullptr, &client), -2);
    uint32_t room_for = 1, services = 0;
    EXPECT_EQ(qmi_client_get_service_list(&extended, &server, &room_for, &services), 0);
    EXPECT_EQ(qmi_client_init(&server, &other_service, nullptr, nullptr, nullptr, &client), -2) << "of another service";
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(qmi_client_init_instance(&extended, 7, nullptr, nullptr, nullptr, 40, &client), -3);
    EXPECT_GE(std::chrono::steady_clock::now() - begun, milliseconds(40));
    EXPECT_FALSE(peer_.hears(0));
}

TEST(CallbackQueue, IsBoundedButForWhatHasNoBytes)
{
    platform::CallbackQueue<Bytes> queue;
    constexpr std::size_t most = queue.kMost;
    const auto pop_all = [&] {
        std::vector<std::size_t> sizes;
        while (!queue.empty()) sizes.push_back(queue.pop().size());
        return sizes;
    };
    for (const std::size_t size : {most - 1, 2UL, 1UL, 1UL, 0UL}) queue.push(Bytes(size));
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1, 0})) << "what has no room is lost, but no lost service";
    for (const std::size_t size : {most - 1, 1UL}) queue.push(Bytes(size));
    queue.erase_if([](const Bytes& event) { return event.size() == 1; });
    for (const std::size_t size : {2UL, 1UL}) queue.push(Bytes(size));
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1})) << "what was erased makes room, what stays doesn't";
}

// ---- The end of the process ----

std::atomic<bool> callback_entered, callback_may_run;  // the latter: when the process has ended
std::atomic<bool> library_has_ended;
qmi_client_handle ended_client;

// What a callback does while the process ends.
const struct EndCase {
    const char* catches;
    void (*in_callback)();
    bool ends_the_process = false;
} kEndCases[] = {
    {"CallbackLeftBehind",
     [] {
         callback_may_run = false;
         std::this_thread::sleep_for(milliseconds(50));
         callback_may_run = true;
     }},
    {"CallbackInACallWaitedFor",
     [] {
         test_clock::stop();  // the wait would last for ever
         for (;;) count_services();
     }},
    {"CallbackCannotEndTheProcess", [] { std::exit(0); }, true},
};

// In an exit handler that is older than the library's.
void check_ended_library()
{
    library_has_ended = true;
    const bool right = callback_may_run && send(ended_client, 60000) != 0 && qmi_client_release(ended_client) == 0;
    std::this_thread::sleep_for(milliseconds(50));  // for whoever returns now
    if (!right) ::_exit(1);
}

void end_process(const EndCase& each)
{
    ::alarm(30);
    std::atexit(check_ended_library);
    callback_may_run = true;
    static Listener& listener = *new Listener;
    listener.act = [&each](qmi_client_handle, const void*, uint32_t) {
        callback_entered = true;
        each.in_callback();
        return "";
    };
    ended_client = open(&listener);
    std::thread([] {
        while (!library_has_ended) std::this_thread::sleep_for(milliseconds(1));
        count_services();
        ::_exit(2);
    }).detach();
    std::thread([] {
        send(ended_client, 60000);
        ::_exit(3);
    }).detach();
    while (!callback_entered) std::this_thread::sleep_for(milliseconds(1));
    while (each.ends_the_process) ::pause();
    std::exit(0);
}

// Of all threads but the one that ends the process no call returns: those that are under way then, and later ones.
TEST_P(QmiClientOver, TheEndOfTheProcessKeepsEveryOtherThread)
{
    use_modem(std::string(kIndication) + "[[fault]]\nservice = 'extended'\naction = 'silent'\n");
    for (const EndCase& each : kEndCases)
        EXPECT_EXIT(end_process(each), testing::ExitedWithCode(0), "") << each.catches;
}

}  // namespace
}  // namespace rbk::test

// The QMI client library: against the simulated modem over each carrier, and against a peer that says what no modem would.
// The kernel's QRTR sockets are stood in for.
#include "qmi_client.h"

#include <unistd.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <future>
#include <optional>
#include <thread>

#include "platform/fake_peer.h"
#include "platform/linux/callback_queue.h"
#include "support/embedded_run.h"
#include "support/modem_process.h"
#include "support/test_clock.h"
#include "support/told.h"

namespace rbk::test {

extern std::atomic<int> allocations;  // counted_new.cpp

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
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
constexpr idl_message messages[] = {idl_make<envelope>(2, REQUEST, envelope_fields, 567, 560),
                                    idl_make<envelope>(2, RESPONSE, envelope_fields, 567, 560),
                                    idl_make<envelope>(3, INDICATION, envelope_fields, 567, 560)};
constexpr idl_message indicated_messages[] = {messages[0], messages[1],
                                              idl_make<envelope>(2, INDICATION, envelope_fields, 567, 560)};
constexpr qmi_idl_service_object extended = idl_service(0xFFE4, 1, 1, messages, 567);
constexpr qmi_idl_service_object indicated = idl_service(0xFFE4, 1, 1, indicated_messages, 567);
constexpr qmi_idl_service_object other_service = idl_service(0xFFF0, 1, 1, messages, 567);
constexpr std::size_t kFirstOfData = link::kQmiHeadSize + 7 + 7 + 3;  // in an envelope's datagram

envelope echo_request(std::uint8_t first)
{
    return {3, 4, 1, {first, 2, 3, 4}};
}

int32_t send(qmi_client_handle client, const envelope& request, envelope& response, uint32_t timeout_ms = 10000)
{
    return qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, sizeof response, timeout_ms);
}

int32_t send(qmi_client_handle client, uint32_t timeout_ms = 10000)
{
    envelope response{};
    return send(client, echo_request(1), response, timeout_ms);
}

int32_t count_services(const qmi_idl_service_object& service = extended)
{
    uint32_t services = 0;
    const int32_t result = qmi_client_get_service_list(&service, nullptr, nullptr, &services);
    return result == 0 ? static_cast<int32_t>(services) : result;
}

template <typename Call>
auto on_a_thread(Call call)
{
    return std::async(std::launch::async, call);
}

// What callbacks do, and what is written down of them.
struct Listener {
    Told told;
    std::thread::id thread;
    std::function<std::string(qmi_client_handle, const void*, uint32_t)> act =
        [](qmi_client_handle, const void*, uint32_t length) { return std::to_string(length); };
};

void on_indication(qmi_client_handle client, uint32_t msg_id, void* buffer, uint32_t buffer_len, void* data)
{
    auto& listener = *static_cast<Listener*>(data);
    listener.thread = std::this_thread::get_id();
    listener.told.add(std::to_string(msg_id) + ": " + listener.act(client, buffer, buffer_len));
}

void on_error(qmi_client_handle, int32_t error, void* told)
{
    static_cast<Told*>(told)->add("error " + std::to_string(error));
}

// ---- Against the modem ----

constexpr char kIndication[] =
    "[[indication]]\nservice = 'extended'\nmessage = 3\nbytes = '01 04 00 06 00 00 00 02 04 00 02 00 00 00'\n";

class QmiClient : public EmbeddedRun {
 protected:
    // The modem that the scenario describes, reached over a carrier.
    void use_modem(const std::string& text, const std::string& carrier = "embedded")
    {
        scenario(text);
        if (carrier == "embedded") return;
        process_.emplace(home(), Lines{"--scenario", getenv("RBK_SCENARIO")});
        unsetenv("RBK_SCENARIO");
        setenv("RBK_MODEM", carrier == "unix" ? process_->address().c_str() : "qrtr", 1);
        setenv("RBK_TEST_QRTR", process_->address().substr(sizeof "unix:" - 1).c_str(), 1);
    }
    static qmi_client_handle open(Listener* listener = nullptr)
    {
        qmi_service_info info{};
        uint32_t entries = 1;
        uint32_t services = 0;
        EXPECT_EQ(qmi_client_get_service_list(&extended, &info, &entries, &services), 0);
        qmi_client_handle client = nullptr;
        EXPECT_EQ(qmi_client_init(&info, &extended, listener != nullptr ? on_indication : nullptr, listener, nullptr,
                                  &client),
                  0);
        return client;
    }
    std::optional<ModemProcess> process_;
};

class QmiOverEach : public QmiClient, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Carrier, QmiOverEach, testing::Values("embedded", "unix", "qrtr"),
                         [](const auto& carrier) { return std::string(carrier.param); });

TEST_P(QmiOverEach, AnswersIndicationsAndALostServiceReachTheirClients)
{
    const std::string rules = "[modem]\nrestart_ms = 20\n[[fault]]\nservice = 'extended'\nnth = 2\naction = 'down'\n";
    use_modem(rules + kIndication, GetParam());
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    EXPECT_EQ(qmi_client_notifier_init(&extended, &wait_here, &notifier), 0);
    Listener listener;
    listener.act = [](qmi_client_handle client, const void* buffer, uint32_t length) {
        envelope decoded{};
        const int32_t result =
            qmi_client_message_decode(client, INDICATION, 3, buffer, length, &decoded, sizeof decoded);
        return std::to_string(result) + " " + std::to_string(decoded.qmi_id);
    };
    qmi_client_handle client = open(&listener);
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &listener.told), 0);
    envelope response{};
    EXPECT_EQ(send(client, echo_request(0xA1), response), 0);
    EXPECT_EQ(response.data[0], 0xA1);
    EXPECT_EQ(listener.told.wait(1), Lines{"3: 0 6"});
    EXPECT_NE(listener.thread, std::this_thread::get_id());

    const std::string echoed =
        "010400030000000204000400000010"
        "2602A1020304" +
        std::string(2 * 546, '0');
    const std::vector<Traced> traced = trace();
    ASSERT_EQ(traced.size(), 3u);
    EXPECT_TRUE(traced[0].to_modem && !traced[1].to_modem && !traced[2].to_modem);
    EXPECT_EQ(traced[0].head + " " + traced[0].bytes, "svc=0xFFE4 req txn=1 msg=0x0002 len=567 " + echoed);
    EXPECT_EQ(traced[1].head, "svc=0xFFE4 rsp txn=1 msg=0x0002 len=567");
    EXPECT_EQ(traced[2].head + " " + traced[2].bytes,
              "svc=0xFFE4 ind txn=0 msg=0x0003 len=14 0104000600000002040002000000");

    EXPECT_EQ(send(client), -2);
    EXPECT_EQ(listener.told.wait(2).back(), "error -2");
    while (count_services() != 1) ASSERT_EQ(qmi_cci_os_signal_wait(&wait_here, 10000), 1);
    EXPECT_EQ(send(open()), 0);
    EXPECT_EQ(send(client), -2) << "a client came back to life with its service";
    Told late;
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &late), 0);
    EXPECT_EQ(late.wait(1), Lines{"error -2"}) << "registered when it had gone already";
    EXPECT_EQ(listener.told.wait(0).size(), 2u) << "told twice";
}

TEST_P(QmiOverEach, GivesEachOfManyCallersItsOwnAnswer)
{
    use_modem("", GetParam());
    qmi_client_handle client = open();
    std::vector<std::thread> callers;
    std::atomic<int> wrong = 0;
    for (int caller = 0; caller < 8; ++caller)
        callers.emplace_back([&, caller] {
            for (int i = 0; i < 100; ++i) {
                const envelope request = echo_request(static_cast<std::uint8_t>(caller * 16 + i % 16));
                envelope response{};
                if (send(client, request, response) != 0 ||
                    std::memcmp(response.data, request.data, sizeof request.data) != 0)
                    ++wrong;
            }
        });
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(QmiClient, AllocatesNothingOnTheSendPathAfterTheFirst)
{
    unsetenv("RBK_TRACE");
    use_modem("", "unix");
    qmi_client_handle client = open();
    ASSERT_EQ(send(client), 0);
    const int before = allocations;
    for (int i = 0; i < 100; ++i) ASSERT_EQ(send(client), 0);
    EXPECT_EQ(allocations - before, 0);
}

TEST_F(QmiClient, EachFailureHasItsResultAndLeavesTheAnswerUntouched)
{
    const struct {
        const char* catches;
        std::string rule;  // for each request one, in this order
        std::int32_t result;
    } rows[] = {{"SilenceTakenForAnAnswer", "action = 'silent'", -3},
                {"RubbishStored", "action = 'raw'\nbytes = '01 04 00 00 00'", -1},
                {"MissingTlvAccepted", "action = 'raw'\nbytes = '01 04 00 00 00 00 00'", -1},
                {"LostServiceNotTold", "action = 'down'", -2}};
    std::string rules;
    for (int nth = 1; const auto& row : rows)
        rules += "[[fault]]\nservice = 'extended'\nnth = " + std::to_string(nth++) + "\n" + row.rule + "\n";
    use_modem(rules);
    qmi_client_handle client = open();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.catches);
        envelope response;
        std::memset(&response, 0x5A, sizeof response);
        const envelope before = response;
        EXPECT_EQ(send(client, echo_request(1), response, row.result == -3 ? 50 : 10000), row.result);
        EXPECT_EQ(std::memcmp(&response, &before, sizeof before), 0);
    }
}

TEST_F(QmiClient, RefusesWhatCannotBeSent)
{
    qmi_client_handle client = open();
    const envelope request = echo_request(1);
    envelope response{};
    EXPECT_EQ(qmi_client_send_msg_sync(client, 9, &request, sizeof request, &response, sizeof response, 100), -1);
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, 4, &response, sizeof response, 100), -1);
    EXPECT_EQ(qmi_client_send_msg_sync(client, 2, &request, sizeof request, &response, 4, 100), -1);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(qmi_client_release(client), -1);
    EXPECT_EQ(send(client), -1) << "a released handle was followed";
    EXPECT_EQ(qmi_client_message_decode(client, INDICATION, 3, nullptr, 0, &response, sizeof response), -1);
    const qmi_service_info none{};
    EXPECT_EQ(qmi_client_init(&none, &extended, nullptr, nullptr, nullptr, &client), -2);
}

TEST_F(QmiClient, InitInstanceWaitsNoLongerThanAsked)
{
    const auto init = [](const qmi_idl_service_object& service, uint32_t instance, uint32_t timeout_ms) {
        qmi_client_handle client = nullptr;
        const int32_t result =
            qmi_client_init_instance(&service, instance, nullptr, nullptr, nullptr, timeout_ms, &client);
        EXPECT_EQ(client == nullptr, result != 0);
        return result;
    };
    EXPECT_EQ(init(extended, QMI_CLIENT_INSTANCE_ANY, 0), 0) << "the first look at the list was bounded";
    const auto start = steady_clock::now();
    EXPECT_EQ(init(other_service, QMI_CLIENT_INSTANCE_ANY, 40), -3);
    EXPECT_GE(steady_clock::now() - start, milliseconds(40));
    EXPECT_EQ(init(extended, 7, 1), -3);
}

TEST_F(QmiClient, FindsAModemThatIsStartedAgain)
{
    use_modem("", "unix");
    Told told;
    qmi_client_handle client = open();
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &told), 0);
    process_->end(SIGKILL);
    EXPECT_EQ(send(client), -2);
    EXPECT_EQ(qmi_client_release(client), 0);
    EXPECT_EQ(told.wait(0), Lines{"error -2"});
    process_.emplace(home());
    EXPECT_EQ(send(open()), 0);
}

// Twenty rows, each said a thousand times a second and in their order.
TEST_F(QmiClient, LosesNothingOfTwentyThousandIndicationsASecond)
{
    unsetenv("RBK_TRACE");
    std::string rows;
    for (std::uint8_t row = 0; row < 20; ++row)
        rows += "[[indication]]\nservice = 'extended'\nmessage = 3\nevery_ms = 1\nbytes = '" + hex({row}) + " 00 00'\n";
    use_modem(rows, "unix");
    static std::atomic<int> count = 0;
    static std::atomic<int> out_of_order = 0;
    Listener flood;
    flood.act = [](qmi_client_handle, const void* buffer, uint32_t) {
        if (*static_cast<const std::uint8_t*>(buffer) != count++ % 20) ++out_of_order;
        return "";
    };
    qmi_client_handle client = open(&flood);
    Told lost;
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &lost), 0);
    ASSERT_EQ(send(client), 0);
    while (count < 20000 && lost.wait(0).empty()) std::this_thread::sleep_for(milliseconds(5));
    EXPECT_EQ(lost.wait(0), Lines{}) << "after " << count << ": the modem gave it up";
    EXPECT_EQ(out_of_order, 0);
    qmi_client_release(client);
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

class QmiPeer : public HomeTest {
 protected:
    QmiPeer() { setenv("RBK_MODEM", ("unix:" + (home() / "peer").string()).c_str(), 1); }

    // The router has told of the three servers.
    void start()
    {
        auto listed = on_a_thread([] { return count_services(); });
        peer_.hear();
        peer_.tell_servers({kServerRow, kSecondRow, kOtherRow});
        EXPECT_EQ(listed.get(), 2);
    }
    static qmi_client_handle open(Listener* listener, link::Address server = kServer,
                                  const qmi_idl_service_object& service = extended)
    {
        const bool second = server == kSecondServer;
        const qmi_service_info info{service.service_id, second ? 0x201u : 0x101u, server.node, server.port};
        qmi_client_handle client = nullptr;
        EXPECT_EQ(
            qmi_client_init(&info, &service, listener != nullptr ? on_indication : nullptr, listener, nullptr, &client),
            0);
        return client;
    }
    void answer(Bytes request)
    {
        request.at(0) = 2;
        peer_.say(kServer, request);
    }
    void indicate(link::Address from, std::uint8_t length, std::uint8_t message = 3)
    {
        Bytes bytes{4, 0, 0, message, 0, length, 0};
        bytes.resize(bytes.size() + length);
        peer_.say(from, bytes);
    }
    FakePeer peer_{home() / "peer"};
};

// A message that comes before the answer.
struct Stray {
    const char* catches;
    link::Address from = kServer;
    std::uint8_t kind = 2;
    std::uint8_t transaction = 0;  // more than the request's
    std::uint8_t message = 2;
    std::uint16_t told = 567;  // bytes of TLVs, says its head
    std::size_t sent = 567;    // bytes of TLVs there are
    std::int32_t result = 0;   // of the request
};
constexpr std::uint16_t kMost = link::kLongestTlvs;
const Stray kStrays[] = {{.catches = "AnswerOfAnotherServerTaken", .from = kSecondServer},
                         {.catches = "AnswerOfAStrangerTaken", .from = kStranger},
                         {.catches = "AnswerOfAnotherTransactionTaken", .transaction = 1},
                         {.catches = "AnswerOfAnotherMessageTaken", .message = 3, .result = -1},
                         {.catches = "RequestTaken", .kind = 0},
                         {.catches = "UnknownKindTaken", .kind = 1},
                         {.catches = "IndicationTaken", .kind = 4},
                         {.catches = "TailTaken", .sent = 568},
                         {.catches = "CutMessageTaken", .told = 568},
                         {.catches = "LongestRefused", .told = kMost, .sent = kMost},
                         {.catches = "LongerThanAnyTaken", .told = kMost + 100, .sent = kMost + 100},
                         {.catches = "CutDatagramTaken", .told = kMost, .sent = kMost + 100}};

class QmiPeerOver : public QmiPeer, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(Carrier, QmiPeerOver, testing::Values("unix", "qrtr"),
                         [](const auto& carrier) { return std::string(carrier.param); });

TEST_P(QmiPeerOver, NothingButItsAnswerEndsARequest)
{
    if (GetParam() == std::string("qrtr")) setenv("RBK_MODEM", "qrtr", 1);
    setenv("RBK_TEST_QRTR", (home() / "peer").c_str(), 1);
    setenv("RBK_QMI_TIMEOUT_SCALE", "1e300", 1);
    start();
    qmi_client_handle client = open(nullptr);
    for (const Stray& stray : kStrays) {
        SCOPED_TRACE(stray.catches);
        envelope response{};
        auto sent = on_a_thread([&] { return send(client, echo_request(0x11), response); });
        const Bytes request = peer_.hear();
        EXPECT_EQ(sent.wait_for(milliseconds(2)), std::future_status::timeout) << "a large scale made a short wait";
        Bytes bytes = request;
        bytes.at(0) = stray.kind;
        bytes.at(1) = static_cast<std::uint8_t>(bytes[1] + stray.transaction);
        bytes.at(3) = stray.message;
        bytes.at(kFirstOfData) = 0x66;
        store_le(&bytes[5], stray.told);
        if (stray.told > 570) {  // a TLV that nobody knows fills the message
            bytes.resize(link::kQmiHeadSize + 570);
            bytes[link::kQmiHeadSize + 567] = 0x77;
            store_le(&bytes[link::kQmiHeadSize + 568], static_cast<std::uint16_t>(stray.told - 570));
        }
        bytes.resize(link::kQmiHeadSize + stray.sent);
        peer_.say(stray.from, bytes);
        answer(request);
        EXPECT_EQ(sent.get(), stray.result);
        EXPECT_EQ(response.data[0], stray.result != 0 ? 0 : stray.sent == kMost ? 0x66 : 0x11);
    }
}

// What stands in the buffer behind seven bytes is an earlier datagram's, and makes of them the loss of the server.
TEST_F(QmiPeer, ADatagramShorterThanItsAddressIsDropped)
{
    start();
    qmi_client_handle client = open(nullptr);
    auto sent = on_a_thread([&] { return send(client); });
    const Bytes request = peer_.hear();
    peer_.say({0, 0xFF000000}, link::pack_control(kServerLost));
    peer_.say_raw(Bytes{0, 0, 0, 0, 0xFE, 0xFF, 0xFF});
    answer(request);
    EXPECT_EQ(sent.get(), 0);
}

TEST_F(QmiPeer, ServersAreListedOnceAndWithinTheTable)
{
    qmi_client_os_params wait_here{};
    qmi_client_handle notifier = nullptr;
    EXPECT_EQ(qmi_client_notifier_init(&extended, &wait_here, &notifier), 0);
    auto listed = on_a_thread([] { return count_services(); });
    EXPECT_EQ(peer_.hear(),
              (Bytes{QRTR_TYPE_NEW_LOOKUP, 0, 0, 0, 0xE4, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    peer_.tell_servers({kOtherRow});
    EXPECT_EQ(listed.get(), -2);
    auto waited = on_a_thread([&] { return qmi_cci_os_signal_wait(&wait_here, 10000); });
    EXPECT_EQ(waited.wait_for(milliseconds(2)), std::future_status::timeout) << "woken by another service";
    peer_.tell(kServerRow);
    EXPECT_EQ(waited.get(), 1);
    EXPECT_EQ(qmi_cci_os_signal_wait(&wait_here, 1), 0) << "one change woke twice";
    peer_.tell(kServerRow);
    peer_.tell(kSecondRow);
    ASSERT_TRUE(wait_until([] { return count_services() >= 2; }));

    qmi_service_info table[2] = {};
    uint32_t entries = 1;
    uint32_t services = 0;
    EXPECT_EQ(qmi_client_get_service_list(&extended, table, &entries, &services), 0);
    EXPECT_EQ(entries, 1u);
    EXPECT_EQ(services, 2u);
    EXPECT_EQ(table[0].port, kServer.port);
    EXPECT_EQ(table[1].port, 0u) << "written past the caller's table";
    EXPECT_EQ(qmi_client_get_service_list(&extended, table, nullptr, &services), -1);
}

// A router that never ends its answer: the wait is bounded, nobody else waits again, and a late end is taken.
TEST_F(QmiPeer, ALookupThatNeverEndsIsGivenUp)
{
    auto listed = on_a_thread([] { return count_services(); });
    peer_.hear();
    peer_.tell(kServerRow);
    test_clock::move_on(std::chrono::seconds(4));
    peer_.say(kStranger, {});  // whoever reads looks at the clock
    std::this_thread::sleep_for(milliseconds(20));
    EXPECT_EQ(listed.wait_for(milliseconds(0)), std::future_status::timeout) << "given up too early";
    test_clock::move_on(std::chrono::seconds(1));
    peer_.say(kStranger, {});
    EXPECT_EQ(listed.get(), -4);
    EXPECT_EQ(count_services(), -4);
    peer_.tell_servers({});
    auto again = on_a_thread([] {
        while (count_services() == -4) std::this_thread::yield();  // until the late end is read
        return count_services();
    });
    peer_.hear();
    peer_.tell_servers({kSecondRow});
    EXPECT_EQ(again.get(), 2);
}

// The end of an answer doesn't name its service.
TEST_F(QmiPeer, LookupsGoOneAtATime)
{
    auto first = on_a_thread([] { return count_services(); });
    peer_.hear();
    auto second = on_a_thread([] { return count_services(other_service); });
    EXPECT_FALSE(peer_.hears(milliseconds(50)));
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
    qmi_client_handle client = open(nullptr);
    auto first = on_a_thread([&] { return send(client, 0); });
    const Bytes request = peer_.hear();
    int other_results = 0;
    for (int i = 2; i <= 0xFFFF; ++i) other_results += static_cast<int>(send(client, 1) != -3);
    EXPECT_EQ(other_results, 0);
    auto last = on_a_thread([&] { return send(client, 0); });
    const auto number_of = [](const Bytes& message) { return load_le<std::uint16_t>(&message.at(1)); };
    Bytes latest = peer_.hear();
    int queued = 0;
    for (; number_of(latest) == queued + 2; ++queued) latest = peer_.hear();
    EXPECT_GT(queued, 20) << "the link never had room";
    EXPECT_LT(queued, 60000) << "the link was never full";
    EXPECT_EQ(number_of(latest), 2) << "neither 0 nor that of the first";
    answer(latest);
    EXPECT_EQ(last.get(), 0);
    answer(request);
    EXPECT_EQ(first.get(), 0);
}

TEST_F(QmiPeer, IndicationsGoToTheClientsOfTheirServer)
{
    start();
    Listener first, second, other;
    open(&first);
    open(&first);
    open(&second, kSecondServer);
    open(&other, kOtherServer, other_service);
    indicate(kServer, 1);
    indicate(kStranger, 2);
    indicate(kSecondServer, 3);
    indicate(kOtherServer, 4);
    EXPECT_EQ(other.told.wait(1), Lines{"3: 4"});
    EXPECT_EQ(second.told.wait(0), Lines{"3: 3"});
    EXPECT_EQ(first.told.wait(0), (Lines{"3: 1", "3: 1"}));
}

// While the clock stands still nobody's pause ends: what is read behind the answer is read at once.
TEST_F(QmiPeer, AnIndicatedOutcomeDoesNotWaitForThePauseBehindAnAnswer)
{
    start();
    Listener listener;
    qmi_client_handle client = open(&listener, kServer, indicated);
    test_clock::stop();
    auto sent = on_a_thread([&] { return send(client); });
    answer(peer_.hear());
    EXPECT_EQ(sent.get(), 0);
    indicate(kServer, 1, 2);
    const bool came = on_a_thread([&] { return listener.told.wait(1).size(); }).wait_for(std::chrono::seconds(10)) ==
                      std::future_status::ready;
    test_clock::go_on();
    EXPECT_TRUE(came);
}

TEST_F(QmiPeer, ALostServiceTakesNoIndicationBack)
{
    start();
    std::promise<void> lost;
    Listener listener;
    listener.act = [has_lost = lost.get_future().share()](qmi_client_handle, const void*, uint32_t length) {
        has_lost.wait();
        return std::to_string(length);
    };
    qmi_client_handle client = open(&listener);
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &listener.told), 0);
    indicate(kServer, 1);
    indicate(kServer, 2);
    peer_.tell(kServerLost);
    ASSERT_TRUE(wait_until([&] { return send(client) == -2; }));
    lost.set_value();
    EXPECT_EQ(listener.told.wait(3), (Lines{"3: 1", "3: 2", "error -2"}));
}

// Two clients whose loss is still queued, behind a callback of a third one: released from outside, and from that callback.
TEST_F(QmiPeer, ReleaseTellsALostServiceFirst)
{
    start();
    Told told, told_inside;
    qmi_client_handle client = open(nullptr);
    qmi_client_handle inside = open(nullptr);
    ASSERT_EQ(qmi_client_register_error_cb(client, on_error, &told), 0);
    ASSERT_EQ(qmi_client_register_error_cb(inside, on_error, &told_inside), 0);
    std::promise<void> entered, goes_on;
    Listener busy;
    busy.act = [&](qmi_client_handle, const void*, uint32_t) {
        entered.set_value();
        goes_on.get_future().wait();
        return std::to_string(qmi_client_release(inside));
    };
    open(&busy);
    indicate(kServer, 1);
    entered.get_future().wait();
    peer_.tell(kServerLost);
    ASSERT_TRUE(wait_until([] { return count_services() == 1; }));
    auto released = on_a_thread([&] { return qmi_client_release(client); });
    EXPECT_EQ(released.wait_for(milliseconds(20)), std::future_status::timeout) << "and the loss hasn't been told";
    goes_on.set_value();
    EXPECT_EQ(released.get(), 0);
    EXPECT_EQ(told.wait(0), Lines{"error -2"});
    EXPECT_EQ(busy.told.wait(1), Lines{"3: 0"});
    EXPECT_EQ(told_inside.wait(0), Lines{}) << "called after its release";
}

TEST_F(QmiPeer, ReleaseEndsWhatIsUnderWay)
{
    start();
    std::promise<void> entered, goes_on;
    Listener listener;
    listener.act = [&](qmi_client_handle client, const void* buffer, uint32_t length) {
        envelope decoded{};
        const int32_t sent = send(client);  // not from a callback
        entered.set_value();
        goes_on.get_future().wait();
        return std::to_string(sent) + " " + std::to_string(qmi_client_release(client)) + " " +
               std::to_string(
                   qmi_client_message_decode(client, INDICATION, 3, buffer, length, &decoded, sizeof decoded));
    };
    qmi_client_handle client = open(&listener);
    auto sent = on_a_thread([&] { return send(client, 0); });
    peer_.hear();
    peer_.say(kServer, Bytes{4, 0, 0, 3, 0, 14, 0, 1, 4, 0, 6, 0, 0, 0, 2, 4, 0, 0, 0, 0, 0});
    entered.get_future().wait();
    auto released = on_a_thread([&] { return qmi_client_release(client); });
    EXPECT_EQ(sent.get(), -2);
    EXPECT_EQ(released.wait_for(milliseconds(20)), std::future_status::timeout) << "the callback runs";
    goes_on.set_value();
    EXPECT_EQ(released.get(), 0);
    EXPECT_EQ(listener.told.wait(1), Lines{"3: -1 -1 0"}) << "released already, and still decodes";
}

struct Sized {
    std::size_t bytes = 0;
    std::size_t size() const { return bytes; }
};

TEST(CallbackQueue, IsBoundedButForWhatHasNoBytes)
{
    platform::CallbackQueue<Sized> queue;
    constexpr std::size_t most = queue.kMost;
    const auto pop_all = [&] {
        std::vector<std::size_t> sizes;
        while (!queue.empty()) sizes.push_back(queue.pop().bytes);
        return sizes;
    };
    for (const std::size_t size : {most - 1, 2UL, 1UL, 1UL, 0UL}) queue.push({size});
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1, 0})) << "what has no room is lost, but no lost service";
    for (const std::size_t size : {most - 1, 1UL}) queue.push({size});
    queue.erase_if([](const Sized& event) { return event.bytes == 1; });
    for (const std::size_t size : {2UL, 1UL}) queue.push({size});
    EXPECT_EQ(pop_all(), (std::vector<std::size_t>{most - 1, 1})) << "what was erased makes room, what stays doesn't";
}
// ---- The end of the process ----

std::atomic<bool> callback_entered;
std::atomic<bool> callback_may_run;  // when the process has ended
std::atomic<bool> library_has_ended;
steady_clock::time_point end_begun;
qmi_client_handle ended_client;

// What a callback does while the process ends.
const struct EndCase {
    const char* catches;
    bool ends_the_process;
    void (*in_callback)();
} kEndCases[] = {
    {"CallbackLeftBehind", false,
     [] {
         callback_may_run = false;
         std::this_thread::sleep_for(milliseconds(50));
         callback_may_run = true;
     }},
    {"CallbackInACallWaitedFor", false,
     [] {
         for (;;) count_services();
     }},
    {"CallbackCannotEndTheProcess", true, [] { std::exit(0); }},
};

// In an exit handler that is older than the library's.
void check_ended_library()
{
    const bool in_order = callback_may_run && steady_clock::now() - end_begun < milliseconds(900);
    library_has_ended = true;
    const bool refused = send(ended_client, 60000) != 0 && qmi_client_release(ended_client) == 0;
    std::this_thread::sleep_for(milliseconds(50));  // for whoever returns now
    if (!in_order || !refused) ::_exit(1);
}

void end_process(const EndCase& each, qmi_client_handle (*open)(Listener*))
{
    std::atexit(check_ended_library);
    callback_may_run = true;
    static Listener listener;
    listener.act = [&each](qmi_client_handle, const void*, uint32_t) {
        callback_entered = true;
        end_begun = steady_clock::now();
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
    if (each.ends_the_process) {
        send(ended_client, 60000);
        ::_exit(4);
    }
    end_begun = steady_clock::now();
    std::exit(0);
}

// Of all threads but the one that ends the process no call returns: those that are under way then, and later ones.
TEST_P(QmiOverEach, TheEndOfTheProcessKeepsEveryOtherThread)
{
    use_modem(std::string(kIndication) + "[[fault]]\nservice = 'extended'\naction = 'silent'\n", GetParam());
    for (const EndCase& each : kEndCases) {
        SCOPED_TRACE(each.catches);
        EXPECT_EXIT(end_process(each, open), testing::ExitedWithCode(0), "");
    }
}

}  // namespace
}  // namespace rbk::test

// The extended client over the link: lengths, faults of the service, a service that isn't there, and what comes unasked.
#include "velmor_extend_api.h"

#include <chrono>
#include <functional>
#include <thread>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kEcho = 0;  // a request id that gives the request's bytes back

std::int32_t echo(std::int32_t req_len, std::uint32_t& rsp_len, std::vector<std::uint8_t>& rsp)
{
    std::vector<std::uint8_t> req(600);
    for (std::size_t i = 0; i < req.size(); ++i) req[i] = static_cast<std::uint8_t>(i * 7 + 1);
    return velmor_extend_qmi_send_sync(kEcho, req.data(), req_len, rsp.data(), &rsp_len);
}

// ---- Lengths ----

class ExtendClient : public EmbeddedRun {};

TEST_F(ExtendClient, LengthsAreJudgedBeforeTheModemIsAsked)
{
    struct {
        const char* catches;
        std::int32_t req_len;
        std::uint32_t room;
        std::int32_t result;
        std::uint32_t filled;
    } static const cases[] = {
        {"LongestRequestRefused", 550, 550, 0, 550},     {"RequestAboveTheEnvelopeSent", 551, 10, -1, 10},
        {"RoomAboveTheEnvelopeTaken", 10, 551, -1, 551}, {"NegativeLengthCopied", -1, 10, -1, 10},
        {"AnswerWrittenBehindTheRoom", 100, 16, 0, 16},  {"RoomTakenForTheAnswersLength", 100, 200, 0, 100},
        {"EqualLengthsLost", 100, 100, 0, 100},          {"EmptyRoomRefused", 100, 0, 0, 0},
        {"EmptyRequestRefused", 0, 10, 0, 0},
    };
    std::size_t sent = 0;
    for (const auto& c : cases) {
        std::vector<std::uint8_t> rsp(600, 0xEE);
        std::uint32_t rsp_len = c.room;
        EXPECT_EQ(echo(c.req_len, rsp_len, rsp), c.result) << c.catches;
        EXPECT_EQ(rsp_len, c.filled) << c.catches;
        const std::uint32_t filled = c.result == 0 ? c.filled : 0;
        for (std::uint32_t i = 0; i < filled; ++i)
            ASSERT_EQ(rsp[i], static_cast<std::uint8_t>(i * 7 + 1)) << c.catches << " byte " << i;
        EXPECT_EQ(rsp[filled], 0xEE) << c.catches;
        sent += c.result == 0 ? 1 : 0;
        EXPECT_EQ(requests().size(), sent) << c.catches;
    }
    EXPECT_EQ(log_count("put data_len 551 > max 550"), 1U);
    EXPECT_EQ(log_count("put data_len -1 > max 550"), 1U);
}

TEST_F(ExtendClient, NullIsRefused)
{
    std::uint8_t byte = 0;
    std::uint32_t len = 1;
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, nullptr, 1, &byte, &len), -1);
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, &byte, 1, nullptr, &len), -1);
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, &byte, 1, &byte, nullptr), -1);
    EXPECT_EQ(log_count("] velmor_extend_qmi_send_sync: 0,  put Invalid param"), 1U);
    EXPECT_TRUE(trace().empty());
}

TEST_F(ExtendClient, EnvelopeStandsOnTheWireAsTheServiceReadsIt)
{
    const std::uint8_t req[] = {0xA1, 0xB2, 0xC3};
    std::uint8_t rsp[3] = {};
    std::uint32_t rsp_len = sizeof(rsp);
    ASSERT_EQ(velmor_extend_qmi_send_sync(5, req, sizeof(req), rsp, &rsp_len), 0);
    const std::vector<Traced> messages = requests();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].head.find("svc=0xFFE4 req "), std::string::npos) << messages[0].head;
    EXPECT_NE(messages[0].head.find(" msg=0x0002 len=567"), std::string::npos) << messages[0].head;
    EXPECT_EQ(messages[0].bytes, "01040005000000"
                                 "02040003000000"
                                 "102602A1B2C3" + std::string(2 * 547, '0'));
}

// ---- Faults of the service ----

struct FaultCase {
    const char* catches;
    const char* rule;      // the rest of a fault rule
    std::int32_t result;   // of the request that it meets
    std::uint32_t filled;
    const char* words;     // in the log
    std::int32_t next;     // result of the request behind it
};
const FaultCase kFaultCases[] = {
    {"SilenceWaitedOutForEver", "action = 'silent'", -3, 8, "send msg sync failed:-3", 0},
    {"SlowAnswerGivenUp", "action = 'delay'\nms = 60", 0, 4, "resp_len:4", 0},
    {"ServicesErrorTakenForSuccess", "action = 'error'\ncode = 52", -3, 8,
     "52 QMI service framework error. Check client", 0},
    {"RubbishDecoded", "action = 'raw'\nbytes = '01 04 00 AA'", -3, 8, "send msg sync failed:-1", 0},
    {"DataReadWithoutItsFlag", "action = 'raw'\nbytes = '01 04 00 00 00 00 00 02 04 00 04 00 00 00'", 0, 0,
     "resp_len:0", 0},
    {"ServiceGoneNotTold", "action = 'down'", -3, 8, "send msg sync failed:-2", -3},
};

class ExtendFault : public EmbeddedRun, public testing::WithParamInterface<FaultCase> {};

TEST_P(ExtendFault, ComesBackAsItsResult)
{
    scenario(std::string("[[fault]]\nservice = 'extended'\nmessage = 2\nnth = 1\n") + GetParam().rule + "\n");
    scale_timeouts("0.1");
    std::vector<std::uint8_t> rsp(600);
    std::uint32_t rsp_len = 8;
    EXPECT_EQ(echo(4, rsp_len, rsp), GetParam().result);
    EXPECT_EQ(rsp_len, GetParam().filled);
    EXPECT_EQ(log_count(GetParam().words), 1U);
    rsp_len = 8;
    EXPECT_EQ(echo(4, rsp_len, rsp), GetParam().next);
}
INSTANTIATE_TEST_SUITE_P(All, ExtendFault, testing::ValuesIn(kFaultCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(ExtendClient, ClaimedLengthBeyondTheEnvelopeIsCut)
{
    const std::string data(2 * 550, '7');
    scenario("[[fault]]\nservice = 'extended'\naction = 'raw'\nbytes = '01040000000000" "020400FFFFFFFF" "102602" +
             data + "'\n");
    std::vector<std::uint8_t> rsp(600, 0xEE);
    std::uint32_t rsp_len = 550;
    EXPECT_EQ(echo(4, rsp_len, rsp), 0);
    EXPECT_EQ(rsp_len, 550U);
    EXPECT_EQ(rsp[549], 0x77);
    EXPECT_EQ(rsp[550], 0xEE);
}

// ---- Opening ----

TEST_F(ExtendClient, AbsentServiceCostsItsSecondEachTime)
{
    scenario("[modem]\nservices = ['nas']\n");
    for (std::size_t attempt = 1; attempt <= 2; ++attempt) {
        std::vector<std::uint8_t> rsp(600);
        std::uint32_t rsp_len = 8;
        const Clock::time_point begin = Clock::now();
        EXPECT_EQ(echo(4, rsp_len, rsp), -2);
        EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(990));
        EXPECT_EQ(log_count("VELMOR_QMI_NV: qmi_client_get_service_list() returned -2 num_services = 0"), 50 * attempt);
        EXPECT_EQ(log_count(": -2 QMI client init failed"), attempt);
    }
}

struct LateCase {
    const char* catches;
    int boot_ms;
    std::int32_t results[3];
};
const LateCase kLateCases[] = {
    {"ServiceThatComesMeanwhileMissed", 300, {0, 0, 0}},
    {"FailedOpenKept", 1500, {-2, 0, 0}},
};

class ExtendLate : public EmbeddedRun, public testing::WithParamInterface<LateCase> {};

TEST_P(ExtendLate, IsFoundByTheFirstRequestThatCan)
{
    scenario("[modem]\nboot_ms = " + std::to_string(GetParam().boot_ms) + "\n");
    for (const std::int32_t result : GetParam().results) {
        std::vector<std::uint8_t> rsp(600);
        std::uint32_t rsp_len = 8;
        EXPECT_EQ(echo(4, rsp_len, rsp), result);
    }
    EXPECT_EQ(log_count("QMI client inited"), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, ExtendLate, testing::ValuesIn(kLateCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(ExtendClient, FirstRequestsOfManyThreadsShareOneClient)
{
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t, &right] {
            for (int i = 0; i < 20; ++i) {
                const std::uint8_t req[] = {static_cast<std::uint8_t>(t), static_cast<std::uint8_t>(i)};
                std::uint8_t rsp[2] = {};
                std::uint32_t rsp_len = sizeof(rsp);
                if (velmor_extend_qmi_send_sync(kEcho, req, sizeof(req), rsp, &rsp_len) == 0 && rsp[0] == req[0] &&
                    rsp[1] == req[1])
                    ++right;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 8 * 20);
    EXPECT_EQ(log_count("QMI client inited"), 1U);
}

// ---- The log switch ----

TEST_F(ExtendClient, SwitchSilencesTheRequestAndTheOpen)
{
    g_extend_log_on = 0;
    std::vector<std::uint8_t> rsp(600);
    std::uint32_t rsp_len = 8;
    EXPECT_EQ(echo(4, rsp_len, rsp), 0);
    EXPECT_EQ(echo(551, rsp_len, rsp), -1);
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, nullptr, 1, rsp.data(), &rsp_len), -1);
    EXPECT_EQ(log_count("velmor_extend_api.cpp"), 0U);
    g_extend_log_on = 1;
    EXPECT_EQ(echo(4, rsp_len, rsp), 0);
    EXPECT_EQ(log_count("result:0"), 1U);
}

TEST_F(ExtendClient, SwitchLeavesTheFailedOpenItsWords)
{
    scenario("[modem]\nservices = []\n");
    scale_timeouts("0.01");
    g_extend_log_on = 0;
    std::vector<std::uint8_t> rsp(600);
    std::uint32_t rsp_len = 8;
    EXPECT_EQ(echo(4, rsp_len, rsp), -2);
    EXPECT_EQ(log_count("velmor_extend_api.cpp"), 1U);
    EXPECT_EQ(log_count("velmor_extend_qmi_client_open: -2 QMI client init failed"), 1U);
}

// ---- Indications ----

// What the slots have been told; written on the library's thread, read once `told` is above 0.
struct Heard {
    std::uint32_t id;
    std::vector<std::uint8_t> payload;
};
Heard heard;
std::atomic<int> told{0};

void hear(std::uint32_t id, const void* payload, std::uint32_t payload_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(payload);
    heard = {id, {bytes, bytes + payload_len}};
    ++told;
}

bool wait_until(const std::function<bool()>& met)
{
    for (const Clock::time_point end = Clock::now() + std::chrono::seconds(5); !met() && Clock::now() < end;)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return met();
}

std::string indication(int message, const std::string& bytes)
{
    return "[[indication]]\nservice = 'extended'\nmessage = " + std::to_string(message) + "\nafter_ms = 1\nbytes = '" +
           bytes + "'\n";
}

// `count` numbers of `width` bytes, all different.
std::string numbers(int count, int width, std::uint64_t first)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += le(first + static_cast<std::uint64_t>(i) * 0x0101010101010101, width);
    return text;
}

const std::string kWord1 = "010400" + le(0x11121314, 4);
const std::string kWord2 = "020400" + le(0x21222324, 4);
const std::string kWords = le(0x11121314, 4) + le(0x21222324, 4);  // in memory

std::string groups_on_the_wire()
{
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += le(static_cast<std::uint64_t>(i % 6), 1);
        for (int j = 0; j < i % 6; ++j) text += le(0x5000 + i * 16 + j, 8) + numbers(4, 4, 0x60 + i + j);
    }
    return text;
}

std::string groups_in_memory()
{
    std::string text;
    for (int i = 0; i < 10; ++i) {
        text += le(static_cast<std::uint64_t>(i % 6), 8);  // the count and the padding behind it
        for (int j = 0; j < 5; ++j)
            text += j < i % 6 ? le(0x5000 + i * 16 + j, 8) + numbers(4, 4, 0x60 + i + j) : std::string(2 * 24, '0');
    }
    return text;
}

std::string records(int count, int words)
{
    std::string text;
    for (int i = 0; i < count; ++i) text += le(0x7000 + i, 8) + numbers(words, 4, 0x80 + i);
    return text;
}

struct IndicationCase {
    const char* catches;
    int message;
    std::string wire;
    std::string memory;
};
const IndicationCase kIndicationCases[] = {
    {"RecordsOf5", 5, kWord1 + kWord2 + "036004" + records(20, 12), kWords + records(20, 12)},
    {"GroupsOf6", 6, kWord1 + kWord2 + "03" + le(groups_on_the_wire().size() / 2, 2) + groups_on_the_wire(),
     kWords + groups_in_memory()},
    {"WordsOf7", 7, kWord1 + kWord2, kWords},
    {"ValueOf8", 8, kWord1 + "021800" + records(1, 4), le(0x11121314, 8) + records(1, 4)},
    {"LongsOf9", 9, kWord1 + kWord2 + "039001" + numbers(50, 8, 0x30), kWords + numbers(50, 8, 0x30)},
    {"WordsOf11", 11, kWord1 + kWord2 + "03040003000000" "04040004000000" "05040005000000",
     kWords + "030000000400000005000000"},
    {"EventOf13", 13, kWord1 + kWord2 + "030800" + le(0x3132333435363738, 8) + "04040041424344",
     kWords + le(0x3132333435363738, 8) + "4142434400000000"},
};

class ExtendIndication : public EmbeddedRun, public testing::WithParamInterface<IndicationCase> {};

TEST_P(ExtendIndication, ReachesItsSlotAsItsStructure)
{
    scenario(indication(GetParam().message, GetParam().wire));
    (GetParam().message == 13 ? g_extend_ind13_handler : g_extend_stat_handler) = hear;
    std::vector<std::uint8_t> rsp(600);
    std::uint32_t rsp_len = 8;
    ASSERT_EQ(echo(4, rsp_len, rsp), 0);
    ASSERT_TRUE(wait_until([] { return told > 0; }));
    EXPECT_EQ(heard.id, static_cast<std::uint32_t>(GetParam().message));
    EXPECT_EQ(hex(heard.payload), GetParam().memory);
}
INSTANTIATE_TEST_SUITE_P(All, ExtendIndication, testing::ValuesIn(kIndicationCases),
                         [](const auto& row) { return row.param.catches; });

struct NoticeCase {
    const char* catches;
    std::string wire;
    const char* words;  // in the log; none when the slot hears it
    std::size_t payload_len;
};
const NoticeCase kNoticeCases[] = {
    {"PayloadLost", "01040002000000" "02040003000000" "102602A1B2C3" + std::string(2 * 547, '0'), nullptr, 3},
    {"DataReadWithoutItsFlag", "01040002000000" "02040003000000", nullptr, 0},
    {"ClaimedLengthBelieved", "01040002000000" "020400FFFFFFFF" "102602" + std::string(2 * 550, '7'), nullptr, 550},
    {"EmptySlotCalled", "01040003000000" "02040003000000", "No function defined to handle indication: 3", 0},
    {"IdBehindTheSlotsUsed", "01040007000000" "02040003000000",
     "Indicaion: 7 greater than maximum known indication.", 0},
};

class ExtendNotice : public EmbeddedRun, public testing::WithParamInterface<NoticeCase> {};

TEST_P(ExtendNotice, GoesToTheSlotOfItsRequestId)
{
    scenario(indication(3, GetParam().wire));
    g_extend_ind_handlers[2] = hear;
    std::vector<std::uint8_t> rsp(600);
    std::uint32_t rsp_len = 8;
    ASSERT_EQ(echo(4, rsp_len, rsp), 0);
    if (GetParam().words != nullptr) {
        EXPECT_TRUE(wait_until([this] { return log_count(GetParam().words) == 1; }));
        EXPECT_EQ(told, 0);
    } else {
        ASSERT_TRUE(wait_until([] { return told > 0; }));
        EXPECT_EQ(heard.id, 2U);
        EXPECT_EQ(heard.payload.size(), GetParam().payload_len);
    }
}
INSTANTIATE_TEST_SUITE_P(All, ExtendNotice, testing::ValuesIn(kNoticeCases),
                         [](const auto& row) { return row.param.catches; });

// ---- Tables ----

// The messages that the system never sends have their places too.
TEST_F(ExtendClient, FurtherRequestsStandOnTheWireByTheirTables)
{
    const qmi_client_handle client = velmor_extend_qmi_client_open();
    ASSERT_NE(client, nullptr);

    extend_envelope_ex four = {};
    four.qmi_id = 0x11121314;
    four.data_len = 0x21222324;
    four.data_valid = 1;
    four.data[549] = 0xD9;
    four.byte_11_valid = 1;
    four.byte_11 = 0xB1;
    extend_values_req ten = {0x11121314, 0x21222324, {}};
    for (std::uint32_t i = 0; i < 64; ++i) ten.table[i] = {i, {0xA0 + i, 0xB0 + i, 0xC0 + i, 0xD0 + i}};
    std::string ten_table;
    for (std::uint32_t i = 0; i < 64; ++i)
        ten_table += le(i, 8) + le(0xA0 + i, 4) + le(0xB0 + i, 4) + le(0xC0 + i, 4) + le(0xD0 + i, 4);
    extend_byte_req twelve = {0x11121314, 0x21222324, 0xB3};

    struct {
        std::uint32_t message;
        const void* request;
        std::uint32_t size;
        std::string wire;
    } const cases[] = {
        {4, &four, sizeof(four), kWord1 + kWord2 + "102602" + std::string(2 * 549, '0') + "D9" "110100B1"},
        {10, &ten, sizeof(ten), kWord1 + kWord2 + "030006" + ten_table},
        {12, &twelve, sizeof(twelve), kWord1 + kWord2 + "030100B3"},
    };
    for (const auto& c : cases) {
        extend_words_2 response = {};
        EXPECT_EQ(qmi_client_send_msg_sync(client, c.message, c.request, c.size, &response, sizeof(response), 3000), 0)
            << c.message;
        EXPECT_EQ(requests().back().bytes, c.wire) << c.message;
    }
}

TEST_F(ExtendClient, OtherVersionsHaveNoServiceObject)
{
    EXPECT_NE(velmor_extend_get_service_object_internal_v01(1, 1, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(2, 1, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(1, 2, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(1, 1, 5), nullptr);
}

TEST(ExtendResults, OnlyTheClientsOwnAreMapped)
{
    static const std::int32_t cases[][2] = {{0, 0}, {-1, -101}, {-2, -102}, {-3, -103}, {-4, -4}, {7, 7}};
    for (const auto& [result, mapped] : cases) EXPECT_EQ(velmor_qmi_result_map(result), mapped);
}

}  // namespace
}  // namespace rbk::test

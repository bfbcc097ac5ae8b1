// The extended client over the link: lengths, a service that isn't there, the log switch, and the places of every field
// of the service's messages.
#include "velmor_extend_api.h"

#include <chrono>
#include <cstring>
#include <thread>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::uint32_t kEcho = 0;  // a request id that gives the request's bytes back

class ExtendClient : public EmbeddedRun {
 public:
    // Sends `req_len` bytes of the pattern; `rsp` has `rsp_len` bytes of room.
    std::int32_t echo(std::int32_t req_len)
    {
        rsp.assign(600, 0xEE);
        return velmor_extend_qmi_send_sync(kEcho, pattern(600).data(), req_len, rsp.data(), &rsp_len);
    }
    std::vector<std::uint8_t> rsp;
    std::uint32_t rsp_len = 8;
};

// ---- Lengths ----

TEST_F(ExtendClient, LengthsAreJudgedBeforeTheModemIsAsked)
{
    struct {
        const char* catches;
        std::int32_t req_len;
        std::uint32_t room;
        std::int32_t result;
        std::uint32_t filled;
    } static const cases[] = {
        {"LongestRequestRefused", 550, 550, 0, 550},
        {"RequestAboveTheEnvelopeSent", 551, 10, -1, 10},
        {"RoomAboveTheEnvelopeTaken", 10, 551, -1, 551},
        {"NegativeLengthCopied", -1, 10, -1, 10},
        {"AnswerWrittenBehindTheRoom", 100, 16, 0, 16},
        {"RoomTakenForTheAnswersLength", 100, 200, 0, 100},
        {"EmptyRoomRefused", 100, 0, 0, 0},
        {"EmptyRequestRefused", 0, 10, 0, 0},
    };
    std::size_t sent = 0;
    for (const auto& c : cases) {
        rsp_len = c.room;
        EXPECT_EQ(echo(c.req_len), c.result) << c.catches;
        EXPECT_EQ(rsp_len, c.filled) << c.catches;
        const std::size_t filled = c.result == 0 ? c.filled : 0;
        EXPECT_EQ(hex({rsp.begin(), rsp.begin() + filled + 1}), hex(pattern(filled)) + "EE") << c.catches;
        sent += c.result == 0 ? 1 : 0;
        ASSERT_EQ(requests().size(), sent) << c.catches;
        if (c.result != 0) continue;
        const std::string data = hex(pattern(static_cast<std::size_t>(c.req_len)));
        EXPECT_EQ(requests().back().bytes, envelope(kEcho, static_cast<std::uint32_t>(c.req_len), data)) << c.catches;
    }
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, nullptr, 1, rsp.data(), &rsp_len), -1);
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, rsp.data(), 1, nullptr, &rsp_len), -1);
    EXPECT_EQ(velmor_extend_qmi_send_sync(kEcho, rsp.data(), 1, rsp.data(), nullptr), -1);
    EXPECT_EQ(requests().size(), sent);
    EXPECT_EQ(log_count("velmor_extend_qmi_send_sync: 0,  put Invalid param"), 1U);
    EXPECT_EQ(log_count("velmor_extend_qmi_send_sync: put data_len -1 > max 550"), 1U);
}

TEST_F(ExtendClient, AnswersLengthIsForeign)
{
    struct {
        const char* catches;
        std::string tlvs;
        std::uint32_t filled;
    } const cases[] = {
        {"DataReadWithoutItsFlag",
         "01040000000000"
         "02040004000000",
         0},
        {"LengthBeyondTheEnvelopeBelieved", envelope(0, 0xFFFFFFFF, std::string(2 * 550, '7')), 550},
    };
    std::string rules;
    for (int i = 0; i < 2; ++i) rules += raw_answer(cases[i].tlvs, i + 1);
    scenario(rules);
    for (const auto& c : cases) {
        rsp_len = 550;
        EXPECT_EQ(echo(4), 0) << c.catches;
        EXPECT_EQ(rsp_len, c.filled) << c.catches;
        EXPECT_EQ(rsp[c.filled], 0xEE) << c.catches;
    }
}

// ---- Opening ----

TEST_F(ExtendClient, AbsentServiceCostsItsSecondEachTime)
{
    scenario("[modem]\nservices = ['nas']\n");
    for (std::size_t attempt = 1; attempt <= 2; ++attempt) {
        const steady_clock::time_point begin = steady_clock::now();
        EXPECT_EQ(echo(4), -2);
        EXPECT_GE(steady_clock::now() - begin, milliseconds(990));
        EXPECT_EQ(log_count("VELMOR_QMI_NV: qmi_client_get_service_list() returned -2 num_services = 0"), 50 * attempt);
        EXPECT_EQ(log_count("velmor_extend_qmi_client_open: -2 QMI client init failed"), attempt);
    }
}

struct LateCase {
    const char* catches;
    int boot_ms;
    std::int32_t first;
};
const LateCase kLateCases[] = {{"ServiceThatComesMeanwhileMissed", 300, 0}, {"FailedOpenKept", 1900, -2}};

class ExtendLate : public ExtendClient, public testing::WithParamInterface<LateCase> {};

TEST_P(ExtendLate, IsFoundByTheFirstRequestThatCan)
{
    scenario("[modem]\nboot_ms = " + std::to_string(GetParam().boot_ms) + "\n");
    EXPECT_EQ(echo(4), GetParam().first);
    EXPECT_EQ(echo(4), 0);
    EXPECT_EQ(log_count("qmi_client_get_service_list() returned 0 num_services = 1"), 1U);
    EXPECT_EQ(log_count("QMI client inited"), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, ExtendLate, testing::ValuesIn(kLateCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(ExtendClient, FirstRequestsOfManyThreadsShareOneClient)
{
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (std::uint8_t t = 0; t < 8; ++t) {
        threads.emplace_back([t, &right] {
            for (std::uint8_t i = 0; i < 20; ++i) {
                const std::uint8_t req[] = {t, i};
                std::uint8_t answer[2] = {};
                std::uint32_t len = sizeof(answer);
                const std::int32_t result = velmor_extend_qmi_send_sync(kEcho, req, sizeof(req), answer, &len);
                if (result == 0 && std::memcmp(req, answer, sizeof(req)) == 0) ++right;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 8 * 20);
    EXPECT_EQ(log_count("QMI client inited"), 1U);
}

TEST_F(ExtendClient, SwitchLeavesOnlyTheFailedOpenItsWords)
{
    scenario("[modem]\nboot_ms = 1900\n");
    g_extend_log_on = 0;
    EXPECT_EQ(echo(4), -2);
    EXPECT_EQ(echo(551), -1);
    EXPECT_EQ(echo(4), 0);
    EXPECT_EQ(log_count("velmor_extend_api.cpp"), 1U);
    EXPECT_EQ(log_count("velmor_extend_qmi_client_open: -2 QMI client init failed"), 1U);
    g_extend_log_on = 1;
    EXPECT_EQ(echo(4), 0);
    EXPECT_EQ(log_count("velmor_extend_qmi_send_sync: velmor_extend_qmi_handle_req_cb result:0"), 1U);
}

// ---- The places of the fields ----

// Bytes of a structure that make a TLV; type 0 goes on with the one before.
struct Piece {
    int tlv;
    std::size_t offset;
    std::size_t size;
};
struct Layout {
    std::uint32_t message;
    std::size_t size;  // bytes of the structure
    std::vector<Piece> pieces;
};

Layout groups()
{
    Layout layout{6, 1288, {{1, 0, 4}, {2, 4, 4}}};
    for (std::size_t i = 0; i < 10; ++i) {
        layout.pieces.push_back({i == 0 ? 3 : 0, 8 + 128 * i, 1});  // a count of one byte
        layout.pieces.push_back({0, 16 + 128 * i, 5 * 24});
    }
    return layout;
}

// A structure of different bytes, with what lies between the fields at 0.
std::vector<std::uint8_t> filled(const Layout& layout)
{
    const std::vector<std::uint8_t> bytes = pattern(layout.size);
    std::vector<std::uint8_t> structure(layout.size);
    for (const Piece& piece : layout.pieces) {
        std::memcpy(&structure[piece.offset], &bytes[piece.offset], piece.size);
        if (piece.size == 1) structure[piece.offset] = 5;        // counts of whole groups, and bytes
        if (piece.tlv >= 0x10) structure[piece.offset - 1] = 1;  // the flag of an optional field
    }
    return structure;
}

std::string on_the_wire(const Layout& layout, const std::vector<std::uint8_t>& structure)
{
    std::string tlvs;
    std::string value;
    for (std::size_t i = layout.pieces.size(); i-- > 0;) {
        const auto begin = structure.begin() + static_cast<std::ptrdiff_t>(layout.pieces[i].offset);
        value.insert(0, hex({begin, begin + static_cast<std::ptrdiff_t>(layout.pieces[i].size)}));
        if (layout.pieces[i].tlv == 0) continue;
        tlvs.insert(0, le(static_cast<std::uint64_t>(layout.pieces[i].tlv), 1) + le(value.size() / 2, 2) + value);
        value.clear();
    }
    return tlvs;
}

// The messages that the system never sends have their places too.
TEST_F(ExtendClient, RequestsStandOnTheWireByTheirTables)
{
    const Layout layouts[] = {
        {2, 560, {{0x01, 0, 4}, {0x02, 4, 4}, {0x10, 9, 550}}},
        {3, 560, {{0x01, 0, 4}, {0x02, 4, 4}, {0x10, 9, 550}}},
        {4, 564, {{0x01, 0, 4}, {0x02, 4, 4}, {0x10, 9, 550}, {0x11, 560, 1}}},
        {10, 1544, {{0x01, 0, 4}, {0x02, 4, 4}, {0x03, 8, 1536}}},
        {12, 12, {{0x01, 0, 4}, {0x02, 4, 4}, {0x03, 8, 1}}},
    };
    const qmi_client_handle client = velmor_extend_qmi_client_open();
    rsp.resize(560);
    for (const Layout& layout : layouts) {
        const std::vector<std::uint8_t> request = filled(layout);
        const std::uint32_t answer_size = layout.message <= 3 ? 560 : 8;
        EXPECT_EQ(qmi_client_send_msg_sync(client, layout.message, request.data(), layout.size, rsp.data(), answer_size,
                                           3000),
                  0)
            << layout.message;
        EXPECT_EQ(requests().back().bytes, on_the_wire(layout, request)) << layout.message;
    }
}

// What a slot was told; written on the library's thread, read once `told` is above 0.
std::uint32_t told_id;
std::vector<std::uint8_t> told_payload;
std::atomic<int> told{0};

void hear(std::uint32_t id, const void* payload, std::uint32_t payload_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(payload);
    told_id = id;
    told_payload = {bytes, bytes + payload_len};
    ++told;
}

std::string indication(std::uint32_t message, const std::string& tlvs)
{
    return "[[indication]]\nservice = 'extended'\nmessage = " + std::to_string(message) + "\nafter_ms = 1\nbytes = '" +
           tlvs + "'\n";
}

class ExtendIndication : public ExtendClient, public testing::WithParamInterface<Layout> {};

TEST_P(ExtendIndication, ReachesItsSlotAsItsStructure)
{
    const std::vector<std::uint8_t> structure = filled(GetParam());
    scenario(indication(GetParam().message, on_the_wire(GetParam(), structure)));
    (GetParam().message == 13 ? g_extend_ind13_handler : g_extend_stat_handler) = hear;
    ASSERT_EQ(echo(4), 0);
    ASSERT_TRUE(wait_until([] { return told > 0; }));
    EXPECT_EQ(told_id, GetParam().message);
    EXPECT_EQ(hex(told_payload), hex(structure));
}
INSTANTIATE_TEST_SUITE_P(All, ExtendIndication,
                         testing::Values(Layout{5, 1128, {{1, 0, 4}, {2, 4, 4}, {3, 8, 1120}}}, groups(),
                                         Layout{7, 8, {{1, 0, 4}, {2, 4, 4}}}, Layout{8, 32, {{1, 0, 4}, {2, 8, 24}}},
                                         Layout{9, 408, {{1, 0, 4}, {2, 4, 4}, {3, 8, 400}}},
                                         Layout{11, 20, {{1, 0, 4}, {2, 4, 4}, {3, 8, 4}, {4, 12, 4}, {5, 16, 4}}},
                                         Layout{13, 24, {{1, 0, 4}, {2, 4, 4}, {3, 8, 8}, {4, 16, 4}}}),
                         [](const auto& row) { return "Message" + std::to_string(row.param.message); });

struct NoticeCase {
    const char* catches;
    std::string tlvs;
    const char* words;  // in the log; null when the slot 2 hears it
    std::size_t payload_len;
};
const NoticeCase kNoticeCases[] = {
    {"PayloadLost", envelope(2, 3, "A1B2C3"), nullptr, 3},
    {"DataReadWithoutItsFlag",
     "01040002000000"
     "02040003000000",
     nullptr, 0},
    {"LengthBeyondTheEnvelopeBelieved", envelope(2, 0xFFFFFFFF, ""), nullptr, 550},
    {"EmptySlotCalled", envelope(3, 3, ""), "No function defined to handle indication: 3", 0},
    {"IdBehindTheSlotsUsed", envelope(7, 3, ""), "Indicaion: 7 greater than maximum known indication.", 0},
};

class ExtendNotice : public ExtendClient, public testing::WithParamInterface<NoticeCase> {};

TEST_P(ExtendNotice, GoesToTheSlotOfItsRequestId)
{
    scenario(indication(3, GetParam().tlvs));
    g_extend_ind_handlers[2] = hear;
    ASSERT_EQ(echo(4), 0);
    const char* words = GetParam().words;
    ASSERT_TRUE(wait_until([&] { return words != nullptr ? log_count(words) == 1 : told > 0; }));
    EXPECT_EQ(told, words != nullptr ? 0 : 1);
    EXPECT_EQ(told_payload.size(), GetParam().payload_len);
}
INSTANTIATE_TEST_SUITE_P(All, ExtendNotice, testing::ValuesIn(kNoticeCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(ExtendClient, OtherVersionsHaveNoServiceObject)
{
    EXPECT_NE(velmor_extend_get_service_object_internal_v01(1, 1, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(2, 1, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(1, 2, 6), nullptr);
    EXPECT_EQ(velmor_extend_get_service_object_internal_v01(1, 1, 5), nullptr);
}

TEST_F(ExtendClient, OnlyTheClientsOwnResultsAreMapped)
{
    static const std::int32_t cases[][2] = {{0, 0}, {-1, -101}, {-2, -102}, {-3, -103}, {-4, -4}, {7, 7}};
    for (const auto& [result, mapped] : cases) EXPECT_EQ(velmor_qmi_result_map(result), mapped);
}

}  // namespace
}  // namespace rbk::test

// The client of the statistics service: opening it, its tables on the wire, and what becomes of indications.
#include "vs_client.h"

#include <atomic>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

std::vector<std::uint32_t> told_status;

void hear_status(std::uint32_t client_type, std::uint32_t status)
{
    EXPECT_EQ(client_type, 0U);
    told_status.push_back(status);
}

// What the event callback was told; written on the library's thread, read once `told` is above 0.
std::uint32_t told_event;
std::vector<std::uint8_t> told_payload;
std::atomic<int> told{0};

void hear_event(std::uint32_t event_id, void* data, std::uint32_t data_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    told_event = event_id;
    told_payload = {bytes, bytes + data_len};
    ++told;
}

class VsClient : public EmbeddedRun {
 public:
    VsClient()
    {
        vs_init();
        vs_client_set_operational_status_callback(hear_status);
    }
    static std::int32_t switch_feature()
    {
        const vs_set_feature_status_req request{2, 1, 1, 1};
        vs_result_rsp response{};
        return vs_client_send_msg_sync(3, &request, sizeof request, &response, sizeof response);
    }
};

using Statuses = std::vector<std::uint32_t>;
const std::string kTry = "Trying qmi_client_init_instance() try # ";

TEST_F(VsClient, OpensAtOnceAndForgetsItsCallbacksWithTheRelease)
{
    EXPECT_EQ(vs_client_init(hear_event), 1);
    EXPECT_EQ(told_status, (Statuses{1, 3}));
    EXPECT_EQ(calls(), std::vector<std::string>{});
    EXPECT_EQ(vs_client_info.is_client_inited, 1U);
    EXPECT_EQ(switch_feature(), 0);

    EXPECT_EQ(vs_client_release(), 1);
    EXPECT_EQ(told_status, (Statuses{1, 3, 0}));
    EXPECT_EQ(vs_client_release(), 1);
    EXPECT_EQ(told_status.size(), 3U);
    EXPECT_EQ(switch_feature(), -1);
    // Without a new vs_init there is no service to open.
    EXPECT_EQ(vs_client_init(hear_event), 0);
    EXPECT_EQ(log_count("qmi_client_init_instance returned failure(-1)"), 1U);
}

TEST_F(VsClient, AbsentServiceCostsTenAttemptsASecondApart)
{
    scenario("[modem]\nservices = ['extended']\n");
    EXPECT_EQ(vs_client_init(hear_event), 0);
    EXPECT_EQ(told_status, (Statuses{1, 2}));
    EXPECT_EQ(calls(), std::vector<std::string>(9, "sleep 1"));
    EXPECT_EQ(log_count(kTry), 10U);
    EXPECT_EQ(log_count(kTry + "9 port[65535]"), 1U);
    EXPECT_EQ(log_count("qmi_client_init_instance returned failure(-3)"), 1U);
}

TEST_F(VsClient, ServiceThatComesLateIsFound)
{
    scenario("[modem]\nboot_ms = 120\n");
    setenv("RBK_TEST_DIVISOR", "20", 1);
    EXPECT_EQ(vs_client_init(hear_event), 1);
    EXPECT_EQ(told_status, (Statuses{1, 3}));
    const std::size_t attempts = log_count(kTry);
    EXPECT_GT(attempts, 1U);
    EXPECT_EQ(calls().size(), attempts - 1);
    EXPECT_EQ(switch_feature(), 0);
}

TEST_F(VsClient, LostServiceIsToldAndChangesNothing)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 3\nnth = 1\naction = 'down'\n");
    ASSERT_EQ(vs_client_init(hear_event), 1);
    EXPECT_EQ(switch_feature(), -2);
    EXPECT_TRUE(wait_until([&] { return log_count("vs_client_service_down_event: service down with error -2") == 1; }));
    EXPECT_EQ(told_status, (Statuses{1, 3}));
    EXPECT_NE(vs_client_info.vs_client_handle, nullptr);
}

TEST_F(VsClient, OtherVersionsHaveNoServiceObject)
{
    EXPECT_NE(vs_get_service_object_internal_v01(1, 2, 6), nullptr);
    EXPECT_EQ(vs_get_service_object_internal_v01(2, 2, 6), nullptr);
    EXPECT_EQ(vs_get_service_object_internal_v01(1, 3, 6), nullptr);
    EXPECT_EQ(vs_get_service_object_internal_v01(1, 2, 5), nullptr);
}

// ---- Tables ----

// The TLVs of a request, as the modem receives them.
template <typename Request>
std::string on_the_wire(const EmbeddedRun& run, std::uint32_t message, const Request& request)
{
    vs_bytes_512_rsp response;  // room for each that is asked for here
    std::uint32_t size = 0;
    qmi_idl_get_message_c_struct_len(vs_client_info.vs_service_object, RESPONSE, static_cast<std::uint16_t>(message),
                                     &size);
    vs_client_send_msg_sync(message, &request, sizeof request, &response, size);
    return run.requests().empty() ? "" : run.requests().back().bytes;
}

TEST_F(VsClient, RequestsStandOnTheWireByTheirTables)
{
    ASSERT_EQ(vs_client_init(hear_event), 1);
    const std::string word = tlv(1, "A1A2A3A4");
    EXPECT_EQ(on_the_wire(*this, 0x0000, vs_bytes_512_req{2, {0xB1, 0xB2}}), tlv(1, "0200B1B2"));
    EXPECT_EQ(on_the_wire(*this, 0x0001, vs_optional_bytes_req{1, 0xB1, 1, 0xB2}), tlv(0x10, "B1") + tlv(0x11, "B2"));
    EXPECT_EQ(on_the_wire(*this, 0x0101, vs_word_byte_half_bytes_req{0xA4A3A2A1, 0xB1, 0xC2C1, 2, {0xD1, 0xD2}}),
              word + tlv(2, "B1") + tlv(3, "C1C2") + tlv(4, "0200D1D2"));
    EXPECT_EQ(on_the_wire(*this, 0x0104, vs_word_half_bytes_req{0xA4A3A2A1, 0xB2B1, 1, {0xC1}}),
              word + tlv(2, "B1B2") + tlv(3, "0100C1"));
    EXPECT_EQ(on_the_wire(*this, 0x0107, vs_text_half_byte_bytes_req{"ab", 0xB2B1, 0xC1, 1, {0xD1}}),
              tlv(1, "6162") + tlv(2, "B1B2") + tlv(3, "C1") + tlv(4, "0100D1"));
    EXPECT_EQ(on_the_wire(*this, 0x010C, vs_byte_word_half_req{0xA1, 0xB4B3B2B1, 0xC2C1}),
              tlv(1, "A1") + tlv(2, "B1B2B3B4") + tlv(3, "C1C2"));
    EXPECT_EQ(on_the_wire(*this, 0x0200, vs_byte_optional_word_req{0xA1, 1, 0xB4B3B2B1}),
              tlv(1, "A1") + tlv(0x10, "B1B2B3B4"));
    static vs_conditions_req conditions{0xA4A3A2A1, 1, {}, 1, 0xE2E1, 1, 0xF2F1};
    conditions.table_2[0] = {0xB4B3B2B1, 1, {0xC4C3C2C1}, 0xD1, {0x1817161514131211, 0x2827262524232221}, 0xD2};
    EXPECT_EQ(on_the_wire(*this, 0x0201, conditions),
              word + tlv(2, "01B1B2B3B401C1C2C3C4D111121314151617182122232425262728D2") + tlv(0x10, "E1E2") +
                  tlv(0x11, "F1F2"));
    EXPECT_EQ(on_the_wire(*this, 0x0202, vs_words_req{0xA4A3A2A1, 1, {0xB4B3B2B1}, 1, 0xC2C1, 0, 0}),
              word + tlv(2, "01B1B2B3B4") + tlv(0x10, "C1C2"));
    EXPECT_EQ(on_the_wire(*this, 0x0208, vs_halves_words_req{0xA2A1, 0xB2B1, 1, {0xC4C3C2C1}}),
              tlv(1, "A1A2") + tlv(2, "B1B2") + tlv(3, "01C1C2C3C4"));
}

// ---- Indications ----

std::string zeros(std::size_t count)
{
    return std::string(2 * count, '0');
}

// A slot of event 3.
std::string record(std::uint32_t id, const std::string& value, std::uint32_t sub_word)
{
    return le(id, 4) + value + zeros(700 - value.size() / 2) + le(value.size() / 2, 4) + le(sub_word, 4);
}
constexpr std::size_t kRecordSize = 712;

std::string times(int count, const std::string& text)
{
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

struct EventCase {
    const char* catches;
    std::uint32_t message;
    std::string tlvs;
    std::uint32_t event;
    std::string payload;
};
const std::string kWord = tlv(1, "A1A2A3A4");
const std::string kLong = hex(pattern(701));
const EventCase kEvents[] = {
    {"FirstFlagNotReduced", 0x0004, kWord + tlv(2, "02") + tlv(3, "00"), 2,
     "A1A2A3A4"
     "0100"
     "0000"},
    {"SecondFlagNotReduced", 0x0004, kWord + tlv(2, "00") + tlv(3, "80"), 2,
     "A1A2A3A4"
     "0001"
     "0000"},
    {"TablesMixedUp", 0x0203,
     kWord + tlv(2, "02" + stats_parameter(0xB1B2, 0xB3B4, 0xC1C2C3C4, "D1D2") + stats_parameter(1, 2, 3, "")) +
         tlv(0x10, "01" + stats_parameter(4, 5, 6, "E1")) + tlv(0x11, "F1F2F3F4"),
     3,
     "A1A2A3A4" + record(0xC1C2C3C4, "D1D2", 0xB3B4B1B2) + record(3, "", 0x20001) + zeros(8 * kRecordSize) + le(2, 4) +
         record(6, "E1", 0x50004) + zeros(4 * kRecordSize) + le(1, 4) + "F1F2F3F4"},
    {"MissingWordTakenForZero", 0x0203, kWord + tlv(2, "00"), 3,
     "A1A2A3A4" + zeros(10 * kRecordSize) + le(0, 4) + zeros(5 * kRecordSize) + le(0, 4) + "FFFFFFFF"},
    {"CountsAboveTheRoomBelieved", 0x0203,
     kWord + tlv(2, "0C" + times(12, stats_parameter(1, 2, 3, "AA"))) +
         tlv(0x10, "06" + times(6, stats_parameter(4, 5, 6, "BB"))),
     3,
     "A1A2A3A4" + times(10, record(3, "AA", 0x20001)) + le(10, 4) + times(5, record(6, "BB", 0x50004)) + le(5, 4) +
         "FFFFFFFF"},
    {"ValueAboveTheRoomBelieved", 0x0203, kWord + tlv(2, "01" + stats_parameter(1, 2, 3, kLong)), 3,
     "A1A2A3A4" + record(3, kLong.substr(0, 1400), 0x20001) + zeros(9 * kRecordSize) + le(1, 4) +
         zeros(5 * kRecordSize) + le(0, 4) + "FFFFFFFF"},
    {"BytesAboveTheRoomBelieved", 0x0204, kWord + tlv(2, "65" + times(101, "EE")) + tlv(3, "B1B2") + tlv(4, "C1C2"), 4,
     "A1A2A3A4" + times(100, "EE000000") + le(100, 4) + "B1B2C1C2"},
    {"BytesNotWidened", 0x0204, kWord + tlv(2, "02D1D2") + tlv(3, "B1B2") + tlv(4, "C1C2"), 4,
     "A1A2A3A4"
     "D1000000"
     "D2000000" +
         zeros(4 * 98) + le(2, 4) + "B1B2C1C2"},
    {"ByteLost", 0x0601, tlv(1, "A1"), 5, "A1"},
};

std::string unasked(std::uint32_t message, const std::string& tlvs)
{
    return "[[indication]]\nservice = 'vs'\nmessage = " + std::to_string(message) + "\nafter_ms = 1\nbytes = '" + tlvs +
           "'\n";
}

class VsEvent : public VsClient, public testing::WithParamInterface<EventCase> {};

TEST_P(VsEvent, ReachesItsReceiver)
{
    scenario(unasked(GetParam().message, GetParam().tlvs));
    ASSERT_EQ(vs_client_init(hear_event), 1);
    ASSERT_EQ(switch_feature(), 0);
    ASSERT_TRUE(wait_until([] { return told > 0; }));
    EXPECT_EQ(told_event, GetParam().event);
    EXPECT_EQ(hex(told_payload), GetParam().payload);
}
INSTANTIATE_TEST_SUITE_P(All, VsEvent, testing::ValuesIn(kEvents), [](const auto& row) { return row.param.catches; });

struct DroppedCase {
    const char* catches;
    std::uint32_t message;
    std::string tlvs;
    vs_event_callback receiver;
    const char* words;
};
const DroppedCase kDropped[] = {
    {"MissingTlvOverlooked", 0x0203, kWord, hear_event,
     "vs_client_ind_hdlr: Indication decode failed for msg 0x203 with error -1"},
    {"UnknownMessageDecoded", 0x0300, kWord, hear_event, "vs_client_unsol_ind_cb: decoded_payload_len(0) can not <= 0"},
    {"MissingReceiverCalled", 0x0601, tlv(1, "A1"), nullptr,
     "vs_client_unsol_ind_cb: vs_client_info.event_cb is null, do nothing"},
};

class VsDropped : public VsClient, public testing::WithParamInterface<DroppedCase> {};

TEST_P(VsDropped, IsLoggedAndNoEvent)
{
    scenario(unasked(GetParam().message, GetParam().tlvs));
    ASSERT_EQ(vs_client_init(GetParam().receiver), 1);
    ASSERT_EQ(switch_feature(), 0);
    EXPECT_TRUE(wait_until([&] { return log_count(GetParam().words) == 1; }));
    EXPECT_EQ(log_count("Handling indication"), 0U);
    EXPECT_EQ(told, 0);
}
INSTANTIATE_TEST_SUITE_P(All, VsDropped, testing::ValuesIn(kDropped),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test

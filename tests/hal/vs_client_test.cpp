// The client of the statistics service: opening and releasing it, and the events that indications become.
#include "vs_client.h"

#include <atomic>

#include "hal/exchanges.h"

namespace rbk::test {
namespace {

std::vector<std::uint32_t> told_status;

void hear_status(std::uint32_t client_type, std::uint32_t status)
{
    EXPECT_EQ(client_type, 0U);
    told_status.push_back(status);
}

std::string told;  // to the event callback: the event's number and payload
std::atomic<int> told_count{0};

void hear_event(std::uint32_t event_id, void* data, std::uint32_t data_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    told += std::to_string(event_id) + " " + hex({bytes, bytes + data_len});
    ++told_count;
}

std::int32_t switch_feature()
{
    const vs_set_feature_status_req request{2, 1, 1, 1};
    vs_result_rsp response{};
    return vs_client_send_msg_sync(3, &request, sizeof request, &response, sizeof response);
}

class VsClient : public EmbeddedRun {
 public:
    VsClient()
    {
        vs_init();
        vs_client_set_operational_status_callback(hear_status);
    }
};

using Statuses = std::vector<std::uint32_t>;

// ---- Opening and releasing ----

TEST_F(VsClient, OpensAtOnceAndForgetsItsCallbacksWithTheRelease)
{
    EXPECT_EQ(vs_client_init(hear_event), 1);
    EXPECT_EQ(told_status, (Statuses{1, 3}));
    EXPECT_EQ(calls(), std::vector<std::string>{});
    EXPECT_EQ(vs_client_info.is_client_inited, 1U);
    EXPECT_EQ(switch_feature(), 0);

    const qmi_client_handle released = vs_client_info.vs_client_handle;
    EXPECT_EQ(vs_client_release(), 1);
    EXPECT_EQ(told_status, (Statuses{1, 3, 0}));
    EXPECT_EQ(qmi_client_release(released), -1) << "the library still has it";
    EXPECT_EQ(vs_client_release(), 1);
    EXPECT_EQ(told_status.size(), 3U);
    EXPECT_EQ(switch_feature(), -1);
    EXPECT_EQ(vs_client_init(hear_event), 0) << "without a new vs_init there is no service to open";
    EXPECT_EQ(log_count("qmi_client_init_instance returned failure(-1)"), 1U);
}

TEST_F(VsClient, LateServiceIsFoundAndALostOneChangesNothing)
{
    setenv("RBK_TEST_DIVISOR", "2", 1);
    scenario("[modem]\nboot_ms = 300\n[[fault]]\nservice = 'vs'\nmessage = 3\naction = 'down'\n");
    EXPECT_EQ(vs_client_init(hear_event), 1);
    EXPECT_EQ(calls().size(), log_count("Trying qmi_client_init_instance() try # ") - 1);
    EXPECT_EQ(switch_feature(), -2);
    EXPECT_TRUE(wait_until([&] { return log_count("vs_client_service_down_event: service down with error -2") == 1; }));
    EXPECT_EQ(told_status, (Statuses{1, 3}));
    EXPECT_NE(vs_client_info.vs_client_handle, nullptr);
}

// ---- Indications ----

// A slot of event 3.
std::string record(std::uint32_t id, const std::string& value, std::uint32_t sub_word)
{
    return le(id, 4) + value + times(700 - value.size() / 2, "00") + le(value.size() / 2, 4) + le(sub_word, 4);
}

TEST_F(VsClient, IndicationsBecomeEventsOfWhatHasRoom)
{
    const std::string word = tlv(1, "A1A2A3A4"), empty = record(0, "", 0), none = le(0, 4), one = le(1, 4);
    const std::string value701 = hex(pattern(701)), value700 = hex(pattern(700));
    const std::string a = stats_parameter(0xB1B2, 0xB3B4, 0xC1C2C3C4, "D1D2"),
                      slot_a = record(0xC1C2C3C4, "D1D2", 0xB3B4B1B2);
    const std::string b = stats_parameter(1, 2, 3, "AA"), slot_b = record(3, "AA", 0x20001);
    scenario(in_turn("vs", {"'indicate'\nindication = 0x0601\nbytes = '" + tlv(1, "E7") + "'"}));
    ASSERT_EQ(vs_client_init(hear_event), 1);
    ASSERT_EQ(switch_feature(), 0);
    ASSERT_TRUE(wait_until([] { return told_count > 0; })) << "the service has no listener";
    EXPECT_EQ(told, "5 E7");
    // clang-format off
    expect_told({
        {"FirstFlagNotReduced",     0x0004, word + tlv(2, "02") + tlv(3, "00"), "2 A1A2A3A4" "0100" "0000"},
        {"SecondFlagNotReduced",    0x0004, word + tlv(2, "00") + tlv(3, "80"), "2 A1A2A3A4" "0001" "0000"},
        {"TablesMixedUp",           0x0203, word + tlv(2, "02" + a + b) + tlv(0x10, "01" + b) + tlv(0x11, "F1F2F3F4"),
         "3 A1A2A3A4" + slot_a + slot_b + times(8, empty) + le(2, 4) + slot_b + times(4, empty) + one + "F1F2F3F4"},
        {"MissingWordTakenForZero", 0x0203, word + tlv(2, "00"),
         "3 A1A2A3A4" + times(10, empty) + none + times(5, empty) + none + "FFFFFFFF"},
        {"CountsAboveTheRoomBelieved", 0x0203, word + tlv(2, "0C" + times(12, b)) + tlv(0x10, "06" + times(6, a)),
         "3 A1A2A3A4" + times(10, slot_b) + le(10, 4) + times(5, slot_a) + le(5, 4) + "FFFFFFFF"},
        {"ValueAboveTheRoomBelieved", 0x0203, word + tlv(2, "01" + stats_parameter(1, 2, 3, value701)),
         "3 A1A2A3A4" + record(3, value700, 0x20001) + times(9, empty) + one + times(5, empty) + none + "FFFFFFFF"},
        {"BytesAboveTheRoomBelieved", 0x0204, word + tlv(2, "65" + times(101, "EE")) + tlv(3, "B1B2") + tlv(4, "C1C2"),
         "4 A1A2A3A4" + times(100, "EE000000") + le(100, 4) + "B1B2" "C1C2"},
        {"BytesNotWidened",         0x0204, word + tlv(2, "02D1D2") + tlv(3, "B1B2") + tlv(4, "C1C2"),
         "4 A1A2A3A4" "D1000000" "D2000000" + times(98, none) + le(2, 4) + "B1B2" "C1C2"},
        {"ByteLost",                0x0601, tlv(1, "A1"), "5 A1"},
        {"MissingTlvOverlooked",    0x0203, word, ""},
        {"OtherMessageDecoded",     0x0300, word, ""},
    }, vs_client_unsol_ind_cb, vs_client_info.vs_client_handle, told);
    vs_client_info.event_cb = nullptr;
    expect_told({{"MissingReceiverCalled", 0x0601, tlv(1, "A1"), ""}}, vs_client_unsol_ind_cb, vs_client_info.vs_client_handle, told);
    // clang-format on
    for (const char* words : {"vs_client_ind_hdlr: Indication decode failed for msg 0x203 with error -1",
                              "vs_client_unsol_ind_cb: decoded_payload_len(0) can not <= 0",
                              "vs_client_unsol_ind_cb: vs_client_info.event_cb is null, do nothing"})
        EXPECT_EQ(log_count(words), 1U) << words;
}

}  // namespace
}  // namespace rbk::test

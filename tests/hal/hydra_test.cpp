// The statistics library and its manager: clients, result codes, exchanges of parameters, the events that indications
// become, what is taken for a sample, and the transmit power.
#include <atomic>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "hal/exchanges.h"
#include "modem_hydra_api.h"
#include "modem_hydra_mgr.h"
#include "vs_client.h"

namespace rbk::test {
namespace {

// One value of the statistics as it stands on the wire, in hex, and a float's four bytes.
std::string stats_parameter(std::uint16_t sub, std::uint16_t second_word, std::uint32_t id, const std::string& value)
{
    return le(sub, 2) + le(second_word, 2) + le(id, 4) + le(value.size() / 2, 2) + value;
}
std::string f32(float value)
{
    return le(std::bit_cast<std::uint32_t>(value), 4);
}

std::vector<std::uint32_t> told_status;

void hear_status(std::uint32_t event_id, std::uint32_t client_type)
{
    EXPECT_EQ(client_type, VS_CLIENT_TYPE);
    told_status.push_back(event_id);
}

std::string told;  // to the event callback: the event's number and payload
std::atomic<int> told_count{0};

void hear_event(std::uint32_t event_id, void* data, std::uint32_t data_len)
{
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    told += std::to_string(event_id) + " " + hex({bytes, bytes + data_len});
    ++told_count;
}

class ModemHydra : public ExchangeTest {
 public:
    static std::int32_t open()
    {
        const std::int32_t result = modem_api_init();
        return result != 0 ? result : modem_api_init_client(0, hear_event, hear_status, &client);
    }
    static std::int32_t switch_feature() { return modem_api_set_hydra_feature_status(client, 2, 1, 1, 1); }

    static inline std::int32_t client = -7;
};

TEST(ModemApiResult, FollowsTheTransportThenTheModem)
{
    // clang-format off
    struct {
        std::int32_t transport;
        qmi_response_type response;
        std::int32_t result;
    } static const rows[] = {
        // The transport's own failures hide what stands in the response; a service that refuses does not.
        {-5, {0, 0}, 12}, {-4, {0, 0}, 1}, {-3, {1, 94}, 11}, {-1, {0, 0}, 12}, {-6, {0, 0}, 1}, {1, {0, 0}, 1}, {-2, {1, 94}, 4},
        // No failure: an error beside success, none beside failure, no effect.
        {0, {0, 52}, 0}, {0, {1, 0}, 0}, {0, {1, 26}, 0},
        {0, {1, 4}, 10}, {0, {1, 17}, 5}, {0, {1, 19}, 5}, {0, {1, 48}, 5}, {0, {1, 49}, 5}, {0, {1, 24}, 4},
        {0, {1, 42}, 4}, {0, {1, 77}, 4}, {0, {1, 52}, 8}, {0, {1, 3}, 1}, {0, {2, 0}, 1},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(modem_api_map_qmi_error_to_modem_api(row.transport, &row.response), row.result)
            << row.transport << " " << row.response.result << " " << row.response.error;
}

// ---- Clients ----

TEST_F(ModemHydra, OneClientAtATimeUntilItIsFreed)
{
    ASSERT_EQ(open(), 0);
    EXPECT_EQ(client, 0);
    std::int32_t other = -7;
    EXPECT_EQ(modem_api_init_client(1, nullptr, nullptr, &other), 4);
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 15);
    EXPECT_EQ(switch_feature(), 0) << "the first one is disturbed";
    modem_api_operational_status_cb(1, 2);  // of another type
    EXPECT_EQ(g_modem_api_clients[0]->operational_status, 3U);
    modem_api_operational_status_cb(0, 4);
    EXPECT_EQ(modem_api_init_client(0, nullptr, nullptr, &other), 9);
    EXPECT_EQ(switch_feature(), 7);
    EXPECT_EQ(other, -7);
    EXPECT_EQ(told_status, (std::vector<std::uint32_t>{0x10002, 0x10001}));

    const qmi_client_handle released = vs_client_info.vs_client_handle;
    EXPECT_EQ(modem_api_free_client(-1), 7);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(qmi_client_release(released), -1) << "the library still has it";
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_api_free_client(client), 0);
    EXPECT_EQ(log_count("client already freed"), 1U);
    EXPECT_EQ(switch_feature(), 7);
    EXPECT_EQ(vs_client_release(), 1) << "of none";
    EXPECT_EQ(vs_client_init(hear_event), 0) << "without a new vs_init there is no service to open";
    EXPECT_EQ(modem_api_release(), 0);
    EXPECT_EQ(open(), 0);
    EXPECT_EQ(log_count("check pass, p_id: "), 1U) << "asked once for the process's life";
}

// ---- Parameters ----

TEST_F(ModemHydra, RequestSaysTheSubscriptionOnceAndTheAnswerComesInOrder)
{
    ASSERT_EQ(open(), 0);
    for (const std::uint32_t number : {0U, 11U}) {
        stats_para_data data{number, {}};
        EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, &data), 5) << number;
    }
    EXPECT_EQ(modem_api_get_stats_parameter(client, 0, 1, nullptr), 5);
    EXPECT_TRUE(requests().empty());
    stats_para_data data{2, {{9, 9, 44, 5, {0xA1, 0xA2, 0xA3, 0x00, 0xA5}}, {9, 9, 100, 0, {}}}};
    memset(data.ids[0].value + 5, 0xEE, 10);
    EXPECT_EQ(modem_api_get_stats_parameter(client, 1, 0x10203, &data), 0);
    EXPECT_EQ(requests().back().bytes,
              tlv(1, "0100") + tlv(2, "0302") +
                  tlv(3, "02" + stats_parameter(0, 0, 44, "A1A2A300A5") + stats_parameter(0, 0, 100, "")));
    EXPECT_EQ(log_count("ids[0] = 44, value_len = 5, type = 10724001, value:  A5 EE EE EE EE EE EE EE EE"), 1U);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&data);
    EXPECT_EQ(hex({bytes, bytes + 22}), le(2, 4) + le(1, 4) + le(44, 4) + le(5, 4) + "010C000000" + "EE")
        << "count, subscription, id, length, the value, and what stood behind it";
    EXPECT_EQ(data.ids[1].id, 100U);
    EXPECT_EQ(data.ids[1].value_len, 8U);
}

// ---- Asynchronous requests ----

void hear_completion(void* block, std::uint32_t len, void* user, std::int32_t status)
{
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    const std::string data = block != nullptr ? hex({bytes, bytes + len}) : std::to_string(len);
    *static_cast<std::string*>(user) += data + " " + std::to_string(status) + ";";
    free(block);
}

template <typename T>
void* on_the_heap(const T& value)
{
    return std::memcpy(std::malloc(sizeof value), &value, sizeof value);
}

TEST_F(ModemHydra, CompletionTellsItsReceiverAndFreesBoth)
{
    static const vs_bytes_512_rsp bytes{{0, 0}, 2, {0xA1, 0xA2}}, refused{{1, 52}, 2, {0xA1, 0xA2}},
        above{{0, 0}, 600, {}};
    const auto complete = [](std::uint32_t message, const vs_bytes_512_rsp* response, std::int32_t error) {
        std::string completed;
        vs_client_command_cb(nullptr, message, response != nullptr ? on_the_heap(*response) : nullptr, sizeof *response,
                             on_the_heap(modem_api_cookie{hear_completion, &completed}), error);
        return completed;
    };
    EXPECT_EQ(complete(0, &bytes, 0), "A1A2 0;0 2;");
    EXPECT_EQ(complete(3, &bytes, 0), "0 2;");
    EXPECT_EQ(complete(0, &refused, 0), "0 8;");
    EXPECT_EQ(complete(0, &bytes, -3), "0 11;");
    EXPECT_EQ(complete(0, &above, 0), times(512, "00") + " 0;0 2;");
    EXPECT_EQ(complete(0, nullptr, 0), "0 3;");
    // Nobody to tell: both are freed all the same.
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, on_the_heap(modem_api_cookie{}), 0);
    modem_api_process_response(0, on_the_heap(bytes), sizeof bytes, nullptr, 0);
}

// ---- Indications ----

// A slot of event 3.
std::string record(std::uint32_t id, const std::string& value, std::uint32_t sub_word)
{
    return le(id, 4) + value + times(700 - value.size() / 2, "00") + le(value.size() / 2, 4) + le(sub_word, 4);
}

TEST_F(ModemHydra, IndicationsBecomeEventsOfWhatHasRoom)
{
    const std::string word = tlv(1, "A1A2A3A4"), empty = record(0, "", 0), none = le(0, 4), one = le(1, 4);
    const std::string value701 = hex(pattern(701)), value700 = hex(pattern(700));
    const std::string a = stats_parameter(0xB1B2, 0xB3B4, 0xC1C2C3C4, "D1D2"),
                      slot_a = record(0xC1C2C3C4, "D1D2", 0xB3B4B1B2);
    const std::string b = stats_parameter(1, 2, 3, "AA"), slot_b = record(3, "AA", 0x20001);
    scenario(in_turn("vs", {"'indicate'\nindication = 0x0601\nbytes = '" + tlv(1, "E7") + "'"}));
    ASSERT_EQ(open(), 0);
    ASSERT_EQ(switch_feature(), 0);
    ASSERT_TRUE(wait_until([] { return told_count > 0; })) << "the service has no listener";
    EXPECT_EQ(told, "5 E7");
    // clang-format off
    expect_told({
        {"FirstFlagNotReduced",     0x0004, word + tlv(2, "02") + tlv(3, "00"), "2 A1A2A3A4" "0100" "0000"},
        {"SecondFlagNotReduced",    0x0004, word + tlv(2, "00") + tlv(3, "80"), "2 A1A2A3A4" "0001" "0000"},
        {"TablesMixedUp",           0x0203, word + tlv(2, "02" + a + b) + tlv(0x10, "01" + b) + tlv(0x11, "F1F2F3F4"),
         "3 A1A2A3A4" + slot_a + slot_b + times(8, empty) + le(2, 4) + slot_b + times(4, empty) + one + "F1F2F3F4"},
        {"CountsAboveTheRoomBelieved", 0x0203, word + tlv(2, "0C" + times(12, b)) + tlv(0x10, "06" + times(6, a)),
         "3 A1A2A3A4" + times(10, slot_b) + le(10, 4) + times(5, slot_a) + le(5, 4) + "FFFFFFFF"},
        {"ValueAboveTheRoomBelieved", 0x0203, word + tlv(2, "01" + stats_parameter(1, 2, 3, value701)),
         "3 A1A2A3A4" + record(3, value700, 0x20001) + times(9, empty) + one + times(5, empty) + none + "FFFFFFFF"},
        {"BytesAboveTheRoomBelieved", 0x0204, word + tlv(2, "65" + times(101, "EE")) + tlv(3, "B1B2") + tlv(4, "C1C2"),
         "4 A1A2A3A4" + times(100, "EE000000") + le(100, 4) + "B1B2" "C1C2"},
        {"BytesNotWidened",         0x0204, word + tlv(2, "02D1D2") + tlv(3, "B1B2") + tlv(4, "C1C2"),
         "4 A1A2A3A4" "D1000000" "D2000000" + times(98, none) + le(2, 4) + "B1B2" "C1C2"},
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

// The modem's answer of these parameters, and of one.
std::string answer(const std::string& parameters)
{
    return raw(tlv(2, "0000000000000000") + tlv(0x10, parameters));
}
std::string sample(std::uint16_t sub, std::uint32_t id, const std::string& value)
{
    return answer("01" + stats_parameter(sub, 0, id, value));
}

template <typename Record>
std::function<std::int32_t()> view(std::int32_t (*get)(std::uint32_t, Record*), std::uint32_t sub)
{
    return [=] { return get(sub, reinterpret_cast<Record*>(room)); };
}

// ---- The manager: samples ----

TEST_F(ModemHydra, SamplesAreTakenAsFarAsTheyCanBeBelieved)
{
    const auto wcdma = view(modem_hydra_wcdma_pn_search_edition2_get, 1);
    const auto asdiv = view(modem_hydra_mcs_trm_asdiv_get, 0);
    const std::string a = "01" + f32(-1.5F) + f32(2.25F), record_a = "01000000" + f32(-1.5F) + f32(2.25F);
    const auto failed = [](const std::string& why, int number, int count) {
        return "modem_hydra_data_get: Fail to get data, " + why + "number = " + std::to_string(number) +
               ", sub = 1, ret id_num = " + std::to_string(count) + ", id = 110";
    };
    // clang-format off
    expect("vs", {
        {"EmptyAnswerTaken",       wcdma, {answer("00")}, 0, "", failed("empty, ", 1, 0)},
        {"SecondValueOverlooked",  wcdma, {answer("02" + times(2, stats_parameter(1, 0, 110, a)))}, 0, "", failed("id num error, ", 2, 2)},
        {"CountCutBelowItsLimit",  wcdma, {answer("0C" + times(12, stats_parameter(1, 0, 110, a)))}, 0, "", failed("id num error, ", 3, 10)},
        {"OtherParameterTaken",    wcdma, {sample(1, 111, a)}, 0, "", failed("ret_id(111) is invalid, ", 4, 1)},
        {"OtherSubscriptionTaken", wcdma, {sample(0, 110, a)}, 0, "", failed("ret_sub(0) is invalid, ", 5, 1)},
        {"EmptyValueTaken",        wcdma, {sample(1, 110, "")}, 0, "", failed("data_len(0) is invalid, should be in (0, 700], ", 6, 1)},
        {"MissingAnswerTaken",     asdiv, {raw(tlv(2, "0000000000000000"))}, 0, "", "Fail to get data fail, number = 7, ret = 1, sub = 0, id = 100"},
        {"ResultReadAsHalves",     wcdma, {raw(tlv(2, "010000005E000000") + tlv(0x10, "01" + stats_parameter(1, 0, 110, a)))}, 0, "", "ret = 4, "},
        {"GoodOneHeldBack",        wcdma, {sample(1, 110, a)}, 1, record_a, "Success to get data, number = 9, sub = 1, ret id_num = 1, id = 110, data_len = 9"},
        {"SubscriptionNotTold",    view(modem_hydra_mcs_trm_asdiv_get, UINT_MAX), {}, 0, "", "modem_api_get_stats_parameter, sub(-1) is invalid"},
        {"NullFilled",             [] { return modem_hydra_mcs_trm_asdiv_get(0, nullptr); }, {}, 0, "", "asdiv_get: ptr_hydra_data is NULL"},
        {"LongValueRefused",       asdiv, {sample(0, 100, times(701, "03"))}, 1, times(8, "03"), "number = 10, sub = 0, ret id_num = 1, id = 100, data_len = 700"},
        {"LongSampleRefused",      wcdma, {sample(1, 110, a + "EE")}, 1, record_a},
        {"ShortAtTheLastField",    wcdma, {sample(1, 110, a.substr(0, 14))}, 0, record_a.substr(0, 16) + "00000000",
         "modem_hydra_wcdma_pn_search_edition2_get: g_hydra_data_left(2) is not enough for rx_agc_1, id(0x6e)"},
        {"LostServiceAnswered",    wcdma, {"'down'"}, 0, "", "ret = 1, "},
    });
    // clang-format on
    EXPECT_EQ(log_count("The hydra is not inited, will init it"), 1U);
    EXPECT_TRUE(wait_until([this] { return log_count("down_event: service down with error -2") == 1; }));
    EXPECT_EQ(requests()[8].bytes.substr(0, 20), tlv(1, "0100") + tlv(2, "0900")) << "the number goes out as the slot";
}

TEST_F(ModemHydra, AnInitReplacesTheClient)
{
    EXPECT_EQ(view(modem_hydra_mcs_trm_asdiv_get, 0)(), 1);
    EXPECT_EQ(modem_hydra_api_init(), 1);
    EXPECT_EQ(modem_hydra_stats_start(), 1);
    EXPECT_EQ(log_count("old g_hydra_client_id = 0"), 1U);
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_hydra_api_deinit(), 0);
    EXPECT_EQ(modem_hydra_api_is_inited(), 0);
}

TEST_F(ModemHydra, ViewsOfTwoThreadsRunOneAfterTheOther)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\nnth = 1\naction = 'delay'\nms = 100\n");
    modem_hydra_wcdma_pn_search_edition2 wcdma{};
    std::thread first([&] { modem_hydra_wcdma_pn_search_edition2_get(1, &wcdma); });
    EXPECT_TRUE(wait_until([&] { return requests().size() == 1; }));
    modem_hydra_gsm_l1_rx_diversity_metrics gsm{};
    EXPECT_EQ(modem_hydra_gsm_l1_rx_diversity_metrics_get(0, &gsm), 1);
    first.join();
    std::string order;
    for (const Traced& message : trace()) order += message.to_modem ? '>' : '<';
    EXPECT_EQ(order, "><><");
    EXPECT_EQ(wcdma.rx_agc_1, -77.25F);
    EXPECT_EQ(gsm.rx_drx, -76.25F);
}

// ---- The manager: transmit power ----

std::int32_t of_sub_0()
{
    return modem_tx_power_get_by_sub(0);
}
// The two fetches of a power: the mode, and the figure of it.
std::string mode(std::uint16_t sub, std::uint32_t rat)
{
    return sample(sub, 44, "01" + le(rat, 4));
}
std::string lte(std::uint16_t sub, std::int32_t power)
{
    return sample(sub, 98, "01" + le(static_cast<std::uint16_t>(power), 2) + times(5, "00"));
}
std::string nr(std::uint16_t sub, float power)
{
    return sample(sub, 90, "02000000" + f32(power) + times(44, "00"));
}

TEST_F(ModemHydra, PowerIsAWholeNumberOrNone)
{
    const auto of_data_sub = modem_tx_power_get_for_dds_sub, of_both = modem_tx_power_get_for_max_sub;
    set_property("persist.radio.default_data_sub", "1");
    // clang-format off
    expect("vs", {
        {"NanConverted",              of_sub_0, {mode(0, 12), nr(0, std::nanf(""))}, 0},
        {"InfinityConverted",         of_sub_0, {mode(0, 12), nr(0, HUGE_VALF)}, INT32_MAX},
        {"LowFigureWrapped",          of_sub_0, {mode(0, 12), nr(0, -3e9F)}, INT32_MIN},
        {"LargestBelowTheEdgeCut",    of_sub_0, {mode(0, 12), nr(0, 2147483520.0F)}, 2147483520},
        {"SubscriptionOfDataIgnored", of_data_sub, {mode(1, 9), lte(1, 2)}, 2},
        {"ComparedWithoutSign",       of_both, {mode(0, 9), lte(0, 3), mode(1, 9), lte(1, -3)}, 3, "", "exit, tx_power0 = 3, tx_power1 = -3, tx_power = 3 <"},
    });
    // clang-format on
}

}  // namespace
}  // namespace rbk::test

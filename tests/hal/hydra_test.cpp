// The statistics manager: what it takes for a sample, how views unpack one, and the transmit power.
#include "modem_hydra_mgr.h"

#include <climits>
#include <cmath>
#include <thread>

#include "hal/exchanges.h"

namespace rbk::test {
namespace {

class Hydra : public ExchangeTest {};

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

// ---- Samples ----

TEST_F(Hydra, SamplesAreTakenAsFarAsTheyCanBeBelieved)
{
    const auto wcdma = view(modem_hydra_wcdma_pn_search_edition2_get, 1);
    const auto asdiv = view(modem_hydra_mcs_trm_asdiv_get, 0);
    const std::string a = "01" + f32(-1.5F) + f32(2.25F), record_a = "01000000" + f32(-1.5F) + f32(2.25F);
    const auto failed = [](const std::string& why, int number, int count) {
        return "modem_hydra_data_get: Fail to get data, " + why + "number = " + std::to_string(number) +
               ", sub = 1, ret id_num = " + std::to_string(count) + ", id = 110";
    };
    // In the sample the figures stand chain by chain, in the record by kind; the last one is missing.
    std::string lte = "01013A0700000700010F00", by_kind = "010100003A070000070001000F000000";
    for (int i = 0; i < 15; ++i) lte += f32(static_cast<float>(i));
    for (const int i : {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11}) by_kind += f32(static_cast<float>(i));
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
        {"ShortAtTheLastField",    view(modem_hydra_lte_srv_meas_info_get_for_pcc, 0), {sample(0, 82, lte + "000000")}, 0,
         by_kind + "00000000", "modem_hydra_lte_srv_meas_info_get: g_hydra_data_left(3) is not enough for snr_rx3, id(0x52)"},
        {"LostServiceAnswered",    wcdma, {"'down'"}, 0, "", "ret = 1, "},
    });
    // clang-format on
    EXPECT_EQ(log_count("The hydra is not inited, will init it"), 1U);
    EXPECT_TRUE(wait_until([this] { return log_count("down_event: service down with error -2") == 1; }));
    EXPECT_EQ(requests()[8].bytes.substr(0, 20), tlv(1, "0100") + tlv(2, "0900")) << "the number goes out as the slot";
}

TEST_F(Hydra, AnInitReplacesTheClient)
{
    EXPECT_EQ(view(modem_hydra_mcs_trm_asdiv_get, 0)(), 1);
    EXPECT_EQ(modem_hydra_api_init(), 1);
    EXPECT_EQ(modem_hydra_stats_start(), 1);
    EXPECT_EQ(log_count("old g_hydra_client_id = 0"), 1U);
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_hydra_api_deinit(), 0);
    EXPECT_EQ(modem_hydra_api_is_inited(), 0);
}

TEST_F(Hydra, ViewsOfTwoThreadsRunOneAfterTheOther)
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

// ---- Transmit power ----

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

TEST_F(Hydra, PowerIsAWholeNumberOrNone)
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

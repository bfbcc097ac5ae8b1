// The statistics manager: what it takes for a sample, how views unpack one, and the transmit power.
#include "modem_hydra_mgr.h"

#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <set>
#include <thread>

#include "support/embedded_run.h"

namespace rbk::test {
namespace {

class Hydra : public EmbeddedRun {
 public:
    void with_samples(const std::string& rows, int sub = 0) const
    {
        scenario("[stats.sub" + std::to_string(sub) + "]\n" + rows);
    }
};

// ---- Fetching ----

struct AnswerCase {
    const char* catches;
    std::string parameters;  // TLV 0x10 of the answer
    const char* words;
};
const AnswerCase kRefused[] = {
    {"EmptyAnswerTaken", "00", "Fail to get data, empty, number = 1, sub = 1, ret id_num = 0, id = 110"},
    {"SecondValueOverlooked", "02" + stats_parameter(1, 0, 110, "01") + stats_parameter(1, 0, 110, "02"),
     "Fail to get data, id num error, number = 1, sub = 1, ret id_num = 2, id = 110"},
    {"CountCutBelowItsLimit",
     "0C" + stats_parameter(1, 0, 110, "01") + stats_parameter(1, 0, 110, "02") + stats_parameter(1, 0, 110, "03") +
         stats_parameter(1, 0, 110, "04") + stats_parameter(1, 0, 110, "05") + stats_parameter(1, 0, 110, "06") +
         stats_parameter(1, 0, 110, "07") + stats_parameter(1, 0, 110, "08") + stats_parameter(1, 0, 110, "09") +
         stats_parameter(1, 0, 110, "0A") + stats_parameter(1, 0, 110, "0B") + stats_parameter(1, 0, 110, "0C"),
     "Fail to get data, id num error, number = 1, sub = 1, ret id_num = 10, id = 110"},
    {"OtherParameterTaken", "01" + stats_parameter(1, 0, 111, "01"),
     "Fail to get data, ret_id(111) is invalid, number = 1, sub = 1, ret id_num = 1, id = 110"},
    {"OtherSubscriptionTaken", "01" + stats_parameter(0, 1, 110, "01"),
     "Fail to get data, ret_sub(0) is invalid, number = 1, sub = 1, ret id_num = 1, id = 110"},
    {"EmptyValueTaken", "01" + stats_parameter(1, 0, 110, ""),
     "Fail to get data, data_len(0) is invalid, should be in (0, 700], number = 1, sub = 1, ret id_num = 1, id = 110"},
};

class HydraRefused : public Hydra, public testing::WithParamInterface<AnswerCase> {};

TEST_P(HydraRefused, LeavesTheRecordAsItWas)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\nnth = 1\naction = 'raw'\nbytes = '" +
             tlv(2, "0000000000000000") + tlv(0x10, GetParam().parameters) + "'\n");
    modem_hydra_wcdma_pn_search_edition2 record{0xEE, 1.5F, 2.5F};
    EXPECT_EQ(modem_hydra_wcdma_pn_search_edition2_get(1, &record), 0);
    EXPECT_EQ(log_count(std::string("modem_hydra_data_get: ") + GetParam().words), 1U);
    EXPECT_EQ(record.version, 0xEE);
    EXPECT_EQ(record.rx_agc_1, 2.5F);
    EXPECT_EQ(modem_hydra_wcdma_pn_search_edition2_get(1, &record), 1);  // nothing is held back
    EXPECT_EQ(log_count("Success to get data, number = 2, sub = 1, ret id_num = 1, id = 110, data_len = 9"), 1U);
}
INSTANTIATE_TEST_SUITE_P(All, HydraRefused, testing::ValuesIn(kRefused),
                         [](const auto& row) { return row.param.catches; });

TEST_F(Hydra, StepsOfTheSharedFrameHaveLinesOfTheirOwn)
{
    modem_hydra_mcs_trm_asdiv record{};
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, &record), 1);
    std::set<std::string> places;  // "[modem_hydra_mgr.cpp:244] "
    for (const std::string& line : lines_of(read_file(home() / "log")))
        if (const std::size_t at = line.find("modem_hydra_mcs_trm_asdiv_get: "); at != std::string::npos)
            places.insert(line.substr(0, at));
    EXPECT_EQ(places.size(), 3U);  // entry, arguments, exit
}

TEST_F(Hydra, NumberRisesWithEachRequestAlone)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\nnth = 1\naction = 'error'\ncode = 94\n");
    modem_hydra_mcs_trm_asdiv record{};
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(2, &record), 0);
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0xFFFFFFFF, &record), 0);
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, nullptr), 0);
    EXPECT_TRUE(requests().empty());
    EXPECT_EQ(log_count("modem_api_get_stats_parameter, sub(-1) is invalid"), 1U);
    EXPECT_EQ(log_count("modem_hydra_mcs_trm_asdiv_get: ptr_hydra_data is NULL"), 1U);

    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, &record), 0);
    EXPECT_EQ(log_count("Fail to get data fail, number = 1, ret = 4, sub = 0, id = 100"), 1U);
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, &record), 1);
    EXPECT_EQ(requests().back().bytes.substr(0, 20), tlv(1, "0000") + tlv(2, "0200"));
}

TEST_F(Hydra, FetchInitsByItselfAndAnInitReplacesTheClient)
{
    EXPECT_EQ(modem_hydra_stats_start(), 0);
    EXPECT_EQ(modem_hydra_api_is_inited(), 0);
    stats_para_data data{};
    EXPECT_EQ(modem_hydra_get_stats_parameter(0, 1, &data), 0);
    EXPECT_EQ(log_count("The hydra is not inited, do nothing"), 2U);
    EXPECT_TRUE(requests().empty());

    modem_hydra_mcs_trm_asdiv record{};
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, &record), 1);
    EXPECT_EQ(log_count("The hydra is not inited, will init it"), 1U);
    EXPECT_EQ(modem_hydra_api_init(), 1);
    EXPECT_EQ(modem_hydra_stats_start(), 1);
    EXPECT_EQ(requests().back().bytes, tlv(1, "02000000") + tlv(2, "01") + tlv(0x10, "01"));
    EXPECT_EQ(log_count("old g_hydra_client_id = 0"), 1U);
    EXPECT_EQ(log_count("client already freed"), 0U);
    EXPECT_EQ(modem_hydra_api_deinit(), 0);
    EXPECT_EQ(modem_hydra_api_is_inited(), 0);
}

TEST_F(Hydra, ValueOf701BytesComesCutTo700)
{
    with_samples("100 = { fill = 3, size = 701 }\n");
    modem_hydra_mcs_trm_asdiv record{};
    EXPECT_EQ(modem_hydra_mcs_trm_asdiv_get(0, &record), 1);
    EXPECT_EQ(log_count("id = 100, data_len = 700"), 1U);
    EXPECT_EQ(record.sig_path, 0x0303);
}

TEST_F(Hydra, ViewsOfTwoThreadsRunOneAfterTheOther)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 0x0207\nnth = 1\naction = 'delay'\nms = 100\n");
    ASSERT_EQ(modem_hydra_api_init(), 1);
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

// ---- Unpacking ----

TEST_F(Hydra, ShortLteSampleFailsAtItsLastField)
{
    std::string sample =
        "0101"
        "3A070000"
        "0700"
        "01"
        "0F00";
    for (int i = 0; i < 15; ++i) sample += f32(static_cast<float>(i));
    with_samples("82 = '" + sample + "000000'\n105 = '" + sample.substr(0, 2 * 8) + "'\n");
    modem_hydra_lte_srv_meas_info record{};
    record.snr_rx3 = 7;
    EXPECT_EQ(modem_hydra_lte_srv_meas_info_get_for_pcc(0, &record), 0);
    EXPECT_EQ(log_count("modem_hydra_lte_srv_meas_info_get: g_hydra_data_left(3) is not enough for snr_rx3, id(0x52)"),
              1U);
    EXPECT_EQ(record.earfcn, 1850U);
    EXPECT_EQ(record.rssi_rx3, 14.0F);
    EXPECT_EQ(record.rsrp_rx1, 4.0F);
    EXPECT_EQ(record.snr_rx3, 0.0F);
    EXPECT_EQ(modem_hydra_lte_srv_meas_info_get_for_scc3(0, &record), 0);
    EXPECT_EQ(log_count("g_hydra_data_left(0) is not enough for is_srv_cell, id(0x69)"), 1U);
    EXPECT_EQ(record.pci, 7U);
    EXPECT_EQ(record.rssi_rx3, 0.0F);
}

TEST_F(Hydra, SampleMayBeLongerThanItsRecord)
{
    with_samples("110 = '01" + f32(-1.5F) + f32(2.25F) + "EE'\n111 = '01" + f32(-3.5F) + "EEEEEE'\n");
    modem_hydra_wcdma_pn_search_edition2 wcdma{};
    EXPECT_EQ(modem_hydra_wcdma_pn_search_edition2_get(0, &wcdma), 1);
    EXPECT_EQ(wcdma.rx_agc_0, -1.5F);
    EXPECT_EQ(wcdma.rx_agc_1, 2.25F);
    modem_hydra_gsm_l1_rx_diversity_metrics gsm{};
    EXPECT_EQ(modem_hydra_gsm_l1_rx_diversity_metrics_get(0, &gsm), 0);
    EXPECT_EQ(gsm.rx_prx, -3.5F);
    EXPECT_EQ(log_count("g_hydra_data_left(3) is not enough for rx_drx, id(0x6f)"), 1U);
}

// ---- Transmit power ----

struct PowerCase {
    const char* catches;
    std::string sub0;  // rows of [stats.sub0] and [stats.sub1]
    std::string sub1;
    std::int32_t (*ask)();
    std::int32_t power;
    const char* words = "";  // in the log, once
};

std::int32_t of_sub_0()
{
    return modem_tx_power_get_by_sub(0);
}

std::string lte(int power)
{
    return "44 = { stack_max = 1, rat = 9 }\n98 = { pusch_tx_power = " + std::to_string(power) + " }\n";
}

std::string nr(float power)
{
    return "44 = { stack_max = 1, rat = 12 }\n90 = '02000000" + f32(power) + std::string(2 * 44, '0') + "'\n";
}
const std::string kNoService = "44 = '00'\n";

const PowerCase kPowers[] = {
    {"SignLost", lte(-5), "", of_sub_0, -5},
    {"FractionRounded", nr(23.75F), "", of_sub_0, 23},
    {"FractionRoundedDown", nr(-13.9F), "", of_sub_0, -13},
    {"NanConverted", nr(std::nanf("")), "", of_sub_0, 0},
    {"InfinityConverted", nr(HUGE_VALF), "", of_sub_0, INT32_MAX},
    {"LowFigureWrapped", nr(-3e9F), "", of_sub_0, INT32_MIN},
    {"LargestBelowTheEdgeCut", nr(2147483520.0F), "", of_sub_0, 2147483520},
    {"MissingModeAsked", kNoService, "", of_sub_0, 65535, "rat(-1) is invalid"},
    {"OtherModeTaken", "44 = { stack_max = 1, rat = 5 }\n", "", of_sub_0, 65535, "rat(5) is invalid"},
    {"ShortModeRead", "44 = '01090000'\n", "", of_sub_0, 65535, "g_hydra_data_left(3) is not enough for rat, id(0x2c)"},
    {"ShortLtePowerRead", "44 = '0109000000'\n98 = '0102'\n", "", of_sub_0, 65535,
     "modem_hydra_lte_pusch_power_info_get faile"},
    {"LastLossNotNeeded", "44 = '010C000000'\n90 = { fill = 1, size = 51 }\n", "", of_sub_0, 65535,
     "modem_hydra_nr5g_mac_ul_phy_ch_power_info_get faile"},
    {"SubscriptionOfDataIgnored", lte(1), lte(2), modem_tx_power_get_for_dds_sub, 2},
    {"NoPowerWinsOnSub0", kNoService, lte(-20), modem_tx_power_get_for_max_sub, -20},
    {"NoPowerWinsOnSub1", lte(10), kNoService, modem_tx_power_get_for_max_sub, 10},
    {"NoneInvented", kNoService, kNoService, modem_tx_power_get_for_max_sub, 65535},
    {"WeakerWins", lte(-5), nr(-4.5F), modem_tx_power_get_for_max_sub, -4},
    {"ComparedWithoutSign", lte(3), lte(-3), modem_tx_power_get_for_max_sub, 3,
     "function exit, tx_power0 = 3, tx_power1 = -3, tx_power = 3 <-------------"},
};

class HydraPower : public Hydra, public testing::WithParamInterface<PowerCase> {};

TEST_P(HydraPower, IsAWholeNumberOrNone)
{
    set_property("persist.radio.default_data_sub", "1");
    scenario("[stats.sub0]\n" + GetParam().sub0 + "[stats.sub1]\n" + GetParam().sub1);
    EXPECT_EQ(GetParam().ask(), GetParam().power);
    if (*GetParam().words != '\0') {
        EXPECT_EQ(log_count(GetParam().words), 1U);
    }
}
INSTANTIATE_TEST_SUITE_P(All, HydraPower, testing::ValuesIn(kPowers),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test

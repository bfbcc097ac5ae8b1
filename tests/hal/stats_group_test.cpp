// Groups 9 and 7 as people run them: standard output under a mask without traces, compared whole, against samples and
// records given by bytes.
#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>
#include <thread>

#include "support/group_test.h"
#include "support/modem_process.h"

namespace rbk::test {
namespace {

const std::string kData = "RIL[velmor_rbk_hydra_data.cpp:N] ";
const std::string kTest = "RIL[velmor_rbk_hydra_test.cpp:N] ";
const std::string kManager = "RIL[modem_hydra_mgr.cpp:N] ";

class StatsGroup : public GroupTest {};

// The line that group 9 begins with.
std::string head(const std::string& opt, const std::string& sub)
{
    return kData + "velmor_test_qmi_modem_stats_do: opt = " + opt + ", sub = " + sub + "\n";
}

// ---- Group 9: figures ----

struct Figure {
    const char* catches;
    const char* opt;
    const char* sub;
    int sample_sub;
    int id;
    std::string sample;
    std::string line;
};

// 16 figures in the order of an LTE sample, from `first` on.
std::string sixteen(float first)
{
    std::string text;
    for (int i = 0; i < 16; ++i) text += f32(first + 0.25F * static_cast<float>(i));
    return text;
}

std::string lte_sample(const char* earfcn, float first)
{
    return std::string("F1F2") + earfcn +
           "0B01"
           "F3"
           "0D02" +
           sixteen(first);
}
const std::string kLteFigures =
    "pci: 267, rx_valid: 525, "
    "rsrp_rx0: 1.00, rsrq_rx0: 1.25, rssi_rx0: 1.50, snr_rx0: 1.75, "
    "rsrp_rx1: 2.00, rsrq_rx1: 2.25, rssi_rx1: 2.50, snr_rx1: 2.75, "
    "rsrp_rx2: 3.00, rsrq_rx2: 3.25, rssi_rx2: 3.50, snr_rx2: 3.75, "
    "rsrp_rx3: 4.00, rsrq_rx3: 4.25, rssi_rx3: 4.50, snr_rx3: 4.75\n";

std::string nr_sample(float first)
{
    return "F1F2F3F4" + f32(first) + f32(-2.25F) + f32(-3.125F) + f32(-4.005F) + f32(-5.5F);
}
const std::string kNrFigures = "rsrp_rx1: -2.25, rsrp_rx2: -3.12, rsrp_rx3: -4.01, rsrq: -5.50\n";

const Figure kFigures[] = {
    {"LteFiguresMixedUp", "0", "0", 0, 82, lte_sample("3A070000", 1), "ASDIV DATA: earfcn: 1850, " + kLteFigures},
    {"SubNotPassedOn", "0", "1", 1, 82, lte_sample("FFFFFF7F", 1), "ASDIV DATA: earfcn: 2147483647, " + kLteFigures},
    {"LteScc1TakenFromElsewhere", "1", "0", 0, 103, lte_sample("01000000", 1), "ASDIV DATA: earfcn: 1, " + kLteFigures},
    {"LteScc2TakenFromElsewhere", "2", "0", 0, 104, lte_sample("02000000", 1), "ASDIV DATA: earfcn: 2, " + kLteFigures},
    {"LteScc3TakenFromElsewhere", "3", "0", 0, 105, lte_sample("03000000", 1), "ASDIV DATA: earfcn: 3, " + kLteFigures},
    {"LteScc4TakenFromElsewhere", "4", "0", 0, 106, lte_sample("04000000", 1), "ASDIV DATA: earfcn: 4, " + kLteFigures},
    {"LteScc5TakenFromElsewhere", "5", "0", 0, 107, lte_sample("05000000", 1), "ASDIV DATA: earfcn: 5, " + kLteFigures},
    {"LteScc6TakenFromElsewhere", "6", "0", 0, 108, lte_sample("06000000", 1), "ASDIV DATA: earfcn: 6, " + kLteFigures},
    {"NrRssiMixedUp", "7", "1", 1, 94, "F1F2F3F4" + f32(-1) + f32(-2) + f32(-3) + f32(-4),
     "ASDIV DATA: rssi_rx0: -1.00, rssi_rx1: -2.00, rssi_rx2: -3.00, rssi_rx3: -4.00\n"},
    {"NrSnrMixedUp", "8", "1", 1, 112, "F1F2F3F4" + f32(1) + f32(2) + f32(3) + f32(4),
     "ASDIV DATA: snr_rx0: 1.00, snr_rx1: 2.00, snr_rx2: 3.00, snr_rx3: 4.00\n"},
    {"NrAntennasMixedUp", "9", "1", 1, 113,
     "F1F2F3F4"
     "0102030405060708090A0BFF",
     "ASDIV DATA: ant_rx_0_old = 1, ant_rx_0_new = 2, ant_rx_1_old = 3, ant_rx_1_new = 4, ant_rx_2_old = 5, "
     "ant_rx_2_new = 6, ant_rx_3_old = 7, ant_rx_3_new = 8, ant_tx_0_old = 9, ant_tx_0_new = 10, ant_tx_1_old = 11, "
     "ant_tx_1_new = 255\n"},
    {"NrFiguresMixedUp", "10", "1", 1, 135, nr_sample(-1), "ASDIV DATA: rsrp_rx0: -1.00, " + kNrFigures},
    {"NrScc1TakenFromElsewhere", "11", "1", 1, 6, nr_sample(-7), "ASDIV DATA: rsrp_rx0: -7.00, " + kNrFigures},
    {"NrScc2TakenFromElsewhere", "12", "1", 1, 7, nr_sample(-8), "ASDIV DATA: rsrp_rx0: -8.00, " + kNrFigures},
    {"WcdmaFiguresMixedUp", "20", "0", 0, 110, "F1" + f32(-71.5F) + f32(-73.25F),
     "ASDIV DATA: rx_agc_0: -71.50, rx_agc_1: -73.25\n"},
    {"GsmFiguresMixedUp", "21", "0", 0, 111, "F1" + f32(-74.5F) + f32(-76.25F),
     "ASDIV DATA: rx_prx: -74.50, rx_drx: -76.25\n"},
    {"AntennaInfoOfSub1Asked", "30", "1", 0, 100,
     "F1"
     "04"
     "0201"
     "0403"
     "05"
     "06",
     "ANT INFO: ant_num: 4, ant_path: 258, sig_path: 772, old_config: 5, new_config: 6\n"},
    {"NoNumberMadeOne", "8", "0", 0, 112,
     "F1F2F3F4" + f32(std::nanf("")) + f32(-HUGE_VALF) + f32(std::numeric_limits<float>::denorm_min()) + f32(3e26F),
     "ASDIV DATA: snr_rx0: nan, snr_rx1: -inf, snr_rx2: 0.00, snr_rx3: 300000007613292870346211328.00\n"},
    {"ShortSampleShown", "21", "0", 0, 111, "F1" + f32(1) + "010203",
     kManager +
         "modem_hydra_gsm_l1_rx_diversity_metrics_get: g_hydra_data_left(3) is not enough for rx_drx, id(0x6f)\n" +
         kData + "velmor_test_qmi_modem_stats_gsm_rssi: modem_hydra_gsm_l1_rx_diversity_metrics_get failed\n"},
    {"PowerOfSub0TakenFromElsewhere", "31", "0", 0, 98,
     "F1"
     "FBFF"
     "F2"
     "F3F4"
     "F5F6",
     "TX INFO: tx_power = -5\n"},
    {"DataSubscriptionIgnored", "31", "2", 0, 98,
     "F1"
     "F9FF"
     "F2"
     "F3F4"
     "F5F6",
     "TX INFO: tx_power = -7\n"},
    {"WeakerPowerShown", "31", "7", 0, 98,
     "F1"
     "6300"
     "F2"
     "F3F4"
     "F5F6",
     "TX INFO: tx_power = 99\n"},
};

class StatsFigure : public StatsGroup, public testing::WithParamInterface<Figure> {};

TEST_P(StatsFigure, StandsAsTheModemSentIt)
{
    const Figure& figure = GetParam();
    scenario("[stats.sub" + std::to_string(figure.sample_sub) + "]\n" + std::to_string(figure.id) + " = '" +
             figure.sample + "'\n");
    EXPECT_EQ(shown({"9", figure.opt, figure.sub}), head(figure.opt, figure.sub) + figure.line);
    // The statistics are switched on first, and stay on.
    EXPECT_EQ(requests().front().bytes, tlv(1, "02000000") + tlv(2, "01") + tlv(0x10, "01"));
    EXPECT_EQ(read_file(home() / "modem/vs/feature_2"), std::string("\x01\x01\x01", 3));
}
INSTANTIATE_TEST_SUITE_P(All, StatsFigure, testing::ValuesIn(kFigures),
                         [](const auto& row) { return row.param.catches; });

// ---- Group 9: everything else ----

struct Odd {
    const char* catches;
    Words words;
    std::string text;
};

std::string no_figure(const std::string& operation, const std::string& words)
{
    return kData + operation + ": " + words + "\n";
}

const Odd kOdd[] = {
    {"UnknownOptPrintsAFigure",
     {"9", "13", "0"},
     head("13", "0") +
         no_figure("velmor_test_qmi_modem_stats_hdl", "velmor_test_qmi_modem_stats_hdl: Unknown opt(13), sub(0)")},
    {"NegativeOptPrintsAFigure",
     {"9", "-1", "x"},
     head("-1", "0") +
         no_figure("velmor_test_qmi_modem_stats_hdl", "velmor_test_qmi_modem_stats_hdl: Unknown opt(-1), sub(0)")},
    {"HighSubAsked",
     {"9", "0", "2"},
     head("0", "2") + kManager + "modem_hydra_data_get: modem_api_get_stats_parameter, sub(2) is invalid\n" + kManager +
         "modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed\n" +
         no_figure("velmor_test_qmi_modem_stats_4g_rssi", "get hydra data failed")},
    {"TooFewWordsOpenAClient",
     {"9", "0"},
     no_figure("velmor_test_qmi_modem_stats_do", "note: Too few parameters, Pls refer to the following cmd:") +
         help_of(9)},
    {"TooFewWordsForTheParser",
     {"7", "0"},
     kTest + "velmor_test_modem_stats_parsing_process: note: Too few parameters, Pls refer to the following cmd:\n" +
         kTest + "velmor_test_modem_stats_do: velmor_test_modem_stats_parsing_process FAIL\n" + help_of(7)},
    {"TooFewWordsForTheReport",
     {"7", "1"},
     kTest + "velmor_test_modem_stats_get_debug_info: note: Too few parameters, Pls refer to the following cmd:\n" +
         kTest + "velmor_test_modem_stats_do: velmor_test_modem_stats_get_debug_info FAIL\n" + help_of(7)},
    {"TooFewWordsForTheGroup",
     {"7"},
     kTest + "velmor_test_modem_stats_do: note: Too few parameters, Pls refer to the following cmd:\n" + help_of(7)},
    {"UnknownTypeRun", {"7", "2", "0"}, kTest + "velmor_test_modem_stats_do: invalid type = 2\n" + help_of(7)},
    {"ResultLinesMaskedOrMore",
     {"7", "0", "0"},
     kTest + "velmor_test_modem_stats_parsing_process: length = 48, print_flag = 0\n"
             "version = 196609, mcc = 29440, mnc_num 128, mnc 704, tac 497189504, cgi 2028284490176, pci 51666\n"
             "freq_band_ind = 64, dl_earfcn = 27450241, dl_bw 1280, ul_earfcn 24836608, ul_bw 1280, allow_access 128, "
             "scs 0\n"},
};

class StatsOdd : public StatsGroup, public testing::WithParamInterface<Odd> {};

TEST_P(StatsOdd, IsToldInItsWords)
{
    EXPECT_EQ(shown(GetParam().words), GetParam().text);
}
INSTANTIATE_TEST_SUITE_P(All, StatsOdd, testing::ValuesIn(kOdd), [](const auto& row) { return row.param.catches; });

TEST_F(StatsGroup, MaskOf11ComesBeforeAnythingIsLookedAt)
{
    const std::string figure = head("31", "0") + "TX INFO: tx_power = 13\n";
    // Traces alone until the group begins, and none from there on.
    set_property("persist.vendor.radio.adb_log_shell", "4");
    const std::string text = shown({"9", "31", "0"});
    EXPECT_NE(text, figure);
    EXPECT_TRUE(text.ends_with(figure)) << text;
    set_property("persist.vendor.radio.adb_log_shell", "0");
    EXPECT_EQ(shown({"9", "31", "0"}), figure);
    EXPECT_EQ(shown({"9", "0"}),
              no_figure("velmor_test_qmi_modem_stats_do", "note: Too few parameters, Pls refer to the following cmd:") +
                  help_of(9));
}

struct Absent {
    const char* catches;
    Words words;
    int opens;
    std::string figure;
};
const Absent kAbsent[] = {
    {"FetchDoesntTryAgain",
     {"9", "0", "0"},
     2,
     no_figure("velmor_test_qmi_modem_stats_4g_rssi", "get hydra data failed")},
    {"SecondSubscriptionDoesntTryAgain", {"9", "31", "7"}, 3, "TX INFO: tx_power = 65535\n"},
};

class StatsAbsent : public StatsGroup, public testing::WithParamInterface<Absent> {};

TEST_P(StatsAbsent, CostsTenAttemptsForEachOpen)
{
    scenario("[modem]\nservices = ['extended']\n");
    const std::string failed = kManager + "modem_hydra_api_init_ex: modem_api_init_client failed\n";
    const std::string again = kManager + "modem_hydra_data_get: The hydra is not inited, will init it\n" + failed +
                              kManager + "modem_hydra_data_get: The hydra init failed, will do nothing\n";
    const std::string mode = kManager + "modem_sys_mode_get: modem_hydra_data_get failed\n" + kManager +
                             "modem_tx_power_get_by_sub: rat(-1) is invalid\n";
    const std::string view = kManager + "modem_hydra_lte_srv_meas_info_get: modem_hydra_data_get failed\n";
    EXPECT_EQ(shown(GetParam().words), head(GetParam().words[1], GetParam().words[2]) + failed + kManager +
                                           "modem_hydra_stats_start: The hydra is not inited, do nothing\n" + again +
                                           (GetParam().opens == 3 ? mode + again + mode : view) + GetParam().figure);
    EXPECT_EQ(calls(), Words(9U * static_cast<std::size_t>(GetParam().opens), "sleep 1"));
}
INSTANTIATE_TEST_SUITE_P(All, StatsAbsent, testing::ValuesIn(kAbsent),
                         [](const auto& row) { return row.param.catches; });

struct Failing {
    const char* catches;
    const char* rule;
    std::string first;
    int ret;
};
const Failing kFailing[] = {
    {"SilenceTakenForAnAnswer", "action = 'silent'", "", 11},
    {"RubbishBelieved", "action = 'raw'\nbytes = 'FF FF FF'", "", 12},
    {"RefusalOverlooked", "action = 'error'\ncode = 94", "", 4},
    {"LostServiceOverlooked", "action = 'down'",
     "RIL[vs_client.cpp:N] vs_client_service_down_event: service down with error -2\n", 1},
};

class StatsFailing : public StatsGroup, public testing::WithParamInterface<Failing> {};

TEST_P(StatsFailing, FetchIsToldAndTheNextRunWorks)
{
    scenario(std::string("[[fault]]\nservice = 'vs'\nmessage = 0x0207\n") + GetParam().rule + "\n");
    if (GetParam().ret == 11) scale_timeouts("0.01");
    std::string text = shown({"9", "21", "0"});
    // From the library's thread, so before or after another line; but told, before the client is closed.
    const std::size_t down = text.find(GetParam().first);
    ASSERT_NE(down, std::string::npos) << text;
    text.erase(down, GetParam().first.size());
    EXPECT_EQ(text, head("21", "0") + kManager + "modem_hydra_data_get: Fail to get data fail, number = 1, ret = " +
                        std::to_string(GetParam().ret) + ", sub = 0, id = 111\n" + kManager +
                        "modem_hydra_gsm_l1_rx_diversity_metrics_get: modem_hydra_data_get failed\n" +
                        no_figure("velmor_test_qmi_modem_stats_gsm_rssi",
                                  "modem_hydra_gsm_l1_rx_diversity_metrics_get failed"));
    unsetenv("RBK_SCENARIO");
    unsetenv("RBK_QMI_TIMEOUT_SCALE");
    EXPECT_EQ(shown({"9", "21", "0"}), head("21", "0") + "ASDIV DATA: rx_prx: -74.50, rx_drx: -76.25\n");
}
INSTANTIATE_TEST_SUITE_P(All, StatsFailing, testing::ValuesIn(kFailing),
                         [](const auto& row) { return row.param.catches; });

TEST_F(StatsGroup, RefusedStartDoesntStopTheFetch)
{
    scenario("[[fault]]\nservice = 'vs'\nmessage = 3\naction = 'error'\ncode = 3\n");
    EXPECT_EQ(shown({"9", "21", "0"}), head("21", "0") + "ASDIV DATA: rx_prx: -74.50, rx_drx: -76.25\n");
}

TEST_F(StatsGroup, ShellUnderAnotherNameHasNoRight)
{
    const std::filesystem::path other = home() / "kbr";
    std::filesystem::copy_file(rbk_path(), other);
    const std::string refused =
        "RIL[modem_hydra_api.cpp:N] modem_api_init: check fail, do nothing\n"
        "RIL[modem_hydra_api.cpp:N] modem_api_init_client: check fail, do nothing\n" +
        kManager + "modem_hydra_api_init_ex: modem_api_init_client failed\n";
    EXPECT_EQ(
        without_line_numbers(run({other.string(), "9", "20", "0"}).out),
        head("20", "0") + refused + kManager + "modem_hydra_stats_start: The hydra is not inited, do nothing\n" +
            kManager + "modem_hydra_data_get: The hydra is not inited, will init it\n" + refused + kManager +
            "modem_hydra_data_get: The hydra init failed, will do nothing\n" + kManager +
            "modem_hydra_wcdma_pn_search_edition2_get: modem_hydra_data_get failed\n" +
            no_figure("velmor_test_qmi_modem_stats_wcdma_rssi", "modem_hydra_wcdma_pn_search_edition2_get failed"));
    EXPECT_TRUE(requests().empty());
}

TEST_F(StatsGroup, TwentySideBySideAreAllAnswered)
{
    const ModemProcess modem(home());
    RunOptions options;
    options.variables["RBK_MODEM"] = modem.address();
    std::vector<std::string> texts(20);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        threads.emplace_back([&, i] { texts[i] = run_rbk({"9", "31", i % 2 == 0 ? "0" : "1"}, options).out; });
    }
    for (std::thread& thread : threads) thread.join();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string figure = i % 2 == 0 ? "tx_power = 13\n" : "tx_power = 17\n";
        EXPECT_NE(texts[i].find(figure), std::string::npos) << texts[i];
    }
}

// ---- Group 7: the debug record ----

// A record of one version: the three head fields, and 0x01 in each byte behind them.
std::string debug_record(int version, int enabled, int unsupported)
{
    return le(static_cast<std::uint64_t>(version), 1) + le(static_cast<std::uint64_t>(enabled), 1) +
           le(static_cast<std::uint64_t>(unsupported), 8) + std::string(2 * 4, '0') + "01" + std::string(2 * 300, '1');
}

// The built-in record has version 4 and the statistics on; from its fourth field on each has one more than the last.
TEST_F(StatsGroup, RecordIsShownFieldByField)
{
    struct {
        const char* section;
        const char* fields;  // size and name
    } static const sections[] = {
        {"main",
         "1 g_modem_stats_feature_enable_status 8 g_unpk_version_not_support_num 8 g_modem_stats_cmd_ok_count "
         "8 g_modem_stats_cmd_fail_count 8 hydra_system_heapi_mem_max_num 8 hydra_system_heapi_mem_cur_num "
         "4 modem_statsi_cmd_q_count 4 modem_statsi_cmd_free_q_count 4 g_hydra_log_mask 4 g_hydra_log_stats_mask"},
        {"diag",
         "1 init_state 4 listener_event_num 1 listener_event_state 4 listener_event_call_num "
         "4 listener_event_parse_num 4 listener_log_num 1 listener_log_state 8 listener_log_call_num "
         "8 listener_log_parse_num 4 poll_update_call_num 4 poll_update_parse_num 8 listener_event_callback_num "
         "8 listener_log_callback_num 4 lte_cell_id_invalid_num 4 nr5g_cell_id_invalid_num 4 event_duration_ms_max "
         "4 log_duration_ms_max 4 do_duration_ms_max 4 debug_call_num 4 debug_parse_num 4 cust_event_call_num "
         "4 cust_event_parse_num"},
        {"cm",
         "1 init_state 1 listener_state 4 listener_call_event_call_num 4 listener_call_event_parse_num "
         "4 listener_subs_event_call_num 4 listener_subs_event_parse_num 4 listener_ss_event_call_num "
         "4 listener_ss_event_parse_num 4 listener_stats_event_call_num 4 listener_stats_event_parse_num "
         "4 poll_update_rf_call_num 4 poll_update_rf_parse_num 4 poll_update_lte_call_num "
         "4 poll_update_lte_parse_num 4 poll_update_nr5g_call_num 4 poll_update_nr5g_parse_num"},
        {"uim", "1 init_state 1 listener_state 4 listener_event_call_num 4 listener_event_parse_num"},
    };
    std::string text = kTest +
                       "velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x1\n"
                       "UNPK[size:1], version = 4\n";
    int cnt = 1;
    int field = 0;
    for (const auto& [section, fields] : sections) {
        text += std::string("-------- stats ") + section + " info start --------\n";
        std::istringstream words(fields);
        std::string name;
        for (int size; words >> size >> name; cnt += size, ++field) {
            const int value = field < 2 ? 1 - field : field - 1;
            text += "UNPK[size:" + std::to_string(size) + "], " + name + " = " + std::to_string(value) + "\n";
        }
        text += std::string("-------- stats ") + section + " info end, cnt(" + std::to_string(cnt) + ") --------\n";
    }
    EXPECT_EQ(shown({"7", "1", "1"}), text);
}

TEST_F(StatsGroup, RecordHasTheFieldsOfItsVersion)
{
    struct {
        int version;
        int main, diag;  // bytes of the two sections that differ
        std::size_t lines;
        const char* last_of_main;
        const char* last_of_diag;
    } static const rows[] = {
        {0, 25, 43, 45, "[size:8], g_modem_stats_cmd_fail_count", "[size:4], poll_update_parse_num"},
        {1, 25, 67, 49, "[size:8], g_modem_stats_cmd_fail_count", "[size:4], nr5g_cell_id_invalid_num"},
        {2, 49, 87, 58, "[size:4], modem_statsi_cmd_free_q_count", "[size:4], debug_parse_num"},
        {3, 49, 95, 60, "[size:4], modem_statsi_cmd_free_q_count", "[size:4], cust_event_parse_num"},
        {4, 57, 95, 62, "[size:4], g_hydra_log_stats_mask", "[size:4], cust_event_parse_num"},
        {200, 57, 95, 62, "[size:4], g_hydra_log_stats_mask", "[size:4], cust_event_parse_num"},
    };
    for (const auto& row : rows) {
        scenario("[debug_info]\nrecord = '" + debug_record(row.version, 1, 7) + "'\n");
        const std::string text = shown({"7", "1", "1"});
        const auto end_of = [](const char* section, int count) {
            return std::string("\n-------- stats ") + section + " info end, cnt(" + std::to_string(count) +
                   ") --------\n";
        };
        const int main = 1 + row.main;
        EXPECT_EQ(lines_of(text).size(), row.lines) << row.version;
        EXPECT_NE(text.find(std::string("UNPK") + row.last_of_main), std::string::npos) << row.version;
        EXPECT_NE(text.find(end_of("main", main)), std::string::npos) << row.version;
        EXPECT_NE(text.find(std::string("UNPK") + row.last_of_diag + " = 286331153" + end_of("diag", main + row.diag)),
                  std::string::npos)
            << row.version;
        EXPECT_NE(text.find(end_of("cm", main + row.diag + 58)), std::string::npos) << row.version;
        EXPECT_NE(text.find(end_of("uim", main + row.diag + 68)), std::string::npos) << row.version;
    }
}

const std::string kAsked =
    kTest + "velmor_test_modem_stats_get_debug_info_do: Get the debug info of modem_stats, mask = 0x";
const std::string kBar = "===========================================\n";

std::string head_fields(int enabled, int unsupported)
{
    return "UNPK[size:1], version = 2\nUNPK[size:1], modem_stats_feature_enable_status = " + std::to_string(enabled) +
           "\nUNPK[size:8], version_not_support_num = " + std::to_string(unsupported) +
           "\nUNPK[size:8], modem_stats_cmd_ok_count = 1229782938247303441\n"
           "UNPK[size:8], modem_stats_cmd_fail_count = 1229782938247303441\n";
}

// The record of head_fields.
std::string check_record(int enabled, int unsupported)
{
    return debug_record(2, enabled, unsupported).substr(0, 20) + std::string(2 * 100, '1');
}

struct Check {
    const char* catches;
    std::string scenario;
    std::string text;
    std::size_t requests;
};
const Check kChecks[] = {
    {"SupportedListAsked", "[debug_info]\nrecord = '" + check_record(5, 0) + "'\n",
     head_fields(5, 0) + kBar + "================ SUCCES ===================\n" + kBar, 1},
    {"ClosedEngineTakenForFailing", "[debug_info]\nrecord = '" + check_record(0, 3) + "'\n",
     head_fields(0, 3) + kBar + "================ CLOSED ===================\n" + kBar, 1},
    {"ListNotShown", "[debug_info]\nrecord = '" + check_record(1, 3) + "'\nlogs = [0xB063, 0x00A1]\n",
     head_fields(1, 3) + "UNPK[size:2], log_num = 2\n" + kBar + "================= FAIL ====================\n" + kBar +
         "Diag logs to be upgraded[num:2]:\nlog_id[0]: 0xB063\nlog_id[1]: 0x00A1\n",
     2},
    {"RefusalOverlooked", "[[fault]]\nservice = 'extended'\nqmi_id = 4\nprefix = '14'\naction = 'result'\ncode = -5\n",
     kTest + "velmor_test_modem_stats_get_debug_info_do: qmi response fail, result = 0, rsp.result = -5\n", 1},
    {"RefusedListShown",
     "[debug_info]\nrecord = '" + check_record(1, 3) + "'\n" +
         "[[fault]]\nservice = 'extended'\nqmi_id = 4\nprefix = '1B'\naction = 'result'\ncode = -6\n",
     head_fields(1, 3) + kTest +
         "velmor_modem_stats_support_status_check: qmi response fail, result = 0, rsp_not_support.result = -6\n",
     2},
    {"FailedRequestShown", "[[fault]]\nservice = 'extended'\nprefix = '14'\naction = 'raw'\nbytes = 'FF'\n",
     "RIL[velmor_extend_api.cpp:N] velmor_extend_qmi_send_sync: send msg sync failed:-1\n" + kTest +
         "velmor_test_modem_stats_get_debug_info_do: velmor_common_qmi_req fail, REQUEST_ID_COMMON, result = -3, "
         "rsp.result = 0\n",
     1},
    {"FailedListShown",
     "[debug_info]\nrecord = '" + check_record(1, 3) + "'\n" +
         "[[fault]]\nservice = 'extended'\nprefix = '1B'\naction = 'error'\ncode = 52\n",
     head_fields(1, 3) +
         "RIL[velmor_extend_api.cpp:N] velmor_extend_qmi_send_sync: 52 QMI service framework error. Check client\n" +
         kTest +
         "velmor_modem_stats_support_status_check: velmor_common_qmi_req fail, result = -3, rsp_not_support.result = "
         "0\n",
     2},
};

class StatsCheck : public StatsGroup, public testing::WithParamInterface<Check> {};

TEST_P(StatsCheck, EndsInItsWord)
{
    scenario(GetParam().scenario);
    EXPECT_EQ(shown({"7", "1", "0"}), kAsked + "0\n" + GetParam().text);
    EXPECT_EQ(requests().size(), GetParam().requests);
}
INSTANTIATE_TEST_SUITE_P(All, StatsCheck, testing::ValuesIn(kChecks),
                         [](const auto& row) { return row.param.catches; });

TEST_F(StatsGroup, NumberOfLogsIsBelievedAndWhatLiesPastTheAnswerIsZero)
{
    scenario("[debug_info]\nrecord = '" + check_record(1, 1) + "'\n" +
             "[[fault]]\nservice = 'extended'\nprefix = '1B'\naction = 'raw'\nbytes = '" +
             envelope(0, 508, std::string(2 * 8, '0') + "FFFF" + std::string(2 * 540, 'E')) + "'\n");
    const std::vector<std::string> lines = lines_of(shown({"7", "1", "0"}));
    ASSERT_GT(lines.size(), 65535U);
    EXPECT_EQ(lines[lines.size() - 65536], "Diag logs to be upgraded[num:65535]:");
    EXPECT_EQ(lines[lines.size() - 65535 + 248], "log_id[248]: 0xEEEE");
    EXPECT_EQ(lines[lines.size() - 65535 + 249], "log_id[249]: 0x0000");
    EXPECT_EQ(lines.back(), "log_id[65534]: 0x0000");
}

}  // namespace
}  // namespace rbk::test

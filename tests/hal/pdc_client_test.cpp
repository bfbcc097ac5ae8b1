// The PDC client over the link: requests and the indications that end them, late, missing, doubled, broken or early ones,
// the timers, and what stays behind after a failure.
#include <chrono>
#include <functional>
#include <thread>

#include "pdc_utils.h"
#include "qcril_result.h"
#include "support/embedded_run.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"

namespace rbk::test {
namespace {

using std::chrono::milliseconds;

const std::string kId = "6A1F0352904EC7182B33758DA009E45C61D2F710";  // active on subscription 0 of the built-in phone

std::string rule(int message, const std::string& rest)
{
    return "[[fault]]\nservice = 'pdc'\nmessage = " + std::to_string(message) + "\n" + rest + "\n";
}
std::string ind_rule(int message, const std::string& rest)
{
    return rule(message, "on = 'indication'\n" + rest);
}
std::string raw_ind(int message, const std::string& tlvs)
{
    return ind_rule(message, "action = 'raw'\nbytes = '" + tlvs + "'");
}

class PdcClient : public EmbeddedRun {
 public:
    // The timers of 5 seconds last 1250 ms here, the time-outs of requests a second; indications come at once.
    PdcClient()
    {
        setenv("RBK_TEST_DIVISOR", "4", 1);
        scale_timeouts("0.1");
    }
    void open(const std::string& rules = "") const
    {
        scenario("[pdc]\nindication_ms = 0\n" + rules);
        ASSERT_EQ(pdc_init_ex(), 0);
    }
    static std::int32_t get_selected() { return pdc_get_current_config_ex(&info, PDC_CONFIG_TYPE_MODEM_SW_V01, 0); }
    // The configuration that is active, whatever has become of that meanwhile.
    static std::int32_t select_active()
    {
        if (info.config_id_len == 0) get_selected();
        return pdc_select_config_ex(&info, PDC_CONFIG_TYPE_MODEM_SW_V01, 0);
    }
    static std::int32_t deactivate() { return pdc_deactivate_config_ex(0, PDC_CONFIG_TYPE_MODEM_SW_V01); }
    std::size_t timers_started()
    {
        const std::vector<std::string> lines = calls();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), "timer_settime 5.000000000"));
    }

    inline static pdc_config_pdc_info info;
};

// ---- The places of the fields ----

template <typename Structure>
Structure decoded(qmi_client_handle client, std::uint32_t message, const std::vector<std::uint8_t>& tlvs)
{
    Structure structure{};
    EXPECT_EQ(
        qmi_client_message_decode(client, INDICATION, message, tlvs.data(), tlvs.size(), &structure, sizeof structure),
        0)
        << message;
    return structure;
}

std::vector<std::uint8_t> bytes_of(const std::string& hex_text)
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < hex_text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex_text.substr(i, 2), nullptr, 16)));
    return bytes;
}

class PdcPlaces : public PdcClient {
 public:
    PdcPlaces()
    {
        qmi_client_init_instance(pdc_get_service_object_internal_v01(1, 16, 6), QMI_CLIENT_INSTANCE_ANY, nullptr,
                                 nullptr, nullptr, 1000, &client);
    }
    template <typename Structure>
    std::string sent(std::uint32_t message, const Structure& structure)
    {
        pdc_resp_v01 resp;
        EXPECT_EQ(qmi_client_send_msg_sync(client, message, &structure, sizeof structure, &resp, sizeof resp, 10000),
                  0);
        return requests().back().bytes;
    }
    qmi_client_handle client = nullptr;
};

TEST_F(PdcPlaces, RequestsStandOnTheWireFieldByField)
{
    const pdc_config_info_v01 config{static_cast<pdc_config_type_enum_v01>(7), 2, {0xA1, 0xA2}};
    const std::string named =
        "07000000"
        "02A1A2";
    const std::string token =
        "100400"
        "11000000";
    EXPECT_EQ(sent(34, pdc_get_selected_config_req_v01{config.config_type, 1, 0x11, 1, 0x22, 1, 0x33}),
              "01040007000000" + token +
                  "11040022000000"
                  "12040033000000");
    EXPECT_EQ(sent(35, pdc_set_selected_config_req_v01{config, 1, 0x11, 1, 0x22, 1, 0x33}), "010700" + named + token +
                                                                                                "11040022000000"
                                                                                                "12040033000000");
    EXPECT_EQ(sent(36, pdc_list_configs_req_v01{1, 0x11, 1, config.config_type, 1, 0x44}), token +
                                                                                               "11040007000000"
                                                                                               "12010044");
    EXPECT_EQ(sent(37, pdc_delete_config_req_v01{config.config_type, 1, 0x11, 1, 2, {0xA1, 0xA2}}),
              "01040007000000" + token + "11030002A1A2");
    static pdc_load_config_req_v01 load{
        {config.config_type, 2, {0xA1, 0xA2}, 0x55, 3, {0xB1, 0xB2, 0xB3}}, 1, 0x11, 1, 9};
    EXPECT_EQ(sent(38, load), "011000" + named +
                                  "55000000"
                                  "0300B1B2B3" +
                                  token + "11040009000000");
    EXPECT_EQ(sent(39, pdc_activate_config_req_v01{config.config_type, 1, 0x11, 1, PDC_ACTIVATION_REFRESH_V01, 1, 0x22,
                                                   1, 0x33}),
              "01040007000000" + token +
                  "11040001000000"
                  "12040022000000"
                  "13040033000000");
    for (const std::uint32_t message : {40, 44})
        EXPECT_EQ(sent(message, pdc_config_info_req_v01{config, 1, 0x11}), "010700" + named + token) << message;
    for (const std::uint32_t message : {42, 46})
        EXPECT_EQ(sent(message, pdc_config_type_req_v01{config.config_type, 1, 0x11}), "01040007000000" + token);
    EXPECT_EQ(sent(43, pdc_deactivate_config_req_v01{config.config_type, 1, 0x11, 1, 0x22}),
              "01040007000000" + token + "11040022000000");
}

TEST_F(PdcPlaces, IndicationsAreReadFieldByField)
{
    const std::string begin =
        "0102003412"
        "100400"
        "11000000";
    for (const std::uint32_t message : {35, 37, 39, 43, 46}) {
        const auto ind = decoded<pdc_result_ind_v01>(client, message, bytes_of(begin));
        EXPECT_EQ(ind.error, 0x1234);
        EXPECT_EQ(ind.ind_token, 0x11u);
    }
    const auto selected = decoded<pdc_get_selected_config_ind_v01>(client, 34,
                                                                   bytes_of(begin + "11020001A1"
                                                                                    "12030002B1B2"));
    EXPECT_EQ(selected.active_id_len * 256 + selected.active_id[0], 0x1A1u);
    EXPECT_EQ(selected.pending_id_len * 256 + selected.pending_id[1], 0x2B2u);
    const auto load = decoded<pdc_load_config_ind_v01>(client, 38,
                                                       bytes_of(begin + "11040022000000"
                                                                        "12040033000000"
                                                                        "13010044"));
    EXPECT_EQ(load.received, 0x22u);
    EXPECT_EQ(load.remaining, 0x33u);
    EXPECT_EQ(load.frame_data_reset, 0x44);
    const auto told = decoded<pdc_get_config_info_ind_v01>(client, 40,
                                                           bytes_of(begin + "11040022000000"
                                                                            "120300024E65"
                                                                            "13040033000000"
                                                                            "16040044000000"));
    EXPECT_EQ(told.total_size, 0x22u);
    EXPECT_EQ(told.config_desc_len, 2u);
    EXPECT_EQ(told.config_desc[1], 'e');
    EXPECT_EQ(told.config_version, 0x33u);
    EXPECT_EQ(told.second_version, 0x44u);
    const auto other = decoded<pdc_get_default_config_info_ind_v01>(client, 42,
                                                                    bytes_of(begin + "11040022000000"
                                                                                     "12040033000000"
                                                                                     "130300024E65"));
    EXPECT_EQ(other.config_version, 0x22u);
    EXPECT_EQ(other.total_size, 0x33u);
    EXPECT_EQ(other.config_desc[1], 'e');
    const auto list = decoded<pdc_list_configs_ind_v01>(client, 36,
                                                        bytes_of(begin + "110800"
                                                                         "01"
                                                                         "07000000"
                                                                         "02A1A2"
                                                                         "12010044"));
    EXPECT_EQ(list.config_list_len, 1u);
    EXPECT_EQ(list.config_list[0].config_type, 7u);
    EXPECT_EQ(list.config_list[0].config_id[1], 0xA2);
    EXPECT_EQ(list.more_available, 0x44);
    const auto frame = decoded<pdc_validate_config_ind_v01>(client, 44,
                                                            bytes_of(begin + "11040022000000"
                                                                             "120400"
                                                                             "0200B1B2"));
    EXPECT_EQ(frame.frame_index, 0x22u);
    EXPECT_EQ(frame.result_frame_len * 256 + frame.result_frame[1], 0x2B2u);
}

TEST_F(PdcPlaces, OtherVersionsHaveNoServiceObject)
{
    EXPECT_EQ(pdc_get_service_object_internal_v01(2, 16, 6), nullptr);
    EXPECT_EQ(pdc_get_service_object_internal_v01(1, 15, 6), nullptr);
    EXPECT_EQ(pdc_get_service_object_internal_v01(1, 16, 5), nullptr);
}

// ---- One request and what may happen to it ----

struct OutcomeCase {
    const char* catches;
    std::function<std::int32_t()> request;
    std::string rules;
    std::int32_t result;
    std::size_t timers;  // of 5 seconds
    const char* words;   // in the log
};

const OutcomeCase kOutcomeCases[] = {
    {"WaitWithoutTimer", PdcClient::get_selected, ind_rule(34, "action = 'delay'\nms = 100"), 0, 1,
     "req_type = 6, timer_id = 1"},
    {"EarlyIndicationAwaited", PdcClient::get_selected,
     rule(34, "action = 'delay'\nms = 300") + ind_rule(34, "action = 'early'"), 0, 0, "msg_id: 0x22"},
    {"SilentModemAwaitedForever", PdcClient::get_selected, ind_rule(34, "action = 'silent'"), -1, 1,
     "qmi_pdc_request_timer_timeout_proc: get_sel is waiting, will stop it."},
    {"ErrorOfTheResponseIgnored", PdcClient::get_selected, rule(34, "action = 'error'\ncode = 25"), -1, 0,
     "pdc_get_current_config_ex: qmi send message error for get_sel_configs, errno: 0 6"},
    {"LostRequestAwaited", PdcClient::get_selected, rule(34, "action = 'silent'"), -1, 0,
     "pdc_get_current_config_ex: qmi send message error for get_sel_configs, errno: -3 39"},
    {"LostServiceTakenForAnAnswer", PdcClient::get_selected, rule(34, "action = 'down'"), -1, 1, "get_sel is waiting"},
    {"ErrorOfTheIndicationIgnored", PdcClient::get_selected,
     raw_ind(34,
             "0102001900"
             "11020001A1"),
     -1, 1, "qmi_pdc_get_selected_config_ind_hdlr_ex: QMI error, error code: 25"},
    {"PendingTakenForActive", PdcClient::get_selected,
     raw_ind(34,
             "0102000000"
             "12020001AA"),
     -6, 1, "qmi_pdc_get_selected_config_ind_hdlr_ex: has pending configuration"},
    {"NothingTakenForActive", PdcClient::get_selected, raw_ind(34, "0102000000"), -6, 1, "msg_id: 0x22"},
    {"LongestIdRefused", PdcClient::get_selected,
     raw_ind(34,
             "0102000000"
             "117D00"
             "7C" +
                 std::string(248, 'A')),
     0, 1, "msg_id"},
    {"IdBeyondTheRoomCopied", PdcClient::get_selected,
     raw_ind(34,
             "0102000000"
             "117E00"
             "7D" +
                 std::string(250, 'A')),
     -1, 1, "msg_id"},
    {"BrokenIndicationHandled", PdcClient::get_selected, raw_ind(34, "01020000001105"), -1, 1,
     "qmi_pdc_unsol_ind_cb_ex: failed to decode qmi message, msg_id: 0x22"},
    {"UnknownIndicationHandled", PdcClient::get_selected,
     ind_rule(34, "action = 'indicate'\nindication = 99\nbytes = ''"), -1, 1,
     "qmi_pdc_unsol_ind_cb_ex: failed to get message c_struct len"},
    {"IndicationWithoutHandlerIsAFault", PdcClient::get_selected,
     ind_rule(34, "action = 'indicate'\nindication = 41\nbytes = '010400'\nalso = true"), 0, 1, "msg_id: 0x29"},
    {"SelectErrorOfTheResponseEndsIt", PdcClient::select_active, rule(35, "action = 'error'\ncode = 25"), -1, 2,
     "sel_config is waiting"},
    {"SelectErrorIgnored", PdcClient::select_active, raw_ind(35, "0102001000"), -1, 2,
     "qmi_pdc_select_config_ind_hdlr_ex: QMI error, error code: 16"},
    {"SelectLostRequestAwaited", PdcClient::select_active, rule(35, "action = 'silent'"), -1, 1,
     "pdc_select_config_ex: qmi send message error for set_selected_config, errno: -3"},
    {"DeactivateErrorOfTheResponseEndsIt", PdcClient::deactivate, rule(43, "action = 'error'\ncode = 25"), -1, 1,
     "pdc_deact is waiting"},
    {"DeactivateLostRequestAwaited", PdcClient::deactivate, rule(43, "action = 'silent'"), -1, 0,
     "pdc_deactivate_config_ex: qmi send mssage error for deactivate_config, errno: -3"},
};

class PdcOutcome : public PdcClient, public testing::WithParamInterface<OutcomeCase> {};

TEST_P(PdcOutcome, IsTheResultOfTheRequest)
{
    // Late enough for the requester to sleep when it comes, on a busy machine too.
    scenario("[pdc]\nindication_ms = 300\n" + GetParam().rules);
    info = {};
    ASSERT_EQ(pdc_init_ex(), 0);
    EXPECT_EQ(GetParam().request(), GetParam().result);
    EXPECT_EQ(timers_started(), GetParam().timers);
    EXPECT_GE(log_count(GetParam().words), 1u);
    EXPECT_EQ(g_pdc_info_ex.get_sel.is_get_sel_handling, 0);
}
INSTANTIATE_TEST_SUITE_P(All, PdcOutcome, testing::ValuesIn(kOutcomeCases),
                         [](const auto& row) { return row.param.catches; });

TEST_F(PdcClient, FailedSelectAndDeactivateStayBusyUntilTheClientIsOpenedAgain)
{
    open(rule(43, "nth = 1\naction = 'silent'"));
    EXPECT_EQ(deactivate(), PDC_ERROR);
    EXPECT_EQ(deactivate(), PDC_BUSY);
    pdc_config_pdc_info too_long{PDC_CONFIG_ID_MAX + 1, {}};
    const std::size_t before = requests().size();
    EXPECT_EQ(pdc_select_config_ex(&too_long, PDC_CONFIG_TYPE_MODEM_SW_V01, 0), PDC_INVALID_CONFIG_ID);
    EXPECT_EQ(select_active(), PDC_BUSY);
    EXPECT_EQ(requests().size(), before + 1);  // to get the active one
    pdc_clean_ex();
    ASSERT_EQ(pdc_init_ex(), 0);
    EXPECT_EQ(select_active(), 0);
    EXPECT_EQ(deactivate(), 0);
    EXPECT_EQ(log_count("pdc_clean_ex: Release client connection to PDC"), 1u);
}

TEST_F(PdcClient, LateResultIsTheNextRequests)
{
    open(ind_rule(35, "nth = 1\naction = 'delay'\nms = 2000"));
    EXPECT_EQ(select_active(), PDC_ERROR);
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.sel_config.is_sel_config_done == 1; }));
    timers_started();
    EXPECT_EQ(select_active(), 0);
    EXPECT_EQ(timers_started(), 0u);  // taken without a wait
}

TEST_F(PdcClient, SecondIndicationFindsNoHolderAndIsTheNextRequests)
{
    // The second one half a second later, when the requester has left; and the next request's own one comes late, so that
    // it can't overtake its requester.
    open("[[indication]]\nservice = 'pdc'\nmessage = 34\nafter_ms = 500\nbytes = '0102000000 11020001A1'\n" +
         ind_rule(34, "from = 2\naction = 'delay'\nms = 300"));
    EXPECT_EQ(get_selected(), 0);
    EXPECT_EQ(hex({info.config_id, info.config_id + info.config_id_len}), kId);
    EXPECT_TRUE(wait_until([&] { return log_count("NULL pointer for get_sel_holder") == 1; }));
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.get_sel.is_get_sel_done == 1; }));
    EXPECT_EQ(get_selected(), PDC_ERROR);
}

TEST_F(PdcClient, ActivationWaitsForTypesAboveOneAlone)
{
    struct {
        std::uint32_t type;
        const char* sent;
    } const cases[] = {
        {2,
         "01040002000000"
         "11040001000000"},
        {0,
         "01040000000000"
         "11040001000000"},
        {1,
         "01040001000000"
         "11040001000000"
         "12040003000000"
         "13040004000000"},
    };
    // First the one that waits: what the modem says of the others nobody takes.
    open(rule(39, "prefix = '010400 02000000'\naction = 'indicate'\nbytes = '0102000700'"));
    for (const auto& c : cases) {
        EXPECT_EQ(
            pdc_activate_config_ex(static_cast<pdc_config_type_enum_v01>(c.type), PDC_ACTIVATION_REFRESH_V01, 3, 4),
            c.type < 2 ? 0 : -1);
        EXPECT_EQ(requests().back().bytes, c.sent);
    }
    EXPECT_EQ(log_count("QMI error, error code: 7"), 1u);
    EXPECT_EQ(pdc_activate_config_ex2(PDC_CONFIG_TYPE_MODEM_SW_V01, 1), 0);
    EXPECT_EQ(requests().back().bytes,
              "01040001000000"
              "11040000000000"
              "12040001000000"
              "13040001000000");
}

TEST_F(PdcClient, FailedActivationGivesItsFlagBack)
{
    open(rule(39, "nth = 1\naction = 'silent'"));
    EXPECT_EQ(pdc_activate_config_ex2(PDC_CONFIG_TYPE_MODEM_SW_V01, 0), PDC_ERROR);
    EXPECT_EQ(log_count("pdc_activate_config_ex: qmi send message error for activate_config, errno: -3"), 1u);
    EXPECT_EQ(pdc_activate_config_ex2(PDC_CONFIG_TYPE_MODEM_SW_V01, 0), 0);
}

TEST_F(PdcClient, SwitchMakesTheModemSilentUntilItIsTurnedOff)
{
    open();
    set_property("persist.radio.all_pdc_no_rsp_count", "2");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(get_selected(), PDC_ERROR);
    EXPECT_EQ(log_count("NOTICE!!! PROPERTY_DEBUG_ALL_PDC_NO_RSP_COUNT(2) is running"), 2u);
    EXPECT_EQ(log_count("qmi_pdc_unsol_ind_cb_ex: velmor_mbn_debug_all_pdc_no_rsp_count_check fail"), 2u);
    set_property("persist.radio.all_pdc_no_rsp_count", "0");
    EXPECT_EQ(get_selected(), 0);
}

TEST_F(PdcClient, AbsentServiceCostsTwentyAttempts)
{
    setenv("RBK_TEST_DIVISOR", "100000", 1);
    scenario("[modem]\nservices = ['extended']\n");
    EXPECT_EQ(pdc_init_ex(), PDC_ERROR);
    EXPECT_EQ(calls(), std::vector<std::string>(20, "sleep 5"));
    EXPECT_EQ(log_count("qmi_client_init returned failure (-3) for PDC, retry times 19"), 1u);
}

// ---- Timers ----

TEST_F(PdcClient, FirstTimerThatExpiresEndsEverySleeper)
{
    open(ind_rule(34, "action = 'silent'") + ind_rule(43, "action = 'silent'"));
    std::int32_t selected = 1;
    std::thread first([&] { selected = get_selected(); });
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.get_sel.is_get_sel_waiting == 1; }));
    std::this_thread::sleep_for(milliseconds(600));  // as much between the two timers as to the first one's end
    EXPECT_EQ(deactivate(), PDC_ERROR);
    first.join();
    EXPECT_EQ(selected, PDC_ERROR);
    // The other timer runs on, and only resets its slot.
    EXPECT_NE(g_pdc_info_ex.pdc_deact.timer_id, 0u);
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.pdc_deact.timer_id == 0; }));
    EXPECT_TRUE(wait_until([&] { return log_count("reset this timer_id(2), req_type = 4.") == 1; }));
    EXPECT_EQ(g_pdc_info_ex.pdc_deact.is_pdc_deact_done, 0);
}

TEST_F(PdcClient, TimersAreFoundByKindAndByNumber)
{
    qmi_pdc_init_pdc_info();
    EXPECT_EQ(log_count("3 [pdc_utils.cpp:"), 1u);  // at level 1, though nothing failed
    EXPECT_EQ(log_count("qmi_pdc_init_pdc_info: pdc_info init done"), 1u);
    for (const int req_type : {0, 12, -1}) {
        EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_req_type(req_type), nullptr);
        qmi_pdc_request_timer_start(req_type);
        qmi_pdc_request_timer_stop(req_type);
    }
    EXPECT_EQ(log_count("not support this req_type, do nothing."), 6u);
    const std::atomic<std::uint32_t>* const slots[] = {&g_pdc_info_ex.pdc_list.timer_id,
                                                       &g_pdc_info_ex.pdc_load.timer_id,
                                                       &g_pdc_info_ex.pdc_info.timer_id,
                                                       &g_pdc_info_ex.pdc_deact.timer_id,
                                                       &g_pdc_info_ex.pdc_del.timer_id,
                                                       &g_pdc_info_ex.get_sel.timer_id,
                                                       &g_pdc_info_ex.sel_config.timer_id,
                                                       &g_pdc_info_ex.act_config.timer_id,
                                                       &g_pdc_info_ex.set_feature.timer_id,
                                                       &g_pdc_info_ex.default_info.timer_id,
                                                       &g_pdc_info_ex.pdc_validate_config_req.timer_id};
    for (int req_type = 1; req_type <= 11; ++req_type) {
        EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_req_type(req_type), slots[req_type - 1]);
        *qmi_pdc_request_timer_get_ptr_by_req_type(req_type) = static_cast<std::uint32_t>(100 + req_type);
    }
    EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_timer_id(110), slots[9]);
    EXPECT_EQ(qmi_pdc_request_timer_get_req_type_by_timer_id(110), 10);
    EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_timer_id(111), nullptr);  // of a validation
    EXPECT_EQ(qmi_pdc_request_timer_get_req_type_by_timer_id(111), 1);
    EXPECT_EQ(log_count("not find this timer_id(111)"), 2u);
    g_pdc_info_ex.act_config.timer_id = 0;
    EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_timer_id(0), slots[7]);
    qmi_pdc_init_pdc_info();
    for (const auto* slot : slots) EXPECT_EQ(*slot, 0u);
}

TEST_F(PdcClient, StartStopsTheTimerThatRuns)
{
    qmi_pdc_init_pdc_info();
    g_pdc_info_ex.mutex.lock();
    qmi_pdc_request_timer_start(PDC_REQ_DEL);
    qmi_pdc_request_timer_start(PDC_REQ_DEL);
    EXPECT_EQ(g_pdc_info_ex.pdc_del.timer_id, 2u);
    qmi_pdc_request_timer_stop(PDC_REQ_DEL);
    EXPECT_EQ(g_pdc_info_ex.pdc_del.timer_id, 0u);
    g_pdc_info_ex.mutex.unlock();
    EXPECT_EQ(calls(), (std::vector<std::string>{"timer_settime 5.000000000", "timer_settime 0.000000000",
                                                 "timer_settime 5.000000000", "timer_settime 0.000000000"}));
    EXPECT_EQ(log_count("find the timer is running, will stop it af first, timer_id = 1, req_type = 5"), 1u);
}

// ---- Handlers ----

struct HandlerCase {
    const char* catches;
    void (*handle)(void*, std::uint32_t);
    std::string tlvs;  // of the indication; "null" for none
    std::uint32_t message;
    const std::atomic<std::int32_t>* result;
    std::int32_t expected;
    const char* words;
};
const std::string kNull = "null";
const HandlerCase kHandlerCases[] = {
    {"DeactivateNull", qmi_pdc_deactivate_config_ind_hdlr_ex, kNull, 43, &g_pdc_info_ex.pdc_deact.result, -1,
     "NULL pointer for ind_data_ptr"},
    {"DeleteNull", qmi_pdc_delete_config_ind_hdlr_ex, kNull, 37, &g_pdc_info_ex.pdc_del.result, -1,
     "NULL pointer for ind_data_ptr"},
    {"DeleteDelivered", qmi_pdc_delete_config_ind_hdlr_ex, "0102000000", 37, &g_pdc_info_ex.pdc_del.result, 0, ""},
    {"ActivateError", qmi_pdc_activate_config_ind_hdlr_ex, "0102000300", 39, &g_pdc_info_ex.act_config.result, -1,
     "entering qmi_pdc_activate_config_ind_hdlr_ex"},
    {"SetFeatureError", qmi_pdc_set_feature_ind_hdlr_ex, "0102000300", 46, &g_pdc_info_ex.set_feature.result, -1,
     "entering qmi_pdc_set_feature_ind_hdlr_ex"},
    {"SetFeatureDelivered", qmi_pdc_set_feature_ind_hdlr_ex, "0102000000", 46, &g_pdc_info_ex.set_feature.result, 0,
     ""},
    {"SelectedNull", qmi_pdc_get_selected_config_ind_hdlr_ex, kNull, 34, &g_pdc_info_ex.get_sel.result, -1,
     "NULL pointer for ind_data_ptr"},
    {"LoadNull", qmi_pdc_load_config_ind_hdlr_ex, kNull, 38, &g_pdc_info_ex.pdc_load.result, -1,
     "NULL pointer for ind_dat_ptr"},
    {"LoadNoMemory", qmi_pdc_load_config_ind_hdlr_ex, "0102000200", 38, &g_pdc_info_ex.pdc_load.result, -5,
     "no memory in modem EFS"},
    {"LoadInvalidId", qmi_pdc_load_config_ind_hdlr_ex, "0102002900", 38, &g_pdc_info_ex.pdc_load.result, -4,
     "Invalid config id, maybe already exists"},
    {"LoadOtherError", qmi_pdc_load_config_ind_hdlr_ex, "0102000300", 38, &g_pdc_info_ex.pdc_load.result, -1,
     "load configuration error, code = 3"},
    {"LoadResetByValue", qmi_pdc_load_config_ind_hdlr_ex, "010200000013010000", 38, &g_pdc_info_ex.pdc_load.result, -3,
     "PDC frame data is reset"},
    {"LoadDelivered", qmi_pdc_load_config_ind_hdlr_ex,
     "0102000000"
     "12040005000000",
     38, &g_pdc_info_ex.pdc_load.result, 0, ""},
    {"InfoWithoutHolder", qmi_pdc_get_config_info_ind_hdlr_ex, kNull, 40, &g_pdc_info_ex.pdc_info.result, -1,
     "NULL pointer for config_info_holder"},
    {"DefaultNull", velmor_mbn_get_default_config_info_ind_hdlr, kNull, 42, &g_pdc_info_ex.default_info.result, -1,
     "NULL pointer for ind_data_ptr"},
    {"DefaultWithoutHolder", velmor_mbn_get_default_config_info_ind_hdlr, "0102000000", 42,
     &g_pdc_info_ex.default_info.result, -1, "NULL pointer for config_info"},
    {"ListNotAskedFor", qmi_pdc_list_configs_ind_hdlr_ex, kNull, 36, &g_pdc_info_ex.pdc_list.result, 77,
     "is_pdc_list_handling is not running, do nothing"},
};

TEST_F(PdcPlaces, HandlersDeliverWithoutAnybodyWaiting)
{
    g_pdc_info_ex.pdc_load.received_size = 7;
    for (const HandlerCase& c : kHandlerCases) {
        qmi_pdc_init_pdc_info();
        *const_cast<std::atomic<std::int32_t>*>(c.result) = 77;
        static std::uint8_t structure[4000];
        std::uint32_t size = 0;
        if (c.tlvs != kNull) {
            const std::vector<std::uint8_t> tlvs = bytes_of(c.tlvs);
            qmi_idl_get_message_c_struct_len(pdc_get_service_object_internal_v01(1, 16, 6), INDICATION,
                                             static_cast<std::uint16_t>(c.message), &size);
            EXPECT_EQ(
                qmi_client_message_decode(client, INDICATION, c.message, tlvs.data(), tlvs.size(), structure, size), 0);
        }
        const std::string out = output_of([&] { c.handle(c.tlvs == kNull ? nullptr : structure, size); });
        EXPECT_EQ(*c.result, c.expected) << c.catches;
        EXPECT_NE(out.find(c.words), std::string::npos) << c.catches << out;
    }
    EXPECT_EQ(g_pdc_info_ex.pdc_load.remaining_size, 5u);
    EXPECT_EQ(g_pdc_info_ex.pdc_load.received_size, 7u);  // its field wasn't there
}

// ---- The end of the process ----

TEST(PdcEnd, ProcessEndsWhileSomebodySleeps)
{
    EXPECT_EXIT(
        {
            std::atomic<bool> sleeps{false};
            std::thread([&] {
                g_pdc_info_ex.mutex.lock();
                sleeps = true;
                g_pdc_info_ex.pdc_test.cond.any.wait(g_pdc_info_ex.mutex);
            }).detach();
            while (!sleeps) std::this_thread::sleep_for(milliseconds(1));
            g_pdc_info_ex.mutex.lock();  // has been given up by the sleeper
            g_pdc_info_ex.mutex.unlock();
            alarm(20);
            std::exit(3);
        },
        testing::ExitedWithCode(3), "");
}

// ---- Many at once ----

TEST_F(PdcClient, RequestsOfDifferentKindsOverlap)
{
    open();
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    ASSERT_EQ(get_selected(), 0);
    const pdc_config_pdc_info known = info;
    threads.emplace_back([&] {
        static pdc_config_pdc_info mine;
        for (int i = 0; i < 50; ++i) right += pdc_get_current_config_ex(&mine, PDC_CONFIG_TYPE_MODEM_SW_V01, 0) == 0;
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) right += pdc_select_config_ex(&known, PDC_CONFIG_TYPE_MODEM_SW_V01, 0) == 0;
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) right += pdc_activate_config_ex2(PDC_CONFIG_TYPE_MODEM_SW_V01, 0) == 0;
    });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 150);
}

TEST_F(PdcClient, SecondRequestOfAKindIsBusy)
{
    open(ind_rule(34, "action = 'delay'\nms = 500"));
    std::thread first([] { EXPECT_EQ(get_selected(), 0); });
    EXPECT_TRUE(wait_until([] { return g_pdc_info_ex.get_sel.is_get_sel_handling == 1; }));
    static pdc_config_pdc_info other;
    EXPECT_EQ(pdc_get_current_config_ex(&other, PDC_CONFIG_TYPE_MODEM_SW_V01, 0), PDC_BUSY);
    first.join();
}

// ---- Outcomes in the numbers of the radio interface ----

TEST_F(PdcClient, OutcomesAreMappedByErrorAndContext)
{
    struct {
        const char* catches;
        int transport;
        std::uint32_t result;
        std::uint32_t error;
        std::uint32_t context;
        qmi_ril_err_payload payload;
        std::int32_t expected;
    } const cases[] = {
        {"TransportIgnored", -1, 0, 0, 0, {}, 39},
        {"GoneIsAFailure", -2, 0, 0, 0, {}, 0},
        {"GoneHidesTheError", -2, 1, 2, 0, {}, 37},
        {"OddResultMapped", 0, 2, 2, 0, {}, 39},
        {"NoErrorIsAFailure", 0, 1, 0, 0, {}, 0},
        {"NoEffectIsAFailure", 0, 1, 26, 0, {}, 0},
        {"FirstRow", 0, 1, 1, 0, {}, 38},
        {"AbortedRow", 0, 1, 4, 0, {}, 7},
        {"NotReadyRow", 0, 1, 52, 0, {}, 46},
        {"LastRow", 0, 1, 97, 0, {}, 65},
        {"UnknownErrorMapped", 0, 1, 999, 0, {}, 40},
        {"Context5", 0, 1, 13, 5, {}, 0},
        {"Context5OfAnother", 0, 1, 13, 7, {}, 63},
        {"Context7", 0, 1, 52, 7, {}, 0},
        {"Context8", 0, 1, 74, 8, {}, 0},
        {"Dial", 0, 1, 1, 1, {1, 3, 0, 0}, 1006},
        {"DialWithoutItsFlag", 0, 1, 1, 1, {0, 3, 0, 0}, 38},
        {"DialUnknownType", 0, 1, 1, 1, {1, 4, 0, 0}, 38},
        {"VideoDial", 0, 1, 1, 2, {1, 0, 0, 0}, 1009},
        {"Context3", 0, 1, 1, 3, {0, 2, 0, 0}, 25},
        {"Context4", 0, 1, 1, 4, {0, 1, 0, 0}, 22},
        {"Context6", 0, 1, 1, 6, {0, 1, 0, 0}, 71},
        {"Context6Otherwise", 0, 1, 1, 6, {0, 0, 0, 0}, 2},
        {"Context6NotReady", 0, 1, 52, 6, {0, 1, 0, 0}, 0},
        {"ManageIp", 0, 1, 1, 9, {0, 0, 1, 388}, 2},
        {"ManageIpOtherCause", 0, 1, 1, 9, {0, 0, 1, 390}, 38},
        {"ContextAfterTheTransport", -3, 0, 0, 1, {1, 0, 0, 0}, 39},
    };
    for (const auto& c : cases) {
        qmi_response_type response{c.result, c.error};
        EXPECT_EQ(qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(
                      c.transport, &response, static_cast<qmi_ril_err_context_e_type>(c.context), &c.payload),
                  c.expected)
            << c.catches;
    }
    for (const char* words : {"transport error -1, result 39", "transport error -3, result 39",
                              "QMI result 2, result 39", "QMI error 999, result 40"})
        EXPECT_EQ(log_count(std::string("_to_ril_result_ex: ") + words), 1U) << words;
    EXPECT_EQ(log_count("3 util: [qcril_result.cpp: "), 4U) << "what a row says is told too";
    EXPECT_EQ(qcril_qmi_util_convert_qmi_response_codes_to_ril_result(0, nullptr), 0);
    qmi_response_type response{1, 1};
    for (std::uint32_t context = 0; context <= 9; ++context)  // a missing payload decides nothing
        EXPECT_EQ(qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(
                      0, &response, static_cast<qmi_ril_err_context_e_type>(context), nullptr),
                  38);
}

}  // namespace
}  // namespace rbk::test

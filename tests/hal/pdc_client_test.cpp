// The PDC client: requests and the indications that end them, late, missing, broken or early ones, the timers, and what
// stays behind after a failure. Who comes first is decided where two threads meet, by holding one up.
#include "pdc_utils.h"

#include <array>
#include <cstring>
#include <sstream>
#include <thread>

#include "qcril_result.h"
#include "support/embedded_run.h"
#include "support/on_calls.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"

namespace rbk::test {
namespace {

using Lines = std::vector<std::string>;

const std::string kPhone = "[pdc]\nindication_ms = 0\nconfig = [ { id = 'A1' } ]\n[pdc.sub0]\nactive = 'A1'\n";

// What the modem does with a message, or with its indication.
std::string rule(int message, const std::string& more)
{
    return "[[fault]]\nservice = 'pdc'\nmessage = " + std::to_string(message) + "\n" + more + "\n";
}

// Blanks stand between the parts.
std::vector<std::uint8_t> bytes_of(std::string digits)
{
    std::erase(digits, ' ');
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

// The requests that the shell makes, of subscription 0.
constexpr auto kSoftware = PDC_CONFIG_TYPE_MODEM_SW_V01;
pdc_config_pdc_info selected;
const auto get_selected = [] { return pdc_get_current_config_ex(&selected, kSoftware, 0); };
const auto select_known = [] {
    const pdc_config_pdc_info known{1, {0xA1}};
    return pdc_select_config_ex(&known, kSoftware, 0);
};
const auto deactivate = [] { return pdc_deactivate_config_ex(0, kSoftware); };
const auto activate = [] { return pdc_activate_config_ex2(kSoftware, 0); };

class PdcClient : public EmbeddedRun {
 public:
    PdcClient() { setenv("RBK_TEST_DIVISOR", "1", 1); }
    void open(const std::string& rules = "") const
    {
        scenario(kPhone + rules);
        ASSERT_EQ(pdc_init_ex(), 0);
    }
};

// ---- Requests ----

TEST_F(PdcClient, ActivationOfAnotherTypeAwaitsItsIndication)
{
    open(rule(39, "action = 'indicate'\nbytes = '0102000700'"));
    EXPECT_EQ(pdc_activate_config_ex(static_cast<pdc_config_type_enum_v01>(2), PDC_ACTIVATION_REFRESH_V01, 3, 4), -1);
    EXPECT_EQ(requests().back().bytes, "0104000200000011040001000000") << "of no subscription";
    EXPECT_EQ(log_count("qmi_pdc_activate_config_ind_hdlr_ex: QMI error, error code: 7"), 1U);
    EXPECT_EQ(g_pdc_info_ex.act_config.is_act_config_handling, 0);
}

TEST_F(PdcClient, FailedSelectAndDeactivateStayBusyUntilTheClientIsOpenedAgain)
{
    scenario(kPhone + rule(43, "action = 'raw'\nnth = 1\nbytes = 'FF'"));
    for (int i = 0; i < 2; ++i) ASSERT_EQ(velmor_mbn_init(0), 0);
    EXPECT_EQ(log_count("pdc init have been done, do nothing"), 1U);
    pdc_config_pdc_info too_long{PDC_CONFIG_ID_MAX + 1, {}};
    EXPECT_EQ(pdc_select_config_ex(&too_long, kSoftware, 0), PDC_INVALID_CONFIG_ID);
    EXPECT_EQ(deactivate(), PDC_ERROR);
    for (const auto request : {+select_known, +deactivate}) EXPECT_EQ(request(), PDC_BUSY);
    EXPECT_EQ(requests().size(), 1U);
    EXPECT_EQ(log_count("pdc_clean_ex"), 0U);
    ASSERT_EQ(velmor_mbn_init(1), 0);
    EXPECT_EQ(log_count("start velmor pdc init, g_velmor_pdc_init_status = 0, force_init = 1"), 1U);
    EXPECT_EQ(log_count("pdc_clean_ex: Release client connection to PDC"), 1U);
    for (const auto request : {+select_known, +deactivate}) EXPECT_EQ(request(), 0);
}

TEST_F(PdcClient, FailedSendLeavesNoEarlierAnswer)
{
    pdc_resp_v01 resp{{1, 52}};
    EXPECT_NE(pdc_request_send(PDC_DELETE_CONFIG_V01, nullptr, 0, &resp), 0) << "the client isn't open";
    EXPECT_EQ(resp.resp.result + resp.resp.error, 0U);
}

TEST_F(PdcClient, LateResultIsTheNextRequests)
{
    open(rule(34, "on = 'indication'\naction = 'silent'") + rule(35, "on = 'indication'\naction = 'silent'"));
    pdc_result_ind_v01 good{};
    qmi_pdc_select_config_ind_hdlr_ex(&good, sizeof good);
    EXPECT_EQ(select_known(), 0);
    pdc_get_selected_config_ind_v01 second{0, 0, 0, 1, 1, {0xA1}, 0, 0, {}};  // its requester has left with the holder
    qmi_pdc_get_selected_config_ind_hdlr_ex(&second, sizeof second);
    EXPECT_EQ(log_count("qmi_pdc_get_selected_config_ind_hdlr_ex: NULL pointer for get_sel_holder"), 1U);
    EXPECT_EQ(get_selected(), PDC_ERROR);
    EXPECT_EQ(calls(), Lines{}) << "taken without a wait";
}

TEST_F(PdcClient, RequestsOfDifferentKindsOverlap)
{
    open();
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    for (const auto request : {+get_selected, +select_known, +activate})
        threads.emplace_back([&right, request] {
            for (int i = 0; i < 50; ++i) right += request() == 0;
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 150);
}

// ---- Kinds of request: each with its block, its timer and its handler ----

struct Kind {
    const char* word;  // in messages
    int req_type;
    std::uint32_t message;
    void (*handle)(void*, std::uint32_t);
    std::int32_t result;  // of an indication without fields that says success, when nobody has given a place for more
};
const Kind kKinds[] = {
    {"pdc_list", PDC_REQ_LIST, 36, qmi_pdc_list_configs_ind_hdlr_ex, -1},
    {"pdc_load", PDC_REQ_LOAD, 38, qmi_pdc_load_config_ind_hdlr_ex, 0},
    {"pdc_info", PDC_REQ_INFO, 40, qmi_pdc_get_config_info_ind_hdlr_ex, -1},
    {"pdc_deact", PDC_REQ_DEACT, 43, qmi_pdc_deactivate_config_ind_hdlr_ex, 0},
    {"pdc_del", PDC_REQ_DEL, 37, qmi_pdc_delete_config_ind_hdlr_ex, 0},
    {"get_sel", PDC_REQ_GET_SEL, 34, qmi_pdc_get_selected_config_ind_hdlr_ex, -1},
    {"sel_config", PDC_REQ_SEL_CONFIG, 35, qmi_pdc_select_config_ind_hdlr_ex, 0},
    {"act_config", PDC_REQ_ACT_CONFIG, 39, qmi_pdc_activate_config_ind_hdlr_ex, 0},
    {"set_feature", PDC_REQ_SET_FEATURE, 46, qmi_pdc_set_feature_ind_hdlr_ex, 0},
    {"default_info", PDC_REQ_DEFAULT_INFO, 42, velmor_mbn_get_default_config_info_ind_hdlr, -1},
};

std::atomic<std::uint32_t>& timer_of(const Kind& kind)
{
    return *qmi_pdc_request_timer_get_ptr_by_req_type(kind.req_type);
}
sigval number(std::uint32_t timer_id)
{
    return {.sival_int = static_cast<int>(timer_id)};
}

// The result is put in place just when its requester is about to sleep: without the mutex its wake-up would be lost.
TEST_F(PdcClient, ResultIsNotLostBetweenTheLookAndTheSleep)
{
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.word);
        std::vector<std::uint8_t> nothing(sizeof(pdc_validate_config_ind_v01));
        std::atomic<bool> handled{false};
        std::thread handler;
        const OnCalls meeting([&](std::string_view call, const void*) {
            if (!call.starts_with("timer_settime") || handler.joinable()) return;
            handler = std::thread([&] {
                kind.handle(nothing.data(), 0);
                handled = true;
            });
            for (int i = 0; i < 20 && !handled; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        });
        EXPECT_EQ(pdc_request_begin(kind.req_type), 0);
        EXPECT_EQ(pdc_request_begin(kind.req_type), PDC_BUSY);
        EXPECT_EQ(pdc_request_wait(kind.req_type), kind.result);
        handler.join();
        EXPECT_EQ(calls(), (Lines{"timer_settime 5.000000000", "timer_settime 0.000000000"}));
        EXPECT_EQ(timer_of(kind), 0U);
    }
}

TEST_F(PdcClient, FirstTimerThatExpiresEndsEverySleeperAndTheOthersRunOn)
{
    std::vector<std::thread> sleepers;
    std::atomic<int> ended{0};
    for (const Kind& kind : kKinds) {
        sleepers.emplace_back([&] { ended += pdc_request_wait(kind.req_type) == PDC_ERROR; });
        EXPECT_TRUE(wait_until([&] { return timer_of(kind) != 0; }));
        EXPECT_EQ(qmi_pdc_request_timer_get_req_type_by_timer_id(timer_of(kind)), kind.req_type) << kind.word;
    }
    qmi_pdc_request_timer_timeout_proc(number(timer_of(kKinds[3])));
    for (std::thread& sleeper : sleepers) sleeper.join();
    EXPECT_EQ(ended, 10);
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.word);
        EXPECT_EQ(log_count(kind.word + std::string(" is waiting, will stop it.")), 1U);
        const std::uint32_t timer_id = timer_of(kind);
        EXPECT_EQ(timer_id == 0, &kind == &kKinds[3]);
        if (timer_id == 0) continue;
        qmi_pdc_request_timer_timeout_proc(number(timer_id));
        EXPECT_EQ(timer_of(kind), 0U);
        EXPECT_EQ(log_count("reset this timer_id(" + std::to_string(timer_id) +
                            "), req_type = " + std::to_string(kind.req_type) + "."),
                  1U);
    }
    EXPECT_EQ(g_pdc_info_ex.pdc_list.is_pdc_list_done, 0) << "nobody slept any more";
}

TEST_F(PdcClient, TimersStandInTheSlotsOfTheirKinds)
{
    for (const int req_type : {0, 12, -1}) {
        qmi_pdc_request_timer_start(req_type);
        qmi_pdc_request_timer_stop(req_type);
    }
    EXPECT_EQ(log_count("not support this req_type, do nothing."), 6U);
    for (const int req_type : {PDC_REQ_VALIDATE, PDC_REQ_LIST, PDC_REQ_LIST}) qmi_pdc_request_timer_start(req_type);
    EXPECT_EQ(calls(), (Lines{"timer_settime 5.000000000", "timer_settime 5.000000000", "timer_settime 0.000000000",
                              "timer_settime 5.000000000"}))
        << "one that runs is stopped first";
    EXPECT_EQ(timer_of(kKinds[0]), 3U);
    EXPECT_EQ(qmi_pdc_request_timer_get_ptr_by_timer_id(0), &timer_of(kKinds[1])) << "the first idle one";
    qmi_pdc_init_pdc_info();
    EXPECT_EQ(timer_of(kKinds[0]), 0U);
}

// ---- Indications that nobody waits for ----

struct IndicationCase {
    const char* catches;
    int req_type;
    std::string tlvs;
    std::int32_t result;
    const char* words;
};
const IndicationCase kIndicationCases[] = {
    {"ErrorIsSuccess", PDC_REQ_DEL, "010200 0300", -1, "qmi_pdc_delete_config_ind_hdlr_ex: QMI error, error code: 3"},
    {"SelectedError", PDC_REQ_GET_SEL, "010200 1900 110200 01A1", -1, "QMI error, error code: 25"},
    {"LongestIdRefused", PDC_REQ_GET_SEL, "010200 0000 117D00 7C" + std::string(248, 'A'), 0, ""},
    {"IdBeyondTheRoomCopied", PDC_REQ_GET_SEL, "010200 0000 117E00 7D" + std::string(250, 'B'), -1, ""},
    {"LoadNoMemory", PDC_REQ_LOAD, "010200 0200", -5, "no memory in modem EFS"},
    {"LoadInvalidId", PDC_REQ_LOAD, "010200 2900", -4, "Invalid config id, maybe already exists"},
    {"LoadOtherError", PDC_REQ_LOAD, "010200 0300", -1, "load configuration error, code = 3"},
    {"LoadReceivedDropped", PDC_REQ_LOAD, "010200 0000 110400 07000000", 0, ""},
    {"LoadResetByValue", PDC_REQ_LOAD, "010200 0000 110400 66000000 130100 00", -3, "PDC frame data is reset"},
    {"LoadRemainingDropped", PDC_REQ_LOAD, "010200 0000 120400 05000000", 0, ""},
    {"InfoOfAnErrorRefused", PDC_REQ_INFO, "010200 1000 110400 33000000 120300 024E65 130400 44000000 160400 55000000",
     0, ""},
    {"DefaultOfAnErrorRefused", PDC_REQ_DEFAULT_INFO, "010200 1000 110400 66000000 120400 77000000 130300 024E65", 0,
     "def_ind->config_desc_len = 2"},
};

TEST_F(PdcClient, IndicationsAreTakenWithoutAnybodyWaiting)
{
    open();
    const auto service = pdc_get_service_object_internal_v01(1, 16, 6);
    qmi_client_handle client = nullptr;  // that of the code isn't seen
    ASSERT_EQ(qmi_client_init_instance(service, QMI_CLIENT_INSTANCE_ANY, nullptr, nullptr, nullptr, 1000, &client), 0);
    pdc_config_desc_info info{}, default_info{};
    std::memset(default_info.config_desc, 'x', sizeof default_info.config_desc);
    g_pdc_info_ex.pdc_info.config_info_holder = &info;
    g_pdc_info_ex.default_info.config_info = &default_info;
    for (const IndicationCase& row : kIndicationCases) {
        SCOPED_TRACE(row.catches);
        std::vector<std::uint8_t> tlvs = bytes_of(row.tlvs);
        EXPECT_EQ(pdc_request_begin(row.req_type), 0);
        g_pdc_info_ex.get_sel.get_sel_holder = &selected;
        const std::string out = output_of([&] {
            qmi_pdc_unsol_ind_cb_ex(client, kKinds[row.req_type - 1].message, tlvs.data(),
                                    static_cast<std::uint32_t>(tlvs.size()), nullptr);
        });
        EXPECT_NE(out.find(row.words), std::string::npos) << out;
        EXPECT_EQ(pdc_request_wait(row.req_type), row.result);
    }
    EXPECT_EQ(hex({selected.config_id, selected.config_id + 124}), std::string(248, 'A'));
    EXPECT_EQ(g_pdc_info_ex.pdc_load.remaining_size, 5U);
    EXPECT_EQ(g_pdc_info_ex.pdc_load.received_size, 7U) << "not that of the lost frames";
    EXPECT_EQ(info.config_desc_len * 256 + info.config_desc[1], 0x265U);
    EXPECT_EQ(info.config_version, 0x44U);
    EXPECT_EQ(info.second_version, 0x55U);
    EXPECT_STREQ(reinterpret_cast<const char*>(default_info.config_desc), "Ne") << "all 255 bytes are copied";
    EXPECT_EQ(default_info.config_version, 0x66U);
    for (const Kind& kind : kKinds) {
        EXPECT_EQ(pdc_request_begin(kind.req_type), 0);
        kind.handle(nullptr, 0);
        EXPECT_EQ(pdc_request_wait(kind.req_type), -1) << kind.word;
    }
    EXPECT_EQ(g_pdc_info_ex.get_sel.get_sel_holder, nullptr) << "goes with its requester";
    qmi_pdc_list_configs_ind_hdlr_ex(nullptr, 0);
    EXPECT_EQ(log_count("is_pdc_list_handling is not running, do nothing"), 1U);
    EXPECT_EQ(g_pdc_info_ex.pdc_list.is_pdc_list_done, 0);
    qmi_pdc_unsol_ind_cb_ex(client, 99, nullptr, 0, nullptr);
    EXPECT_EQ(log_count("failed to get message c_struct len"), 1U);
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
            wait_until([&] { return sleeps.load(); });
            g_pdc_info_ex.mutex.lock();  // has been given up by the sleeper
            g_pdc_info_ex.mutex.unlock();
            alarm(20);
            std::exit(3);
        },
        testing::ExitedWithCode(3), "");
}

// ---- Outcomes in the numbers of the radio interface ----

TEST_F(PdcClient, OutcomesAreMappedByErrorAndContext)
{
    int rows = 0;
    for (const std::string& line : lines_of(read_file(data_path("hal/ril_results.txt")))) {
        if (line.starts_with("#")) continue;
        std::istringstream text(line);
        std::string catches;
        text >> catches;
        std::array<std::uint32_t, 10> cells{};
        for (std::uint32_t& cell : cells) ASSERT_TRUE(text >> cell) << line;
        const auto [sent, result, error, context, given, type_given, type, cause_given, cause, expected] = cells;
        const qmi_response_type response{result, error};
        const qmi_ril_err_payload payload{type_given != 0, type, cause_given != 0, cause};
        EXPECT_EQ(static_cast<std::uint32_t>(qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(
                      static_cast<int>(sent), &response, static_cast<qmi_ril_err_context_e_type>(context),
                      given != 0 ? &payload : nullptr)),
                  expected)
            << catches;
        ++rows;
    }
    EXPECT_EQ(rows, 30);
    for (const char* words : {"transport error -1, result 39", "transport error -3, result 39",
                              "QMI result 2, result 39", "QMI error 999, result 40", "3 util: [qcril_result.cpp: "})
        EXPECT_EQ(log_count(words), words[0] == '3' ? 4U : 1U) << words;
    EXPECT_EQ(qcril_qmi_util_convert_qmi_response_codes_to_ril_result(0, nullptr), 0);
}

}  // namespace
}  // namespace rbk::test

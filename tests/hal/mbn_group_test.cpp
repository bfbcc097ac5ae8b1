// Group 10 as people run it: standard output under a mask without traces, compared whole, the order on the wire, and what
// the modem has stored afterwards.
#include <algorithm>
#include <thread>

#include "support/embedded_run.h"
#include "support/program.h"
#include "velmor_mbn_utils.h"
#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

const std::string kDone = "RIL[pdc_utils.cpp:N] qmi_pdc_init_pdc_info: pdc_info init done\n";
const std::string kGroup = "RIL[velmor_rbk_mbn.cpp:N] velmor_test_mbn_do: ";
const std::string kEngine = "RIL[velmor_mbn_utils.cpp:N] ";

class MbnGroup : public EmbeddedRun {
 public:
    MbnGroup()
    {
        show_levels("11");
        setenv("RBK_TEST_DIVISOR", "2", 1);  // the timers of 5 seconds last 2500 ms
    }
    void show_levels(const char* mask) const { set_property("persist.vendor.radio.adb_log_shell", mask); }

    static std::string shown(const std::vector<std::string>& words)
    {
        const RunResult result = run_rbk(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return without_line_numbers(result.out);
    }
    // "req 0x0022 ..." for each request and indication, in their order. The activation's indication is left out: nobody
    // waits for it, so that it may come before the process ends or not.
    std::vector<std::string> order() const
    {
        std::vector<std::string> messages;
        for (const Traced& message : trace()) {
            if (message.head.find(" rsp ") != std::string::npos) continue;
            const std::string kind = message.head.substr(11, 4);
            const std::string number = message.head.substr(message.head.find("msg=") + 4, 6);
            if (kind + number != "ind 0x0027") messages.push_back(kind + number);
        }
        return messages;
    }
    std::string stored(int sub, const char* what) const
    {
        return read_file(home() / ("modem/pdc/sub" + std::to_string(sub)) / what);
    }
};

std::string help()
{
    return output_of([] { show_help(RBK_GROUP_MBN); });
}

TEST_F(MbnGroup, BadArgumentsAreToldAndReachNobody)
{
    struct {
        const char* catches;
        std::vector<std::string> words;
        std::string out;
        bool help;
    } const cases[] = {
        {"TooFewTaken", {"10", "0"}, kGroup + "note: Too few parameters, Pls refer to the following cmd:\n", true},
        {"UnknownTaken", {"10", "7", "1"}, kGroup + "invalid mbn_i = 7\n", true},
        {"NoSubRefreshed", {"10", "0", "0"}, kEngine + "velmor_refresh_mbn: sub_mask is out of range\n", false},
        {"ThirdSubRefreshed", {"10", "0", "4"}, kEngine + "velmor_refresh_mbn: sub_mask is out of range\n", false},
        {"NegativeMaskReactivated",
         {"10", "1", "-1"},
         kEngine + "velmor_reactivate_mbn: sub_mask is out of range\n",
         false},
    };
    for (const auto& c : cases) EXPECT_EQ(shown(c.words), c.out + (c.help ? help() : "")) << c.catches;
    char group[] = "9";
    char* words[] = {group, group, group, group};
    const std::string out = output_of([&] { velmor_test_mbn_do(4, words); });
    EXPECT_EQ(without_line_numbers(out),
              kGroup + "note: the first parameters should be 10, Pls refer to the following cmd:\n" + help());
    EXPECT_EQ(trace().size(), 0u);
}

TEST_F(MbnGroup, OtherTypesAreRefusedWithTheResultOfTheOperation)
{
    EXPECT_EQ(velmor_refresh_mbn(1, 2), 0);
    EXPECT_EQ(velmor_reactivate_mbn(1, 2), -1);
    velmor_mbn_deactivate_config(2, PDC_CONFIG_TYPE_MODEM_SW_V01);
    velmor_mbn_deactivate_config(1, static_cast<pdc_config_type_enum_v01>(2));
    EXPECT_EQ(log_count("config_type is invalid\n") + log_count("sub is invalid, sub: 2\n") +
                  log_count("config_type is invalid, config_type: 2\n"),
              4u);
    EXPECT_EQ(trace().size(), 0u);
}

TEST_F(MbnGroup, RefreshAppliesWhatIsThereAndWaitsForNothing)
{
    EXPECT_EQ(shown({"10", "0", "3"}), kDone);
    ASSERT_EQ(requests().size(), 2u);
    EXPECT_EQ(requests()[0].bytes,
              "01040001000000"
              "11040001000000"
              "12040000000000"
              "13040000000000");
    EXPECT_EQ(requests()[1].bytes,
              "01040001000000"
              "11040001000000"
              "12040001000000"
              "13040001000000");
    EXPECT_EQ(calls(), std::vector<std::string>{});
}

TEST_F(MbnGroup, FailedRefreshLetsTheOtherSubscriptionRun)
{
    scenario("[[fault]]\nservice = 'pdc'\nmessage = 39\nnth = 1\naction = 'silent'\n");
    scale_timeouts("0.02");
    EXPECT_EQ(
        shown({"10", "0", "3"}),
        kDone + "RIL[pdc_utils.cpp:N] pdc_activate_config_ex: qmi send message error for activate_config, errno: -3\n");
    EXPECT_EQ(requests().size(), 2u);
    EXPECT_EQ(log_count("SUB_0 pdc_activate_config_ex ret -1"), 1u);
    EXPECT_EQ(log_count("SUB_1 pdc_activate_config_ex ret 0"), 1u);
}

TEST_F(MbnGroup, ReactivateTakesTheConfigurationOffAndPutsItBack)
{
    scenario("[pdc]\nindication_ms = 1\n[[pdc.config]]\nid = 'A1A2'\n[pdc.sub0]\nactive = 'A1A2'\npending = 'BB'\n");
    EXPECT_EQ(shown({"10", "1", "1"}), kDone);
    EXPECT_EQ(order(), (std::vector<std::string>{"req 0x0022", "ind 0x0022", "req 0x002B", "ind 0x002B", "req 0x0002",
                                                 "req 0x0023", "ind 0x0023", "req 0x0027"}));
    EXPECT_EQ(requests()[1].bytes,
              "01040001000000"
              "11040000000000");
    EXPECT_EQ(requests()[3].bytes,
              "010700"
              "01000000"
              "02A1A2"
              "11040000000000");
    EXPECT_EQ(requests()[4].bytes,
              "01040001000000"
              "11040000000000"
              "12040000000000"
              "13040000000000");
    EXPECT_EQ(stored(0, "active"), "\xA1\xA2");
    EXPECT_EQ(stored(0, "pending"), "");
    EXPECT_TRUE(std::filesystem::exists(home() / "modem/marks/nv_sync"));
    EXPECT_EQ(log_count("ret_pdc: 0, ret_sync: 0, sub: 0, config_type: 1"), 1u);
}

TEST_F(MbnGroup, ReactivateOfTheSecondSubscriptionLeavesTheFirst)
{
    EXPECT_EQ(shown({"10", "1", "2"}), kDone);
    for (const Traced& request : requests()) {
        if (request.head.find("svc=0x0024") == std::string::npos) continue;
        EXPECT_NE(request.bytes.find("040001000000", 10), std::string::npos) << request.head;  // subscription 1
    }
    EXPECT_EQ(requests().size(), 5u);
    EXPECT_EQ(stored(1, "active").size(), 20u);
}

TEST_F(MbnGroup, NothingActiveEndsTheReactivationBeforeTheOtherSubscription)
{
    scenario("[pdc.sub0]\npending = 'AABB'\n");
    EXPECT_EQ(shown({"10", "1", "3"}),
              kDone + kEngine + "velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex fail\n");
    EXPECT_EQ(requests().size(), 1u);
    EXPECT_EQ(log_count("SUB_0 pdc_get_current_config_ex ret_val -6"), 1u);
    EXPECT_EQ(stored(0, "pending"), "\xAA\xBB");
}

TEST_F(MbnGroup, FailedSelectStillActivates)
{
    scenario(
        "[pdc]\nindication_ms = 1\n[[fault]]\nservice = 'pdc'\nmessage = 35\non = 'indication'\naction = 'raw'\nbytes "
        "= '0102001000'\n");
    EXPECT_EQ(shown({"10", "1", "1"}),
              kDone + "RIL[pdc_utils.cpp:N] qmi_pdc_select_config_ind_hdlr_ex: QMI error, error code: 16\n");
    EXPECT_EQ(order().back(), "req 0x0027");
    EXPECT_EQ(log_count("SUB_0 pdc_activate_config_ex ret_val 0"), 1u);
}

TEST_F(MbnGroup, SilentModemEndsTheReactivationAfterItsFiveSeconds)
{
    EXPECT_EQ(shown({"10", "30", "1"}), "");
    const std::string check = "RIL[pdc_utils.cpp:N] ";
    EXPECT_EQ(shown({"10", "1", "1"}),
              kDone + check +
                  "velmor_mbn_debug_all_pdc_no_rsp_count_check: NOTICE!!! PROPERTY_DEBUG_ALL_PDC_NO_RSP_COUNT(1) is "
                  "running\n" +
                  check + "qmi_pdc_unsol_ind_cb_ex: velmor_mbn_debug_all_pdc_no_rsp_count_check fail\n" + kEngine +
                  "velmor_reactivate_mbn: SUB_0 pdc_get_current_config_ex fail\n");
    EXPECT_EQ(calls().front(), "timer_settime 5.000000000");
    EXPECT_EQ(log_count("SUB_0 pdc_get_current_config_ex ret_val -1"), 1u);
    EXPECT_EQ(shown({"10", "30", "0"}), "");
    EXPECT_EQ(shown({"10", "1", "1"}), kDone);
}

TEST_F(MbnGroup, ClientIsOpenedOnceUnlessForced)
{
    EXPECT_EQ(velmor_mbn_init(0), 0);
    EXPECT_EQ(velmor_mbn_init(0), 0);
    EXPECT_EQ(log_count("pdc init have been done, do nothing"), 1u);
    g_pdc_info_ex.get_sel.is_get_sel_handling = 1;
    EXPECT_EQ(velmor_mbn_init(1), 0);
    EXPECT_EQ(log_count("start velmor pdc init, g_velmor_pdc_init_status = 0, force_init = 1"), 1u);
    EXPECT_EQ(g_pdc_info_ex.get_sel.is_get_sel_handling, 0);
    // A reactivation opens it anew, a refresh doesn't.
    setenv("RBK_TEST_DIVISOR", "2", 1);
    g_pdc_info_ex.get_sel.is_get_sel_handling = 1;
    EXPECT_EQ(velmor_reactivate_sw_mbn(1), 0);
    EXPECT_EQ(velmor_refresh_sw_mbn(1), 0);
    EXPECT_EQ(log_count("qmi_client_init succeeds for PDC"), 3u);
}

TEST_F(MbnGroup, AbsentServiceIsToldByBothOperations)
{
    scenario("[modem]\nservices = ['extended']\n");
    setenv("RBK_TEST_DIVISOR", "100000", 1);
    EXPECT_EQ(velmor_refresh_sw_mbn(1), -1);
    EXPECT_EQ(velmor_reactivate_sw_mbn(1), -1);
    EXPECT_EQ(log_count("velmor_refresh_mbn: pdc init failed, do nothing"), 1u);
    EXPECT_EQ(log_count("velmor_reactivate_mbn: pdc init failed, do nothing"), 1u);
}

// ---- Wait and notify ----

TEST_F(MbnGroup, NotifyWithoutAWaiterIsLostAndTheNextOneFreesIt)
{
    void* params = qcril_malloc_adv(8);
    *static_cast<std::int32_t*>(params) = 1;
    std::thread waiter([params] { velmor_qcril_pdc_test_thread_proc(params); });
    EXPECT_TRUE(wait_until([&] { return log_count("velmor_pdc_test_req: pdc_test, wait ...") == 1; }));
    g_pdc_info_ex.mutex.lock();  // has been given up by the sleeper
    g_pdc_info_ex.mutex.unlock();
    EXPECT_EQ(log_count("velmor_pdc_test_rsp: pdc_test, notify_one"), 1u);
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 0u);
    velmor_pdc_test_rsp(1);
    waiter.join();
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 1u);
    EXPECT_EQ(calls(), std::vector<std::string>{"sleep 3"});
}

TEST_F(MbnGroup, MainSideNotifiesAfterTenSecondsAndStaysForAThousand)
{
    show_levels("15");
    setenv("RBK_TEST_DIVISOR", "1000", 1);
    const std::string out = shown({"10", "31", "1"});
    std::size_t at = 0;
    for (const char* words : {"velmor_qcril_start_pdc_test_thread: flag = 1", "velmor_modem_wait_s: wait-end(10s)",
                              "velmor_pdc_test_rsp: pdc_test, notify_one", "velmor_modem_wait_s: wait-end(1000s)"}) {
        at = out.find(words, at + 1);
        EXPECT_NE(at, std::string::npos) << words << "\n" << out;
    }
    EXPECT_EQ(log_count("velmor_pdc_test_rsp: pdc_test, notify_one"), 2u);  // the thread's own came before
    EXPECT_EQ(trace().size(), 0u);
}

TEST_F(MbnGroup, OtherFlagsDoNothingForAThousandSeconds)
{
    setenv("RBK_TEST_DIVISOR", "1000", 1);
    EXPECT_EQ(shown({"10", "31", "0"}), kEngine + "velmor_qcril_pdc_test_thread_proc: flag is invalid, do nothing\n");
    std::vector<std::string> waits = calls();
    std::sort(waits.begin(), waits.end());
    EXPECT_EQ(waits, (std::vector<std::string>{"sleep 10", "sleep 1000", "sleep 3"}));
    EXPECT_EQ(velmor_qcril_pdc_test_thread_proc(nullptr), nullptr);
    EXPECT_EQ(log_count("velmor_qcril_pdc_test_thread_proc: params_ptr is NULL"), 1u);
}

}  // namespace
}  // namespace rbk::test

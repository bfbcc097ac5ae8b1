// The configuration group where a session can't tell: arguments that no command line brings, a second opening in one
// process, and the test of wait and notify, whose threads speak side by side.
#include <set>
#include <thread>

#include "support/group_test.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

class MbnGroup : public GroupTest {};

TEST_F(MbnGroup, OtherTypesReachNobody)
{
    EXPECT_EQ(velmor_refresh_mbn(1, 2), 0);
    EXPECT_EQ(velmor_reactivate_mbn(1, 2), -1);
    velmor_mbn_deactivate_config(2, PDC_CONFIG_TYPE_MODEM_SW_V01);
    velmor_mbn_deactivate_config(1, static_cast<pdc_config_type_enum_v01>(2));
    for (const char* words :
         {"velmor_refresh_mbn: config_type is invalid\n", "velmor_reactivate_mbn: config_type is invalid\n",
          "sub is invalid, sub: 2\n", "config_type is invalid, config_type: 2\n"})
        EXPECT_EQ(log_count(words), 1U) << words;
    EXPECT_EQ(log_count("3 [velmor_mbn_utils.cpp"), 2U) << "the operations of this group alone complain aloud";
    EXPECT_TRUE(trace().empty());
}

TEST_F(MbnGroup, ClientIsOpenedOnceUnlessForced)
{
    setenv("RBK_TEST_DIVISOR", "1", 1);  // no timer of 5 seconds may run out
    EXPECT_EQ(velmor_mbn_init(0), 0);
    EXPECT_EQ(velmor_mbn_init(0), 0);
    EXPECT_EQ(log_count("pdc init have been done, do nothing"), 1U);
    EXPECT_EQ(log_count("Release client connection to PDC"), 0U);
    g_pdc_info_ex.get_sel.is_get_sel_handling = 1;
    EXPECT_EQ(velmor_mbn_init(1), 0);
    EXPECT_EQ(log_count("Release client connection to PDC"), 1U);
    EXPECT_EQ(log_count("start velmor pdc init, g_velmor_pdc_init_status = 0, force_init = 1"), 1U);
    EXPECT_EQ(g_pdc_info_ex.get_sel.is_get_sel_handling, 0);
    // A reactivation opens it anew, a refresh doesn't.
    g_pdc_info_ex.get_sel.is_get_sel_handling = 1;
    EXPECT_EQ(velmor_reactivate_sw_mbn(1), 0);
    EXPECT_EQ(velmor_refresh_sw_mbn(1), 0);
    EXPECT_EQ(log_count("qmi_client_init succeeds for PDC"), 3U);
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
    EXPECT_EQ(log_count("velmor_pdc_test_rsp: pdc_test, notify_one"), 1U);
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 0U);
    velmor_pdc_test_rsp(1);
    waiter.join();
    EXPECT_EQ(log_count("velmor_pdc_test_req: pdc_test, wait end"), 1U);
    EXPECT_EQ(calls(), Words{"sleep 3"});
}

// Shortened so that the whole of the thousand seconds is one. The first flag notifies from the main side too.
TEST_F(MbnGroup, MainSideNotifiesAfterTenSecondsAndStaysForAThousand)
{
    setenv("RBK_TEST_DIVISOR", "1000", 1);
    const std::string notified = "velmor_pdc_test_rsp: pdc_test, notify_one";
    EXPECT_EQ(shown({"10", "31", "1"}), "");
    const std::string told = read_file(home() / "log");
    EXPECT_LT(told.find("velmor_modem_wait_s: wait-end(10s)"), told.rfind(notified));
    EXPECT_LT(told.rfind(notified), told.find("velmor_modem_wait_s: wait-end(1000s)"));
    EXPECT_EQ(log_count(notified), 2U) << "the thread's own came before";

    calls();  // the thread's own may be missing: a notify that comes before it waits is lost
    EXPECT_EQ(shown({"10", "31", "0"}),
              "RIL[velmor_mbn_utils.cpp:N] velmor_qcril_pdc_test_thread_proc: flag is invalid, do nothing\n");
    const Words waits = calls();
    EXPECT_EQ(std::multiset(waits.begin(), waits.end()),
              (std::multiset<std::string>{"sleep 10", "sleep 1000", "sleep 3"}));
    EXPECT_EQ(log_count(notified), 2U) << "no other flag notifies";
    EXPECT_EQ(velmor_qcril_pdc_test_thread_proc(nullptr), nullptr);
    EXPECT_TRUE(trace().empty());
}

}  // namespace
}  // namespace rbk::test

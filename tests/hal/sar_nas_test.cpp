// The clients of sar and nas, and group 12 as people run it.
#include "velmor_extend_sar_nas.h"

#include "services/nas_v01.h"
#include "services/sar_v01.h"
#include "support/group_test.h"

namespace rbk::test {
namespace {

// ---- SAR ----

class SarClient : public EmbeddedRun {};

TEST_F(SarClient, OnlyDsisGoOutAsTheyAre)
{
    const struct {
        std::uint32_t dsi;
        const char* sent;
    } rows[] = {{1, "01040001000000"},
                {20, "01040014000000"},
                {21, "01040000000000"},
                {0, "01040000000000"},
                {0xFFFFFFFF, "01040000000000"}};
    for (const auto& row : rows) {
        EXPECT_EQ(velmor_set_sar_dsi(row.dsi), 0);
        EXPECT_EQ(requests().back().bytes, row.sent) << row.dsi;
    }
}

TEST_F(SarClient, AnswersAreBelievedAsFarAsTheirPartsTell)
{
    scenario(
        "[[fault]]\nservice = 'sar'\nmessage = 2\nnth = 1\naction = 'raw'\nbytes = '02 04 00 00 00 00 00'\n"
        "[[fault]]\nservice = 'sar'\nmessage = 1\naction = 'error'\ncode = 48\n");
    EXPECT_EQ(velmor_get_sar_dsi(), 0) << "without the state's flag";
    EXPECT_EQ(log_count("dsi vailid = 0 , dsi value = 0"), 1U);
    EXPECT_EQ(log_count("velmor_get_sar_dsi: function"), 0U) << "the one operation without traces";
    EXPECT_EQ(velmor_set_sar_dsi(7), 0) << "the answer's own result isn't looked at";
}

TEST_F(SarClient, FailedSendOpensANewClientNextTime)
{
    scenario("[modem]\nrestart_ms = 0\n[sar]\ndsi = 9\n[[fault]]\nservice = 'sar'\nnth = 1\naction = 'down'\n");
    EXPECT_EQ(velmor_get_sar_dsi(), -1);
    EXPECT_EQ(log_count("qmi_client_send_msg_sync failed, qmi_client_error = -2"), 1U);
    std::int32_t dsi = -1;
    for (int i = 0; i < 100 && dsi == -1; ++i) dsi = velmor_get_sar_dsi();
    EXPECT_EQ(dsi, 9);
}

TEST_F(SarClient, SilenceIsATimeOut)
{
    scale_timeouts("0.001");
    scenario("[[fault]]\nservice = 'sar'\naction = 'silent'\n");
    EXPECT_EQ(velmor_set_sar_dsi(3), -3);
    EXPECT_EQ(log_count("qmi_client_send_msg_sync failed, qmi_client_error = -3"), 1U);
    EXPECT_EQ(log_count("function exit, qmi_client_error = -3 <-------------"), 1U);
}

TEST_F(SarClient, AbsentServiceIsToldTwice)
{
    scenario("[modem]\nservices = ['nas']\n");
    EXPECT_EQ(velmor_get_sar_dsi(), -1);
    EXPECT_EQ(log_count("qmi_client_init_instance failed, qmi_client_error = -3"), 1U);
    EXPECT_EQ(log_count("velmor_check_and_init_qmi_client_rf_sar: qmi_client_error is NULL"), 1U);
    EXPECT_EQ(log_count("velmor_get_sar_dsi: velmor_check_and_init_qmi_client_rf_sar FAIL"), 1U);
}

TEST_F(SarClient, ServiceObjectsAreForTheirVersionsAlone)
{
    EXPECT_NE(sar_get_service_object_internal_v01(1, 15, 6), nullptr);
    EXPECT_EQ(sar_get_service_object_internal_v01(1, 16, 6), nullptr);
    EXPECT_NE(nas_get_service_object_internal_v01(1, 388, 6), nullptr);
    EXPECT_EQ(nas_get_service_object_internal_v01(1, 388, 5), nullptr);
}

// ---- NAS ----

class NasClient : public EmbeddedRun {
 public:
    nas_perform_network_scan_req_msg_v01 request = {};
    nas_perform_network_scan_resp_msg_v01 response = {};
    std::int32_t scan()
    {
        return velmor_send_nas_qmi_req_msg(33, &request, sizeof request, &response, sizeof response, 10000);
    }
};

TEST_F(NasClient, ScanResultComesBackInItsStructure)
{
    scenario(
        "[nas]\nscan_ms = 1\nnetworks = [ { mcc = 262, mnc = 1, status = 2, name = 'Net One' },\n"
        "{ mcc = 310, mnc = 410, status = 5, radio = 12, three_digits = true, name = '' } ]\n");
    ASSERT_EQ(scan(), 0);
    EXPECT_EQ(requests().back().bytes, "") << "no optional field";
    EXPECT_EQ(response.resp.result, 0U);
    ASSERT_EQ(response.nas_3gpp_network_info_len, 2U);
    EXPECT_EQ(response.nas_3gpp_network_info[0].mobile_country_code, 262);
    EXPECT_STREQ(response.nas_3gpp_network_info[0].network_description, "Net One");
    EXPECT_EQ(response.nas_3gpp_network_info[1].mobile_network_code, 410);
    EXPECT_EQ(response.nas_3gpp_network_info[1].network_status, 5);
    EXPECT_EQ(response.nas_network_radio_access_technology[1].rat, 12);
    EXPECT_EQ(response.mnc_includes_pcs_digit[0].mnc_includes_pcs_digit, 0);
    EXPECT_EQ(response.mnc_includes_pcs_digit[1].mnc_includes_pcs_digit, 1);
    EXPECT_EQ(response.scan_result_valid, 1);
}

TEST_F(NasClient, ClientLivesForOneRequest)
{
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(scan(), -1) << "the stale handle is refused";
    EXPECT_EQ(log_count("init qmi_client"), 1U);
    EXPECT_EQ(log_count("qmi_client_send_msg_sync fail, qmi_client_error = -1"), 1U);
    EXPECT_EQ(log_count("qmi_client_release failed"), 1U);
    EXPECT_EQ(log_count("velmor_qmi_client_recovery, qmi_client_ptr 0x"), 2U);
}

TEST_F(NasClient, NullBuffersOpenNothing)
{
    EXPECT_EQ(velmor_send_nas_qmi_req_msg(33, nullptr, 0, &response, sizeof response, 1), -1);
    EXPECT_EQ(velmor_send_nas_qmi_req_msg(33, &request, sizeof request, nullptr, 0, 1), -1);
    EXPECT_EQ(log_count("qmi_request is NULL"), 1U);
    EXPECT_EQ(log_count("qmi_response is NULL"), 1U);
    EXPECT_EQ(log_count("velmor_qmi_client_recovery, qmi_client_ptr (nil)"), 2U);
    EXPECT_EQ(log_count("init qmi_client"), 0U);
}

TEST_F(NasClient, AbsentServiceIsTold)
{
    scale_timeouts("0.001");
    scenario("[modem]\nservices = ['sar']\n");
    EXPECT_EQ(scan(), -1);
    EXPECT_EQ(log_count("velmor_qmi_client_init instance failed, qmi_client_error = -3"), 1U);
    EXPECT_EQ(log_count("velmor_send_nas_qmi_req_msg: qmi_client_ptr is NULL"), 2U);
}

// ---- Group 12 ----

const std::string kQmi = "RIL[velmor_rbk_qmi.cpp:N] ";
const std::string kEntry = kQmi + "velmor_test_qmi_do: ";
const std::string kScan = "velmor_send_nas_perform_network_scan_req_msg_v01";
const std::string kIncremental = "velmor_send_nas_perform_incremental_network_scan_req_msg_v01";

std::string begun(const std::string& operation)
{
    return kQmi + operation + ": " + operation + ", scan_scope = 0\n";
}
std::string failed(const std::string& operation, int code)
{
    return begun(operation) + kQmi + operation +
           ": qmi_client_send_msg_sync fail, qmi_client_error = " + std::to_string(code) + "\n" + kEntry +
           "note: Error happen! error_code(" + std::to_string(code) + ")\n" + help_of(12);
}

class ScanGroup : public GroupTest {};

TEST_F(ScanGroup, ScansAreSetOffAndNothingOfThemIsShown)
{
    scenario("[nas]\nscan_ms = 50\n");
    EXPECT_EQ(shown({"12", "0"}), begun(kScan));
    EXPECT_EQ(requests().back().head, "svc=0x0003 req txn=1 msg=0x0021 len=0");
    EXPECT_EQ(shown({"12", "1", "0", "1", "2"}), begun(kIncremental));
    EXPECT_EQ(requests().back().head, "svc=0x0003 req txn=1 msg=0x0085 len=0");
}

TEST_F(ScanGroup, SlowScanIsATimeOut)
{
    scenario("[nas]\nscan_ms = 11000\n");
    scale_timeouts("0.01");
    EXPECT_EQ(shown({"12", "0"}), failed(kScan, -3));
    scale_timeouts("1");
    EXPECT_EQ(shown({"12", "1"}), begun(kIncremental)) << "answered at once";
}

TEST_F(ScanGroup, FailingModemIsTold)
{
    scenario("[[fault]]\nservice = 'nas'\naction = 'down'\n");
    EXPECT_EQ(shown({"12", "1"}), failed(kIncremental, -2));
    scenario("[[fault]]\nservice = 'nas'\naction = 'raw'\nbytes = 'FF FF'\n");
    EXPECT_EQ(shown({"12", "0"}), failed(kScan, -1));
    scenario("[[fault]]\nservice = 'nas'\naction = 'error'\ncode = 25\n");
    EXPECT_EQ(shown({"12", "0"}), begun(kScan)) << "only the transport decides";
}

TEST_F(ScanGroup, RefusalsEndInTheirNoteAndTheHelp)
{
    EXPECT_EQ(shown({"12"}), kEntry + "note: Too few parameters, Pls refer to the following cmd:\n" + help_of(12));
    for (const char* sub : {"2", "-1"})
        EXPECT_EQ(shown({"12", sub}),
                  kEntry + "note: the second parameters is invalid, Pls refer to the following cmd:\n" + help_of(12));
    EXPECT_TRUE(trace().empty());
}

}  // namespace
}  // namespace rbk::test

// The clients of sar and nas called from a program: what one run of the shell, which makes one request, never does.
#include "velmor_extend_sar_nas.h"

#include "services/nas_v01.h"
#include "services/sar_v01.h"
#include "support/embedded_run.h"

namespace rbk::test {
namespace {

class SarClient : public EmbeddedRun {};
class NasClient : public EmbeddedRun {
 public:
    nas_perform_network_scan_req_msg_v01 request = {};
    nas_perform_network_scan_resp_msg_v01 response = {};
    std::int32_t scan()
    {
        return velmor_send_nas_qmi_req_msg(33, &request, sizeof request, &response, sizeof response, 10000);
    }
};

TEST_F(SarClient, OnlyDsisGoOutAsTheyAre)
{
    const std::pair<std::uint32_t, std::uint32_t> rows[] = {{1, 1}, {20, 20}, {21, 0}, {0, 0}, {0xFFFFFFFF, 0}};
    for (const auto& [dsi, sent] : rows) {
        EXPECT_EQ(velmor_set_sar_dsi(dsi), 0);
        EXPECT_EQ(requests().back().bytes, tlv(1, le(sent, 4))) << dsi;
    }
}

TEST_F(SarClient, AnswersAreBelievedAsFarAsTheirPartsTell)
{
    scenario(
        "[[fault]]\nservice = 'sar'\nmessage = 2\naction = 'raw'\nbytes = '02 04 00 00 00 00 00'\n"
        "[[fault]]\nservice = 'sar'\nmessage = 1\naction = 'error'\ncode = 48\n");
    EXPECT_EQ(velmor_get_sar_dsi(), 0) << "without the state's flag";
    EXPECT_EQ(log_count("dsi vailid = 0 , dsi value = 0"), 1U);
    EXPECT_EQ(log_count("velmor_get_sar_dsi: function"), 0U) << "the one operation without traces";
    EXPECT_EQ(velmor_set_sar_dsi(7), 0) << "the answer's own result isn't looked at";
}

// Either request that fails drops the client: the lost one would fail for good.
TEST_F(SarClient, FailedSendOpensANewClientNextTime)
{
    scenario(
        "[modem]\nrestart_ms = 0\n[sar]\ndsi = 9\n"
        "[[fault]]\nservice = 'sar'\nmessage = 2\nnth = 1\naction = 'down'\n"
        "[[fault]]\nservice = 'sar'\nmessage = 1\nnth = 1\naction = 'down'\n");
    EXPECT_EQ(velmor_get_sar_dsi(), -1);
    EXPECT_TRUE(wait_until([] { return velmor_get_sar_dsi() == 9; }));
    EXPECT_EQ(velmor_set_sar_dsi(3), -2);
    EXPECT_TRUE(wait_until([] { return velmor_set_sar_dsi(3) == 0; }));
}

TEST_F(NasClient, ScanResultComesBackInItsStructure)
{
    scenario(
        "[nas]\nscan_ms = 1\nnetworks = [ { mcc = 262, mnc = 1, status = 2, name = 'Net One' },\n"
        "{ mcc = 310, mnc = 410, status = 5, radio = 12, three_digits = true, name = '' } ]\n");
    ASSERT_EQ(scan(), 0);
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

TEST_F(NasClient, ClientLivesForOneRequestThatIsWorthIt)
{
    EXPECT_EQ(velmor_send_nas_qmi_req_msg(33, nullptr, 0, &response, sizeof response, 1), -1);
    EXPECT_EQ(velmor_send_nas_qmi_req_msg(33, &request, sizeof request, nullptr, 0, 1), -1);
    EXPECT_EQ(log_count("qmi_request is NULL") + log_count("qmi_response is NULL"), 2U);
    EXPECT_EQ(log_count("velmor_qmi_client_recovery, qmi_client_ptr (nil)"), 2U);
    EXPECT_EQ(scan(), 0);
    EXPECT_EQ(scan(), -1) << "the stale handle is refused";
    EXPECT_EQ(log_count("init qmi_client"), 1U);
    EXPECT_EQ(log_count("qmi_client_send_msg_sync fail, qmi_client_error = -1"), 1U);
    EXPECT_EQ(log_count("qmi_client_release failed"), 1U);
    EXPECT_EQ(log_count("velmor_qmi_client_recovery, qmi_client_ptr 0x"), 2U);
}

TEST(ServiceObjects, AreForTheirVersionsAlone)
{
    EXPECT_EQ(sar_get_service_object_internal_v01(1, 16, 6), nullptr);
    EXPECT_EQ(nas_get_service_object_internal_v01(1, 388, 5), nullptr);
}

}  // namespace
}  // namespace rbk::test

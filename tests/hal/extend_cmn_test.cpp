// The common requests, the counters of restarts, and the clients of sar and nas: what one run of the shell never does.
#include "velmor_extend_cmn.h"

#include "hal/exchanges.h"
#include "services/nas_v01.h"
#include "velmor_extend_sar_nas.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

class ExtendCommon : public ExchangeTest {};

using Sender = std::int32_t (*)(std::uint32_t, std::uint32_t, const void*, void*);

// Sends `l` bytes of A1, or null; the answer goes into the room.
std::function<std::int32_t()> send(Sender sender, std::uint32_t l, bool null = false)
{
    static const std::vector<std::uint8_t> value(600, 0xA1);
    return [=] { return sender(0x01020304, l, null ? nullptr : value.data(), room); };
}

TEST_F(ExtendCommon, ValuesAreJudgedAndRecordsGoOutWhole)
{
    const auto typed = velmor_send_common_qmi_msg, plain = velmor_common_qmi_req;
    constexpr std::int32_t kBad = VELMOR_ERR_BAD_ARGUMENT;
    const std::string zeros = times(508, "00");
    const std::string answer = "01000000FBFFFFFF1F00000002000000CAFE" + times(490, "00");
    // clang-format off
    expect("extended", {
        {"MissingValueRefusedWithoutNeed",  send(typed, 0, true), {raw(envelope(0, 508, answer))}, 0, answer},
        {"NullCopied",                      send(typed, 4, true), {}, kBad, zeros, "velmor_send_common_qmi_msg: v is null"},
        {"LongestTypedValueRefused",        send(typed, 491), {raw(envelope(0, 508, answer))}, 0, answer},
        {"TypedValueBehindTheRecordCopied", send(typed, 492), {}, kBad, zeros, "velmor_send_common_qmi_msg: l is out of range"},
        {"LengthTakenForNegative",          send(typed, 0xFFFFFFFF), {}, kBad, zeros, "velmor_send_common_qmi_msg: l is out of range"},
        {"LongestValueRefused",             send(plain, 499), {raw(envelope(0, 508, answer))}, 0, answer},
        {"ValueAtTheLimitSent",             send(plain, 500), {}, kBad, zeros, "velmor_common_qmi_req: l is out of range"},
        {"AnswerOfAFailureLeft",            send(plain, 4), {"'error'\ncode = 52"}, -3, zeros, ""},
        {"NullAnswerWritten",               [] { return velmor_send_common_qmi_msg(35, 0, nullptr, nullptr); }, {}, kBad, "", "rsp is NULL"},
        {"NullAnswerOfPlainWritten",        [] { return velmor_common_qmi_req(35, 0, nullptr, nullptr); }, {}, kBad, "", "rsp is NULL"},
    });
    // clang-format on
    const std::string typed_head = "020000000000000004030201EB010000", head = "0403020100000000";
    EXPECT_EQ(requests()[1].bytes, envelope(4, 512, typed_head + times(491, "A1")));
    EXPECT_EQ(requests()[2].bytes, envelope(4, 512, head + times(499, "A1")));
}

// ---- Counters of restarts ----

TEST_F(ExtendCommon, EachKnownBitHasItsCounter)
{
    velmor_save_modem_ssr_count(0x7FFFFFFF);
    velmor_save_modem_ssr_count(-1);  // no mask
    std::string types;
    for (const std::string& line : log())
        if (const std::size_t at = line.find("ssr_type = 0x"); at != std::string::npos)
            types += line.substr(at + 10, 11);
    EXPECT_EQ(types,
              " 0x00000001 0x00000002 0x00000004 0x00000008 0x00000010 0x00000020 0x00000040 0x00000080 0x00000100"
              " 0x00001000 0x00002000 0x00010000 0x00020000 0x00040000 0x00080000 0xFFFFFFFF");
}

TEST_F(ExtendCommon, CounterGoesOnFromWhatStandsThere)
{
    const std::string name = "persist.radio.ssr_count_0x00001000";
    for (const auto& [stands, then] : std::vector<std::pair<const char*, std::int32_t>>{
             {"word", 1}, {"41", 42}, {"-1", 0}, {"2147483647", INT32_MIN}}) {
        set_property(name, stands);
        velmor_update_modem_ssr_count(0x1000);
        EXPECT_EQ(velmor_get_property_value_from_int(name.c_str(), nullptr, 0), then) << stands;
    }
}

// ---- SAR and NAS ----

TEST_F(ExtendCommon, DsiIsBelievedAsFarAsItsAnswerTells)
{
    expect("sar",
           {{"FlagNeeded", velmor_get_sar_dsi, {raw(tlv(2, "00000000"))}, 0, "", "dsi vailid = 0 , dsi value = 0"},
            {"RefusalHeeded", [] { return velmor_set_sar_dsi(7); }, {"'error'\ncode = 48"}, 0}});
    EXPECT_EQ(log_count("velmor_get_sar_dsi: function"), 0U) << "the one operation without traces";
}

// Either request that fails drops the client: the lost one would fail for good.
TEST_F(ExtendCommon, FailedSarSendOpensANewClientNextTime)
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

TEST_F(ExtendCommon, ClientOfAScanLivesForOneRequestThatIsWorthIt)
{
    nas_perform_network_scan_req_msg_v01 request{};
    nas_perform_network_scan_resp_msg_v01 response{};
    const auto scan = [&](const void* asked, void* answered) {
        return velmor_send_nas_qmi_req_msg(33, asked, sizeof request, answered, sizeof response, 10000);
    };
    EXPECT_EQ(scan(nullptr, &response), -1);
    EXPECT_EQ(scan(&request, nullptr), -1);
    EXPECT_EQ(log_count("qmi_request is NULL") + log_count("qmi_response is NULL"), 2U);
    EXPECT_EQ(log_count("velmor_qmi_client_recovery, qmi_client_ptr (nil)"), 2U);
    EXPECT_EQ(scan(&request, &response), 0);
    EXPECT_EQ(response.scan_result_valid, 1);
    EXPECT_EQ(scan(&request, &response), -1) << "the stale handle is refused";
}

}  // namespace
}  // namespace rbk::test

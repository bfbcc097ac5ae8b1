// The common requests: limits, records on the wire, and the counters of restarts.
#include "velmor_extend_cmn.h"

#include "support/embedded_run.h"
#include "velmor_utils_cmn.h"

namespace rbk::test {
namespace {

class ExtendCommon : public EmbeddedRun {};

// The bytes of the envelope's data in the latest request.
std::string sent_record(const EmbeddedRun& run)
{
    return run.requests().back().bytes.substr(2 * 17, 2 * 512);
}

using Sender = std::int32_t (*)(std::uint32_t, std::uint32_t, const void*, void*);

TEST_F(ExtendCommon, ValuesAreJudgedBeforeTheModemIsAsked)
{
    static const std::uint8_t value[600] = {};
    struct {
        const char* catches;
        Sender sender;
        std::uint32_t l;
        const void* v;
        bool sent;
    } static const cases[] = {
        {"MissingValueRefusedWithoutNeed", velmor_send_common_qmi_msg, 0, nullptr, true},
        {"NullCopied", velmor_send_common_qmi_msg, 4, nullptr, false},
        {"LongestTypedValueRefused", velmor_send_common_qmi_msg, 491, value, true},
        {"TypedValueBehindTheRecordCopied", velmor_send_common_qmi_msg, 492, value, false},
        {"LengthTakenForNegative", velmor_send_common_qmi_msg, 0xFFFFFFFF, value, false},
        {"LongestValueRefused", velmor_common_qmi_req, 499, value, true},
        {"ValueAtTheLimitSent", velmor_common_qmi_req, 500, value, false},
    };
    std::size_t sent = 0;
    for (const auto& c : cases) {
        common_rsp rsp;
        const std::int32_t result = c.sender(35, c.l, c.v, &rsp);
        EXPECT_EQ(result, c.sent ? 0 : VELMOR_ERR_BAD_ARGUMENT) << c.catches;
        sent += c.sent ? 1 : 0;
        EXPECT_EQ(requests().size(), sent) << c.catches;
    }
    EXPECT_EQ(velmor_send_common_qmi_msg(35, 0, nullptr, nullptr), VELMOR_ERR_BAD_ARGUMENT);
    EXPECT_EQ(velmor_common_qmi_req(35, 0, nullptr, nullptr), VELMOR_ERR_BAD_ARGUMENT);
    EXPECT_EQ(requests().size(), sent);
    EXPECT_EQ(log_count("velmor_send_common_qmi_msg: l is out of range"), 2U);
    EXPECT_EQ(log_count("velmor_common_qmi_req: l is out of range"), 1U);
}

TEST_F(ExtendCommon, RecordsGoOutWhole)
{
    const std::uint8_t value[] = {0xA1, 0xB2, 0xC3, 0xD4};
    common_rsp rsp;
    ASSERT_EQ(velmor_send_common_qmi_msg(0x01020304, 4, value, &rsp), 0);
    EXPECT_EQ(sent_record(*this),
              "0200000000000000"
              "0403020104000000"
              "A1B2C3D4" +
                  std::string(2 * 492, '0'));
    ASSERT_EQ(velmor_common_qmi_req(0x14, 4, value, &rsp), 0);
    EXPECT_EQ(sent_record(*this),
              "1400000000000000"
              "A1B2C3D4" +
                  std::string(2 * 500, '0'));
}

TEST_F(ExtendCommon, AnswerComesBackAsItsRecordAndElseZero)
{
    scenario(raw_answer(envelope(0, 508,
                                 "01000000"
                                 "FBFFFFFF"
                                 "1F000000"
                                 "02000000"
                                 "CAFE"),
                        1) +
             "[[fault]]\nservice = 'extended'\nnth = 2\naction = 'error'\ncode = 52\n");
    common_typed_rsp rsp;
    ASSERT_EQ(velmor_send_common_qmi_msg(31, 0, nullptr, &rsp), 0);
    EXPECT_EQ(rsp.result, -5);
    EXPECT_EQ(rsp.t, 31U);
    EXPECT_EQ(rsp.l, 2U);
    EXPECT_EQ(rsp.v[1], 0xFE);
    EXPECT_EQ(velmor_send_common_qmi_msg(31, 0, nullptr, &rsp), -3);
    EXPECT_EQ(rsp.result, 0);
}

// ---- Counters of restarts ----

std::int32_t count_of(const std::string& type)
{
    std::int32_t count = 0;
    return velmor_get_property_value_from_int(("persist.radio.ssr_count_0x" + type).c_str(), &count, 0);
}

TEST_F(ExtendCommon, EachKnownBitHasItsCounter)
{
    struct {
        const char* catches;
        std::int32_t flag;
        std::vector<std::string> counted;  // types, as their properties name them
    } static const cases[] = {
        {"SecondBitLost", 0x1001, {"00000001", "00001000"}},
        {"UnknownBitCounted", 0x200, {}},
        {"KnownBitLost",
         0x7FFFFFFF,
         {"00000001", "00000002", "00000004", "00000008", "00000010", "00000020", "00000040", "00000080", "00000100",
          "00001000", "00002000", "00010000", "00020000", "00040000", "00080000"}},
        {"NegativeTakenForAMask", -1, {"ffffffff"}},
    };
    std::size_t counted = 0;
    for (const auto& c : cases) {
        std::vector<std::int32_t> old;
        for (const std::string& type : c.counted) old.push_back(count_of(type));
        velmor_save_modem_ssr_count(c.flag);
        for (std::size_t i = 0; i < old.size(); ++i) EXPECT_EQ(count_of(c.counted[i]), old[i] + 1) << c.catches;
        counted += c.counted.size();
        EXPECT_EQ(log_count("ssr_count_old"), counted) << c.catches;
    }
}

TEST_F(ExtendCommon, CounterGoesOnFromWhatStandsThere)
{
    static const struct {
        const char* stands;
        std::int32_t then;
    } cases[] = {{"word", 1}, {"41", 42}, {"-1", 0}, {"2147483647", INT32_MIN}};
    for (const auto& c : cases) {
        velmor_set_property_value("persist.radio.ssr_count_0x00001000", c.stands);
        velmor_update_modem_ssr_count(0x1000);
        EXPECT_EQ(count_of("00001000"), c.then) << c.stands;
    }
}

}  // namespace
}  // namespace rbk::test

// Groups 4 and 6 as people run them: standard output under a mask without traces, compared whole, and what reached the
// modem.
#include "support/group_test.h"

namespace rbk::test {
namespace {

const std::string kNvEfs = "RIL[velmor_rbk_test_nvefs.cpp:N] ";
const std::string kCmn = "RIL[velmor_rbk_test_cmn.cpp:N] ";
const std::string kApi = "RIL[velmor_extend_api.cpp:N] ";

std::string dump(const std::string& operation, const std::vector<std::uint8_t>& bytes)
{
    const std::string head = kNvEfs + operation + ": ";
    std::string text = head + "data len(" + std::to_string(bytes.size()) + ")\ndata: \n";
    for (const std::uint8_t byte : bytes) text += head + " " + hex({byte}) + "\n";
    return text + head + "\n";
}

// ---- Group 4 ----

TEST_F(GroupTest, ItemLivesFromOneRunToTheNext)
{
    EXPECT_EQ(shown({"4", "2", "0", "550", "1", "2", "300"}), "");
    EXPECT_EQ(sent(0, 124),
              "0200" + le(550, 2) + std::string(2 * 104, '0') + le(3, 4) + std::string(16, '0') + "01022C00");
    EXPECT_EQ(shown({"4", "1", "0", "550"}), dump("velmor_nvefs_test_nv_read", {0x01, 0x02, 0x2C}));
    EXPECT_EQ(shown({"4", "3", "0", "550"}), "");
    EXPECT_EQ(shown({"4", "1", "0", "550"}),
              kNvEfs + "velmor_nvefs_test_nv_read: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS\n" + kNvEfs +
                  "velmor_test_nvefs_do: note: Error happen! error_code(-2)\n" + help_of(4));
}

TEST_F(GroupTest, FileLivesFromOneRunToTheNext)
{
    EXPECT_EQ(shown({"4", "5", "7", "/test/file", "0x10", "255", "-1"}), "");
    EXPECT_EQ(read_file(home() / "modem/efs/1/test/file"), std::string("\x00\xFF\xFF", 3));
    EXPECT_EQ(shown({"4", "4", "1", "/test/file"}), dump("velmor_nvefs_test_efs_read", {0x00, 0xFF, 0xFF}));
    EXPECT_EQ(shown({"4", "6", "1", "/test/file"}), "");
    EXPECT_FALSE(std::filesystem::exists(home() / "modem/efs/1/test/file"));
}

TEST_F(GroupTest, NvWriteIsAsLongAsItsWords)
{
    // Words behind the 365th are counted and not read: the item has zeros there.
    EXPECT_EQ(shown(with_data({"4", "2", "0", "551"}, 400, "171")), "");
    EXPECT_EQ(sent(108, 4), le(400, 4));
    EXPECT_EQ(sent(120, 400), hex(std::vector<std::uint8_t>(365, 171)) + std::string(2 * 35, '0'));
    EXPECT_EQ(shown(with_data({"4", "2", "0", "551"}, 424, "1")), "");

    const std::size_t before = requests().size();
    EXPECT_EQ(shown(with_data({"4", "2", "0", "551"}, 425, "1")),
              kNvEfs + "velmor_nvefs_test_nv_write: velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS\n" + kNvEfs +
                  "velmor_test_nvefs_do: note: Error happen! error_code(-108)\n" + help_of(4));
    EXPECT_EQ(requests().size(), before);
}

TEST_F(GroupTest, EfsWriteStopsAtTheWordsThatAreRead)
{
    EXPECT_EQ(shown(with_data({"4", "5", "0", "/f"}, 400, "171")), "");
    EXPECT_EQ(read_file(home() / "modem/efs/0/f"), std::string(365, '\xAB'));
}

TEST_F(GroupTest, LongFileIsShownUpToTheBuffer)
{
    scenario("[efs]\n'0:/long' = { fill = 0x5A, size = 1000 }\n");
    EXPECT_EQ(shown({"4", "4", "0", "/long"}),
              dump("velmor_nvefs_test_efs_read", std::vector<std::uint8_t>(365, 0x5A)));
}

struct Refusal {
    const char* catches;
    Words words;
    std::string lines;  // before the help
    int group = 4;
};

std::string exact(const char* operation)
{
    return kNvEfs + operation + ": note: need 5 inputs, Pls refer to the following cmd:\n" + kNvEfs +
           "velmor_test_nvefs_do: note: Error happen! error_code(268431370)\n";
}
std::string too_few(const char* operation)
{
    return kNvEfs + operation + ": note: Too few inputs, Pls refer to the following cmd:\n" + kNvEfs +
           "velmor_test_nvefs_do: note: Error happen! error_code(268431370)\n";
}
std::string failed(const char* operation, int code)
{
    return kNvEfs + operation + ": velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS\n" + kNvEfs +
           "velmor_test_nvefs_do: note: Error happen! error_code(" + std::to_string(code) + ")\n";
}

const std::string kInvalid =
    kNvEfs + "velmor_test_nvefs_do: note: the second parameters is invalid, Pls refer to the following cmd:\n";
const std::string kSendData = kCmn + "velmor_test_qmi_send_data_do: ";
const std::string kBadId = kSendData + "note: the second parameters(qmi_id) should be >= 0 && < 6\n";

const Refusal kRefusals[] = {
    {"NoSubCommand",
     {"4"},
     kNvEfs + "velmor_test_nvefs_do: note: Too few parameters, Pls refer to the following cmd:\n"},
    {"SubCommand7Run", {"4", "7"}, kInvalid},
    {"WordTakenForASubCommand", {"4", "word"}, kInvalid},
    {"NegativeSubCommandUsedAsIndex", {"4", "-1"}, kInvalid},
    {"NvReadWithoutItem", {"4", "1", "0"}, exact("velmor_nvefs_test_nv_read")},
    {"NvReadWithMore", {"4", "1", "0", "550", "1"}, exact("velmor_nvefs_test_nv_read")},
    {"NvWriteWithoutData", {"4", "2", "0", "550"}, too_few("velmor_nvefs_test_nv_write")},
    {"NvDeleteWithMore", {"4", "3", "0", "550", "1"}, exact("velmor_nvefs_test_nv_delete")},
    {"EfsReadWithoutPath", {"4", "4", "0"}, exact("velmor_nvefs_test_efs_read")},
    {"EfsWriteWithoutData", {"4", "5", "0", "/f"}, too_few("velmor_nvefs_test_efs_write")},
    {"EfsDeleteWithoutPath", {"4", "6", "0"}, exact("velmor_nvefs_test_efs_delete")},
    {"ItemBehindTheLast", {"4", "3", "0", "7233"}, failed("velmor_nvefs_test_nv_delete", -109)},
    {"NegativeItemCutToItsLowBits", {"4", "3", "0", "-1"}, failed("velmor_nvefs_test_nv_delete", -109)},
    {"EmptyPath", {"4", "6", "0", ""}, failed("velmor_nvefs_test_efs_delete", -106)},
    {"SendWithoutData", {"6", "4"}, kSendData + "note: Too few parameters, Pls refer to the following cmd:\n", 6},
    {"RequestId6Sent", {"6", "6", "1"}, kBadId, 6},
    {"NegativeRequestIdSent", {"6", "-1", "1"}, kBadId, 6},
};

class GroupRefusal : public GroupTest, public testing::WithParamInterface<Refusal> {};

TEST_P(GroupRefusal, EndsInItsNoteAndTheHelp)
{
    EXPECT_EQ(shown(GetParam().words), GetParam().lines + help_of(GetParam().group));
    EXPECT_TRUE(trace().empty());
}
INSTANTIATE_TEST_SUITE_P(All, GroupRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.catches; });

struct FailedRun {
    const char* catches;
    const char* rule;
    std::string first;  // what the client says of it
    int code;
};
const FailedRun kFailedRuns[] = {
    {"SilenceTakenForAnAnswer", "action = 'silent'", kApi + "velmor_extend_qmi_send_sync: send msg sync failed:-3\n",
     -103},
    {"ServicesErrorOverlooked", "action = 'error'\ncode = 52",
     kApi + "velmor_extend_qmi_send_sync: 52 QMI service framework error. Check client\n", -103},
    {"RecordsResultOverlooked", "action = 'result'\ncode = -28", "", -28},
    {"RubbishTakenForAnAnswer", "action = 'raw'\nbytes = 'FF FF FF'",
     kApi + "velmor_extend_qmi_send_sync: send msg sync failed:-1\n", -103},
    {"LostServiceOverlooked", "action = 'down'", kApi + "velmor_extend_qmi_send_sync: send msg sync failed:-2\n", -103},
};

class GroupFailure : public GroupTest, public testing::WithParamInterface<FailedRun> {};

TEST_P(GroupFailure, IsToldAndTheNextRunWorks)
{
    scenario(std::string("[[fault]]\nservice = 'extended'\nmessage = 2\nnth = 1\n") + GetParam().rule + "\n");
    scale_timeouts("0.1");
    EXPECT_EQ(shown({"4", "2", "0", "550", "1"}),
              GetParam().first + failed("velmor_nvefs_test_nv_write", GetParam().code) + help_of(4));
    unsetenv("RBK_SCENARIO");
    EXPECT_EQ(shown({"4", "2", "0", "550", "1"}), "");
}
INSTANTIATE_TEST_SUITE_P(All, GroupFailure, testing::ValuesIn(kFailedRuns),
                         [](const auto& row) { return row.param.catches; });

// ---- Group 6 ----

TEST_F(GroupTest, RawBytesGoOutAsTyped)
{
    EXPECT_EQ(shown({"6", "3", "0x10", "16", "255", "256"}),
              kSendData + "velmor_qmi req data(qmi_id: 3, len: 4[max: 500]):\n" +  //
                  kSendData + "0x10 \n" + kSendData + "0x10 \n" + kSendData + "0xFF \n" + kSendData + "0x00 \n" +
                  kSendData + "qmi_id = 3, result = 0\n" +  //
                  kSendData + "velmor_qmi rsp data(qmi_id: 3, len: 0[max: 500]):\n" + kSendData + "\n");
    EXPECT_EQ(requests().back().bytes.substr(0, 2 * 22),
              "01040003000000"
              "02040004000000"
              "102602"
              "1010FF0000");
}

TEST_F(GroupTest, WordsBehindTheLongestRequestAreOnlyCounted)
{
    const std::string text = shown(with_data({"6", "0"}, 600, "171"));
    EXPECT_EQ(text.find(kSendData + "velmor_qmi req data(qmi_id: 0, len: 600[max: 500]):\n"), 0U);
    EXPECT_EQ(requests().back().bytes.substr(2 * 7, 2 * 7),
              "0204"
              "00" +
                  le(500, 4));
    EXPECT_EQ(sent(0, 501), hex(std::vector<std::uint8_t>(500, 171)) + "00");
}

TEST_F(GroupTest, FailedSendShowsTheHelp)
{
    scenario("[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 94\n");
    EXPECT_EQ(shown({"6", "3", "1"}),
              kSendData + "velmor_qmi req data(qmi_id: 3, len: 1[max: 500]):\n" + kSendData + "0x01 \n" + kApi +
                  "velmor_extend_qmi_send_sync: 94 QMI service framework error. Check client\n" + kSendData +
                  "qmi_id = 3, result = -3\n" + kSendData + "velmor_extend_qmi_send_sync fail\n" + help_of(6));
}

}  // namespace
}  // namespace rbk::test

// Group 5 as people run it: raw diag commands, card commands, SAR and device states.
#include <algorithm>
#include <chrono>
#include <filesystem>

#include "support/group_test.h"

namespace rbk::test {
namespace {

const std::string kCmn = "RIL[velmor_rbk_test_cmn.cpp:N] ";
const std::string kEntry = kCmn + "velmor_test_cmn_do: ";
const std::string kDiag = kCmn + "velmor_cmn_diag_cmd_send: ";
const std::string kSend = kCmn + "velmor_cmn_cmd_send: ";

std::string failed(int code)
{
    return kEntry + "note: Error happen! error_code(" + std::to_string(code) + ")\n" + help_of(5);
}

class CmnGroup : public GroupTest {};

// ---- Raw diag commands ----

std::string asked(int mode, int type, int wait_ms, const std::string& bytes, const std::string& send)
{
    return kDiag + "work_mode: " + std::to_string(mode) + ", io_type: " + std::to_string(type) +
           ", wait_time_ms: " + std::to_string(wait_ms) + "\ndiag cmd:\n" + bytes + "\n" + kDiag + send + "\n";
}

TEST_F(CmnGroup, DiagAnswerIsShownInBothModes)
{
    setenv("RBK_TEST_DIVISOR", "1", 1);
    scenario("[[diag.response]]\nrequest = '4B4B'\npackets = [ { bytes = '7C 0A FF' } ]\n");
    const std::string answer = "rsp data len(3)\nrsp data: 0x7C 0x0A 0xFF\n";
    EXPECT_EQ(shown({"5", "0", "0", "0", "3000", "0x4b", "75"}),
              asked(0, 0, 3000, "0x4B 0x4B ", "callback mode with result") + answer);
    EXPECT_EQ(shown({"5", "0", "2", "0", "3000", "0x4b", "331"}),
              asked(2, 0, 3000, "0x4B 0x4B ", "dci mode with result") + answer);
    EXPECT_EQ(requests().size(), 2U);
    EXPECT_EQ(requests().back().head, "diag len=2");
    EXPECT_EQ(requests().back().bytes, "4B4B");
}

TEST_F(CmnGroup, LongDciAnswersAreShownWhole)
{
    setenv("RBK_TEST_DIVISOR", "20", 1);  // 2 s for all packets
    scenario(
        "[[diag.response]]\nrequest = '01'\npackets = [ { fill = 0x4B, size = 4096 }, { fill = 0x4C, size = 904 } ]\n"
        "[[diag.response]]\nrequest = '02'\npackets = [ { fill = 0x4B, size = 4096 }, { fill = 0x4C, size = 4096 } ]\n"
        "[[diag.response]]\nrequest = '03'\npackets = [ { fill = 1, size = 4096 }, { fill = 2, size = 8192 } ]\n");
    const auto bytes = [](int count, const char* text) {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    };
    EXPECT_TRUE(shown({"5", "0", "1", "0", "40000", "1"})
                    .ends_with("rsp data len(5000)\nrsp data:" + bytes(4096, " 0x4B") + bytes(904, " 0x4C") + "\n"));
    EXPECT_TRUE(shown({"5", "0", "1", "0", "40000", "2"})
                    .ends_with("rsp data len(8192)\nrsp data:" + bytes(4096, " 0x4B") + bytes(4096, " 0x4C") + "\n"));
    EXPECT_TRUE(shown({"5", "0", "1", "0", "40000", "3"})
                    .ends_with("rsp data len(10240)\nrsp data:" + bytes(4096, " 0x01") + bytes(6144, " 0x02") + "\n"));
}

TEST_F(CmnGroup, DiagTimeOutAndRefusalShowTheHelp)
{
    scenario("[[fault]]\nservice = 'diag'\ncall = 'send'\nnth = 1\naction = 'error'\ncode = 1\n");
    const std::string fail = kDiag + "velmor_diag_cmd_send fail\n" + failed(1);
    EXPECT_EQ(shown({"5", "0", "0", "0", "100", "0x7C"}),
              asked(0, 0, 100, "0x7C ", "callback mode with result") + fail);
    unsetenv("RBK_SCENARIO");
    // The time-out may slip through the gap between the wait thread's post and its flag.
    std::string text;
    for (int i = 0; i < 5 && !text.ends_with(fail); ++i) text = shown({"5", "0", "1", "0", "100", "0x99"});
    EXPECT_EQ(text, asked(1, 0, 100, "0x99 ", "dci mode with result") + fail);
}

TEST_F(CmnGroup, DiagWithoutResultStaysAsLongAsItIsTold)
{
    EXPECT_EQ(shown({"5", "0", "1", "1", "500", "0x7c"}),
              asked(1, 1, 500, "0x7C ", "dci mode without result") + "done without rsp data\n");
    const std::vector<std::string> slept = calls();
    EXPECT_NE(std::find(slept.begin(), slept.end(), "usleep 500000"), slept.end());

    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(shown({"5", "0", "0", "1", "60000", "0x7c"}),
              asked(0, 1, 60000, "0x7C ", "callback mode without result") + "done without rsp data\n");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    for (const std::string& call : calls()) EXPECT_NE(call, "usleep 60000000");
}

TEST_F(CmnGroup, DiagWithTooFewWordsEndsWithoutHelp)
{
    EXPECT_EQ(shown({"5", "0", "0", "0", "3000"}), kDiag + "note: Too few inputs, Pls refer to the following cmd:\n");
}

TEST_F(CmnGroup, DiagWithTooManyWordsIsRefusedByItsLength)
{
    const std::string text = shown(with_data({"5", "0", "0", "0", "3000"}, 4097, "171"));
    std::string bytes;
    for (int i = 0; i < 4096; ++i) bytes += "0xAB ";
    EXPECT_EQ(text, asked(0, 0, 3000, bytes, "callback mode with result") + kDiag + "velmor_diag_cmd_send fail\n" +
                        failed(1));
    EXPECT_TRUE(trace().empty());
}

// ---- Cards ----

std::string card(const std::string& operation, const std::string& params, int t, int l, const std::string& answer)
{
    const std::string name = kCmn + operation + ": ";
    return name + operation + "\n" + params + kSend + "velmor_cmn_cmd_send, t: " + std::to_string(t) +
           ", l: " + std::to_string(l) + "\n" + kSend + "result = 0, rsp.result = 0\n" + answer;
}

TEST_F(CmnGroup, CardCommandsFollowTheStoredCards)
{
    const std::string get = "velmor_cmn_card_status_get";
    EXPECT_EQ(shown({"5", "1"}), card("velmor_cmn_card_status_query", "param(cnt: 0):\n", 39, 0,
                                      "data len(12)\ndata: 27 00 00 00 04 00 00 00 01 00 00 00\n"));
    EXPECT_EQ(sent(0, 20),
              "0200000000000000"
              "27000000"
              "00000000"
              "00000000");
    EXPECT_EQ(shown({"5", "3", "1", "7", "0"}), card("velmor_cmn_card_status_set", "param(cnt: 3): 1 1 0\n", 57, 12,
                                                     "data len(8)\ndata: 39 00 00 00 00 00 00 00\n"));
    EXPECT_EQ(sent(0, 32),
              "0200000000000000"
              "39000000"
              "0C000000"
              "01000000"
              "01000000"
              "00000000"
              "00000000");
    EXPECT_EQ(shown({"5", "2", "7"}),
              card(get, "param(cnt: 1): 1\n", 55, 4, "data len(12)\ndata: 37 00 00 00 04 00 00 00 00 00 00 00\n"));
    EXPECT_EQ(shown({"5", "2", "0"}),
              card(get, "param(cnt: 1): 0\n", 55, 4, "data len(12)\ndata: 37 00 00 00 04 00 00 00 01 00 00 00\n"));
    EXPECT_EQ(shown({"5", "4"}), card("velmor_cmn_card_type_query", "param(cnt: 0):\n", 56, 0,
                                      "data len(12)\ndata: 38 00 00 00 04 00 00 00 02 00 00 00\n"));
}

TEST_F(CmnGroup, HotswapTestIsStartedWithItsNumbersAndStoppedByOne)
{
    const std::string test = "velmor_cmn_card_hotswap_test";
    const std::string answer = "data len(8)\ndata: 50 00 00 00 00 00 00 00\n";
    EXPECT_EQ(shown({"5", "6", "2", "5", "-6", "9"}),
              card(test, kCmn + test + ": opt: 2\nparam(cnt: 4): 2 5 -6 9\n", 80, 16, answer));
    EXPECT_EQ(sent(8, 24),
              "50000000"
              "10000000"
              "02000000"
              "05000000"
              "FAFFFFFF"
              "09000000");
    EXPECT_TRUE(std::filesystem::exists(home() / "modem/marks/hotswap"));
    EXPECT_EQ(shown({"5", "6", "0", "1", "2", "3", "4"}), card(test, kCmn + test + ": opt: 0\n", 80, 4, answer));
    EXPECT_EQ(sent(8, 12),
              "50000000"
              "04000000"
              "00000000");
    EXPECT_FALSE(std::filesystem::exists(home() / "modem/marks/hotswap"));
}

TEST_F(CmnGroup, LengthOfAnAnswerIsForeign)
{
    const struct {
        const char* catches;
        std::uint32_t l;
        const char* shown_len;
        std::size_t bytes;
    } rows[] = {{"WholeRecordCut", 492, "500", 500},
                {"RecordOverrun", 493, "501", 500},
                {"NegativeTakenForLong", 0xFFFFFF00, "-248", 500},
                {"SumUnwrapped", 0xFFFFFFFF, "7", 7}};
    for (const auto& row : rows) {
        scenario(raw_answer(envelope(0, 508,
                                     "0000000000000000"
                                     "27000000" +
                                         le(row.l, 4))));
        const std::string text = shown({"5", "1"});
        const std::size_t data = text.find(std::string("data len(") + row.shown_len + ")\ndata:");
        ASSERT_NE(data, std::string::npos) << row.catches;
        const std::size_t bytes = text.find("\ndata:", data) + 6;
        EXPECT_EQ(text.size() - 1 - bytes, 3 * row.bytes) << row.catches;
    }
}

TEST_F(CmnGroup, FailedCardCommandIsToldByTheSendAlone)
{
    scenario(
        "[[fault]]\nservice = 'extended'\nqmi_id = 4\nprefix = '02000000 00000000 27'\naction = 'result'\ncode = -5\n"
        "[[fault]]\nservice = 'extended'\nqmi_id = 4\naction = 'error'\ncode = 94\n");
    EXPECT_TRUE(shown({"5", "1"}).ends_with("result = 0, rsp.result = -5\n" + kSend + "rsp.result fail\n"));
    EXPECT_TRUE(shown({"5", "4"})
                    .ends_with(kSend + "result = -3, rsp.result = 0\n" + kSend + "velmor_extend_qmi_send_sync fail\n" +
                               failed(-3)));
}

// ---- SAR ----

TEST_F(CmnGroup, SarDsiIsSetAndReadBack)
{
    scenario("[sar]\ndsi = 4\n");
    set_property("persist.vendor.radio.adb_log_shell", "15");
    EXPECT_TRUE(shown({"5", "5"}).ends_with("\nJUDGE SAR DSI: -1\nModem SAR DSI: 4\n"));
    set_property("persist.vendor.radio.adb_log_shell", "11");
    set_property("debug.modem.sar.judge_dsi", "6");
    EXPECT_EQ(shown({"5", "7", "20"}), "SAR DSI(to be set): 20, the setting result: 0\n");
    EXPECT_EQ(shown({"5", "5"}), "JUDGE SAR DSI: 6\nModem SAR DSI: 20\n");
    EXPECT_EQ(shown({"5", "7", "21"}), "SAR DSI(to be set): 21, the setting result: 0\n");
    EXPECT_EQ(shown({"5", "5"}), "JUDGE SAR DSI: 6\nModem SAR DSI: 0\n") << "a number that is none goes out as 0";
    EXPECT_EQ(shown({"5", "7", "-3"}), "SAR DSI(to be set): -3, the setting result: 0\n");
}

TEST_F(CmnGroup, FailingSarIsShown)
{
    scenario("[modem]\nservices = ['extended']\n");
    EXPECT_EQ(shown({"5", "5"}), "JUDGE SAR DSI: -1\nModem SAR DSI: -1\n");
    EXPECT_EQ(shown({"5", "7", "3"}), "SAR DSI(to be set): 3, the setting result: -1\n" + failed(-1));
    scenario("[[fault]]\nservice = 'sar'\naction = 'down'\n");
    EXPECT_EQ(shown({"5", "7", "3"}), "SAR DSI(to be set): 3, the setting result: -2\n" + failed(-2));
}

// ---- Device states ----

TEST_F(CmnGroup, OnlyDeviceStatesThatAreSetAreShown)
{
    set_property("debug.device.wifi_state", "1");
    set_property("debug.device.mcc_state", "-255");
    set_property("debug.device.usb_state", "word");
    set_property("debug.device.sar_sensor3_state", "-2");
    EXPECT_EQ(shown({"5", "8"}), "[0]WIFI_STATE: 1\n[11]USB_STATE: 0\n[22]SAR_SENSOR3_STATE: -2\n");
}

// ---- Refusals ----

struct Refusal {
    const char* catches;
    Words words;
    std::string lines;  // before the help
};

std::string need(const char* operation, const char* checks, int words)
{
    return kCmn + operation + ": " + operation + "\n" + kCmn + checks + ": note: need " + std::to_string(words) +
           " inputs, Pls refer to the following cmd:\n" + kEntry + "note: Error happen! error_code(268431370)\n";
}

const std::string kInvalid = kEntry + "note: the second parameters is invalid, Pls refer to the following cmd:\n";
const std::string kHotswap = kCmn + "velmor_cmn_card_hotswap_test: ";

const Refusal kRefusals[] = {
    {"NoSubCommand", {"5"}, kEntry + "note: Too few parameters, Pls refer to the following cmd:\n"},
    {"SubCommand9Run", {"5", "9"}, kInvalid},
    {"NegativeSubCommandUsedAsIndex", {"5", "-1"}, kInvalid},
    {"SubCommandBehindTheLastRun", {"5", "11"}, kInvalid},
    {"QueryWithMore", {"5", "1", "0"}, need("velmor_cmn_card_status_query", "velmor_cmn_card_status_cmd", 3)},
    {"GetWithoutSub", {"5", "2"}, need("velmor_cmn_card_status_get", "velmor_cmn_card_status_cmd", 4)},
    {"SetWithoutValue", {"5", "3", "0", "1"}, need("velmor_cmn_card_status_set", "velmor_cmn_card_status_cmd", 6)},
    {"HotswapWithoutOpt",
     {"5", "6"},
     kHotswap + "velmor_cmn_card_hotswap_test\n" + kHotswap +
         "note: need 4 inputs at least, Pls refer to the following cmd:\n" + kEntry +
         "note: Error happen! error_code(268431370)\n"},
    {"HotswapWithoutItsFourthWord",
     {"5", "6", "1", "10", "10"},
     kHotswap + "velmor_cmn_card_hotswap_test\n" + kHotswap + "opt: 1\n" + kCmn +
         "velmor_cmn_card_status_cmd_ex: note: need 7 inputs, Pls refer to the following cmd:\n" + kEntry +
         "note: Error happen! error_code(268431370)\n"},
    {"SarWithoutValue",
     {"5", "7"},
     "note: Too few parameters, Pls refer to the following cmd:\n" + kEntry +
         "note: Error happen! error_code(268431370)\n"},
};

class CmnRefusal : public GroupTest, public testing::WithParamInterface<Refusal> {};

TEST_P(CmnRefusal, EndsInItsNoteAndTheHelp)
{
    EXPECT_EQ(shown(GetParam().words), GetParam().lines + help_of(5));
    EXPECT_TRUE(trace().empty());
}
INSTANTIATE_TEST_SUITE_P(All, CmnRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.catches; });

}  // namespace
}  // namespace rbk::test

// rbk 5 10 as people and scripts run it: standard output compared whole, and what reached the modem.
#include <algorithm>

#include "support/group_test.h"
#include "velmor_rbk_test_cmn.h"

namespace rbk::test {
namespace {

const std::string kEidLine = "eID=89049032123451234512345678901235\n";
const std::string kSucceed = "value=SUCCEED\n";
const std::string kFailed = "value=FAILED\n";

class EsimTest : public GroupTest {
 public:
    static std::string flow(const std::string& esim_on, const std::string& debug_on = "0")
    {
        return shown({"5", "10", esim_on, debug_on});
    }
    // The messages of uim that the latest runs sent, by number, each once: "30 31 65".
    std::string asked() const
    {
        std::string numbers;
        for (const Traced& message : requests()) {
            if (message.head.find("svc=0x000B") != 0) continue;
            const std::string number = message.head.substr(message.head.find("msg=0x00") + 8, 2);
            if (numbers.size() < 2 || numbers.substr(numbers.size() - 2) != number)
                numbers += (numbers.empty() ? "" : " ") + number;
        }
        return numbers;
    }
    std::string efs(const std::string& name) const
    {
        return read_file(home() / "modem/efs/1/nv/item_files/modem/uim/uimdrv" / name);
    }
};

// ---- All flows, one after the other ----

struct Way {
    const char* catches;
    const char* product;  // empty: none
    std::string to_esim, to_physical;
};
const Way kWays[] = {
    {"PowerNotTheWayOfAnyOtherProduct", "", "30 31 65", "30 31"},
    {"NameComparedWithoutCase", "Zirconia", "30 31 65", "30 31"},
    {"NameComparedWhole", "xzirconia_eea", "7A 65", "7A"},
};

class EsimWay : public EsimTest, public testing::WithParamInterface<Way> {};

TEST_P(EsimWay, SlotGoesThereAndBack)
{
    EXPECT_EQ(run_rbk_prop({"unset", "ro.product.name"}).status, 0);
    if (*GetParam().product != 0) set_property("ro.product.name", GetParam().product);
    EXPECT_EQ(flow("3"), kFailed) << "the slot stands on the physical card at first";
    EXPECT_EQ(flow("5"), kFailed);

    write_file(home() / "trace", "");
    EXPECT_EQ(flow("1"), kEidLine);
    EXPECT_EQ(asked(), GetParam().to_esim);
    EXPECT_EQ(flow("3"), kEidLine);
    EXPECT_EQ(flow("4"), "PRESENT,PRESENT\n");
    EXPECT_TRUE(std::filesystem::exists(home() / "modem/card/2/profiles"));
    EXPECT_EQ(flow("5"), kSucceed);
    EXPECT_FALSE(std::filesystem::exists(home() / "modem/card/2/profiles"));
    EXPECT_EQ(flow("5"), kSucceed) << "nothing to delete";
    EXPECT_EQ(log_count("apdu=08bf3403"), 0U) << "a silent run's trace";

    write_file(home() / "trace", "");
    EXPECT_EQ(flow("2"), kSucceed);
    EXPECT_EQ(asked(), GetParam().to_physical);
    EXPECT_EQ(flow("3"), kFailed);
    EXPECT_EQ(flow("5"), kFailed);
    EXPECT_EQ(efs("esim_eid"), std::string("\x89\x04\x90\x32\x12\x34\x51\x23\x45\x12\x34\x56\x78\x90\x12\x35"));
}
INSTANTIATE_TEST_SUITE_P(All, EsimWay, testing::ValuesIn(kWays), [](const auto& row) { return row.param.catches; });

TEST_F(EsimTest, SwitchFileAndPowerGoStepByStep)
{
    EXPECT_EQ(flow("1"), kEidLine);
    EXPECT_EQ(flow("2"), kSucceed);
    std::vector<std::string> steps;
    for (const Traced& message : requests()) {
        const bool power = message.head.find("svc=0x000B") == 0 && message.head.find("msg=0x003") != std::string::npos;
        const bool write = message.bytes.size() > 2 * 137 && message.bytes.substr(2 * 17, 4) == "0501";
        if (write) steps.push_back("write " + message.bytes.substr(2 * (17 + 120), 8));
        if (power) steps.push_back(message.bytes);
    }
    EXPECT_EQ(steps, (std::vector<std::string>{"write 00000000", "01010002",  // to the eSIM
                                               "write 01000000", "010100021001000111010000", "write 89049032",
                                               "write 01000000", "01010002",  // and back
                                               "write 00000000", "010100021001000011010000"}));
}

TEST_F(EsimTest, SilentRunLeavesTheAnswerAlone)
{
    set_property("persist.vendor.radio.adb_log_shell", "65535");
    log();
    const std::string silent = flow("1", "0");
    ASSERT_GT(silent.size(), kEidLine.size());
    EXPECT_EQ(silent.substr(silent.size() - kEidLine.size()), kEidLine);
    for (const char* file : {"velmor_rbk_test_cmn.cpp", "velmor_extend"}) {
        EXPECT_EQ(silent.find(file), std::string::npos);
        EXPECT_EQ(log_count(file), 0U);
    }
    const std::string told = flow("1", "1");
    EXPECT_NE(told.find("velmor_cmn_esim_test: try get eid loop = 3\n"), std::string::npos);
    EXPECT_NE(told.find("velmor_extend_qmi_send_sync: "), std::string::npos);
    EXPECT_NE(told.find("save_eid_to_efs: EID already exists, set IS_EID_SAVE TRUE\n"), std::string::npos);
    EXPECT_EQ(log_count("velmor_cmn_esim_test: try get eid loop = 3"), 1U);
}

// ---- What goes wrong ----

// Scenarios: a rule for a message of uim, for the EFS file of the switch, the hardware's word, and the card in slot 2.
std::string fault(const std::string& message, const std::string& action, int nth = 0)
{
    const std::string which = nth == 0 ? "" : "nth = " + std::to_string(nth) + "\n";
    return "[[fault]]\nservice = 'uim'\nmessage = " + message + "\n" + which + "action = " + action + "\n";
}
std::string raw(const std::string& tlvs)
{
    return "'raw'\nbytes = '02040000000000" + tlvs + "'";
}
std::string switch_file(const std::string& action)
{
    return "[[fault]]\nservice = 'extended'\nqmi_id = 2\nprefix = '05 01'\naction = " + action + "\n";
}
std::string hardware(const std::string& word)
{
    return "[nv]\n'0/6853' = '" + std::string(32, '0') + word + "'\n";
}
std::string euicc(const std::string& eid, int after)
{
    return "[[card]]\n[[card]]\neid = '" + eid + "'\neid_after = " + std::to_string(after) + "\n";
}
const std::string kGood = "89049032123451234512345678901235", kBad = "89049032123451234512345678901253";
const std::string kZeros(32, '0'), kNotReady = "'error'\ncode = 25";

struct Outcome {
    const char* catches;
    const char* flow;  // 3 and 5 after a flow 1 without the scenario
    std::string scenario;
    std::string shown;
    std::string asked;  // of uim
};
// clang-format off
const Outcome kOutcomes[] = {
    {"FlowZeroRun",                   "0", "", kFailed, ""},
    {"FlowSixRun",                    "6", "", kFailed, ""},
    {"NegativeFlowRun",              "-1", "", kFailed, ""},
    {"HardwareNotLookedAt",           "1", hardware("00"), kFailed, ""},
    {"AnyHardwareTaken",              "1", hardware("03"), kFailed, ""},
    {"SecondHardwareRefused",         "1", hardware("02"), kEidLine, "30 31 65"},
    {"UnreadableHardwareTaken",       "1", "[[fault]]\nservice = 'extended'\nqmi_id = 1\naction = 'error'\ncode = 3\n", kFailed, ""},
    {"HardwareAskedForTheWayBack",    "2", hardware("00"), kSucceed, "30 31"},
    {"FailedPowerDownOverlooked",     "1", fault("0x0030", "'silent'"), kFailed, "30"},
    {"FailedPowerUpOverlooked",       "1", fault("0x0031", "'silent'"), kFailed, "30 31"},
    {"FailedWayBackOverlooked",       "2", fault("0x0031", "'silent'"), kFailed, "30 31"},
    {"RefusedPowerTakenForAFailure",  "2", fault("0x0030", kNotReady) + fault("0x0031", kNotReady), kSucceed, "30 31"},
    {"PowerWithoutItsFile",           "1", switch_file("'result'\ncode = -28"), kFailed, ""},
    {"UnsavedEidKeptBack",            "1", switch_file("'error'\ncode = 3\nnth = 3"), kEidLine, "30 31 65"},
    {"GivenUpBeforeTheLastPoll",      "1", euicc(kGood, 29), kEidLine, "30 31 65"},
    {"PolledForEver",                 "1", euicc(kGood, 30), kFailed, "30 31 65"},
    {"NoEuiccTakenForOne",            "1", "[[card]]\n[[card]]\n", kFailed, "30 31 65"},
    {"EidNotChecked",                 "1", euicc(kBad, 0), "value=FAILED - " + kBad + "\n", "30 31 65"},
    {"LettersRefused",                "1", euicc("89ABCDEF0123456789ABCDEF01234510", 0), "eID=89abcdef0123456789abcdef01234510\n", "30 31 65"},
    {"ZeroEidTaken",                  "1", euicc(kZeros, 0), kFailed, "30 31 65"},
    {"EidBehindAZeroTaken",           "1", euicc("00049032123451234512345678901719", 0), kFailed, "30 31 65"},
    {"EidReadOnce",                   "3", fault("0x0065", kNotReady, 1), kEidLine, "65"},
    {"EidReadThrice",                 "3", fault("0x0065", kNotReady, 1) + fault("0x0065", kNotReady, 2), kFailed, "65"},
    {"ReadEidChecked",                "3", fault("0x0065", raw("10110010F0" + kZeros.substr(2))), "eID=f0" + kZeros.substr(2) + "\n", "65"},
    {"StatesInWrongWords",            "4", "[[card]]\nstate = 'error'\n[[card]]\nstate = 'absent'\n", "ERROR,ABSENT\n", "2F"},
    {"SecondSlotMadeUp",              "4", "[[card]]\n", "PRESENT,UNKNOWN\n", "2F"},
    {"RefusedLookTakenForAbsent",     "4", fault("0x002F", "'error'\ncode = 52"), "UNKNOWN,UNKNOWN\n", "2F"},
    {"FailedLookTakenForAbsent",      "4", fault("0x002F", "'silent'"), kFailed, "2F"},
    {"ResetWithoutAChannel",          "5", fault("0x0042", "'error'\ncode = 2"), kFailed, "42"},
    {"RefusedApduOverlooked",         "5", fault("0x003B", "'error'\ncode = 48"), kFailed, "42 3B"},
    {"AnyAnswerTaken",                "5", fault("0x003B", raw("100A000800BF34038001029000")), kFailed, "42 3B"},
    {"AnswersLengthOverlooked",       "5", fault("0x003B", raw("100B000900BF3403800100900000")), kFailed, "42 3B"},
    {"CloseDecidesOfAGoodReset",      "5", fault("0x003F", "'silent'"), kSucceed, "42 3B 3F"},
};
// clang-format on

class EsimOutcome : public EsimTest, public testing::WithParamInterface<Outcome> {};

TEST_P(EsimOutcome, IsToldInOneLine)
{
    const std::string on_esim = "35";
    if (on_esim.find(GetParam().flow) != std::string::npos) {
        EXPECT_EQ(flow("1"), kEidLine);
    }
    if (!GetParam().scenario.empty()) scenario(GetParam().scenario);
    if (GetParam().scenario.find("'silent'") != std::string::npos) scale_timeouts("0.2");
    write_file(home() / "trace", "");
    EXPECT_EQ(flow(GetParam().flow), GetParam().shown);
    EXPECT_EQ(asked(), GetParam().asked);
}
INSTANTIATE_TEST_SUITE_P(All, EsimOutcome, testing::ValuesIn(kOutcomes),
                         [](const auto& row) { return row.param.catches; });

TEST_F(EsimTest, TooFewWordsShowTheHelp)
{
    EXPECT_EQ(shown({"5", "10", "1"}),
              "RIL[velmor_rbk_test_cmn.cpp:N] velmor_cmn_esim_test: invalid input\n"
              "RIL[velmor_rbk_test_cmn.cpp:N] velmor_test_cmn_do: note: Error happen! error_code(-1)\n" +
                  help_of(5));
}

TEST_F(EsimTest, SimTypeFailureIsTold)
{
    set_property("ro.product.name", "zirconia");
    scenario(fault("0x007A", "'silent'"));
    scale_timeouts("0.2");
    EXPECT_EQ(flow("1"), kFailed);
    EXPECT_EQ(flow("2"), kFailed);
    EXPECT_EQ(asked(), "7A");
}

TEST_F(EsimTest, EidThatStandsInEfsIsNeverReplaced)
{
    scenario("[efs]\n'1:/nv/item_files/modem/uim/uimdrv/esim_eid' = 'A1 B2'\n");
    EXPECT_EQ(flow("1"), kEidLine);
    EXPECT_EQ(efs("esim_eid"), "\xA1\xB2");
}

TEST_F(EsimTest, EidThatFailsTheCheckIsNotSaved)
{
    scenario(euicc(kBad, 0));
    EXPECT_EQ(flow("1"), "value=FAILED - " + kBad + "\n");
    EXPECT_EQ(efs("esim_eid"), "");
}

TEST_F(EsimTest, PollsWaitATenthOfASecondEach)
{
    scenario("[[card]]\n[[card]]\n");
    EXPECT_EQ(flow("3"), kFailed);
    EXPECT_EQ(calls(), std::vector<std::string>(2, "usleep 100000"));
    EXPECT_EQ(flow("1"), kFailed);
    EXPECT_EQ(calls(), std::vector<std::string>(30, "usleep 100000"));
}

// ---- The modem restarts in the middle of flow 1 ----

TEST_F(EsimTest, ServiceLostBeforePowerUpLeavesTheSlotDownUntilTheNextRun)
{
    scenario("[modem]\nrestart_ms = 20\n" + fault("0x0031", "'down'"));
    EXPECT_EQ(flow("1"), kFailed);
    EXPECT_EQ(efs("esim_enable"), std::string("\1\0\0\0", 4)) << "the file stands before the request";
    EXPECT_EQ(flow("4"), "PRESENT,ERROR\n");
    EXPECT_EQ(flow("3"), kFailed);
    unsetenv("RBK_SCENARIO");
    EXPECT_EQ(flow("1"), kEidLine);
}

TEST_F(EsimTest, ServiceLostBetweenPollsIsConnectedAnew)
{
    scenario("[modem]\nrestart_ms = 20\n" + fault("0x0065", "'down'", 2));
    EXPECT_EQ(flow("1", "1"), kEidLine);
    EXPECT_EQ(log_count("velmor_uim_request_eid: QMI error, try recovery"), 1U);
    EXPECT_EQ(log_count("try get eid loop = 4"), 1U);
}

// Each poll behind the loss waits for the service in vain; five of them are enough.
TEST_F(EsimTest, ServiceThatStaysAwayEndsTheSwitch)
{
    scenario("[modem]\nrestart_ms = 60000\n" + euicc(kGood, 30) + fault("0x0065", "'down'", 25));
    scale_timeouts("0.1");
    EXPECT_EQ(flow("1"), kFailed);
    EXPECT_EQ(calls(), std::vector<std::string>(30, "usleep 100000"));
}

// ---- The check of an EID ----

TEST_F(EsimTest, EidIsCheckedByItsCodes)
{
    const struct {
        const char* catches;
        const char* digits;
        bool valid;
    } rows[] = {
        {"RemainderNotOne", "89049032123451234512345678901235", true},
        {"LastDigitsSwapped", "89049032123451234512345678901253", false},
        {"LettersCountAsHex", "89abcdef0123456789abcdef01234510", true},
        {"LettersCutOff", "ffffffffffffffffffffffffffffff41", true},
        {"ZerosPass", "00000000000000000000000000000000", false},
        {"FirstHalfAlone", "89049032123451234512345678901236", false},
    };
    for (const auto& row : rows) EXPECT_EQ(is_eid_valid(row.digits), row.valid) << row.catches;
}

}  // namespace
}  // namespace rbk::test

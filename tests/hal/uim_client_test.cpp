// The UIM client over the link: the bytes of its messages, what it makes of answers, and when it connects anew.
#include "velmor_extend_uim.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>

#include "support/embedded_run.h"
#include "velmor_extend_cmn.h"

namespace rbk::test {
namespace {

using Calls = std::vector<std::string>;

const uicc_power_param kDown = {0, 2, 1, 0x04030201};
const uicc_power_param kUp = {7, 2, 5, 0x08070605};
const uim_channel_param kOpen = {2, 1};
const uim_channel_param kClose = {2, 0xC7};
const uim_apdu_param kApdu = {2, 0xC7, 4, {0xA1, 0xB2, 0xC3, 0xD4}};

std::int32_t set_sim_type(const std::vector<std::uint32_t>& types)
{
    std::vector<std::uint32_t> words(1, static_cast<std::uint32_t>(types.size()));
    words.insert(words.end(), types.begin(), types.end());
    return velmor_setSimType(reinterpret_cast<const sim_type_param*>(words.data()));
}
std::int32_t power_down()
{
    return velmor_esim_request_uicc_power_ex(&kDown);
}
std::int32_t power_up()
{
    return velmor_esim_request_uicc_power_ex(&kUp);
}
std::int32_t request_eid()
{
    const std::uint8_t slot = 2;
    std::uint8_t eid[16] = {};
    return velmor_uim_request_eid(&slot, eid);
}
std::int32_t get_card_status()
{
    std::uint8_t states[2] = {};
    return velmor_uim_get_card_status(states);
}
std::int32_t close_channel()
{
    return velmor_uim_close_channel(&kClose);
}
std::int32_t set_sim_types()
{
    return set_sim_type({1, 3});
}
std::int32_t open_channel()
{
    std::uint8_t channel = 0;
    return velmor_uim_open_channel(&kOpen, &channel);
}
std::int32_t send_apdu()
{
    uim_apdu_result result = {};
    return velmor_uim_send_apdu(&kApdu, &result);
}

// A rule for messages of uim.
std::string rule(const std::string& message, const std::string& which, const std::string& action)
{
    return "[[fault]]\nservice = 'uim'\n" + message + "\n" + which + "\naction = " + action + "\n";
}

const char kFine[] = "02040000000000";
const char kRefused[] = "02040001003000";

class UimClient : public EmbeddedRun {
 public:
    std::vector<Traced> uim_requests() const
    {
        std::vector<Traced> messages = requests();
        std::erase_if(messages, [](const Traced& message) { return message.head.find("svc=0x000B") != 0; });
        return messages;
    }
    // What the client's file has logged since the last look, as "function: words", handles as H.
    std::vector<std::string> said()
    {
        const std::string head = "7 [velmor_extend_cmn.cpp:";
        std::vector<std::string> lines;
        for (std::string line : log()) {
            if (line.find(head) != 0) continue;
            line.erase(0, line.find("] ") + 2);
            const std::size_t handle = line.find("0x");
            if (handle != std::string::npos) line.replace(handle, line.find(' ', handle) - handle, "H");
            lines.push_back(line);
        }
        return lines;
    }
    bool comes_to_log(const std::string& words) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (log_count(words) == 0) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return true;
    }
};

// ---- Bytes ----

struct Operation {
    const char* name;
    const char* word;  // that its lines of the connection begin with
    std::int32_t (*run)();
    const char* message;
    const char* tlvs;
};
// clang-format off
const Operation kOperations[] = {
    {"velmor_esim_request_uicc_power_ex", "velmor_uim_request_uicc_power_ex", power_down,      "0x0030", "01010002"},
    {"velmor_esim_request_uicc_power_ex", "velmor_uim_request_uicc_power_ex", power_up,        "0x0031", "010100021001000111010000"},
    {"velmor_setSimType",                 "velmor_set_sim_type",              set_sim_types,   "0x007A", "010900020100000003000000"},
    {"velmor_uim_request_eid",            "velmor_uim_request_eid",           request_eid,     "0x0065", "01010002"},
    {"velmor_uim_get_card_status",        "velmor_uim_get_card_status",       get_card_status, "0x002F", "10010001"},
    {"velmor_uim_open_channel",           "velmor_uim_open_channel",          open_channel,    "0x0042",
     "01010002" "10110010A0000005591010FFFFFFFF8900000100" "11010001"},
    {"velmor_uim_close_channel",          "velmor_uim_close_channel",         close_channel,   "0x003F", "01010002110100C713010000"},
    {"velmor_uim_send_apdu",              "velmor_uim_close_channel",         send_apdu,       "0x003B",
     "01010002" "0206000400A1B2C3D4" "100100C7" "11010001"},
};
// clang-format on

TEST_F(UimClient, MessagesHaveTheirBytes)
{
    for (const Operation& operation : kOperations) {
        operation.run();
        ASSERT_FALSE(uim_requests().empty());
        const Traced sent = uim_requests().back();
        EXPECT_NE(sent.head.find(std::string(" msg=") + operation.message), std::string::npos) << sent.head;
        EXPECT_EQ(sent.bytes, operation.tlvs) << operation.message;
    }
}

TEST_F(UimClient, SwitchFileStandsBeforeTheRequestAndStaysAfterAFailure)
{
    scenario(rule("message = 0x0030", "", "'silent'"));
    scale_timeouts("0.1");
    const auto file = home() / "modem/efs/1/nv/item_files/modem/uim/uimdrv/esim_enable";
    EXPECT_EQ(power_down(), -3);
    EXPECT_EQ(read_file(file), "\x01\x02\x03\x04");
    EXPECT_EQ(power_up(), 0);
    EXPECT_EQ(read_file(file), "\x05\x06\x07\x08");
}

TEST_F(UimClient, NothingIsSentWhenTheSwitchFileCantBeWritten)
{
    scenario("[[fault]]\nservice = 'extended'\naction = 'error'\ncode = 52\n");
    EXPECT_EQ(power_down(), -1);
    EXPECT_EQ(power_up(), -1);
    EXPECT_TRUE(uim_requests().empty());
    EXPECT_EQ(log_count("Velmor, power down write esim efs file failed"), 1U);
    EXPECT_EQ(log_count("Velmor, power up write esim efs file failed"), 1U);
    EXPECT_EQ(log_count("uicc_power_ex res = -1, failed_cnt = 0"), 2U) << "counted, though nothing was sent";
}

TEST_F(UimClient, SimTypesBeyondTheMessageAreRefused)
{
    EXPECT_EQ(velmor_setSimType(nullptr), -2);
    EXPECT_EQ(set_sim_type({1, 1, 1, 1, 1, 1}), -1);
    EXPECT_TRUE(uim_requests().empty());
    EXPECT_EQ(log_count("Set_sim_type value is 1"), 6U);
}

// ---- Answers ----

struct EidCase {
    const char* catches;
    std::string answer;
    std::string eid;  // on a buffer of 5A
};
const std::string kUntouched = "5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A5A", kSixteen = "0102030405060708090A0B0C0D0E0F10";
// clang-format off
const EidCase kEids[] = {
    {"EidNotTaken",                "02040000000000" "10110010" + kSixteen,        kSixteen},
    {"EidOfARefusalTaken",         "02040001003000" "10110010" + kSixteen,        kUntouched},
    {"MissingEidTaken",            "02040000000000",                              kUntouched},
    {"ShortEidFilledUpFromMemory", "02040000000000" "10020001A1",                 "A1" + std::string(30, '0')},
    {"LongEidWrittenWhole",        "02040000000000" "10130012" + kSixteen + "1112", kSixteen},
};
// clang-format on

class EidAnswer : public UimClient, public testing::WithParamInterface<EidCase> {};

TEST_P(EidAnswer, FillsTheEidOrLeavesItAlone)
{
    scenario(rule("message = 0x0065", "", "'raw'\nbytes = '" + GetParam().answer + "'"));
    const std::uint8_t slot = 2;
    std::vector<std::uint8_t> eid(16, 0x5A);
    EXPECT_EQ(velmor_uim_request_eid(&slot, eid.data()), 0);
    EXPECT_EQ(hex(eid), GetParam().eid);
}
INSTANTIATE_TEST_SUITE_P(All, EidAnswer, testing::ValuesIn(kEids), [](const auto& row) { return row.param.catches; });

// A card status with `count` in its place and a card for each state.
std::string card_status(const std::string& type, int count, const std::vector<int>& states)
{
    std::string value = "0000FFFFFFFFFFFF" + le(static_cast<std::uint64_t>(count), 1);
    for (const int state : states) value += le(static_cast<std::uint64_t>(state), 1) + "0102030400";
    return type + le(value.size() / 2, 2) + value;
}

struct StatusCase {
    const char* catches;
    std::string answer;
    std::string states;
    std::string last_line;  // of what the client says of cards; empty: it says nothing
};
const std::string kStatusName = "velmor_uim_get_card_status: ";
const StatusCase kStatuses[] = {
    {"OldStatusTaken", kFine + card_status("10", 2, {0, 1}), "0303", ""},
    {"StatusOfARefusalTaken", kRefused + card_status("15", 2, {0, 1}), "0303", ""},
    {"NoCardTakenForAbsent", kFine + card_status("15", 0, {}), "0303", ""},
    {"SecondSlotMadeUp", kFine + card_status("15", 1, {2}), "0203", kStatusName + "SIM[0] State = 2"},
    {"OrderReversed", kFine + card_status("15", 2, {1, 0}), "0100", kStatusName + "SIM[1] State = 0"},
    {"ThirdCardWrittenBehindTheResult", kFine + card_status("15", 3, {0, 1, 2}), "0001",
     kStatusName + "SIM[2] State = 2"},
    {"SixthCardReadBehindTheTable", kFine + card_status("15", 6, {1, 1, 1, 1, 1, 2}), "0101",
     kStatusName + "SIM[5] State = 0"},
};

class StatusAnswer : public UimClient, public testing::WithParamInterface<StatusCase> {};

TEST_P(StatusAnswer, FillsTheTwoStates)
{
    scenario(rule("message = 0x002F", "", "'raw'\nbytes = '" + GetParam().answer + "'"));
    std::vector<std::uint8_t> states(4, 0x5A);  // two bytes of it are the result
    EXPECT_EQ(velmor_uim_get_card_status(states.data()), 0);
    EXPECT_EQ(hex(states), GetParam().states + "5A5A");
    const std::vector<std::string> lines = said();
    const std::string last = lines.back().find("SIM[") == std::string::npos ? "" : lines.back();
    EXPECT_EQ(last, GetParam().last_line);
}
INSTANTIATE_TEST_SUITE_P(All, StatusAnswer, testing::ValuesIn(kStatuses),
                         [](const auto& row) { return row.param.catches; });

// An APDU response of `count` bytes, as its count says, all 0xE1.
std::string apdu_answer(std::size_t count)
{
    std::string bytes = le(count, 2);
    for (std::size_t i = 0; i < count; ++i) bytes += "E1";
    return kFine + std::string("10") + le(2 + count, 2) + bytes;
}

struct ApduCase {
    const char* catches;
    std::string answer;
    std::int32_t code;
    int length;  // the result's first byte
    std::size_t copied;
};
const ApduCase kApdus[] = {
    {"AnswerNotCopied", apdu_answer(8), 0, 8, 8},
    {"AnswerWithoutApduKeepsTheOldLength", kFine, 0, 0, 0},
    {"RefusalTakenForAnAnswer", kRefused, -1, 0x5A, 0},
    {"AnswerFillsItsRoomWrongly", apdu_answer(63), 0, 63, 63},
    {"AnswerWrittenBehindItsRoom", apdu_answer(64), 0, 64, 63},
    {"LengthCutToTheRoom", apdu_answer(0x103), 0, 3, 63},
    {"AnswerReadBehindTheMessagesRoom", apdu_answer(1100), 0, 0x4C, 63},
};

class ApduAnswer : public UimClient, public testing::WithParamInterface<ApduCase> {};

TEST_P(ApduAnswer, IsCutToItsRoomWithTheLengthAsSent)
{
    scenario(rule("message = 0x003B", "", "'raw'\nbytes = '" + GetParam().answer + "'"));
    struct {
        uim_apdu_result result;
        std::uint8_t behind;
    } room;
    std::memset(&room, 0x5A, sizeof room);
    EXPECT_EQ(velmor_uim_send_apdu(&kApdu, &room.result), GetParam().code);
    EXPECT_EQ(room.result.apdu_len, GetParam().length);
    const std::uint8_t* end = std::find_if(room.result.apdu, &room.behind + 1, [](auto byte) { return byte != 0xE1; });
    EXPECT_EQ(static_cast<std::size_t>(end - room.result.apdu), GetParam().copied);
    EXPECT_EQ(room.behind, 0x5A);
}
INSTANTIATE_TEST_SUITE_P(All, ApduAnswer, testing::ValuesIn(kApdus), [](const auto& row) { return row.param.catches; });

TEST_F(UimClient, ChannelAnswersAreJudgedByEachOperation)
{
    scenario(rule("message = 0x0042", "nth = 1", "'raw'\nbytes = '" + std::string(kFine) + "100100C7'") +
             rule("message = 0x0042", "nth = 2", "'raw'\nbytes = '" + std::string(kFine) + "'") +
             rule("message = 0x0042", "nth = 3", "'raw'\nbytes = '" + std::string(kRefused) + "10010011'") +
             rule("message = 0x003F", "", "'error'\ncode = 3"));
    std::uint8_t channel = 255;
    EXPECT_EQ(velmor_uim_open_channel(&kOpen, &channel), 0);
    EXPECT_EQ(channel, 0xC7);
    EXPECT_EQ(velmor_uim_open_channel(&kOpen, &channel), 0);
    EXPECT_EQ(channel, 0xC7) << "a channel that wasn't told";
    EXPECT_EQ(velmor_uim_open_channel(&kOpen, &channel), -1);
    EXPECT_EQ(channel, 0xC7) << "a refusal's channel";
    EXPECT_EQ(close_channel(), 0);
    EXPECT_EQ(log_count("velmor_uim_open_channel successfully"), 2U);
    EXPECT_EQ(log_count("velmor_uim_open_channel failed"), 1U);
    EXPECT_EQ(log_count("velmor_uim_close_channel successfully"), 0U);
    EXPECT_EQ(log_count("QMI error, try recovery"), 0U) << "the card's refusal counted as a failed send";
}

// ---- The connection ----

// What an operation says of its connection when there is none yet, and then when there is.
Calls connecting(const std::string& name, const std::string& word)
{
    return {"init_uim_qmi_client: init_uim_qmi_client H", name + ": " + word + " try init_uim_qmi_client H",
            name + ": " + word + " uim_qmi_client H"};
}

TEST_F(UimClient, EachOperationConnectsUnderItsWord)
{
    for (const Operation& operation : kOperations) {
        uim_qmi_client_recovery();
        said();
        operation.run();
        Calls lines = said();
        ASSERT_GE(lines.size(), 3U) << operation.name;
        lines.resize(3);
        EXPECT_EQ(lines, connecting(operation.name, operation.word));

        operation.run();
        EXPECT_EQ(said().front(), std::string(operation.name) + ": " + operation.word + " uim_qmi_client H");
    }
}

TEST_F(UimClient, OperationsWithoutAServiceEndInMinusOne)
{
    scenario("[modem]\nservices = ['extended']\n");
    scale_timeouts("0.01");
    for (const Operation& operation : kOperations) {
        EXPECT_EQ(operation.run(), -1) << operation.name;
        Calls expected{"init_uim_qmi_client: qmi_client_init UIM instance failed, qmi_client_error = -3",
                       std::string(operation.name) + ": init_uim_qmi_client failed"};
        if (std::string(operation.name) == "velmor_setSimType")
            expected.push_back("velmor_setSimType: velmor_set_sim_type res = -1 ");
        EXPECT_EQ(said(), expected);
    }
}

TEST_F(UimClient, ThirdFailedSendDropsTheConnectionAndTheNextOneCountsAnew)
{
    std::string rules;
    for (const int nth : {1, 2, 3, 5, 6}) rules += rule("", "nth = " + std::to_string(nth), "'silent'");
    scenario(rules);
    scale_timeouts("0.1");
    EXPECT_EQ(request_eid(), -3);
    EXPECT_EQ(get_card_status(), -3);
    said();
    EXPECT_EQ(open_channel(), -3);
    EXPECT_EQ(said(), (Calls{"velmor_uim_open_channel: velmor_uim_open_channel uim_qmi_client H",
                             "velmor_uim_open_channel: send msg sync client error = -3",
                             "velmor_uim_open_channel: QMI error, try recovery",
                             "uim_qmi_client_recovery: uim_qmi_client_recovery qmi_client_release H"}));
    EXPECT_EQ(request_eid(), 0);
    EXPECT_EQ(said(), connecting("velmor_uim_request_eid", "velmor_uim_request_eid"));
    EXPECT_EQ(send_apdu(), -3);
    EXPECT_EQ(power_down(), -3);
    EXPECT_EQ(said().back(), "velmor_esim_request_uicc_power_ex: uicc_power_ex res = -3, failed_cnt = 2");
}

// The mark and the count of the lost connection stay until there is a new one, and so does the end that they bring.
TEST_F(UimClient, FailedConnectionAfterThreeFailuresEndsInRecovery)
{
    scenario("[modem]\nrestart_ms = 60000\n" + rule("", "nth = 1", "'silent'") + rule("", "nth = 2", "'silent'") +
             rule("", "nth = 3", "'down'"));
    scale_timeouts("0.1");
    EXPECT_EQ(request_eid(), -3);
    EXPECT_EQ(request_eid(), -3);
    EXPECT_EQ(request_eid(), -2);
    said();
    EXPECT_EQ(get_card_status(), -1);
    EXPECT_EQ(said(), (Calls{"init_uim_qmi_client: qmi_client_init UIM instance failed, qmi_client_error = -3",
                             "velmor_uim_get_card_status: init_uim_qmi_client failed",
                             "velmor_uim_get_card_status: QMI error, try recovery",
                             "uim_qmi_client_recovery: uim_qmi_client_recovery qmi_client_release (nil)"}));
}

TEST_F(UimClient, FailedSimTypesDontCount)
{
    scenario(rule("message = 0x007A", "", "'silent'"));
    scale_timeouts("0.1");
    for (int i = 0; i < 3; ++i) EXPECT_EQ(set_sim_types(), -3);
    said();
    EXPECT_EQ(set_sim_types(), -3);
    EXPECT_EQ(said(), (Calls{"velmor_setSimType: velmor_set_sim_type uim_qmi_client H",
                             "velmor_setSimType: Set_sim_type value is 1", "velmor_setSimType: Set_sim_type value is 3",
                             "velmor_setSimType: send msg sync client error = -3",
                             "velmor_setSimType: velmor_set_sim_type res = -3 "}));
    EXPECT_EQ(request_eid(), 0);
    EXPECT_EQ(log_count("recovery"), 0U);
}

TEST_F(UimClient, ServiceThatGoesDuringASendIsDroppedAtOnce)
{
    scenario("[modem]\nrestart_ms = 20\n" + rule("message = 0x0065", "nth = 1", "'down'"));
    EXPECT_EQ(request_eid(), -2);
    EXPECT_EQ(log_count("velmor_uim_request_eid: QMI error, try recovery"), 1U);
    EXPECT_EQ(log_count("error_cb: QMI error callback -2"), 1U);
    EXPECT_EQ(log_count("error_cb: SSR Detected, set SSR_Detected 1"), 1U);
    EXPECT_EQ(request_eid(), 0) << "the next one waits for the service";
    EXPECT_EQ(log_count("init_uim_qmi_client: init_uim_qmi_client 0x"), 2U);
}

// The service goes away between two operations; the library tells.
class LostService : public UimClient {
 public:
    void lose()
    {
        scenario("[modem]\nrestart_ms = 20\n");
        ASSERT_EQ(request_eid(), 0);
        const std::uint32_t type = 4096;
        common_rsp rsp;
        ASSERT_EQ(velmor_send_common_qmi_msg(COMMON_TYPE_SSR, 4, &type, &rsp), 0);
        ASSERT_TRUE(comes_to_log("error_cb: SSR Detected, set SSR_Detected 1"));
        EXPECT_EQ(log_count("error_cb: QMI error callback -2"), 1U);
        said();
    }
};

TEST_F(LostService, NextOperationReleasesAndConnectsAnew)
{
    lose();
    EXPECT_EQ(request_eid(), 0);
    Calls expected = connecting("velmor_uim_request_eid", "velmor_uim_request_eid");
    expected.insert(expected.begin(), {"velmor_uim_request_eid: SSR_Detected, try recovery",
                                       "uim_qmi_client_recovery: uim_qmi_client_recovery qmi_client_release H"});
    EXPECT_EQ(said(), expected);
    EXPECT_EQ(request_eid(), 0);
    EXPECT_EQ(said(), Calls{"velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client H"}) << "the mark stayed";
}

TEST_F(LostService, CardStatusTrustsItsStaleHandle)
{
    lose();
    EXPECT_EQ(get_card_status(), -2);
    EXPECT_EQ(said(), (Calls{"velmor_uim_get_card_status: velmor_uim_get_card_status uim_qmi_client H",
                             "velmor_uim_get_card_status: send msg sync client error = -2",
                             "velmor_uim_get_card_status: QMI error, try recovery",
                             "uim_qmi_client_recovery: uim_qmi_client_recovery qmi_client_release H"}));
    EXPECT_EQ(get_card_status(), 0);
}

}  // namespace
}  // namespace rbk::test

// The uim client: what it makes of answers, when it drops its connection, and when it connects anew.
#include "velmor_extend_uim.h"

#include "hal/exchanges.h"
#include "velmor_extend_cmn.h"

namespace rbk::test {
namespace {

using Calls = std::vector<std::string>;

class UimClient : public ExchangeTest {
 public:
    static constexpr std::uint8_t kSlot = 2;
    static constexpr uim_channel_param kOpen = {kSlot, 1};
    static constexpr uim_apdu_param kApdu = {kSlot, 0xC7, 4, {0xA1, 0xB2, 0xC3, 0xD4}};

    static std::int32_t down()
    {
        const uicc_power_param param = {0, kSlot, 5, 1};
        return velmor_esim_request_uicc_power_ex(&param);
    }
    static std::int32_t set_sim_types(std::uint32_t count)
    {
        const std::uint32_t words[] = {count, 1, 3, 1, 1, 1, 1};
        return velmor_setSimType(reinterpret_cast<const sim_type_param*>(words));
    }
    static std::int32_t sim_types() { return set_sim_types(2); }
    static std::int32_t eid() { return velmor_uim_request_eid(&kSlot, room); }
    static std::int32_t card_status() { return velmor_uim_get_card_status(room); }
    static std::int32_t open_channel() { return velmor_uim_open_channel(&kOpen, room); }
    static std::int32_t apdu() { return velmor_uim_send_apdu(&kApdu, reinterpret_cast<uim_apdu_result*>(room)); }

    // What the client's file has logged since the last look, as "function: words", handles as H.
    Calls said()
    {
        Calls lines;
        for (std::string line : log()) {
            if (!line.starts_with("7 [velmor_extend_cmn.cpp:")) continue;
            line.erase(0, line.find("] ") + 2);
            const std::size_t handle = line.find("0x");
            if (handle != std::string::npos) line.replace(handle, line.find(' ', handle) - handle, "H");
            lines.push_back(line);
        }
        return lines;
    }
};

// ---- Answers ----

const std::string kFine = tlv(2, "00000000"), kRefused = tlv(2, "01003000");

// A card status with `count` in its place and a card for each state.
std::string status(std::uint8_t type, const std::string& count, const Calls& states)
{
    std::string value = "0000FFFFFFFFFFFF" + count;
    for (const std::string& state : states) value += state + "0102030400";
    return tlv(type, value);
}

TEST_F(UimClient, AnswersAreTakenAsFarAsTheyCanBeBelieved)
{
    const std::string sixteen = "0102030405060708090A0B0C0D0E0F10";
    const auto bytes = [](std::size_t count) { return raw(kFine + tlv(0x10, le(count, 2) + times(count, "E1"))); };
    // clang-format off
    expect("uim", {
        {"EidOfARefusalTaken",         eid, {raw(kRefused + tlv(0x10, "10" + sixteen))}, 0},
        {"MissingEidTaken",            eid, {raw(kFine)}, 0},
        {"ShortEidFilledUpFromMemory", eid, {raw(kFine + tlv(0x10, "01A1"))}, 0, "A1" + times(15, "00")},
        {"LongEidWrittenWhole",        eid, {raw(kFine + tlv(0x10, "12" + sixteen + "1112"))}, 0, sixteen},
        {"OldStatusTaken",             card_status, {raw(kFine + status(0x10, "02", {"00", "01"}))}, 0, "0303"},
        {"StatusOfARefusalTaken",      card_status, {raw(kRefused + status(0x15, "02", {"00", "01"}))}, 0, "0303"},
        {"NoCardTakenForAbsent",       card_status, {raw(kFine + status(0x15, "00", {}))}, 0, "0303"},
        {"ThirdCardWrittenBehind",     card_status, {raw(kFine + status(0x15, "03", {"00", "01", "02"}))}, 0, "0001", "SIM[2] State = 2"},
        {"SixthCardReadBehindItsRoom", card_status, {raw(kFine + status(0x15, "06", {"01", "01", "01", "01", "01", "02"}))}, 0, "0101",
         "SIM[5] State = 0"},
        {"OldLengthKept",              apdu, {raw(kFine)}, 0, "00"},
        {"LastByteOfTheRoomLost",      apdu, {bytes(63)}, 0, "3F" + times(63, "E1")},
        {"ApduWrittenBehindItsRoom",   apdu, {bytes(64)}, 0, "40" + times(63, "E1")},
        {"LengthCutToTheRoom",         apdu, {bytes(0x103)}, 0, "03" + times(63, "E1")},
        {"ApduReadBehindItsRoom",      apdu, {bytes(1100)}, 0, "4C" + times(63, "E1")},
        {"MissingChannelTaken",        open_channel, {raw(kFine)}, 0},
        {"ChannelOfARefusalTaken",     open_channel, {raw(kRefused + tlv(0x10, "11"))}, -1, "", "velmor_uim_open_channel failed"},
        {"NullTypesRead",              [] { return velmor_setSimType(nullptr); }, {}, -2},
        {"SixTypesSent",               [] { return set_sim_types(6); }, {}, -1, "", "velmor_setSimType: Set_sim_type value is 1"},
        {"TypesCounted",               sim_types, {raw("FF")}, -1, "", "velmor_setSimType: send msg sync client error = -1"},
        {"FiveTypesCounted",           [] { return set_sim_types(5); }, {raw("FF")}, -1},
        {"LastTypesCounted",           sim_types, {raw("FF")}, -1},
        {"ConnectionLost",             eid, {raw(kFine)}, 0},
    });
    // clang-format on
    EXPECT_EQ(requests().end()[-3].bytes, tlv(1, "050100000003000000" + times(3, "01000000")));
    EXPECT_EQ(log_count("SIM["), 3U + 6U);
    EXPECT_EQ(log_count("recovery"), 0U) << "a refusal, or a failure of the SIM types, counts as a failed send";
}

// ---- The connection ----

const Calls kConnecting = {"init_uim_qmi_client: init_uim_qmi_client H",
                           "velmor_uim_request_eid: velmor_uim_request_eid try init_uim_qmi_client H",
                           "velmor_uim_request_eid: velmor_uim_request_eid uim_qmi_client H"};
const char kReleased[] = "uim_qmi_client_recovery: uim_qmi_client_recovery qmi_client_release H";

TEST_F(UimClient, ThirdFailedSendDropsTheConnectionAndTheNextOneCountsAnew)
{
    scenario(in_turn("uim", {raw("FF"), raw("FF"), raw("FF"), "", raw("FF"), raw("FF")}));
    EXPECT_EQ(eid(), -1);
    EXPECT_EQ(card_status(), -1);
    const std::string text = read_file(home() / "log");
    const auto handle = std::stoul(text.substr(text.find("uim_qmi_client 0x") + 15), nullptr, 16);
    said();
    EXPECT_EQ(open_channel(), -1);
    EXPECT_EQ(said(), (Calls{"velmor_uim_open_channel: velmor_uim_open_channel uim_qmi_client H",
                             "velmor_uim_open_channel: send msg sync client error = -1",
                             "velmor_uim_open_channel: QMI error, try recovery", kReleased}));
    EXPECT_EQ(qmi_client_release(reinterpret_cast<qmi_client_handle>(handle)), -1) << "the library still has it";
    EXPECT_EQ(eid(), 0);
    EXPECT_EQ(said(), kConnecting);
    EXPECT_EQ(apdu(), -1);
    EXPECT_EQ(down(), -1);
    EXPECT_EQ(said().back(), "velmor_esim_request_uicc_power_ex: uicc_power_ex res = -1, failed_cnt = 2");
}

TEST_F(UimClient, LostServiceIsLeftBeforeTheNextOperationButForTheCardStatus)
{
    scenario("[modem]\nrestart_ms = 20\n" + in_turn("uim", {"'down'"}));
    EXPECT_EQ(eid(), -2);
    EXPECT_EQ(log_count("velmor_uim_request_eid: QMI error, try recovery"), 1U);
    EXPECT_EQ(log_count("error_cb: QMI error callback -2"), 1U);
    EXPECT_EQ(eid(), 0) << "the next one waits for the service";

    error_cb(nullptr, -1, nullptr);
    said();
    EXPECT_EQ(eid(), 0);
    EXPECT_EQ(said(), Calls{kConnecting.back()}) << "the mark stays, or another error sets it";
    error_cb(nullptr, -2, nullptr);
    said();
    EXPECT_EQ(card_status(), 0) << "trusts its handle";
    EXPECT_EQ(said().front(), "velmor_uim_get_card_status: velmor_uim_get_card_status uim_qmi_client H");
    EXPECT_EQ(eid(), 0);
    Calls expected = kConnecting;
    expected.insert(expected.begin(), {"velmor_uim_request_eid: SSR_Detected, try recovery", kReleased});
    EXPECT_EQ(said(), expected);
}

}  // namespace
}  // namespace rbk::test

// The service uim as a client on the wire sees it: slots that are switched, channels, and requests that make no sense.
#include <gtest/gtest.h>

#include "wire_client.h"

namespace rbk::sim {
namespace {

constexpr std::uint16_t kStatus = 0x2F, kPowerDown = 0x30, kPowerUp = 0x31, kApdu = 0x3B, kClose = 0x3F, kOpen = 0x42,
                        kEid = 0x65, kSimTypes = 0x7A;

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// TLVs, and values in them.
Bytes tlv(std::uint8_t type, const Bytes& value)
{
    return Bytes{type, static_cast<std::uint8_t>(value.size()), static_cast<std::uint8_t>(value.size() >> 8)} + value;
}
Bytes slot(std::uint8_t number)
{
    return tlv(0x01, {number});
}

const Bytes kIsdR{0xA0, 0x00, 0x00, 0x05, 0x59, 0x10, 0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0x89, 0x00, 0x00, 0x01, 0x00};
const Bytes kSelectIsdR = tlv(0x10, Bytes{16} + kIsdR);
const Bytes kToEsim = tlv(0x01, {2, 1, 0, 0, 0, 3, 0, 0, 0});
const Bytes kToPhysical = tlv(0x01, {2, 1, 0, 0, 0, 1, 0, 0, 0});
const Bytes kReset{0x80, 0xE2, 0x91, 0x00, 0x07, 0xBF, 0x34, 0x04, 0x82, 0x02, 0x05, 0xE0, 0x00};

Bytes apdu(const Bytes& command)
{
    return tlv(0x02, Bytes{static_cast<std::uint8_t>(command.size()), static_cast<std::uint8_t>(command.size() >> 8)} +
                         command);
}

class UimPhone : public testing::Test {
 public:
    void start(std::string_view scenario = "") { modem_.emplace(scenario); }
    WireClient connect() { return modem_->connect(); }

    // A request and its answer's TLVs; the error number on its own.
    Bytes ask(WireClient& client, std::uint16_t message, const Bytes& tlvs)
    {
        const auto rows = client.lookup(11);
        if (rows.size() != 1) {
            ADD_FAILURE() << "no service uim";
            return {};
        }
        client.send(rows.front().address, message, tlvs);
        while (const std::optional<Received> received = client.receive()) {
            if (received->kind == 2) return received->tlvs;
        }
        ADD_FAILURE() << "no answer";
        return {};
    }
    int error(WireClient& client, std::uint16_t message, const Bytes& tlvs)
    {
        const Bytes result = value(ask(client, message, tlvs), 0x02);
        return peek_le<std::uint16_t>(result, 2);
    }
    static Bytes value(const Bytes& tlvs, std::uint8_t type)
    {
        const auto found = find_tlv(tlvs, type);
        return found ? Bytes(found->begin(), found->end()) : Bytes{};
    }
    // State and error of each card.
    Bytes states(WireClient& client)
    {
        const Bytes status = value(ask(client, kStatus, tlv(0x10, {1})), 0x15);
        Bytes found;
        std::size_t at = 9;
        for (int card = 0; card < peek_le<std::uint8_t>(status, 8); ++card) {
            found = found + Bytes{peek_le<std::uint8_t>(status, at), peek_le<std::uint8_t>(status, at + 4)};
            const int applications = peek_le<std::uint8_t>(status, at + 5);
            at += 6;
            for (int i = 0; i < applications; ++i) at += 6 + 1 + peek_le<std::uint8_t>(status, at + 6) + 7;
        }
        EXPECT_EQ(at, status.size()) << "the records don't add up";
        return found;
    }
    const std::filesystem::path& state() const { return modem_->state(); }
    void stop() { modem_->stop(); }

 private:
    std::optional<RunningModem> modem_;
};

TEST_F(UimPhone, EidIsThereAsLongAsTheSlotStandsOnThePoweredEsim)
{
    start("[[card]]\n[[card]]\neid = '89049032123451234512345678901235'\neid_after = 2\n");
    WireClient client = connect();
    const Bytes eid{16, 0x89, 0x04, 0x90, 0x32, 0x12, 0x34, 0x51, 0x23, 0x45, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x35};
    EXPECT_EQ(error(client, kEid, slot(2)), 25);
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    for (int early = 0; early < 2; ++early) EXPECT_EQ(ask(client, kEid, slot(2)), tlv(0x02, {0, 0, 0, 0}));
    EXPECT_EQ(value(ask(client, kEid, slot(2)), 0x10), eid);
    EXPECT_EQ(error(client, kEid, slot(1)), 25) << "the first slot has no eUICC";
    EXPECT_EQ(states(client), (Bytes{1, 0, 1, 0}));

    EXPECT_EQ(error(client, kPowerDown, slot(2)), 0);
    EXPECT_EQ(error(client, kEid, slot(2)), 25);
    EXPECT_EQ(states(client), (Bytes{1, 0, 2, 1}));
    EXPECT_EQ(error(client, kPowerUp, slot(2)), 0) << "no switch file: the slot stays on its side";
    EXPECT_EQ(value(ask(client, kEid, slot(2)), 0x10), Bytes{}) << "the eUICC has started anew";

    write_file(state() / "efs/1/nv/item_files/modem/uim/uimdrv/esim_enable", std::string_view("\0\0\0\0", 4));
    EXPECT_EQ(error(client, kPowerUp, slot(2)), 0);
    EXPECT_EQ(error(client, kEid, slot(2)), 25);
    write_file(state() / "efs/1/nv/item_files/modem/uim/uimdrv/esim_enable", std::string_view("\0\1", 2));
    EXPECT_EQ(error(client, kEid, slot(2)), 25) << "the file counts at the next power-up";
    EXPECT_EQ(error(client, kPowerUp, slot(2)), 0);
    EXPECT_EQ(error(client, kEid, slot(2)), 0);
}

TEST_F(UimPhone, IndicesNameTheApplicationsThatThereAre)
{
    const Bytes none{0xFF, 0xFF};
    const Bytes first{0x00, 0x00};
    const Bytes second{0x00, 0x01};  // slot in the high byte
    const struct {
        const char* catches;
        const char* scenario;
        std::uint16_t message;  // before the status is asked for
        Bytes tlvs;
        Bytes primary, secondary;
    } rows[] = {
        {"BothCards", "", kEid, slot(1), first, second},
        {"NoFirstCard", "[[card]]\nstate = 'absent'\n[[card]]\n", kEid, slot(1), none, second},
        {"FirstCardInError", "[[card]]\nstate = 'error'\n", kEid, slot(1), none, none},
        {"FirstCardWithoutPower", "", kPowerDown, slot(1), none, second},
        {"EmptyEuicc", "", kSimTypes, kToEsim, first, none},
        {"NoSlot", "card = []\n", kEid, slot(1), none, none},
    };
    for (const auto& row : rows) {
        start(row.scenario);
        WireClient client = connect();
        ask(client, row.message, row.tlvs);
        std::filesystem::remove(state() / "card/2/profiles");
        const Bytes status = value(ask(client, kStatus, {}), 0x10);
        EXPECT_EQ(Bytes(status.begin(), status.begin() + 8), row.primary + none + row.secondary + none) << row.catches;
    }
}

TEST_F(UimPhone, EuiccIsThereWithoutACardInTheTray)
{
    start("[[card]]\n[[card]]\nstate = 'absent'\neid = '89049032123451234512345678901235'\neid_after = 0\n");
    WireClient client = connect();
    EXPECT_EQ(states(client), (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    EXPECT_EQ(states(client), (Bytes{1, 0, 1, 0}));
    EXPECT_EQ(value(ask(client, kEid, slot(2)), 0x10).size(), 17u);
    EXPECT_EQ(error(client, kSimTypes, kToPhysical), 0);
    EXPECT_EQ(states(client), (Bytes{1, 0, 0, 0}));
}

TEST_F(UimPhone, FourthChannelIsRefusedUntilOneIsClosed)
{
    start();
    WireClient client = connect();
    const Bytes open = slot(2) + kSelectIsdR;
    EXPECT_EQ(error(client, kOpen, open), 25) << "the physical card has no eUICC";
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    for (std::uint8_t channel = 1; channel <= 3; ++channel) {
        EXPECT_EQ(value(ask(client, kOpen, open), 0x10), Bytes{channel});
    }
    const Bytes full = ask(client, kOpen, open);
    EXPECT_EQ(full, tlv(0x02, {1, 0, 2, 0}) + tlv(0x11, {0x6A, 0x81}));
    EXPECT_EQ(error(client, kClose, slot(2) + tlv(0x11, {2})), 0);
    EXPECT_EQ(error(client, kClose, slot(2) + tlv(0x11, {2})), 48) << "closed twice";
    EXPECT_EQ(value(ask(client, kOpen, open), 0x10), Bytes{2});

    EXPECT_EQ(error(client, kPowerDown, slot(2)), 0);
    EXPECT_EQ(error(client, kPowerUp, slot(2)), 0);
    EXPECT_EQ(value(ask(client, kOpen, open), 0x10), Bytes{1}) << "channels outlive the card's power";
    {
        WireClient other = connect();
        EXPECT_EQ(value(ask(other, kOpen, open), 0x10), Bytes{2});
    }
    Bytes reopened;
    for (int tries = 0; tries < 100 && reopened != Bytes{2}; ++tries) {
        WireClient other = connect();
        reopened = value(ask(other, kOpen, open), 0x10);
    }
    EXPECT_EQ(reopened, Bytes{2}) << "channels of a client that has gone stay open";
}

TEST_F(UimPhone, ResetDeletesTheProfilesOnce)
{
    start();
    WireClient client = connect();
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    EXPECT_EQ(error(client, kApdu, slot(2) + apdu(kReset) + tlv(0x10, {1})), 48) << "the channel isn't open";
    EXPECT_EQ(error(client, kOpen, slot(2) + kSelectIsdR), 0);
    EXPECT_EQ(read_file(state() / "card/2/profiles").size(), 10u);
    const Bytes reset = slot(2) + apdu(kReset) + tlv(0x10, {1});
    EXPECT_EQ(value(ask(client, kApdu, reset), 0x10), (Bytes{8, 0, 0xBF, 0x34, 0x03, 0x80, 0x01, 0x00, 0x90, 0x00}));
    EXPECT_FALSE(std::filesystem::exists(state() / "card/2/profiles"));
    EXPECT_EQ(value(ask(client, kApdu, reset), 0x10), (Bytes{8, 0, 0xBF, 0x34, 0x03, 0x80, 0x01, 0x01, 0x90, 0x00}));
    EXPECT_EQ(states(client), (Bytes{1, 0, 1, 0})) << "an empty eUICC is a card too";
    EXPECT_EQ(value(ask(client, kApdu, slot(2) + apdu({0x80, 0xCA}) + tlv(0x10, {1})), 0x10),
              (Bytes{2, 0, 0x6D, 0x00}));
}

TEST_F(UimPhone, CardAnswersWhatTheScenarioSays)
{
    // The long command's name goes on in a folder that the shorter one's file doesn't stand in the way of.
    const std::string hundred(200, '5');
    start("[[card]]\n[[card]]\neid = '89049032123451234512345678901235'\n[card.apdu]\n'80 e2' = 'A1 B2 C3'\n'" +
          hundred + "' = '01'\n'" + hundred + "AB' = '02'\n");
    WireClient client = connect();
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    const auto answer = [&](const Bytes& command) { return value(ask(client, kApdu, slot(2) + apdu(command)), 0x10); };
    EXPECT_EQ(answer({0x80, 0xE2}), (Bytes{3, 0, 0xA1, 0xB2, 0xC3}));
    EXPECT_EQ(answer(Bytes(100, 0x55)), (Bytes{1, 0, 0x01}));
    EXPECT_EQ(answer(Bytes(100, 0x55) + Bytes{0xAB}), (Bytes{1, 0, 0x02}));
    EXPECT_EQ(answer(Bytes(1024, 0x55)), (Bytes{2, 0, 0x6D, 0x00})) << "the longest command of the wire";
}

TEST_F(UimPhone, SlotOutlivesTheModem)
{
    start();
    {
        WireClient client = connect();
        EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
        for (int early = 0; early < 3; ++early) ask(client, kEid, slot(2));
    }
    stop();
    RunningModem later("[[card]]\nstate = 'absent'\n", state());
    WireClient client = later.connect();
    EXPECT_EQ(states(client), (Bytes{1, 0, 1, 0})) << "cards are a fresh modem's alone";
    EXPECT_EQ(value(ask(client, kEid, slot(2)), 0x10).size(), 17u);
}

TEST_F(UimPhone, SenselessRequestsAreRefused)
{
    start();
    WireClient client = connect();
    EXPECT_EQ(error(client, kSimTypes, kToEsim), 0);
    EXPECT_EQ(error(client, kOpen, slot(2) + kSelectIsdR), 0);
    const struct {
        const char* catches;
        std::uint16_t message;
        Bytes tlvs;
        int error;
    } rows[] = {
        {"SlotZero", kPowerDown, slot(0), 48},
        {"SlotThree", kPowerUp, slot(3), 48},
        {"SlotInAWord", kPowerDown, tlv(0x01, {2, 0, 0, 0}), 1},
        {"NoSlot", kEid, {}, 19},
        {"UnknownMessage", 0x0066, slot(2), 71},
        {"TypesForMoreSlots", kSimTypes, tlv(0x01, {3, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}), 48},
        {"TypesCutShort", kSimTypes, tlv(0x01, {2, 1, 0, 0, 0, 1}), 1},
        {"NoTypes", kSimTypes, tlv(0x01, {}), 1},
        {"TypeUnknown", kSimTypes, tlv(0x01, {2, 1, 0, 0, 0, 7, 0, 0, 0}), 48},
        {"EsimInASlotWithoutOne", kSimTypes, tlv(0x01, {1, 3, 0, 0, 0}), 94},
        {"NoAid", kOpen, slot(2), 19},
        {"AidOfNobody", kOpen, slot(2) + tlv(0x10, {2, 0xA0, 0x00}), 16},
        {"AidCutShort", kOpen, slot(2) + tlv(0x10, {16, 0xA0}), 1},
        {"AidWithMoreBehind", kOpen, slot(2) + tlv(0x10, Bytes{15} + kIsdR), 1},
        {"NeitherAidNorChannel", kClose, slot(2), 19},
        {"NoApdu", kApdu, slot(2) + tlv(0x10, {1}), 19},
        {"ApduEmpty", kApdu, slot(2) + apdu({}), 1},
        {"ApduCutShort", kApdu, slot(2) + tlv(0x02, {9, 0, 0x80}), 1},
        {"ApduCountCutShort", kApdu, slot(2) + tlv(0x02, {9}), 1},
        {"ApduTooLong", kApdu, slot(2) + apdu(Bytes(1025, 0x80)), 1},
    };
    for (const auto& row : rows) EXPECT_EQ(error(client, row.message, row.tlvs), row.error) << row.catches;
    EXPECT_EQ(error(client, kApdu, slot(2) + apdu(kReset) + tlv(0x10, {1})), 0)
        << "the channel has been lost on the way";
    EXPECT_EQ(error(client, kSimTypes, kToPhysical), 0);
}

TEST(UimScenario, BadCardsAreRefused)
{
    const struct {
        const char* catches;
        const char* text;
        const char* expected;
    } rows[] = {
        {"StateUnknown", "[[card]]\nstate = 'gone'\n", "absent, present or error"},
        {"EidTooShort", "[[card]]\neid = '8904'\n", "an eid of 16 bytes"},
        {"SixSlots", "[[card]]\n[[card]]\n[[card]]\n[[card]]\n[[card]]\n[[card]]\n", "at most 5 slots"},
        {"CommandNotHex", "[[card]]\n[card.apdu]\n'8x' = '00'\n", "hex bytes"},
        {"CommandEmpty", "[[card]]\n[card.apdu]\n'' = '00'\n", "a command of 1 byte or more"},
        {"KeyUnknown", "[[card]]\npower = 'up'\n", "unknown key power"},
    };
    const TempDir folder;
    for (const auto& row : rows) {
        write_file(folder.path() / "scenario.toml", row.text);
        try {
            read_scenario(folder.path() / "scenario.toml");
            ADD_FAILURE() << row.catches << ": taken";
        } catch (const std::exception& error) {
            EXPECT_NE(std::string(error.what()).find(row.expected), std::string::npos) << row.catches << error.what();
        }
    }
}

}  // namespace
}  // namespace rbk::sim

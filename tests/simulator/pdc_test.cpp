// The modem's configurations, with messages put together by hand: what is stored per subscription, the list in chunks,
// frames in both directions, and scenarios.
#include <string>

#include "simulator/scenario_reader.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

enum : std::uint16_t {
    kGetSelected = 0x22,
    kSetSelected = 0x23,
    kList = 0x24,
    kDelete = 0x25,
    kLoad = 0x26,
    kActivate = 0x27,
    kInfo = 0x28,
    kDefaultInfo = 0x2A,
    kDeactivate = 0x2B,
    kValidate = 0x2C,
    kSetFeature = 0x2E,
};

Bytes tlv(std::uint8_t type, const Bytes& value)
{
    Bytes bytes{type};
    append_le(bytes, static_cast<std::uint16_t>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
    return bytes;
}
Bytes word(std::uint8_t type, std::uint32_t number)
{
    Bytes value;
    append_le(value, number);
    return tlv(type, value);
}
Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}
Bytes counted(const Bytes& id)
{
    return Bytes{static_cast<std::uint8_t>(id.size())} + id;
}
Bytes named(const Bytes& id, std::uint32_t type = 1, const Bytes& rest = {})
{
    Bytes value;
    append_le(value, type);
    return tlv(0x01, value + counted(id) + rest);
}
// A frame of `size` bytes of a configuration of `total`.
Bytes load_frame(const Bytes& id, std::uint32_t total, std::uint16_t size)
{
    Bytes rest;
    append_le(rest, total);
    append_le(rest, size);
    return named(id, 1, rest + Bytes(size, 0x5A));
}
const Bytes kResult0 = {0x02, 4, 0, 0, 0, 0, 0};
Bytes failed(std::uint16_t error)
{
    Bytes bytes = {0x02, 4, 0, 1, 0};
    append_le(bytes, error);
    return bytes;
}
Bytes error(std::uint16_t number)
{
    Bytes value;
    append_le(value, number);
    return tlv(0x01, value);
}

class Pdc : public testing::Test {
 public:
    void start(const std::string& scenario, std::optional<std::filesystem::path> state = std::nullopt)
    {
        client_.reset();
        modem_.reset();
        modem_.emplace("[pdc]\nindication_ms = 1\n" + scenario, std::move(state));
        client_.emplace(modem_->connect());
        const auto rows = client_->lookup(36);
        ASSERT_EQ(rows.size(), 1u);
        address_ = rows.front().address;
    }
    // The answer to a request; with success the indication's TLVs follow.
    Bytes ask(std::uint16_t message, const Bytes& tlvs)
    {
        client_->send(address_, message, tlvs);
        const auto response = client_->receive();
        if (!response || response->kind != 2) return {};
        if (response->tlvs != kResult0) return response->tlvs;
        return next(message);
    }
    Bytes next(std::uint16_t message)
    {
        const auto indication = client_->receive();
        if (!indication) return {};
        EXPECT_EQ(indication->kind, 4);
        EXPECT_EQ(indication->message, message);
        return indication->tlvs;
    }
    Bytes stored(const std::string& name) const
    {
        return std::filesystem::exists(modem_->state() / name) ? read_file(modem_->state() / name) : Bytes{};
    }

    std::optional<RunningModem> modem_;
    std::optional<WireClient> client_;
    link::Address address_;
};

const char kTwo[] =
    "[[pdc.config]]\nid = 'A1'\ntype = 1\ndescription = 'Net'\nversion = 0x05010203\nsize = 4711\n"
    "[[pdc.config]]\nid = 'C1C2'\ntype = 0\n[pdc.sub0]\nactive = 'A1'\npending = 'BB'\n[pdc.sub1]\n";

TEST_F(Pdc, SelectionsAreStoredForEachSubscription)
{
    start(kTwo);
    EXPECT_EQ(ask(kGetSelected, word(1, 1) + word(0x10, 9)),
              error(0) + word(0x10, 9) + tlv(0x11, {1, 0xA1}) + tlv(0x12, {1, 0xBB}));
    EXPECT_EQ(ask(kGetSelected, word(1, 1) + word(0x11, 1)), error(0));
    EXPECT_EQ(ask(kSetSelected, named({0xA1}) + word(0x11, 1)), error(0));
    EXPECT_EQ(ask(kGetSelected, word(1, 1) + word(0x11, 1)), error(0) + tlv(0x12, {1, 0xA1}));
    EXPECT_EQ(ask(kActivate, word(1, 1) + word(0x12, 1)), error(0));
    EXPECT_EQ(ask(kGetSelected, word(1, 1) + word(0x11, 1)), error(0) + tlv(0x11, {1, 0xA1}));
    EXPECT_EQ(stored("pdc/sub1/active"), Bytes{0xA1});
    EXPECT_EQ(stored("pdc/sub1/pending"), Bytes{});
    EXPECT_EQ(ask(kDeactivate, word(1, 1) + word(0x11, 0)), error(0));
    EXPECT_EQ(ask(kDeactivate, word(1, 1) + word(0x11, 0)), error(26));  // nothing there any more
    EXPECT_EQ(stored("pdc/sub0/pending"), Bytes{0xBB});
    // The platform's is one for all.
    EXPECT_EQ(ask(kActivate, word(1, 0)), error(25));
    EXPECT_EQ(ask(kSetSelected, named({0xC1, 0xC2}, 0) + word(0x11, 1)), error(0));
    EXPECT_EQ(ask(kActivate, word(1, 0)), error(0));
    EXPECT_EQ(stored("pdc/platform/active"), (Bytes{0xC1, 0xC2}));
    EXPECT_EQ(ask(kSetFeature, word(1, 1) + word(0x10, 3)), error(0) + word(0x10, 3));
}

TEST_F(Pdc, SelectionsLastAndTheScenarioFillsOnlyAFreshState)
{
    const TempDir folder;
    start(kTwo, folder.path() / "modem");
    EXPECT_EQ(ask(kSetSelected, named({0xA1}) + word(0x11, 1)), error(0));
    start("[pdc.sub0]\nactive = 'EE'\n", folder.path() / "modem");
    EXPECT_EQ(ask(kGetSelected, word(1, 1)), error(0) + tlv(0x11, {1, 0xA1}) + tlv(0x12, {1, 0xBB}));
    EXPECT_EQ(ask(kGetSelected, word(1, 1) + word(0x11, 1)), error(0) + tlv(0x12, {1, 0xA1}));
}

TEST_F(Pdc, DeactivatedOneCanBePutBackThoughItIsNotListed)
{
    start("[pdc.sub0]\nactive = 'EE'\n");
    EXPECT_EQ(ask(kSetSelected, named({0xEF})), error(16));
    EXPECT_EQ(ask(kDeactivate, word(1, 1)), error(0));
    EXPECT_EQ(ask(kSetSelected, named({0xEE})), error(0));
}

TEST_F(Pdc, ListGoesOutInChunksToEachClientOnItsOwn)
{
    std::string scenario;
    for (int i = 0; i < 60; ++i)
        scenario += "[[pdc.config]]\nid = '" + std::to_string(10 + i) +
                    "'\ntype = " + std::to_string(i % 6 == 0 ? 0 : 1) + "\n";
    start(scenario);
    const auto count = [](const Bytes& tlvs) { return find_tlv(tlvs, 0x11)->front(); };
    const auto more = [](const Bytes& tlvs) { return find_tlv(tlvs, 0x12)->front(); };
    Bytes chunk = ask(kList, word(0x10, 7) + word(0x11, 1));
    EXPECT_EQ(Bytes(chunk.begin(), chunk.begin() + 12), error(0) + word(0x10, 7));
    EXPECT_EQ(count(chunk), 25);
    EXPECT_EQ(more(chunk), 1);
    for (const std::uint8_t told : {0x11, 0x12}) EXPECT_EQ(ask(kDelete, word(1, 1) + tlv(0x11, {1, told})), error(0));
    chunk = ask(kList, word(0x11, 1) + tlv(0x12, {1}));
    EXPECT_EQ(count(chunk), 25);  // 50 of this type: nothing behind them
    EXPECT_EQ(more(chunk), 0);
    EXPECT_EQ(count(ask(kList, word(0x11, 1) + tlv(0x12, {1}))), 0);
    EXPECT_EQ(count(ask(kList, word(0x11, 0))), 10);
    EXPECT_EQ(ask(kList, word(0x11, 9)), error(0) + tlv(0x11, {0}) + tlv(0x12, {0}));
}

TEST_F(Pdc, InformationAndDeletion)
{
    start(kTwo);
    EXPECT_EQ(ask(kInfo, named({0xA1})),
              error(0) + word(0x11, 4711) + tlv(0x12, {3, 'N', 'e', 't'}) + word(0x13, 0x05010203));
    EXPECT_EQ(ask(kInfo, named({0xA1}, 0)), error(16));
    EXPECT_EQ(ask(kDefaultInfo, word(1, 1)),
              error(0) + word(0x11, 0x05010203) + word(0x12, 4711) + tlv(0x13, {3, 'N', 'e', 't'}));
    EXPECT_EQ(ask(kDefaultInfo, word(1, 5)), error(16));
    EXPECT_EQ(ask(kDelete, word(1, 1) + tlv(0x11, {1, 0xA1})), error(25));  // active
    EXPECT_EQ(ask(kDelete, word(1, 1) + tlv(0x11, {1, 0xA2})), error(16));
    EXPECT_EQ(ask(kDelete, word(1, 0)), error(0));
    EXPECT_EQ(ask(kDefaultInfo, word(1, 0)), error(16));
}

TEST_F(Pdc, ConfigurationComesInFrames)
{
    start(kTwo);
    EXPECT_EQ(ask(kLoad, load_frame({0xA1}, 10, 4)), error(41));  // there already
    EXPECT_EQ(ask(kLoad, load_frame({0xD1}, 0x7FFFFFFF, 4)), error(2));
    EXPECT_EQ(ask(kLoad, load_frame({0xD1}, 10, 4)), error(0) + word(0x11, 4) + word(0x12, 6));
    EXPECT_EQ(ask(kLoad, load_frame({0xD1}, 10, 7)), error(0) + tlv(0x13, {1}));  // too much: from the start again
    EXPECT_EQ(ask(kLoad, load_frame({0xD1}, 10, 4)), error(0) + word(0x11, 4) + word(0x12, 6));
    EXPECT_EQ(ask(kInfo, named({0xD1})), error(16));
    EXPECT_EQ(ask(kLoad, load_frame({0xD1}, 10, 6)), error(0) + word(0x11, 10) + word(0x12, 0));
    EXPECT_EQ(ask(kInfo, named({0xD1})), error(0) + word(0x11, 10) + tlv(0x12, {0}) + word(0x13, 0));
}

TEST_F(Pdc, RoomForConfigurationsEndsAndComesBack)
{
    start(kTwo);
    const Bytes full = error(2);
    const auto id = [](int number) { return Bytes{0xE0, static_cast<std::uint8_t>(number), 0}; };
    {
        WireClient gone = modem_->connect();
        for (std::uint8_t i = 0; i < 16; ++i) gone.send(address_, kLoad, load_frame({0xD0, i}, 10, 4));
        for (int answers = 0; answers < 16;)
            if (gone.receive().value().kind == 2) ++answers;
        EXPECT_EQ(ask(kLoad, load_frame(id(0), 10, 4)), full) << "loads without bound";
    }
    Bytes begun = full;
    for (int tries = 0; tries < 100 && begun == full; ++tries) begun = ask(kLoad, load_frame(id(0), 10, 4));
    EXPECT_EQ(begun, error(0) + word(0x11, 4) + word(0x12, 6)) << "loads of a client that has gone stay";

    for (int i = 1; i < 254; ++i) EXPECT_NE(ask(kLoad, load_frame(id(i), 0, 0)), full) << i;
    EXPECT_EQ(ask(kLoad, load_frame(id(254), 0, 0)), full) << "finished ones without bound";
    EXPECT_EQ(ask(kLoad, load_frame(id(0), 10, 6)), error(0) + word(0x11, 10) + word(0x12, 0));
    EXPECT_EQ(ask(kDelete, word(1, 1) + tlv(0x11, counted(id(7)))), error(0));
    EXPECT_NE(ask(kLoad, load_frame(id(254), 0, 0)), full);
}

TEST_F(Pdc, ReportIsStreamedInFrames)
{
    const TempDir folder;
    write_file(folder.path() / "diff.xml", std::string(32768, 'a') + std::string(32768, 'b') + "c");
    start("report = '" + (folder.path() / "diff.xml").string() + "'\n" + kTwo);
    const auto frame = [](std::uint32_t index, std::size_t size, std::uint8_t fill) {
        Bytes value;
        append_le(value, static_cast<std::uint16_t>(size));
        return error(0) + word(0x10, 5) + word(0x11, index) + tlv(0x12, value + Bytes(size, fill));
    };
    EXPECT_EQ(ask(kValidate, named({0xA1}) + word(0x10, 5)), frame(0, 32768, 'a'));
    EXPECT_EQ(next(kValidate), frame(1, 32768, 'b'));
    EXPECT_EQ(next(kValidate), frame(0xFFFFFFFF, 1, 'c'));
    EXPECT_EQ(ask(kValidate, named({0xA2})), error(16));
}

TEST_F(Pdc, BrokenRequestsAreAnsweredWithWhatIsWrong)
{
    start(kTwo);
    struct {
        const char* catches;
        std::uint16_t message;
        Bytes tlvs;
        std::uint16_t error;
    } const cases[] = {
        {"MissingTypeTaken", kGetSelected, {}, 19},
        {"ShortTypeRead", kActivate, tlv(1, {1}), 1},
        {"UnknownTypeSelected", kGetSelected, word(1, 2), 48},
        {"ThirdSubscriptionSelected", kGetSelected, word(1, 1) + word(0x11, 2), 48},
        {"IdReadPastItsEnd", kSetSelected, tlv(1, {1, 0, 0, 0, 9, 0xA1}), 1},
        {"IdBeyondTheRoomTaken", kSetSelected, named(Bytes(125, 1)), 1},
        {"HeadReadPastItsEnd", kInfo, tlv(1, {1, 0, 0}), 1},
        {"FrameReadPastItsEnd", kLoad, named({1}, 1, {9, 0, 0, 0, 8, 0, 1}), 1},
        {"FrameWithoutItsHead", kLoad, named({1}, 1, {9, 0, 0}), 1},
        {"LengthOfADeletionBelieved", kDelete, word(1, 1) + tlv(0x11, {9, 1}), 1},
        {"UnknownMessageTaken", 0x29, {}, 71},
    };
    for (const auto& c : cases) EXPECT_EQ(ask(c.message, c.tlvs), failed(c.error)) << c.catches;
}

TEST(PdcScenario, RefusesWhatItDoesNotKnow)
{
    const TempDir folder;
    const auto refused = [&](const std::string& text) -> std::string {
        write_file(folder.path() / "scenario.toml", text);
        try {
            read_scenario(folder.path() / "scenario.toml");
        } catch (const ScenarioError& error) {
            return error.what();
        }
        return "";
    };
    struct {
        const char* scenario;
        const char* words;
    } const cases[] = {
        {"[pdc]\nindications = 3\n", "unknown key indications"},
        {"[pdc]\nreport = 'none.xml'\n", "a file that can be read"},
        {"[pdc.sub0]\nactive = '0'\n", "hex bytes"},
        {"[pdc.sub2]\n", "unknown key sub2"},
        {"[[pdc.config]]\ntype = 1\n", "the key id"},
        {"[[pdc.config]]\nid = ''\n", "an id of 1 byte or more"},
    };
    for (const auto& c : cases)
        EXPECT_NE(refused(c.scenario).find(c.words), std::string::npos) << c.scenario << refused(c.scenario);
}

}  // namespace
}  // namespace rbk::sim

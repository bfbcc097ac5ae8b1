// The statistics service on the wire, and the samples and records that a scenario gives.
#include <gtest/gtest.h>

#include "simulator/scenario.h"
#include "simulator/scenario_reader.h"
#include "simulator/stats_samples.h"
#include "wire_client.h"

namespace rbk::sim {
namespace {

constexpr std::uint32_t kVs = 228;

// A request to the statistics service; the TLVs of its answer.
Bytes ask_vs(WireClient& client, std::uint16_t message, const Bytes& tlvs)
{
    const std::vector<link::ControlPacket> found = client.lookup(kVs);
    if (found.empty()) return {};
    client.send(found.front().address, message, tlvs);
    const std::optional<Received> received = client.receive();
    return received ? received->tlvs : Bytes{};
}

Bytes result(std::uint8_t word, std::uint8_t error)
{
    return {0x02, 8, 0, word, 0, 0, 0, error, 0, 0, 0};
}

// What [stats.sub0] makes of one row.
Bytes sample_of(std::uint32_t parameter, const std::string& row)
{
    const TempDir folder;
    write_file(folder.path() / "s.toml", "[stats.sub0]\n" + row + "\n");
    const ScenarioNode root = load_scenario_file(folder.path() / "s.toml");
    TableReader file("the scenario", root);
    return read_stats_samples(&file).at({0, parameter});
}

TEST(Stats, RequestsAreAnsweredOrRefused)
{
    RunningModem modem("[stats.sub1]\n7 = 'A1 A2'\n8 = ''\n");
    WireClient client = modem.connect();
    const Bytes sub_and_slot{0x01, 2, 0, 1, 0, 0x02, 2, 0, 5, 0};
    const auto asked = [&](Bytes list, std::uint8_t sub = 1) {
        Bytes tlvs = sub_and_slot;
        tlvs[3] = sub;
        tlvs.insert(tlvs.end(), {0x03, static_cast<std::uint8_t>(list.size()), 0});
        tlvs.insert(tlvs.end(), list.begin(), list.end());
        return tlvs;
    };
    const auto answered = [&](Bytes list) {
        Bytes tlvs = result(0, 0);
        tlvs.insert(tlvs.end(), {0x10, static_cast<std::uint8_t>(list.size()), 0});
        tlvs.insert(tlvs.end(), list.begin(), list.end());
        return tlvs;
    };
    struct {
        const char* catches;
        std::uint16_t message;
        Bytes request;
        Bytes answer;
    } const rows[] = {
        {"OrderOrBytesMixedUp", 0x0207, asked({2, 0, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7, 0, 0, 0, 1, 0, 0xEE}),
         answered({2, 1, 0, 0, 0, 8, 0, 0, 0, 0, 0, 1, 0, 0, 0, 7, 0, 0, 0, 2, 0, 0xA1, 0xA2})},
        {"UnknownParameterInvented", 0x0207, asked({1, 0, 0, 0, 0, 9, 0, 0, 0, 0, 0}), answered({0})},
        {"ValueReadBehindTheList", 0x0207, asked({1, 0, 0, 0, 0, 7, 0, 0, 0, 1, 0}), result(1, 1)},
        {"HeadReadBehindTheList", 0x0207, asked({2, 0, 0, 0, 0, 7, 0, 0, 0, 0, 0}), result(1, 1)},
        {"CountAboveTheLimitTaken", 0x0207, asked({11}), result(1, 1)},
        {"EmptyListRead", 0x0207, asked({}), result(1, 1)},
        {"ThirdSubscriptionAnswered", 0x0207, asked({0}, 2), result(1, 48)},
        {"MissingListRead", 0x0207, sub_and_slot, result(1, 19)},
        {"OtherFeatureSwitched", 0x0003, {0x01, 4, 0, 1, 0, 0, 0, 0x02, 1, 0, 1}, result(1, 94)},
        {"FeatureRefused", 0x0003, {0x01, 4, 0, 2, 0, 0, 0, 0x02, 1, 0, 3}, result(0, 0)},
        {"UnknownMessageAnswered", 0x0400, {}, result(1, 71)},
    };
    for (const auto& row : rows) EXPECT_EQ(ask_vs(client, row.message, row.request), row.answer) << row.catches;
    EXPECT_EQ(read_file(modem.state() / "vs/feature_2"), (Bytes{3, 0, 0}));
}

TEST(Stats, FieldsMakeTheBytesOfTheirSample)
{
    EXPECT_EQ(sample_of(98,
                        "98 = { version = 1, pusch_tx_power = -2, dl_path_loss = 3, max_power = 0xF1E2, "
                        "pusch_ex_tx_power = 0xD3C4 }"),
              (Bytes{1, 0xFE, 0xFF, 3, 0xE2, 0xF1, 0xC4, 0xD3}));
    EXPECT_EQ(sample_of(44, "44 = { rat = 0xF1E2D3C4 }"), (Bytes{0, 0xC4, 0xD3, 0xE2, 0xF1}));
    EXPECT_EQ(sample_of(111, "111 = { rx_drx = -93.5, rx_prx = inf }"), (Bytes{0, 0, 0, 0x80, 0x7F, 0, 0, 0xBB, 0xC2}));
    EXPECT_EQ(sample_of(82, "82 = {}").size(), 75u);
    std::string words = "90 = { version_hook = 1, tx_power_pusch = -93.5";
    Bytes sample{1, 0, 0, 0, 0, 0, 0xBB, 0xC2};
    for (const char* name : {"tx_power_pucch", "tx_power_srs", "tx_power_prach", "mtpl_pusch", "mtpl_pucch", "mtpl_srs",
                             "mtpl_prach", "pathloss0", "pathloss1", "pathloss2", "pathloss3"}) {
        append_le(sample, static_cast<std::uint32_t>(0xF1000000 + sample.size()));
        words.append(", ").append(name).append(" = ").append(
            std::to_string(load_le<std::uint32_t>(&*sample.end() - 4)));
    }
    EXPECT_EQ(sample_of(90, words + " }"), sample);
    EXPECT_EQ(sample_of(111, "112 = ''").size(), 9u);  // the built-in one stays
    EXPECT_EQ(sample_of(999, "999 = '01 02'"), (Bytes{1, 2}));
}

TEST(Stats, BuiltInPhoneHasEveryParameterOnBothSubscriptions)
{
    const StatsSamples samples = read_stats_samples(nullptr);
    std::size_t sizes = 0;
    for (const auto& [key, sample] : samples) sizes += sample.size();
    EXPECT_EQ(samples.size(), 2u * 19u);
    EXPECT_EQ(sizes, 2u * (7 * 75 + 3 * 24 + 5 + 52 + 20 + 8 + 8 + 9 + 9 + 20 + 16));
}

}  // namespace
}  // namespace rbk::sim

// The packet parser against a second one that works bit by bit, for every layout, with all the lines of its steps.
#include "modem_stats_unpk.h"

#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "support/embedded_run.h"
#include "support/program.h"

namespace rbk::test {
namespace {

struct FieldOfCell {
    const char* name;
    int width;      // bits
    int starts[4];  // by version
};
constexpr std::uint32_t kVersions[] = {4, 0x30000, 0x30001, 0x30002};
const FieldOfCell kFields[] = {
    {"mcc", 16, {176, 240, 250, 264}},           {"mnc_num", 8, {192, 256, 266, 280}},
    {"mnc", 16, {200, 264, 274, 288}},           {"tac", 32, {224, 288, 298, 312}},
    {"cgi", 64, {112, 176, 186, 200}},           {"pci", 16, {0, 0, 10, 24}},
    {"freq_band_ind", 16, {256, 320, 330, 344}}, {"dl_earfcn", 32, {16, 80, 90, 104}},
    {"dl_bw", 16, {80, 144, 154, 168}},          {"ul_earfcn", 32, {48, 112, 122, 136}},
    {"ul_bw", 16, {96, 160, 170, 184}},          {"allow_access", 8, {216, 280, 290, 304}},
};

using Packet = std::vector<std::uint8_t>;

// `count` bits from bit `from` of the packet on, one after the other.
std::uint64_t bits(const Packet& packet, int from, int count)
{
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) {
        const auto bit = static_cast<std::size_t>(from + i);
        value |= std::uint64_t{packet[bit / 8] >> (bit % 8) & 1U} << i;
    }
    return value;
}

std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string text(const char* format, ...)
{
    char line[400];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    return line;
}

std::string bytes_of(std::uint64_t value)
{
    std::string all = le(value, 8);
    while (all.size() >= 2 && all.substr(all.size() - 2) == "00") all.resize(all.size() - 2);
    return "0x" + all;
}

std::string steps(const Packet& packet, const FieldOfCell& field, int start)
{
    const int byte = start / 8;
    const int low = start % 8 + 1;
    const int high = low + field.width - 1;
    const int size = field.width / 8;
    const std::uint64_t first = bits(packet, 32 + 8 * byte, 64);
    const std::uint64_t second = bits(packet, 32 + 8 * byte + 64, 64);
    const std::uint64_t value = bits(packet, 32 + start, field.width);
    const std::uint64_t mask = ~std::uint64_t{0} >> (64 - field.width);
    std::string all = text(
        "UNPK_SET_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(%d), bit(%d), "
        "id(0x123)\n",
        byte, start);
    all += text("PRINT_CNT, base_bit: 32, base_byte: 4, data_cnt: %d, low: %d, high: %d, param: %d, name: %s\n", byte,
                low, high, start, field.name);
    for (int i = 1; i <= 2; ++i) {
        const std::uint64_t word = i == 1 ? first : second;
        all += text("    UNPK_I, name: %s_tmp%d, val: %" PRIu64
                    "(%s), val_size: 8, unpk_cnt: %d, data_base: 4, "
                    "base_bit: 32\n",
                    field.name, i, word, bytes_of(word).c_str(), byte + 8 * i);
    }
    // The value is as wide as the field, so nothing is above it that the last step would drop.
    all += text("UNPK_HIGH, old_val: %" PRIu64 ", new_val: %" PRIu64 ", bit_num: %d, name: %s, id(0x123)\n", first,
                value, low == 1 ? 64 : 129 - low, field.name);
    all += text("UNPK_LOW, old_val: %" PRIu64 ", new_val: %" PRIu64 ", bit_num: %d, mask_max(0x%" PRIx64
                "), old_size(%d), name: %s, id(0x123)\n",
                value, value, field.width, mask, size, field.name);
    all += text("UNPK_MID, old_val: %" PRIu64 ", new_val: %" PRIu64 ", low: %d, high: %d, name: %s, id(0x123)\n", first,
                value, low, high, field.name);
    return all + text("    UNPK_AT, name: %s, val: %" PRIu64 "(%s), low: %d, high: %d, bit_start: %d, bit_num: %d\n",
                      field.name, value, bytes_of(value).c_str(), low, high, start, field.width);
}

std::string expected(const Packet& packet, std::size_t layout)
{
    const std::uint64_t version = bits(packet, 0, 32);
    std::string all = text("    UNPK_I, name: version, val: %" PRIu64
                           "(%s), val_size: 4, unpk_cnt: 4, data_base: 0, "
                           "base_bit: 0\n",
                           version, bytes_of(version).c_str()) +
                      "BASE_WITH_BIT, g_unpk_data_base_bit(32), g_unpk_data_base(4), g_unpk_data_cnt(0), bit(32), "
                      "id(0x123)\n";
    std::vector<int> values;
    std::uint64_t cgi = 0;
    for (const FieldOfCell& field : kFields) {
        all += steps(packet, field, field.starts[layout]);
        const std::uint64_t value = bits(packet, 32 + field.starts[layout], field.width);
        values.push_back(static_cast<int>(value));
        if (field.width == 64) cgi = value;
    }
    all += text("version = %d, mcc = %d, mnc_num %d, mnc %d, tac %d, cgi %" PRIu64 ", pci %d\n",
                static_cast<int>(version), values[0], values[1], values[2], values[3], cgi, values[5]);
    return all + text("freq_band_ind = %d, dl_earfcn = %d, dl_bw %d, ul_earfcn %d, ul_bw %d, allow_access %d, scs 0\n",
                      values[6], values[7], values[8], values[9], values[10], values[11]);
}

TEST(StatsUnpk, EveryLayoutIsReadAtItsPlaces)
{
    for (std::size_t layout = 0; layout < 4; ++layout) {
        Packet packet = pattern(80);
        std::memcpy(packet.data(), &kVersions[layout], 4);
        g_unpk_print_flag = 1;
        const std::string all = output_of([&] { velmor_test_modem_stats_parsing_process_do(64, packet.data()); });
        EXPECT_EQ(all, expected(packet, layout)) << kVersions[layout];
        g_unpk_print_flag = 0;
        const std::string two = output_of([&] { velmor_test_modem_stats_parsing_process_do(64, packet.data()); });
        EXPECT_EQ(two, all.substr(all.find("version = "))) << kVersions[layout];
    }
}

class StatsUnpkShell : public HomeTest {};

TEST_F(StatsUnpkShell, BuiltInSampleHasZerosBehindIt)
{
    Packet packet = {0x01, 0x00, 0x03, 0x00, 0x01, 0x49, 0x27, 0x03, 0xc7, 0xb4, 0xfc, 0x60, 0x17, 0x01, 0x4f, 0x06,
                     0x6e, 0x8b, 0x06, 0x00, 0xe8, 0xeb, 0x05, 0x00, 0x14, 0x00, 0x14, 0x00, 0xc7, 0xb4, 0xfc, 0x60,
                     0x07, 0x00, 0x00, 0x00, 0xcc, 0x01, 0x02, 0x0b, 0x00, 0x02, 0x0a, 0x8a, 0x76, 0x00, 0x01, 0x00};
    packet.resize(64);
    set_property("persist.vendor.radio.adb_log_shell", "0");
    EXPECT_EQ(run_rbk({"7", "0", "1"}).out, expected(packet, 2));
}

TEST(StatsUnpk, OtherVersionsEndWithoutAWord)
{
    const Packet packet(80, 5);
    g_unpk_print_flag = 0;
    EXPECT_EQ(output_of([&] { velmor_test_modem_stats_parsing_process_do(64, packet.data()); }), "");
    EXPECT_EQ(output_of([] { velmor_test_modem_stats_parsing_process_do(64, nullptr); }),
              "UNPK_START, payload is NULL, id(0x123)\n");
}

TEST(StatsUnpk, BitsOutOfTwoWords)
{
    constexpr std::uint64_t first = 0xF1E2D3C4B5A69788;
    constexpr std::uint64_t second = 0x8796A5B4C3D2E1F0;
    struct {
        const char* catches;
        int size, low, high;
        const char* refusal;  // empty: a value
    } static const cases[] = {
        {"WholeFirstWord", 8, 1, 64, ""},
        {"TopBitsOfTheSecondWordLost", 8, 3, 66, ""},
        {"LastBitOfTheFirstWord", 8, 64, 127, ""},
        {"WholeSecondWord", 8, 65, 128, ""},
        {"OneBit", 1, 8, 8, ""},
        {"NarrowFieldNotCut", 2, 7, 15, ""},
        {"LowOf0Taken", 8, 0, 8, "UNPK_MID, low(0) should be in [1, 128] for f, id(0x0)\n"},
        {"NegativeLowTaken", 8, -5, 8, "UNPK_MID, low(-5) should be in [1, 128] for f, id(0x0)\n"},
        {"LowAboveBothWordsTaken", 8, 129, 129, "UNPK_MID, low(129) should be in [1, 128] for f, id(0x0)\n"},
        {"HighAboveOneWordTaken", 8, 1, 65, "UNPK_MID, high(65) should be in [1, 64] for f, id(0x0)\n"},
        {"HighAboveBothWordsTaken", 8, 2, 129, "UNPK_MID, high(129) should be in [1, 128] for f, id(0x0)\n"},
        {"EmptyFieldTaken", 8, 9, 8, "UNPK_MID, low(9) should <= high(8) for f, id(0x0)\n"},
        {"TooFewBitsLeft", 8, 66, 66, "UNPK_HIGH, bit_num(63) should be in [64, 128] for f, id(0x0)\n"},
        {"FieldWiderThanItsVariable", 2, 1, 17, "UNPK_LOW, bit_num(17) should be in [1, 16] for f, id(0x0)\n"},
    };
    Packet both(16);
    std::memcpy(both.data(), &first, 8);
    std::memcpy(both.data() + 8, &second, 8);
    for (const auto& c : cases) {
        std::uint64_t value = 0;
        bool taken = false;
        EXPECT_EQ(output_of([&] { taken = modem_stats_unpk_mid("f", &value, c.size, first, second, c.low, c.high); }),
                  c.refusal)
            << c.catches;
        EXPECT_EQ(taken, *c.refusal == '\0') << c.catches;
        if (taken) {
            EXPECT_EQ(value, bits(both, c.low - 1, c.high - c.low + 1)) << c.catches;
        }
    }
}

}  // namespace
}  // namespace rbk::test

// Group 7 where no session shows it: all layouts of the packet parser, which debug_info.txt has as a second parser that went
// bit by bit read them.
#include <algorithm>
#include <cstring>

#include "modem_stats_unpk.h"
#include "support/embedded_run.h"
#include "support/program.h"

namespace rbk::test {
namespace {

std::string parsed(const std::uint8_t* packet, std::int32_t print_flag)
{
    g_unpk_print_flag = print_flag;
    return output_of([&] { velmor_test_modem_stats_parsing_process_do(64, packet); });
}

TEST(StatsUnpk, EveryLayoutIsReadAtItsPlaces)
{
    std::vector<std::uint8_t> packet = pattern(80);
    std::string all;
    for (const std::uint32_t version : {4U, 0x30000U, 0x30001U, 0x30002U}) {
        std::memcpy(packet.data(), &version, 4);
        const std::string steps = parsed(packet.data(), 1);
        EXPECT_EQ(parsed(packet.data(), 0), steps.substr(steps.find("version = "))) << version;
        all += steps;
    }
    EXPECT_EQ(all, read_file(data_path("hal/debug_info.txt")));
    packet[0] = 5;
    EXPECT_EQ(parsed(packet.data(), 0), "") << "another version ends without a word";
    EXPECT_EQ(parsed(nullptr, 0), "UNPK_START, payload is NULL, id(0x123)\n");
}

TEST(StatsUnpk, BitsOutOfTwoWords)
{
    // clang-format off
    struct {
        const char* catches;
        std::int32_t size, low, high;
        const char* refusal;  // empty: a value
        std::uint64_t value;
    } static const rows[] = {
        {"LastBitOfTheFirstWord",      8,  64, 127, "", 0x0F2D4B6987A5C3E7},
        {"WholeSecondWord",            8,  65, 128, "", 0x8796A5B4C3D2E1F3},
        {"OneBit",                     1,   8,   8, "", 1},
        {"LowOf0Taken",                8,   0,   8, "UNPK_MID, low(0) should be in [1, 128] for f, id(0x0)\n", 0},
        {"LowAboveBothWordsTaken",     8, 129, 129, "UNPK_MID, low(129) should be in [1, 128] for f, id(0x0)\n", 0},
        {"HighAboveOneWordTaken",      8,   1,  65, "UNPK_MID, high(65) should be in [1, 64] for f, id(0x0)\n", 0},
        {"HighAboveBothWordsTaken",    8,   2, 129, "UNPK_MID, high(129) should be in [1, 128] for f, id(0x0)\n", 0},
        {"EmptyFieldTaken",            8,   9,   8, "UNPK_MID, low(9) should <= high(8) for f, id(0x0)\n", 0},
        {"TooFewBitsLeft",             8,  66,  66, "UNPK_HIGH, bit_num(63) should be in [64, 128] for f, id(0x0)\n", 0},
        {"FieldWiderThanItsVariable",  2,   1,  17, "UNPK_LOW, bit_num(17) should be in [1, 16] for f, id(0x0)\n", 0},
    };
    // clang-format on
    for (const auto& row : rows) {
        std::uint64_t value = 0;
        bool taken = false;
        const auto unpack = [&] {
            taken =
                modem_stats_unpk_mid("f", &value, row.size, 0xF1E2D3C4B5A69788, 0x8796A5B4C3D2E1F3, row.low, row.high);
        };
        EXPECT_EQ(output_of(unpack), row.refusal) << row.catches;
        EXPECT_EQ(taken, *row.refusal == '\0') << row.catches;
        EXPECT_EQ(taken ? value : 0, row.value) << row.catches;
    }
}

}  // namespace
}  // namespace rbk::test

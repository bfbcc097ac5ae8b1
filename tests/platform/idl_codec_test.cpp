// The codec with bytes and structures that don't fit its tables. Those that fit: hal/wire_test.cpp.
#include "platform/linux/idl_codec.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

namespace rbk::platform {
namespace {

// ---- A service with one of each form ----

struct point {
    uint8_t x, label_valid;  // no flag: a record's own byte
    uint16_t y;
    uint32_t colour;  // one byte on the wire
    char label[5];
    uint8_t reserved[3];
};
constexpr idl_field point_fields[] = {
    IDL_BYTE(IN_RECORD, point, x),       IDL_BYTE(IN_RECORD, point, label_valid), IDL_HALF(IN_RECORD, point, y),
    IDL_ENUM8(IN_RECORD, point, colour), IDL_TEXT(IN_RECORD, point, label),       IDL_RESERVED(point, reserved),
};
constexpr idl_record point_record = idl_record_of<point>(point_fields);

struct forms {
    qmi_response_type response;
    uint32_t numbers_len;
    uint16_t numbers[3];
    uint8_t fixed_valid, fixed[2], points_valid;
    uint32_t points_len;
    point points[2];
    uint8_t name_valid;
    char name[7];
    uint64_t serial;
    uint8_t wide_valid;
    uint32_t wide_len;
    uint8_t wide[256];
};
constexpr idl_field forms_fields[] = {IDL_RESULT(forms, response),
                                      IDL_COUNTED_ARRAY(0x01, forms, numbers),
                                      IDL_OPT_BYTES(0x10, forms, fixed),
                                      IDL_OPT_WIDE_COUNTED_TABLE(0x11, forms, points, point_record),
                                      IDL_OPT_TEXT(0x12, forms, name),
                                      IDL_LONG(0x03, forms, serial),
                                      IDL_OPT_COUNTED_ARRAY(0x13, forms, wide)};
constexpr uint32_t kLongest = 7 + (3 + 7) + (3 + 2) + (3 + 2 + 2 * 10) + (3 + 6) + 11 + (3 + 2 + 256);
constexpr idl_message messages[] = {idl_make<forms>(7, RESPONSE, forms_fields, kLongest, sizeof(forms)),
                                    idl_empty(8, REQUEST)};
IDL_PROVE(messages);

const Bytes kResult = {0x02, 4, 0, 1, 0, 52, 0};
const Bytes kNumbers = {0x01, 5, 0, 2, 0x11, 0x22, 0x33, 0x44};
const Bytes kSerial = {0x03, 8, 0, 1, 2, 3, 4, 5, 6, 7, 8};
const Bytes kFixed = {0x10, 2, 0, 0xA1, 0xA2};
const Bytes kPoints = {0x11, 17, 0, 2, 0, 9, 1, 0x34, 0x12, 5, 2, 'a', 'b', 8, 0, 0x78, 0x56, 6, 1, 'c'};
const Bytes kName = {0x12, 3, 0, 'N', 'e', 't'};
const Bytes kWide = {0x13, 5, 0, 3, 0, 0xC1, 0xC2, 0xC3};

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}
const Bytes kMandatory = kResult + kNumbers + kSerial;

forms filled_with(int byte)
{
    forms structure;
    std::memset(&structure, byte, sizeof structure);
    return structure;
}
bool operator==(const forms& left, const forms& right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

// Decodes over 0x5A, from the end of a page behind which nothing can be read.
bool read(const Bytes& wire, forms& structure)
{
    static const auto page_size = static_cast<std::size_t>(::getpagesize());
    static auto* const pages = static_cast<std::uint8_t*>(
        ::mmap(nullptr, 2 * page_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ::mprotect(pages + page_size, page_size, PROT_NONE);
    const auto bytes = std::span(pages + page_size - wire.size(), wire.size());
    std::copy(wire.begin(), wire.end(), bytes.begin());
    forms room[] = {filled_with(0x5A), filled_with(0x5A)};
    const bool taken = decode(messages[0], bytes, &room[0]);
    EXPECT_TRUE(room[1] == filled_with(0x5A)) << "stored behind the structure";
    structure = room[0];
    return taken;
}

TEST(IdlCodec, WritesWithinItsRoom)
{
    const Bytes wire = kResult + kNumbers + kFixed + kPoints + kName + kSerial + kWide;
    forms structure;
    ASSERT_TRUE(read(wire, structure));
    Bytes room(kLongest);
    EXPECT_EQ(encode(messages[0], &structure, room), wire.size());
    room.resize(wire.size());
    EXPECT_EQ(room, wire);
    for (std::size_t small = 0; small < room.size(); ++small)
        EXPECT_FALSE(encode(messages[0], &structure, std::span(room).first(small))) << "wrote past a room of " << small;

    structure.numbers_len = 4;
    room.resize(kLongest);
    EXPECT_FALSE(encode(messages[0], &structure, room)) << "a count above the room went out";
    structure = {};
    structure.name_valid = 1;
    std::memcpy(structure.name, "abcdefg", 7);
    EXPECT_EQ(encode(messages[0], &structure, room), 7u + 4 + 9 + 11) << "a text without an end was read past its room";
    EXPECT_EQ(encode(messages[1], nullptr, {}), 0u);
    EXPECT_TRUE(decode(messages[1], kFixed, nullptr));
}

TEST(IdlCodec, TakesWhatFitsAndRefusesTheRest)
{
    const struct {
        const char* catches;
        Bytes wire;
        bool taken;
    } rows[] = {{"OptionalAskedFor", kMandatory, true},
                {"OrderAskedFor", kWide + kName + kSerial + kNumbers + kResult, true},
                {"MandatoryNotMissed", kResult + kNumbers, false},
                {"UnknownTlvRefused", Bytes{0x77, 1, 0, 9} + kMandatory, true},
                {"BytesBehindAValueRefused", kMandatory + Bytes{0x10, 3, 0, 1, 2, 3}, true},
                {"FixedArrayCutShort", kMandatory + Bytes{0x10, 1, 0, 1}, false},
                {"CountTrusted", kMandatory + Bytes{0x13, 3, 0, 9, 0, 1}, false},
                {"CountCut", kMandatory + Bytes{0x13, 1, 0, 1}, false},
                {"RecordCutShort", kMandatory + Bytes{0x11, 5, 0, 1, 0, 9, 9, 9}, false},
                {"TextInRecordTrusted", kMandatory + Bytes{0x11, 9, 0, 1, 0, 9, 9, 9, 9, 5, 4, 'a'}, false},
                {"LengthPastTheEnd", kMandatory + Bytes{0x10, 9, 0, 1, 2}, false},
                {"LengthOnePastTheEnd", kMandatory + Bytes{0x10, 3, 0, 1, 2}, false},
                {"HeadCut", kMandatory + Bytes{0x10, 2}, false},
                {"EmptyMessageTaken", {}, false}};
    for (const auto& row : rows) {
        forms structure;
        EXPECT_EQ(read(row.wire, structure), row.taken) << row.catches;
        EXPECT_EQ(structure == filled_with(0x5A), !row.taken) << row.catches;
    }
}

TEST(IdlCodec, KeepsForeignCountsAndStoresWhatHasRoom)
{
    const Bytes five = {0x01, 11, 0, 5, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0};
    const Bytes long_name = {0x12, 9, 0, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'};
    const Bytes three_points = {0x11, 2 + 18, 0, 3, 0, 1, 1, 1, 1, 1, 0, 2, 2, 2, 2, 2, 0, 3, 3, 3, 3, 3, 0};
    const Bytes other_fixed = {0x10, 2, 0, 2, 2};
    forms stored;
    ASSERT_TRUE(read(kResult + five + kSerial + long_name + kFixed + other_fixed + three_points, stored));
    // clang-format off
    static constexpr forms kExpected = {{1, 52}, 5, {1, 2, 3}, 1, {0xA1, 0xA2}, 1, 3,
                                        {{1, 1, 0x0101, 1, "", {}}, {2, 2, 0x0202, 2, "", {}}},
                                        1, "abcdef", 0x0807060504030201, 0, 0, {}};
    // clang-format on
    EXPECT_TRUE(stored == kExpected) << "of two TLVs of one type the first counts, and a count stays as it was sent";
}

}  // namespace
}  // namespace rbk::platform

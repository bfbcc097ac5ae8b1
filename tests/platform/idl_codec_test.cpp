// The codec against messages written out by hand: every form of a row, and bytes that don't fit the tables.
#include "platform/linux/idl_codec.h"

#include <gtest/gtest.h>

#include <cstring>

namespace rbk::platform {
namespace {

// ---- A service with one of each form ----

struct point {
    uint8_t x;
    uint8_t label_valid;  // no flag: a record's own byte
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
    uint8_t fixed_valid;
    uint8_t fixed[2];
    uint8_t points_valid;
    uint32_t points_len;
    point points[2];
    uint8_t name_valid;
    char name[7];
    uint64_t serial;
    uint8_t wide_valid;
    uint32_t wide_len;
    uint8_t wide[256];
};
constexpr idl_field forms_fields[] = {
    IDL_RESULT(forms, response),
    IDL_COUNTED_ARRAY(0x01, forms, numbers),
    IDL_OPT_BYTES(0x10, forms, fixed),
    IDL_OPT_WIDE_COUNTED_TABLE(0x11, forms, points, point_record),
    IDL_OPT_TEXT(0x12, forms, name),
    IDL_LONG(0x03, forms, serial),
    IDL_OPT_COUNTED_ARRAY(0x13, forms, wide),
};
constexpr uint32_t kLongest =
    7 + (3 + 1 + 6) + (3 + 2) + (3 + 2 + 2 * (1 + 1 + 2 + 1 + 1 + 4)) + (3 + 6) + 11 + (3 + 2 + 256);
constexpr idl_message forms_messages[] = {idl_make<forms>(7, RESPONSE, forms_fields, kLongest, sizeof(forms)),
                                          idl_empty(8, REQUEST)};
IDL_PROVE(forms_messages);
constexpr const idl_message& kForms = forms_messages[0];

// clang-format off
const Bytes kMandatory = {0x02, 4, 0, 1, 0, 52, 0,                                // result 1, error 52
                          0x01, 5, 0, 2, 0x11, 0x22, 0x33, 0x44,                  // two numbers
                          0x03, 8, 0, 1, 2, 3, 4, 5, 6, 7, 8};                    // serial
const Bytes kOptional = {0x10, 2, 0, 0xA1, 0xA2,                                  //
                         0x11, 17, 0, 2, 0, 9, 1, 0x34, 0x12, 5, 2, 'a', 'b',     // two points, counted in two bytes
                         8, 0, 0x78, 0x56, 6, 1, 'c',                             //
                         0x12, 3, 0, 'N', 'e', 't',                               // a text that its TLV counts
                         0x13, 5, 0, 3, 0, 0xC1, 0xC2, 0xC3};
// clang-format on

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

TEST(IdlCodec, ReadsAndWritesEachForm)
{
    const Bytes wire = kMandatory + kOptional;
    forms read;
    std::memset(&read, 0xEE, sizeof read);
    ASSERT_TRUE(decode(kForms, wire, &read));
    EXPECT_EQ(read.response.result, 1u);
    EXPECT_EQ(read.response.error, 52u);
    EXPECT_EQ(read.numbers_len, 2u);
    EXPECT_EQ(read.numbers[1], 0x4433);
    EXPECT_EQ(read.numbers[2], 0) << "room behind the count isn't cleared";
    EXPECT_EQ(read.fixed_valid, 1);
    EXPECT_EQ(read.fixed[1], 0xA2);
    EXPECT_EQ(read.points_len, 2u);
    EXPECT_EQ(read.points[0].y, 0x1234);
    EXPECT_EQ(read.points[0].colour, 5u) << "an enumeration's upper bytes aren't cleared";
    EXPECT_STREQ(read.points[0].label, "ab");
    EXPECT_EQ(read.points[1].y, 0x5678);
    EXPECT_STREQ(read.points[1].label, "c");
    EXPECT_STREQ(read.name, "Net");
    EXPECT_EQ(read.serial, 0x0807060504030201u);
    EXPECT_EQ(read.wide_len, 3u);
    EXPECT_EQ(read.wide[2], 0xC3);
    forms late;
    std::memset(&late, 0x11, sizeof late);
    ASSERT_TRUE(decode(kForms, kOptional + kMandatory, &late));
    EXPECT_EQ(std::memcmp(&read, &late, sizeof read), 0) << "what nothing fills isn't zero, or what is filled is";

    Bytes room(kLongest);
    const auto length = encode(kForms, &read, room);
    ASSERT_TRUE(length);
    forms again;
    ASSERT_TRUE(decode(kForms, ByteView(room).first(*length), &again));
    EXPECT_EQ(std::memcmp(&read, &again, sizeof read), 0);
    EXPECT_EQ(*length, wire.size());

    for (std::size_t small = 0; small < *length; ++small)
        EXPECT_FALSE(encode(kForms, &read, std::span(room).first(small))) << "wrote past a room of " << small;
    read.numbers_len = 4;
    EXPECT_FALSE(encode(kForms, &read, room)) << "a count above the room went out";
}

struct DecodeCase {
    const char* catches;
    Bytes wire;
    bool taken;
};

TEST(IdlCodec, TakesWhatFitsAndRefusesTheRest)
{
    const Bytes without_serial(kMandatory.begin(), kMandatory.end() - 11);
    const DecodeCase cases[] = {
        {"OptionalAskedFor", kMandatory, true},
        {"MandatoryNotMissed", without_serial, false},
        {"UnknownTlvRefused", Bytes{0x77, 1, 0, 9} + kMandatory, true},
        {"BytesBehindAValueRefused", kMandatory + Bytes{0x10, 3, 0, 1, 2, 3}, true},
        {"FixedArrayCutShort", kMandatory + Bytes{0x10, 1, 0, 1}, false},
        {"CountTrusted", kMandatory + Bytes{0x13, 3, 0, 9, 0, 1}, false},
        {"CountCut", kMandatory + Bytes{0x13, 1, 0, 1}, false},
        {"RecordCutShort", kMandatory + Bytes{0x11, 5, 0, 1, 0, 9, 9, 9}, false},
        {"TextInRecordTrusted", kMandatory + Bytes{0x11, 9, 0, 1, 0, 9, 9, 9, 9, 5, 4, 'a'}, false},
        {"LengthPastTheEnd", kMandatory + Bytes{0x10, 9, 0, 1, 2}, false},
        {"HeadCut", kMandatory + Bytes{0x10, 2}, false},
        {"EmptyMessageTaken", {}, false},
    };
    for (const DecodeCase& each : cases) {
        SCOPED_TRACE(each.catches);
        forms structure;
        std::memset(&structure, 0x5A, sizeof structure);
        const forms before = structure;
        EXPECT_EQ(decode(kForms, each.wire, &structure), each.taken);
        if (!each.taken) {
            EXPECT_EQ(std::memcmp(&structure, &before, sizeof before), 0) << "a refused message was stored";
        }
    }
}

TEST(IdlCodec, KeepsForeignCountsAndStoresWhatHasRoom)
{
    const Bytes three_points = {0x11, 2 + 18, 0, 3, 0, 1, 1, 1, 1, 1, 0, 2, 2, 2, 2, 2, 0, 3, 3, 3, 3, 3, 0};
    const Bytes long_name = {0x12, 9, 0, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'};
    const Bytes first_wins = {0x10, 2, 0, 1, 1, 0x10, 2, 0, 2, 2};
    Bytes wire = kMandatory + long_name + first_wins + three_points;
    wire[7] = 0x01;  // the numbers: five of them where three have room
    const Bytes five = {0x01, 11, 0, 5, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0};
    wire = Bytes(wire.begin(), wire.begin() + 7) + five + Bytes(wire.begin() + 15, wire.end());

    struct {
        forms structure;
        uint8_t guard[64];
    } room;
    std::memset(&room, 0x5A, sizeof room);
    ASSERT_TRUE(decode(kForms, wire, &room.structure));
    EXPECT_EQ(room.structure.numbers_len, 5u) << "the count isn't as it was sent";
    EXPECT_EQ(room.structure.numbers[2], 3);
    EXPECT_EQ(room.structure.fixed[0], 1) << "of two TLVs of one type the second counted";
    EXPECT_EQ(room.structure.points_len, 3u);
    EXPECT_EQ(room.structure.points[1].x, 2);
    EXPECT_EQ(room.structure.name_valid, 1) << "an element without room was stored over its neighbour";
    EXPECT_STREQ(room.structure.name, "abcdef");
    EXPECT_EQ(room.structure.serial, 0x0807060504030201u);
    for (const uint8_t byte : room.guard) EXPECT_EQ(byte, 0x5A);
}

TEST(IdlCodec, AnEmptyMessageHasNoBytes)
{
    EXPECT_EQ(encode(forms_messages[1], nullptr, {}), std::size_t{0});
    EXPECT_TRUE(decode(forms_messages[1], Bytes{0x10, 1, 0, 7}, nullptr));
}

}  // namespace
}  // namespace rbk::platform

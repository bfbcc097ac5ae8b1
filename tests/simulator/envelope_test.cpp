// What the extended service answers to its messages, and to bytes that are none.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <numeric>
#include <random>

#include "wire_client.h"

namespace rbk::sim {
namespace {

Bytes counting(std::size_t size)
{
    Bytes bytes(size);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{1});
    return bytes;
}

TEST(Envelope, GivesTheBytesBackForRequestIds0And3And5AndMessage3)
{
    RunningModem modem;
    WireClient client = modem.connect();
    struct {
        std::uint32_t qmi_id;
        std::uint16_t message;
        std::size_t size;
    } const rows[] = {{0, 2, 1}, {3, 2, 200}, {5, 2, 550}, {2, 3, 550}, {5, 2, 0}};
    for (const auto& row : rows) {
        const Bytes sent = counting(row.size);
        const auto envelope = client.envelope(row.qmi_id, sent, row.message);
        EXPECT_EQ(envelope.first_word, 0u) << row.qmi_id;
        EXPECT_EQ(envelope.data_len, row.size) << row.qmi_id;
        Bytes whole = sent;
        whole.resize(550);
        EXPECT_EQ(envelope.data, whole) << row.qmi_id;
    }
}

TEST(Extended, ErrorsStandInTheFirstWord)
{
    RunningModem modem;
    WireClient client = modem.connect();
    Bytes words{0x01, 4, 0, 7, 0, 0, 0, 0x02, 4, 0, 9, 0, 0, 0};
    Bytes with_byte = words;
    with_byte.insert(with_byte.end(), {0x03, 1, 0, 1});
    Bytes table = words;
    table.insert(table.end(), {0x03, 0x00, 0x06});
    table.resize(table.size() + 1536);
    Bytes too_long = words;
    too_long.insert(too_long.end(), {0x10, 0x27, 0x02});
    too_long.resize(too_long.size() + 551);
    struct {
        const char* catches;
        std::uint16_t message;
        Bytes tlvs;
        std::uint32_t first_word;
        std::size_t size;
    } const rows[] = {
        {"UnknownMessage", 99, {}, 71, 14},
        {"IndicationAsRequest", 5, words, 71, 14},
        {"NoTlvs", 2, {}, 19, 567},
        {"NoLength", 2, {0x01, 4, 0, 0, 0, 0, 0}, 19, 567},
        {"WordOfTwoBytes", 2, {0x01, 2, 0, 0, 0, 0x02, 4, 0, 0, 0, 0, 0}, 1, 567},
        {"TlvPastTheEnd", 2, {0x01, 5, 0, 0, 0, 0, 0}, 1, 567},
        {"HeadPastTheEnd", 2, {0x01, 4}, 1, 567},
        {"DataOf551Bytes", 2, too_long, 1, 567},
        {"LengthOf551", 2, envelope_tlvs(0, 551, {}), 48, 567},
        {"RequestId6", 2, envelope_tlvs(6, 4, {}), 48, 567},
        {"RequestIdOfTopBit", 2, envelope_tlvs(0x80000001, 4, {}), 48, 567},
        {"Message4", 4, envelope_tlvs(7, 4, {}), 0, 14},
        {"Message10", 10, table, 0, 14},
        {"Message10WithoutTable", 10, words, 19, 14},
        {"Message10ShortTable", 10, with_byte, 1, 14},
        {"Message12", 12, with_byte, 0, 14},
        {"Message12WithoutByte", 12, words, 19, 14},
    };
    for (const auto& row : rows) {
        const auto answer = client.ask(row.message, row.tlvs);
        ASSERT_TRUE(answer) << row.catches;
        EXPECT_EQ(peek_le<std::uint32_t>(answer->tlvs, 3), row.first_word) << row.catches;
        EXPECT_EQ(answer->tlvs.size(), row.size) << row.catches;
    }
    EXPECT_EQ(peek_le<std::uint32_t>(client.ask(12, with_byte)->tlvs, 10), 7u)
        << "the second word gives the first back";
}

TEST(Common, WhatIsAskedForIsStoredBeforeItsAnswer)
{
    RunningModem modem("[modem]\nrestart_ms = 0\n");
    struct {
        std::uint32_t type;
        Bytes value;
        const char* file;
        const char* says;
    } const rows[] = {
        {35, {}, "marks/nv_sync", "at 2"},
        {31, {0x00, 0x10, 0, 0}, "marks/restart", "type 4096 at 2"},
        {99, {0x00, 0x20, 0, 0}, "dump/full_dump.txt", "full dump\ntype 8192 at 2"},
    };
    for (const auto& row : rows) {
        WireClient client = modem.connect();
        const auto answer = client.envelope(4, common_record(2, row.type, row.value).bytes);
        EXPECT_EQ(answer.data_len, 508u);
        EXPECT_EQ(answer.at<std::int32_t>(4), 0) << row.type;
        EXPECT_EQ(answer.at<std::uint32_t>(8), row.type);
        EXPECT_EQ(answer.at<std::uint32_t>(12), 0u);
        const Bytes stored = read_file(modem.state() / row.file);
        EXPECT_EQ(std::string(stored.begin(), stored.end()).rfind(row.says, 0), 0u) << row.file;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the restart, for the next row's lookup
    }
}

TEST(Common, UnknownCommandsAndWrongLengthsAreRefused)
{
    RunningModem modem;
    WireClient client = modem.connect();
    struct {
        const char* catches;
        Record record;
        std::int32_t result;
    } const rows[] = {
        {"UnknownType", common_record(2, 12345), -95},
        {"UnknownCommand", common_record(77), -95},
        {"TypeAsCommand", common_record(31), -95},
        {"LengthBeyondTheRecord", common_record(2, 35).put<std::uint32_t>(12, 497), -22},
        {"LengthOfTopBit", common_record(2, 31).put<std::uint32_t>(12, 0xFFFFFFFF), -22},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(client.envelope(4, row.record.bytes).at<std::int32_t>(4), row.result) << row.catches;
    }
    EXPECT_EQ(client.lookup(0xFFE4).front().address, client.extended()) << "a refused command restarts the modem";
}

TEST(Hostile, RubbishIsDroppedAndTheModemLivesOn)
{
    RunningModem modem;
    WireClient client = modem.connect();
    const link::Address service = client.extended();
    std::mt19937 random(20240607);
    const auto number = [&](std::uint32_t below) { return static_cast<std::uint32_t>(random() % below); };
    for (int i = 0; i < 2000; ++i) {
        Bytes bytes(number(i % 50 == 0 ? 5000 : 40));
        for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(number(i % 2 == 0 ? 256 : 4));
        // Every other one with a sound head, so that its TLVs are looked at.
        if (bytes.size() >= 7 && i % 2 == 1) {
            store_le(&bytes[0], std::uint8_t{0});
            store_le(&bytes[3], static_cast<std::uint16_t>(2 + number(11)));
            store_le(&bytes[5], static_cast<std::uint16_t>(bytes.size() - 7));
        }
        link::Address to = service;
        if (i % 5 == 0) to = {number(3), QRTR_PORT_CTRL};
        if (i % 7 == 0) to = {number(3), number(70000)};
        client.send_raw(to, bytes);
        while (client.receive(std::chrono::milliseconds(0))) {
        }
    }
    const Bytes short_one{1, 2, 3};
    EXPECT_EQ(::send(client.socket().fd(), short_one.data(), short_one.size(), MSG_NOSIGNAL), 3);
    const Bytes long_one(link::kLongestDatagram + 1);
    EXPECT_GT(::send(client.socket().fd(), long_one.data(), long_one.size(), MSG_NOSIGNAL), 0);
    WireClient other = modem.connect();
    EXPECT_EQ(other.envelope(0, counting(9)).data_len, 9u);
    EXPECT_FALSE(client.closed());
}

}  // namespace
}  // namespace rbk::sim

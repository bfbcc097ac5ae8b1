// What the extended service answers to the messages that carry an envelope, and to those that don't.
#include <gtest/gtest.h>

#include <numeric>

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

}  // namespace
}  // namespace rbk::sim

// docs/wire.md against the code: its blocks are what the client sends and what it reads.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <sstream>

#include "platform/link/link_socket.h"
#include "platform/linux/idl_codec.h"
#include "support/program.h"
#include "velmor_extend_v01.h"

namespace rbk {
namespace {

// The bytes of the block that opens with ```name.
Bytes block(const std::string& name)
{
    std::ifstream page(test::data_path("../docs/wire.md"));
    Bytes bytes;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line == "```" + name)
            inside = true;
        else if (line == "```")
            inside = false;
        else if (inside) {
            std::istringstream words(line.substr(0, line.find('|')));
            for (std::string word; words >> word;) {
                if (word != "x") {
                    bytes.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
                    continue;
                }
                std::size_t count = 0;
                words >> count;
                bytes.insert(bytes.end(), count - 1, bytes.back());
            }
        }
    }
    return bytes;
}

Bytes tlvs_of(const std::string& name, link::QmiHead expected)
{
    const Bytes datagram = block(name);
    const auto message = link::parse_qmi(datagram);
    if (!message) {
        ADD_FAILURE() << name << " is no QMI message of " << datagram.size() << " bytes";
        return {};
    }
    EXPECT_EQ(message->head.kind, expected.kind);
    EXPECT_EQ(message->head.transaction, expected.transaction);
    EXPECT_EQ(message->head.message, expected.message);
    return {message->tlvs.begin(), message->tlvs.end()};
}

const idl_message& row(qmi_idl_type_of_message kind, std::uint32_t msg_id)
{
    return *platform::find_message(*velmor_extend_get_service_object_internal_v01(1, 1, 6), kind, msg_id);
}

TEST(WirePage, LookupBlocksAreControlPackets)
{
    const auto expect = [](const char* name, const link::ControlPacket& packet) {
        const auto packed = link::pack_control(packet);
        EXPECT_EQ(block(name), Bytes(packed.begin(), packed.end())) << name;
    };
    expect("lookup", {QRTR_TYPE_NEW_LOOKUP, 0xFFE4, 0, {}});
    expect("new-server", {QRTR_TYPE_NEW_SERVER, 0xFFE4, 1, {0, 5}});
    expect("end-of-list", {QRTR_TYPE_NEW_SERVER, 0, 0, {}});
    EXPECT_EQ(block("address").size(), link::kAddressSize);
}

TEST(WirePage, RequestIsWhatTheClientSends)
{
    extend_envelope envelope{2, 544, 1, {}};
    envelope.data[0] = 1;
    envelope.data[2] = 0x26;
    envelope.data[3] = 0x02;
    Bytes room(567);
    ASSERT_EQ(platform::encode(row(REQUEST, 2), &envelope, room), room.size());
    EXPECT_EQ(tlvs_of("request", {link::QmiKind::request, 1, 2, 0}), room);
}

TEST(WirePage, AnswerAndIndicationReadAsThePageSays)
{
    extend_envelope envelope;
    ASSERT_TRUE(platform::decode(row(RESPONSE, 2), tlvs_of("response", {link::QmiKind::response, 1, 2, 0}), &envelope));
    EXPECT_EQ(envelope.qmi_id, 0u);
    EXPECT_EQ(envelope.data_len, 444u);
    EXPECT_EQ(peek_le<std::uint32_t>(envelope.data, 4), 9u);
    EXPECT_EQ(envelope.data[28], 0x67);

    ASSERT_TRUE(
        platform::decode(row(INDICATION, 3), tlvs_of("indication", {link::QmiKind::indication, 0, 3, 0}), &envelope));
    EXPECT_EQ(envelope.qmi_id, 4u);
    EXPECT_EQ(envelope.data_len, 3u);
    EXPECT_EQ(envelope.data[2], 0xC3);
}

}  // namespace
}  // namespace rbk

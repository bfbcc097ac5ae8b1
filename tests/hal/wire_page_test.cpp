// docs/wire.md against the code: its blocks are what a run of the command that it names sends and receives.
#include <fstream>
#include <sstream>

#include "hal/exchanges.h"
#include "platform/link/link_socket.h"
#include "support/program.h"
#include "velmor_extend_nvefs.h"

namespace rbk::test {
namespace {

// The bytes of the block that opens with ```name, in hex.
std::string block(const std::string& name)
{
    std::ifstream page(data_path("../docs/wire.md"));
    std::string line, bytes;
    while (std::getline(page, line) && line != "```" + name) {
    }
    while (std::getline(page, line) && line != "```") {
        std::istringstream words(line.substr(0, line.find('|')));
        for (std::string word; words >> word;) {
            std::size_t count = 1;
            if (word == "x" && words >> count) word = bytes.substr(bytes.size() - 2), --count;
            bytes += times(count, word);
        }
    }
    return bytes;
}

std::string packet(const link::ControlPacket& control)
{
    const auto packed = link::pack_control(control);
    return hex({packed.begin(), packed.end()});
}

TEST(WirePage, LookupBlocksAreControlPackets)
{
    EXPECT_EQ(block("lookup"), packet({QRTR_TYPE_NEW_LOOKUP, 0xFFE4, 0, {}}));
    EXPECT_EQ(block("new-server"), packet({QRTR_TYPE_NEW_SERVER, 0xFFE4, 1, {0, 5}}));
    EXPECT_EQ(block("end-of-list"), packet({QRTR_TYPE_NEW_SERVER, 0, 0, {}}));
    EXPECT_EQ(block("address").size(), 2 * link::kAddressSize);
}

class WireRun : public EmbeddedRun {};

TEST_F(WireRun, MessagesAreThoseOfTheCommand)
{
    const std::string said = block("indication").substr(2 * 7);
    scenario("[[indication]]\nservice = 'extended'\nmessage = 3\nafter_ms = 1\nbytes = '" + said + "'\n");
    std::uint32_t len = 9;
    EXPECT_EQ(velmor_nv_read(0, 550, room, &len), 0);
    ASSERT_TRUE(wait_until([this] { return trace().size() == 3; }));
    const std::vector<Traced> messages = trace();
    // Flags, transaction, message, length; TLVs.
    const auto datagram = [&](const std::string& head, std::size_t i) {
        return head + le(messages[i].bytes.size() / 2, 2) + messages[i].bytes;
    };
    EXPECT_EQ(block("request"), datagram("0001000200", 0)) << messages[0].head;
    EXPECT_EQ(block("response"), datagram("0201000200", 1)) << messages[1].head;
    EXPECT_EQ(block("indication"), datagram("0400000300", 2)) << messages[2].head;
}

}  // namespace
}  // namespace rbk::test

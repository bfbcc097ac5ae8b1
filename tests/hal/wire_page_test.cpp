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

class WireRun : public ExchangeTest {};

TEST_F(WireRun, MessagesAreThoseOfTheCommand)
{
    const std::string said = block("indication").substr(2 * 7);
    scenario("[[indication]]\nservice = 'extended'\nmessage = 3\nafter_ms = 1\nbytes = '" + said + "'\n");
    std::uint32_t len = 9;
    EXPECT_EQ(velmor_nv_read(0, 550, room, &len), 0);
    ASSERT_TRUE(wait_until([this] { return trace().size() == 3; }));
    static const struct {
        const char* name;
        const char* kind;
        const char* flags;
        int transaction;
    } rows[] = {{"request", "req", "00", 1}, {"response", "rsp", "02", 1}, {"indication", "ind", "04", 0}};
    for (std::size_t i = 0; i < 3; ++i) {
        const Traced message = trace()[i];
        const std::string size = le(message.bytes.size() / 2, 2);
        EXPECT_EQ(block(rows[i].name),
                  rows[i].flags + le(rows[i].transaction, 2) + (i < 2 ? "0200" : "0300") + size + message.bytes);
        EXPECT_NE(message.head.find(rows[i].kind), std::string::npos) << message.head;
    }
}

}  // namespace
}  // namespace rbk::test

// The modem on the kernel's router, which the case plays: a connection is one service's socket.
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>

#include "simulator/base/ledger.h"
#include "simulator/carriers/carriers.h"
#include "simulator/scenario/scenario_reader.h"
#include "support/wait_until.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using link::Address;
using link::ControlPacket;

constexpr std::uint32_t kNode = 7;  // the machine's own, as wrapped_qrtr.cpp has it
constexpr Address kRouter{kNode, QRTR_PORT_CTRL};
constexpr Address kClient{kNode, 0x5001};
constexpr Address kNobody{kNode, 0x7001};
constexpr Address kFull{kNode, 0x7002};

// A service's socket, from the other end.
class ServiceSocket {
 public:
    explicit ServiceSocket(int fd) : socket_(fd, link::LinkSocket::Carrier::seqpacket) {}

    void say(Address from, ByteView bytes) { socket_.send(from, bytes, {}, true); }
    void tell(const ControlPacket& packet) { say(kRouter, link::pack_control(packet)); }
    // A request without TLVs.
    void ask(Address from, std::uint8_t message) { say(from, bytes_of("00 h1 h" + std::to_string(message) + " h0")); }
    // What comes next: "5001: 0201..." for a client, "+ 17 1" and "- 17 1" for the router, "closed".
    std::string next()
    {
        pollfd ready{socket_.fd(), POLLIN, 0};
        if (::poll(&ready, 1, 20'000) <= 0) return "nothing";
        bool closed = false;
        const auto datagram = socket_.receive(room_, closed);
        if (closed || !datagram) return "closed";
        EXPECT_EQ(datagram->peer.node, kNode);
        const auto packet = link::parse_control(datagram->bytes);
        if (datagram->peer.port == QRTR_PORT_CTRL && packet) {
            EXPECT_EQ(packet->address.node, kNode);
            port = packet->address.port;
            return (packet->type == QRTR_TYPE_NEW_SERVER ? "+ " : "- ") + std::to_string(packet->service) + " " +
                   std::to_string(packet->instance);
        }
        char to[16];
        std::snprintf(to, sizeof to, "%X: ", datagram->peer.port);
        return to + show_bytes(datagram->bytes);
    }

    std::uint32_t port = 0;  // that the router was told

 private:
    link::LinkSocket socket_;
    Bytes room_ = Bytes(link::kLongestDatagram);
};

class QrtrTest : public test::HomeTest {
 protected:
    QrtrTest()
    {
        const std::string path = (home() / "router").string();
        setenv("RBK_TEST_QRTR", path.c_str(), 1);
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener_.get(), 8), 0);
        std::string error;
        carrier_ = open_carrier("qrtr", error);
        EXPECT_EQ(error, "");
        ::close(::accept(listener_.get(), nullptr, nullptr));  // by which it saw that there is such a router
    }
    ~QrtrTest() override
    {
        modem_->stop();
        thread_.join();
    }

    void start(const std::string& scenario)
    {
        write_file(home() / "scenario.toml", scenario);
        std::string error;
        ledger_ = Ledger::open((home() / "ledger").string(), error);
        modem_.emplace(read_scenario(home() / "scenario.toml"), home() / "modem", complaints_);
        modem_->keep_ledger(*ledger_);
        carrier_->serve(*modem_);
        thread_ = std::thread([this] { modem_->run(); });
    }
    ServiceSocket accept() { return ServiceSocket(::accept(listener_.get(), nullptr, nullptr)); }
    // Waits until so many clients have gone.
    void expect_gone(std::ptrdiff_t clients)
    {
        const auto lines = [this] { return std::ranges::count(read_file(home() / "ledger"), '\n'); };
        EXPECT_TRUE(test::wait_until([&] { return lines() >= clients; }));
        EXPECT_EQ(lines(), clients);
    }

 private:
    Fd listener_{::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
    std::unique_ptr<Ledger> ledger_;
    std::unique_ptr<Carrier> carrier_;
    Complaints complaints_{[](const std::string& line) { ADD_FAILURE() << line; }};
    std::optional<Modem> modem_;
    std::thread thread_;
};

TEST_F(QrtrTest, EachServiceHasASocketThatTheRouterKnows)
{
    start(
        "[modem]\nservices = ['sar', 'nas']\nrestart_ms = 0\n[modem.servers]\nnas = { version = 3, instance = 2 }\n"
        "[[fault]]\nservice = 'nas'\naction = 'down'\n");
    ServiceSocket nas = accept();
    ServiceSocket sar = accept();
    EXPECT_EQ(nas.next(), "+ 3 515");
    EXPECT_EQ(sar.next(), "+ 17 1");
    EXPECT_NE(nas.port, sar.port);

    sar.ask(kClient, 2);
    EXPECT_EQ(sar.next().substr(0, 6), "5001: ");
    nas.ask(kClient, 0x21);  // goes away instead of answering
    EXPECT_EQ(nas.next(), "- 3 515");
    EXPECT_EQ(nas.next(), "closed");
    expect_gone(1);  // of nas alone
    ServiceSocket again = accept();
    EXPECT_EQ(again.next(), "+ 3 515");
    sar.ask(kClient, 2);
    EXPECT_EQ(sar.next().substr(0, 6), "5001: ");
}

TEST_F(QrtrTest, RouterSaysWhichClientsHaveGone)
{
    start("[modem]\nservices = ['sar']\n");
    ServiceSocket sar = accept();
    EXPECT_EQ(sar.next(), "+ 17 1");
    const Address far{3, 0x5002};
    for (const Address& from : {kClient, far, Address{3, 0x5003}, Address{kNode, 0x5004}}) sar.ask(from, 7);
    sar.tell({QRTR_TYPE_DEL_CLIENT, 0, 0, {kNode, 0x6000}});                              // never heard of
    sar.say(kClient, link::pack_control({QRTR_TYPE_DEL_CLIENT, 0, 0, {kNode, 0x5004}}));  // not the router's word
    sar.say({3, QRTR_PORT_CTRL}, link::pack_control({QRTR_TYPE_DEL_CLIENT, 0, 0, {kNode, 0x5004}}));  // nor ours
    sar.tell({QRTR_TYPE_DEL_CLIENT, 0, 0, kClient});
    expect_gone(1);
    sar.tell({QRTR_TYPE_BYE, 0, 0, {3, 0}});
    expect_gone(3);
    sar.ask(kClient, 7);  // its port's next owner
    sar.tell({QRTR_TYPE_DEL_CLIENT, 0, 0, kClient});
    expect_gone(4);
}

TEST_F(QrtrTest, FullQueuesLostWordsAndResetsAreLivedThrough)
{
    start("[modem]\nservices = ['sar']\n");
    ServiceSocket sar = accept();
    EXPECT_EQ(sar.next(), "+ 17 1");
    sar.ask(kFull, 2);
    EXPECT_EQ(sar.next().substr(0, 6), "7002: ");
    sar.ask(kNobody, 2);
    expect_gone(1);
    sar = ServiceSocket(-1);  // as a router that begins anew does to all sockets
    ServiceSocket again = accept();
    EXPECT_EQ(again.next(), "+ 17 1");
    again.ask(kClient, 2);
    EXPECT_EQ(again.next().substr(0, 6), "5001: ");
}

}  // namespace
}  // namespace rbk::sim

// The far end of the link in the hands of the case, which says what the simulated modem never would. The case reads what
// the library sends, and answers; the library's calls run on other threads meanwhile.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <initializer_list>
#include <string>

#include "platform/link/link_socket.h"

namespace rbk::test {

class FakePeer {
 public:
    using LinkSocket = link::LinkSocket;

    // Listens; the library connects when it first needs the modem.
    explicit FakePeer(const std::string& path)
        : listener_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0), LinkSocket::Carrier::seqpacket)
    {
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener_.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener_.fd(), 1), 0);
    }

    bool hears(std::chrono::milliseconds within) const
    {
        pollfd ready{(socket_.is_open() ? socket_ : listener_).fd(), POLLIN, 0};
        return ::poll(&ready, 1, static_cast<int>(within.count())) == 1;
    }
    // What the library has sent, without the addressee; empty, and a failure, when nothing comes.
    Bytes hear()
    {
        bool closed = false;
        EXPECT_TRUE(hears(kPatience));
        if (!socket_.is_open()) {
            socket_ = LinkSocket(::accept(listener_.fd(), nullptr, nullptr), LinkSocket::Carrier::seqpacket);
            EXPECT_TRUE(hears(kPatience));
        }
        const auto datagram = socket_.receive(room_, closed);
        EXPECT_TRUE(datagram);
        return datagram ? Bytes(datagram->bytes.begin(), datagram->bytes.end()) : Bytes();
    }

    void say(link::Address from, ByteView bytes) { socket_.send(from, bytes, {}, true); }
    // Without an address in front.
    void say_raw(ByteView bytes) { EXPECT_EQ(::send(socket_.fd(), bytes.data(), bytes.size(), 0), ssize(bytes)); }
    // As the router.
    void tell(const link::ControlPacket& packet) { say({0, QRTR_PORT_CTRL}, link::pack_control(packet)); }
    void tell_servers(std::initializer_list<link::ControlPacket> servers)
    {
        for (const link::ControlPacket& each : servers) tell(each);
        tell({QRTR_TYPE_NEW_SERVER, 0, 0, {}});
    }

 private:
    static constexpr std::chrono::seconds kPatience{20};

    LinkSocket listener_;
    LinkSocket socket_;
    Bytes room_ = Bytes(link::kLongestDatagram);
};

}  // namespace rbk::test

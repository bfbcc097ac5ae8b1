// The far end of the link in the hands of the case, which says what the simulated modem never would. The case reads what
// the library sends, and answers; the library's calls run on other threads meanwhile.
#pragma once

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <future>
#include <initializer_list>
#include <string>

#include "link/link_socket.h"
#include "support/home.h"
#include "support/test_clock.h"

namespace rbk::test {

class FakePeer {
 public:
    // Listens; the library connects when it first needs the modem.
    explicit FakePeer(const std::string& path)
        : listener_(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0), link::LinkSocket::Carrier::seqpacket)
    {
        sockaddr_un address{AF_UNIX, {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(listener_.fd(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener_.fd(), 1), 0);
    }

    bool hears(int within_ms) const
    {
        pollfd ready{(socket_.is_open() ? socket_ : listener_).fd(), POLLIN, 0};
        return ::poll(&ready, 1, within_ms) == 1;
    }
    // What the library has sent, without the addressee; empty, and a failure, when nothing comes.
    Bytes hear()
    {
        EXPECT_TRUE(hears(20'000));
        if (!socket_.is_open()) {
            socket_ = link::LinkSocket(::accept(listener_.fd(), nullptr, nullptr), listener_.carrier());
            EXPECT_TRUE(hears(20'000));
        }
        bool closed = false;
        const auto datagram = socket_.receive(room_, closed);
        EXPECT_TRUE(datagram);
        return datagram ? Bytes(datagram->bytes.begin(), datagram->bytes.end()) : Bytes();
    }

    void say(link::Address from, ByteView bytes) { socket_.send(from, bytes, {}, true); }
    // Without an address in front.
    void say_raw(ByteView bytes) { EXPECT_EQ(::send(socket_.fd(), bytes.data(), bytes.size(), 0), ssize(bytes)); }
    // As the router; servers as the answer to a lookup.
    void tell(const link::ControlPacket& packet) { say({0, QRTR_PORT_CTRL}, link::pack_control(packet)); }
    void tell_servers(std::initializer_list<link::ControlPacket> servers)
    {
        for (const link::ControlPacket& each : servers) tell(each);
        tell({QRTR_TYPE_NEW_SERVER, 0, 0, {}});
    }

 private:
    link::LinkSocket listener_;
    link::LinkSocket socket_;
    Bytes room_ = Bytes(link::kLongestDatagram);
};

// Whether a call hasn't returned after a while, by the real clock.
template <typename Result>
bool still_waits(const std::future<Result>& call)
{
    ::poll(nullptr, 0, 20);
    return call.wait_for(std::chrono::seconds(0)) == std::future_status::timeout;
}

class PeerTest : public HomeTest {
 protected:
    PeerTest() { setenv("RBK_MODEM", ("unix:" + (home() / "peer").string()).c_str(), 1); }

    // A call of the library on a thread of its own, and what it sent.
    template <typename Call>
    auto begin(Call call)
    {
        auto result = std::async(std::launch::async, call);
        heard_ = peer_.hear();
        return result;
    }
    // The clock goes on to the end of a call's time, up to which the call waits.
    template <typename Result>
    void pass_time(const std::future<Result>& call, std::chrono::seconds time)
    {
        test_clock::move_on(time - std::chrono::seconds(1));
        peer_.say({}, {});  // whoever reads looks at the clock
        EXPECT_TRUE(still_waits(call)) << "given up too early";
        test_clock::move_on(std::chrono::seconds(1));
        peer_.say({}, {});
    }
    FakePeer peer_{home() / "peer"};
    Bytes heard_;
};

}  // namespace rbk::test

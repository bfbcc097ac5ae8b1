// One attached client: its socket, what it hasn't taken yet, and which services it wants to hear of.
#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <vector>

#include "platform/link/link_socket.h"
#include "simulator/client_id.h"
#include "simulator/event_loop.h"

namespace rbk::sim {

// What a client may leave unread before it is dropped, so that it never stalls the others.
struct ClientLimits {
    std::size_t unsent_bytes = 16UL * 1024 * 1024;
    std::chrono::milliseconds unsent_age{5000};  // of the oldest datagram that waits
};

class Client {
 public:
    Client(ClientId id, link::LinkSocket socket) : id_(id), socket_(std::move(socket)) {}

    ClientId id() const { return id_; }
    const link::LinkSocket& socket() const { return socket_; }

    // Sends a datagram now, or keeps a copy until there is room. False when the client has to go: its end has closed, or
    // it leaves too much unread.
    bool send(const ClientLimits& limits, link::Address from, ByteView head, ByteView body);
    // Sends what waits, as far as there is room. False when its end has closed.
    bool send_unsent();
    bool has_unsent() const { return !unsent_.empty(); }
    // When the oldest datagram that waits was put off; only with has_unsent().
    EventLoop::Clock::time_point unsent_since() const { return unsent_.front().since; }

    EventLoop::WatchId watch = 0;
    bool leaving = false;                                          // no more datagrams to it or from it
    bool age_watched = false;                                      // a timer looks after what waits
    std::vector<std::pair<std::uint32_t, std::uint32_t>> lookups;  // service and instance, 0 for all
    std::set<std::uint32_t> greeted;                               // ports of services that have had a request of it

 private:
    struct Unsent {
        link::Address from;
        Bytes bytes;
        EventLoop::Clock::time_point since;
    };

    ClientId id_;
    link::LinkSocket socket_;
    std::deque<Unsent> unsent_;
    std::size_t unsent_bytes_ = 0;
};

}  // namespace rbk::sim

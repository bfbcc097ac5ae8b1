// What the modem's core knows of the ways by which clients reach it. All of it happens on the modem's thread, or before
// that runs.
#pragma once

#include <cstdint>

#include "link/link_socket.h"

namespace rbk::sim {

class Modem;

// A service that is up.
struct Server {
    std::uint32_t service = 0;   // its number
    std::uint32_t instance = 0;  // version in the low byte, instance number above it
    std::uint32_t port = 0;      // of its own each time it comes up
};

// One client's end of a carrier. It belongs to the client, and goes with it.
class Line {
 public:
    virtual ~Line() = default;
    // Sends one message from the service at `port`, whole or not at all. With would_block the client keeps it.
    virtual link::SendResult send(std::uint32_t port, ByteView head, ByteView body) = 0;
    // After a send that would block: Modem::on_room is called once there may be room.
    virtual void want_room() = 0;
};

// A way to the modem. It attaches clients, hands on their messages and tells when they have gone. A carrier outlives the
// modem that it serves.
class Carrier {
 public:
    virtual ~Carrier() = default;
    // From now on clients come to this modem, which will tell of its services.
    virtual void serve(Modem& modem) = 0;
    virtual void service_up(const Server& server) = 0;
    // It answers no more. Its clients haven't gone, but where a client is one of one service.
    virtual void service_down(const Server& server) = 0;
};

}  // namespace rbk::sim

// One attached client: its line, what it hasn't taken yet, what is put off for it, and which services have heard of it.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "simulator/base/client_id.h"
#include "simulator/base/event_loop.h"
#include "simulator/modem/carrier.h"

namespace rbk::sim {

// What may wait for a client before it is dropped, so that it never stalls the others or fills the memory.
struct ClientLimits {
    std::size_t waiting_bytes = 16UL * 1024 * 1024;  // unread or put off, and what it takes to keep that
    std::chrono::milliseconds unsent_age{5000};      // of the oldest message that waits unread
};

class Client {
 public:
    Client(ClientId id, std::unique_ptr<Line> line) : id_(id), line_(std::move(line)) {}

    ClientId id() const { return id_; }
    Line& line() { return *line_; }

    // Sends a message now, or keeps a copy until there is room. False when the client has to go: it leaves too much
    // unread. One that has closed its end hears nothing, and stays until all that it sent before has been read.
    bool send(const ClientLimits& limits, std::uint32_t port, ByteView head, ByteView body);
    // Sends what waits, as far as there is room.
    void send_unsent();
    bool has_unsent() const { return !unsent_.empty(); }
    // When the oldest message that waits was put off; only with has_unsent().
    EventLoop::Clock::time_point unsent_since() const { return unsent_.front().since; }

    // A timer of the modem's loop that does something for it later and keeps `size` bytes for that, from being set until
    // it runs. False when the client has to go.
    bool put_off(const ClientLimits& limits, EventLoop::TimerId timer, std::size_t size);
    void take_up(EventLoop::TimerId timer);
    const std::map<EventLoop::TimerId, std::size_t>& timers() const { return timers_; }

    bool leaving = false;                         // no more messages to it or from it
    std::optional<EventLoop::TimerId> age_timer;  // looks after what waits unread
    std::set<std::uint32_t> greeted;              // ports of services that have had a request of it

 private:
    struct Unsent {
        std::uint32_t port;  // of the service that says it
        Bytes bytes;
        EventLoop::Clock::time_point since;
    };

    bool reserve(const ClientLimits& limits, std::size_t size);
    void release(std::size_t size);

    ClientId id_;
    std::unique_ptr<Line> line_;
    std::deque<Unsent> unsent_;
    std::map<EventLoop::TimerId, std::size_t> timers_;  // with the bytes that each one keeps
    std::size_t waiting_bytes_ = 0;
};

}  // namespace rbk::sim

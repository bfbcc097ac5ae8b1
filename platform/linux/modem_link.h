// The process's one connection to the modem: the carrier that RBK_MODEM names, who reads it, and what the router has told
// of the modem's services. The QMI client library and the diag library stand on it.
//
// One thread at a time reads the link. A thread that waits for something reads while nobody else does, so that an answer
// costs no switch to another thread; while nobody waits, a thread of the link's own reads, for as long as there is
// something to read.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "link/link_socket.h"
#include "platform/linux/link_trace.h"
#include "platform/linux/process_end.h"
#include "platform/linux/thread_safety.h"
#include "simulator/embedded.h"

namespace rbk::platform {

using Deadline = std::chrono::steady_clock::time_point;

// A server of a service, as the router tells it.
struct Server {
    std::uint32_t service = 0;
    std::uint32_t instance = 0;  // version in the low byte, instance number above it
    link::Address address;
    bool operator==(const Server&) const = default;
};

// Who is told what comes over the link. The calls come one at a time, in the order of the link, on whichever thread reads
// it; none under its lock.
class LinkListener {
 public:
    // `bytes` live for the call.
    virtual void on_datagram(const Server& from, ByteView bytes) = 0;
    virtual void on_server_gone(const Server& server) = 0;
    // In the exit handler, once the link has been shut down: ends the library's thread.
    virtual void on_process_end() = 0;

 protected:
    ~LinkListener() = default;
};

// What is likely to come behind the answer that a wait ends with: another request, from a thread that will read by itself,
// or an indication, which must not wait for that.
enum class Behind { request, indication };

class ModemLink {
 public:
    static constexpr std::int32_t kModemGone = -2;

    // Built at the first use and never destroyed: detached workers may come after the end of main. The end of the process
    // begins in an exit handler registered then, which shuts the link down and ends all threads of the platform: the
    // libraries', the link's own and the embedded modem's. Later calls fail, on the one thread that they return to.
    static ModemLink& get();

    // Never removed: a listener lives as long as the process. There is room for the libraries that stand on the link.
    void add_listener(LinkListener& listener);

    // The servers of a service, in the order that the router told them. The first call for a service asks the router and
    // waits for the whole list. -4 when there is no way to the modem.
    std::int32_t list_servers(std::uint32_t service, std::vector<Server>& servers);

    // How often servers of the service have come or gone, and a wait until that is no longer what it was.
    std::uint32_t news(std::uint32_t service);
    bool wait_for_news(std::uint32_t service, std::uint32_t& seen, Deadline deadline);

    bool knows(const Server& server);

    // Waits until `done` is set, and reads the link meanwhile. False when the time has run out or the process ends.
    bool wait(const std::atomic<bool>& done, Deadline deadline, Behind behind = Behind::request);
    // After setting what somebody waits for. A wait with a deadline that reads at this moment ends within a tenth of a
    // second, any other one at once.
    void wake();

    // Sends one datagram. `traced` writes its line of the trace, under the trace's lock, when the send has succeeded.
    // 0, -2 the modem is gone, -3 the deadline has passed while the link was full.
    template <typename Traced>
    std::int32_t send(link::Address to, ByteView head, ByteView body, Deadline deadline, Traced traced)
    {
        const Socket socket = open_socket();
        if (socket == nullptr) return kModemGone;
        const std::int32_t result = send_in_time(*socket, deadline, [&] {
            if (!trace_->is_on()) return socket->send(to, head, body, false);
            // Not held over the wait for room: whoever reads the link takes it too.
            const MutexLock lock(trace_->mutex());
            const link::SendResult sent = socket->send(to, head, body, false);
            if (sent == link::SendResult::sent) traced(*trace_);
            return sent;
        });
        if (result == kModemGone) await_end(socket);
        return result;
    }

    LinkTrace& trace() { return *trace_; }

 private:
    using Socket = std::shared_ptr<link::LinkSocket>;  // senders hold their own share while they send

    ModemLink();
    Socket open_socket();
    // Attempts again each time that a full link has room.
    template <typename Attempt>
    static std::int32_t send_in_time(const link::LinkSocket& socket, Deadline deadline, Attempt attempt)
    {
        for (;;) {
            switch (attempt()) {
            case link::SendResult::sent: return 0;
            case link::SendResult::closed: return kModemGone;
            case link::SendResult::would_block: break;
            }
            if (!wait_for_room(socket, deadline)) return -3;
        }
    }
    static bool wait_for_room(const link::LinkSocket& socket, Deadline deadline);
    void await_end(const Socket& socket);
    std::int32_t open() REQUIRES(mutex_);
    bool connect() REQUIRES(mutex_);
    std::int32_t look_up(std::uint32_t service) REQUIRES(mutex_);
    template <typename Done>
    bool wait_until(Deadline deadline, Done done, Behind behind = Behind::request) REQUIRES(mutex_);
    bool read(Deadline now, Deadline deadline) REQUIRES(mutex_);
    void read_while_nobody_waits();
    void dispatch(const link::Datagram& datagram);
    void on_control(const link::ControlPacket& packet);
    void on_server_lost(const Server& server);
    void on_closed();
    void end();

    std::unique_ptr<LinkTrace> trace_;
    std::array<std::atomic<LinkListener*>, 2> listeners_{};

    Mutex mutex_;
    Condition changed_;  // something that is waited for, or nobody reads any more
    enum class State { closed, open, stopped } state_ GUARDED_BY(mutex_) = State::closed;
    Socket socket_ GUARDED_BY(mutex_);
    std::unique_ptr<sim::EmbeddedModem> modem_ GUARDED_BY(mutex_);
    std::vector<Server> servers_ GUARDED_BY(mutex_);
    std::set<std::uint32_t> looked_up_ GUARDED_BY(mutex_);            // services whose whole list is known
    std::map<std::uint32_t, std::uint32_t> news_ GUARDED_BY(mutex_);  // by service: changes of servers_
    std::uint32_t lookup_ GUARDED_BY(mutex_) = 0;  // number of the lookup whose answer has not ended; 0: none
    std::uint32_t last_lookup_ GUARDED_BY(mutex_) = 0;
    Deadline lookup_until_ GUARDED_BY(mutex_);  // that answer is waited for until then

    bool is_read_ GUARDED_BY(mutex_) = false;  // somebody reads; the buffer is theirs
    std::thread::id reader_ GUARDED_BY(mutex_);
    Deadline quiet_until_ GUARDED_BY(mutex_);       // the link's own thread leaves the link alone
    std::uint32_t waiting_ GUARDED_BY(mutex_) = 0;  // threads that would read
    std::vector<std::uint8_t> buffer_;
    LibraryThread idle_reader_;
    Condition opened_;  // for the idle reader: the link has opened, or is to stop
};

}  // namespace rbk::platform

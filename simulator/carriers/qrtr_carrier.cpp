#include "simulator/carriers/qrtr_carrier.h"

#include <sys/epoll.h>

#include <system_error>
#include <utility>
#include <vector>

#include "simulator/modem/modem.h"

namespace rbk::sim {
namespace {

using std::chrono::milliseconds;

// The router doesn't say when a receiver whose queue was full has room: it is tried again after this.
constexpr milliseconds kRetry{5};
// A socket whose number space the router has reset is replaced.
constexpr milliseconds kReopen{100};
// The router's word of a client's end is lost where our queue is full: so long after a send to nobody it isn't waited for.
constexpr milliseconds kLostWord{1000};

}  // namespace

// One service's socket.
struct QrtrCarrier::Port {
    Port(const Server& its_server, link::LinkSocket its_socket) : server(its_server), socket(std::move(its_socket)) {}

    Server server;
    link::LinkSocket socket;
    EventLoop::WatchId watch = 0;
    std::map<link::Address, ClientId> clients;
};

// A client of one service, by its socket's address.
class QrtrCarrier::Peer final : public Line {
 public:
    Peer(QrtrCarrier& carrier, std::uint32_t port, link::Address address)
        : carrier_(carrier), port_(port), address_(address)
    {
    }
    ~Peer() override
    {
        const auto port = carrier_.ports_.find(port_);
        if (port != carrier_.ports_.end()) port->second->clients.erase(address_);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    link::SendResult send(std::uint32_t /*port*/, ByteView head, ByteView body) override
    {
        const auto port = carrier_.ports_.find(port_);
        if (port == carrier_.ports_.end()) return link::SendResult::closed;
        const link::SendResult result = port->second->socket.send(address_, head, body, false);
        if (result == link::SendResult::closed && !std::exchange(is_lost_, true)) {
            carrier_.modem_->loop().after(kLostWord, [modem = carrier_.modem_, gone = id] { modem->drop(gone); });
        }
        return result;
    }
    void want_room() override
    {
        carrier_.modem_->loop().after(kRetry, [modem = carrier_.modem_, waiting = id] { modem->on_room(waiting); });
    }

    ClientId id = 0;

 private:
    QrtrCarrier& carrier_;
    std::uint32_t port_;
    link::Address address_;
    bool is_lost_ = false;
};

// ---- Services ----

QrtrCarrier::QrtrCarrier() : received_(link::kLongestDatagram) {}

QrtrCarrier::~QrtrCarrier() = default;

std::unique_ptr<QrtrCarrier> QrtrCarrier::open(const std::string& /*unused*/, std::string& error)
{
    if (!link::LinkSocket::open_qrtr(error).is_open()) return nullptr;
    return std::unique_ptr<QrtrCarrier>(new QrtrCarrier);
}

void QrtrCarrier::serve(Modem& modem)
{
    modem_ = &modem;
    modem.add(*this);
    for (const Server& server : modem.servers()) service_up(server);
}

void QrtrCarrier::service_up(const Server& server)
{
    std::string error;
    link::LinkSocket socket = link::LinkSocket::open_qrtr(error);
    if (!socket.is_open() || !socket.take_port(error)) {
        return modem_->complaints().say("a service isn't on the router: " + error);
    }
    auto port = std::make_unique<Port>(server, std::move(socket));
    try {
        port->watch = modem_->loop().watch(port->socket.fd(), EPOLLIN,
                                           [this, opened = port.get()](std::uint32_t) { on_ready(*opened); });
    } catch (const std::system_error& failed) {
        return modem_->complaints().say(std::string("a service isn't on the router: ") + failed.what());
    }
    announce(*ports_.insert_or_assign(server.port, std::move(port)).first->second);
}

// Closing a socket takes its server from the router as well; said before, other nodes hear of it as of any other one.
void QrtrCarrier::service_down(const Server& server)
{
    const auto found = ports_.find(server.port);
    if (found == ports_.end()) return;
    const std::unique_ptr<Port> port = std::move(found->second);
    ports_.erase(found);
    modem_->loop().unwatch(port->watch);
    for (const auto& [address, client] : port->clients) modem_->drop(client);
    const link::Address own = port->socket.local();
    port->socket.send({own.node, QRTR_PORT_CTRL},
                      link::pack_control({QRTR_TYPE_DEL_SERVER, server.service, server.instance, own}), {}, false);
}

void QrtrCarrier::announce(Port& port)
{
    const link::Address own = port.socket.local();
    const auto packet = link::pack_control({QRTR_TYPE_NEW_SERVER, port.server.service, port.server.instance, own});
    switch (port.socket.send({own.node, QRTR_PORT_CTRL}, packet, {}, false)) {
    case link::SendResult::sent: break;
    case link::SendResult::would_block: announce_later(port.server); break;
    case link::SendResult::closed: modem_->complaints().say("a service isn't on the router: it has no name service");
    }
}

void QrtrCarrier::announce_later(const Server& server)
{
    modem_->loop().after(kRetry, [this, number = server.port] {
        const auto port = ports_.find(number);
        if (port != ports_.end()) announce(*port->second);
    });
}

// ---- Clients ----

void QrtrCarrier::on_ready(Port& port)
{
    bool closed = false;
    const std::optional<link::Datagram> datagram = port.socket.receive(received_, closed);
    if (closed) {
        const Server server = port.server;
        service_down(server);  // which ends the port
        modem_->loop().after(kReopen, [this, server] {
            for (const Server& up : modem_->servers()) {
                if (up.port == server.port) service_up(server);
            }
        });
        return;
    }
    if (!datagram) return;
    if (datagram->peer.port != QRTR_PORT_CTRL) return on_message(port, *datagram);
    // Other nodes' routers speak to ours, which tells us.
    if (datagram->peer.node == port.socket.local().node) on_control(port, datagram->bytes);
}

void QrtrCarrier::on_control(Port& port, ByteView bytes)
{
    const std::optional<link::ControlPacket> packet = link::parse_control(bytes);
    if (!packet || (packet->type != QRTR_TYPE_DEL_CLIENT && packet->type != QRTR_TYPE_BYE)) return;
    for (const auto& [address, client] : port.clients) {
        const bool has_gone = packet->type == QRTR_TYPE_BYE ? address.node == packet->address.node  // a whole node
                                                            : address == packet->address;
        if (has_gone) modem_->drop(client);
    }
}

void QrtrCarrier::on_message(Port& port, const link::Datagram& datagram)
{
    auto known = port.clients.find(datagram.peer);
    if (known == port.clients.end()) {
        auto line = std::make_unique<Peer>(*this, port.server.port, datagram.peer);
        Peer& peer = *line;
        peer.id = modem_->attach(std::move(line));
        known = port.clients.emplace(datagram.peer, peer.id).first;
    }
    modem_->on_message(known->second, port.server.port, datagram.bytes);
}

}  // namespace rbk::sim

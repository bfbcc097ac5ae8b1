#include "simulator/carriers/seqpacket_carrier.h"

#include <sys/epoll.h>

#include <algorithm>
#include <system_error>
#include <utility>

#include "simulator/modem/modem.h"

namespace rbk::sim {
namespace {

constexpr std::uint32_t kNode = 0;    // the modem's
constexpr std::size_t kLookups = 64;  // of one client; a service asked for once more changes nothing

using Lookup = std::pair<std::uint32_t, std::uint32_t>;  // service and instance, 0 for all

bool wanted(Lookup lookup, const Server& server)
{
    return (lookup.first == 0 || lookup.first == server.service) &&
           (lookup.second == 0 || lookup.second == server.instance);
}

link::ControlPacket packet_about(const Server& server, std::uint32_t type)
{
    return {type, server.service, server.instance, {kNode, server.port}};
}

}  // namespace

class SeqpacketCarrier::Connection final : public Line {
 public:
    Connection(SeqpacketCarrier& carrier, link::LinkSocket socket)
        : carrier_(carrier), loop_(carrier.modem_->loop()), socket_(std::move(socket))
    {
    }
    ~Connection() override
    {
        if (watch_ != 0) loop_.unwatch(watch_);
        carrier_.connections_.erase(id);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void watch()
    {
        watch_ = loop_.watch(socket_.fd(), EPOLLIN, [this](std::uint32_t events) { carrier_.on_ready(*this, events); });
    }
    const link::LinkSocket& socket() const { return socket_; }
    link::SendResult send(std::uint32_t port, ByteView head, ByteView body) override
    {
        return socket_.send({kNode, port}, head, body, false);
    }
    void want_room() override { loop_.change(watch_, EPOLLIN | EPOLLOUT); }
    void has_room() { loop_.change(watch_, EPOLLIN); }

    ClientId id = 0;
    std::vector<Lookup> lookups;

 private:
    SeqpacketCarrier& carrier_;
    EventLoop& loop_;
    link::LinkSocket socket_;
    EventLoop::WatchId watch_ = 0;
};

void SeqpacketCarrier::serve(Modem& modem)
{
    modem_ = &modem;
    modem.add(*this);
}

void SeqpacketCarrier::attach(link::LinkSocket socket)
{
    auto line = std::make_unique<Connection>(*this, std::move(socket));
    Connection* client = line.get();
    try {
        client->watch();
    } catch (const std::system_error& error) {
        return modem_->complaints().say(std::string("a client can't be served: ") + error.what());
    }
    client->id = modem_->attach(std::move(line));
    connections_.emplace(client->id, client);
}

void SeqpacketCarrier::on_ready(Connection& client, std::uint32_t events)
{
    if ((events & EPOLLOUT) != 0) {
        client.has_room();
        modem_->on_room(client.id);
    }
    if ((events & ~static_cast<std::uint32_t>(EPOLLOUT)) == 0) return;
    bool closed = false;
    const std::optional<link::Datagram> datagram = client.socket().receive(received_, closed);
    if (closed) return modem_->drop(client.id);
    if (!datagram) return;
    if (datagram->peer.port == QRTR_PORT_CTRL) return on_control(client, datagram->bytes);
    if (datagram->peer.node == kNode && modem_->on_message(client.id, datagram->peer.port, datagram->bytes)) return;
    // The service went down while the datagram was on its way: whoever waits for an answer learns of it.
    send_control(client, {QRTR_TYPE_DEL_CLIENT, 0, 0, datagram->peer});
}

// ---- The router ----

void SeqpacketCarrier::tell_lookups(std::uint32_t type, const Server& server)
{
    for (const auto& [id, client] : connections_) {
        const auto& lookups = client->lookups;
        if (std::any_of(lookups.begin(), lookups.end(), [&](Lookup lookup) { return wanted(lookup, server); })) {
            send_control(*client, packet_about(server, type));
        }
    }
}

void SeqpacketCarrier::on_control(Connection& client, ByteView bytes)
{
    const std::optional<link::ControlPacket> packet = link::parse_control(bytes);
    if (!packet) return;
    const Lookup lookup(packet->service, packet->instance);
    if (packet->type == QRTR_TYPE_DEL_LOOKUP) {
        std::erase(client.lookups, lookup);
        return;
    }
    if (packet->type != QRTR_TYPE_NEW_LOOKUP) return;

    const auto known = std::find(client.lookups.begin(), client.lookups.end(), lookup);
    if (known == client.lookups.end() && client.lookups.size() < kLookups) client.lookups.push_back(lookup);
    for (const Server& server : modem_->servers()) {
        if (wanted(lookup, server)) send_control(client, packet_about(server, QRTR_TYPE_NEW_SERVER));
    }
    send_control(client, {QRTR_TYPE_NEW_SERVER, 0, 0, {}});
}

void SeqpacketCarrier::send_control(const Connection& client, const link::ControlPacket& packet)
{
    modem_->send(client.id, QRTR_PORT_CTRL, link::pack_control(packet), {});
}

}  // namespace rbk::sim

// Clients on Unix seqpacket sockets: a connection is a client of all services, and the modem is its router.
#pragma once

#include <map>
#include <vector>

#include "simulator/base/client_id.h"
#include "simulator/base/event_loop.h"
#include "simulator/modem/carrier.h"

namespace rbk::sim {

class SeqpacketCarrier : public Carrier {
 public:
    void serve(Modem& modem) override;
    void service_up(const Server& server) override { tell_lookups(QRTR_TYPE_NEW_SERVER, server); }
    void service_down(const Server& server) override { tell_lookups(QRTR_TYPE_DEL_SERVER, server); }

    // After serve().
    void attach(link::LinkSocket socket);

 protected:
    Modem& modem() const { return *modem_; }

 private:
    class Connection;

    void tell_lookups(std::uint32_t type, const Server& server);
    void on_ready(Connection& client, std::uint32_t events);
    void on_control(Connection& client, ByteView bytes);
    void send_control(const Connection& client, const link::ControlPacket& packet);

    Modem* modem_ = nullptr;
    std::map<ClientId, Connection*> connections_;  // the modem's clients own them
    Bytes received_ = Bytes(link::kLongestDatagram);
};

}  // namespace rbk::sim

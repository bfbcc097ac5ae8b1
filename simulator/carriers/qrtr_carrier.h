// Clients on the kernel's AF_QIPCRTR router: each service that is up has a socket of its own, which the name service tells
// them of.
//
// A client here is one of one service: what its socket sends to another service comes over another socket of ours, and
// nothing orders the two. Within one service's queue the router's word that a client has gone stands behind all that it
// sent, and before all that comes of the next owner of its port, who has to look the service up. A word that is lost, for
// want of room in our queue, is made good by a send that meets nobody.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "simulator/modem/carrier.h"

namespace rbk::sim {

class QrtrCarrier final : public Carrier {
 public:
    // Null, with the reason in `error`, where the kernel has no such sockets.
    static std::unique_ptr<QrtrCarrier> open(const std::string& unused, std::string& error);
    ~QrtrCarrier() override;

    void serve(Modem& modem) override;
    void service_up(const Server& server) override;
    void service_down(const Server& server) override;

 private:
    class Peer;
    struct Port;

    QrtrCarrier();
    void announce(Port& port);
    void announce_later(const Server& server);
    void on_ready(Port& port);
    void on_control(Port& port, ByteView bytes);
    void on_message(Port& port, const link::Datagram& datagram);

    Modem* modem_ = nullptr;
    std::map<std::uint32_t, std::unique_ptr<Port>> ports_;  // by the service's port in the modem
    Bytes received_;
};

}  // namespace rbk::sim

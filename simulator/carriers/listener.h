// The Unix socket that clients of rbk-modem connect to.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <memory>
#include <string>

#include "simulator/base/event_loop.h"
#include "simulator/base/fd.h"
#include "simulator/carriers/path_claim.h"
#include "simulator/carriers/seqpacket_carrier.h"

namespace rbk::sim {

class Listener final : public SeqpacketCarrier {
 public:
    // Listens at `path`. A socket there that no living server holds is taken over. Null, with the reason in `error`, when
    // a server holds it, when something else lies there, or when there can be no socket.
    static std::unique_ptr<Listener> open(const std::string& path, std::string& error);
    // Removes the socket, unless somebody has put another in its place.
    ~Listener() override;
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // From now on every client that connects is attached to the modem, as long as there are descriptors beside those that
    // the modem needs for its files; the rest is turned away at once. Raises the process's limit of descriptors.
    void serve(Modem& modem) override;

 private:
    Listener(std::string path, PathClaim claim, Fd socket);
    void accept_clients();

    std::string path_;
    PathClaim claim_;
    Fd socket_;
    dev_t device_ = 0;
    ino_t inode_ = 0;
    rlim_t descriptors_ = 0;  // that may be open before clients are turned away
    EventLoop::WatchId watch_ = 0;
};

}  // namespace rbk::sim

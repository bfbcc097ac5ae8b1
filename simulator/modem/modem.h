// The simulated modem: its clients and its services, on one thread. Carriers bring the clients.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "simulator/base/complaints.h"
#include "simulator/base/event_loop.h"
#include "simulator/base/ledger.h"
#include "simulator/modem/carrier.h"
#include "simulator/modem/client.h"
#include "simulator/modem/fault_rules.h"
#include "simulator/modem/service.h"
#include "simulator/scenario/scenario.h"
#include "simulator/state/state_store.h"

namespace rbk::sim {

// Everything but stop() belongs to the thread that calls run(), or comes before it.
class Modem {
 public:
    // Switches the modem on: services come up with boot_ms of the scenario. The state directory is made when it is
    // fresh, and otherwise not looked at. `complaints` outlives the modem.
    Modem(Scenario scenario, const std::filesystem::path& state, Complaints& complaints, ClientLimits limits = {});
    ~Modem();

    // From now on each client's line is written there when it goes, at the latest when the modem does. The ledger outlives
    // the modem.
    void keep_ledger(const Ledger& ledger) { ledger_ = &ledger; }
    void run();
    void stop() { loop_.stop(); }

    // ---- What carriers use ----

    // From now on the carrier is told of services that come and go.
    void add(Carrier& carrier) { carriers_.push_back(&carrier); }
    std::vector<Server> servers() const;  // that are up
    std::size_t client_ids() const { return scenario_.client_ids; }
    ClientId attach(std::unique_ptr<Line> line);
    // A message to the service at `port`. False where no service is up there. Without effect once the client leaves.
    bool on_message(ClientId client, std::uint32_t port, ByteView bytes);
    // There may be room on a client's line that had none.
    void on_room(ClientId client);
    // Sends a carrier's own message in its turn. Without effect when the client has gone.
    void send(ClientId client, std::uint32_t port, ByteView head, ByteView body);
    // The client has gone, or has to go: once the handler that runs now has returned.
    void drop(ClientId client);

    // ---- What services use ----

    EventLoop& loop() { return loop_; }
    StateStore& store() { return store_; }
    FaultRules& faults() { return faults_; }
    Complaints& complaints() { return complaints_; }

    // Sends an indication to a client of the service, as the fault rules have it. Without effect when the client has gone.
    void indicate(Service& service, ClientId client, std::uint16_t message, Bytes tlvs);
    // Takes all services away once the handler that runs now has returned and its answer has left (where a client is one of
    // one service, an answer that waits for room goes with its client), and brings them back,
    // as freshly switched on, after restart_ms.
    void restart();
    // The same for one service, whose answers have frames of their own: they have left.
    void restart(Service& service);
    // As Service::after has it.
    void put_off(Service& service, ClientId client, std::chrono::milliseconds delay, EventLoop::Task task,
                 std::size_t size);
    // Sends a datagram of a service that has frames of its own. Without effect when the client has gone.
    void send_datagram(Service& service, ClientId client, ByteView head, ByteView body);

 private:
    // A service's place on the modem, whether it is up or not.
    struct Slot {
        const ServiceKind* kind;
        std::unique_ptr<Service> service;  // null while it is down
        Server server;                     // while it is up
        std::uint64_t downs = 0;           // times it went down: tells a late comer that it isn't the latest
    };
    // One indication after the fault rules have had their say.
    struct Outgoing {
        Indication indication;
        bool early = false;  // before the answer
        bool down = false;   // the service goes away in its stead
    };

    void bring_up(Slot& slot);
    void take_down(Slot& slot);
    void bring_up_later(Slot& slot, std::chrono::milliseconds delay);

    void on_request(Client& client, Slot& slot, const link::QmiMessage& message);
    void say_unasked(Slot& slot, ClientId client, const UnaskedIndication& said, std::chrono::milliseconds delay);
    void answer(Client& client, Slot& slot, const link::QmiMessage& message, Call& call, const FaultRule* fault);
    void send_following(Client& client, Slot& slot, const link::QmiHead& answer, const FaultRule& fault, bool early);
    void plan(Slot& slot, Indication indication, std::vector<Outgoing>& planned);
    void send_planned(std::chrono::milliseconds delay, Client& client, Slot& slot, const Outgoing& outgoing);
    void go_down(Slot& slot);
    void go_down_all(std::chrono::milliseconds delay);

    Slot* find_slot(std::uint32_t port);
    Slot* find_slot(const Service& service);
    Client* find_client(ClientId id);
    void send_message(Client& client, const Slot& slot, const link::QmiHead& head, ByteView tlvs);
    void send_after(std::chrono::milliseconds delay, Client& client, Slot& slot, const link::QmiHead& head,
                    const Bytes& tlvs);
    void send(Client& client, std::uint32_t port, ByteView head, ByteView body);
    void check_unread_later(Client& client, EventLoop::Clock::duration delay);
    void drop(Client& client);
    void enter_in_ledger(ClientId client);

    // In the order in which they go last.
    Complaints& complaints_;
    const Ledger* ledger_ = nullptr;
    const ClientLimits limits_;
    Scenario scenario_;
    EventLoop loop_;
    StateStore store_;
    FaultRules faults_;
    std::vector<Carrier*> carriers_;
    std::map<ClientId, std::unique_ptr<Client>> clients_;
    ClientId last_client_ = 0;
    std::vector<Slot> slots_;
    std::uint32_t last_port_ = 0x4000;  // behind those that QRTR gives to its own
    bool restart_asked_ = false;        // by the request that is being handled
    bool restart_put_off_ = false;      // a timer sees to it

    Bytes answer_;  // reused for every one
};

}  // namespace rbk::sim

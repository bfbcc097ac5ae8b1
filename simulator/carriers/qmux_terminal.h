// Clients on a terminal that speaks QMUX, as programs written by others do. The modem's client here is one client id: it
// is given out by the control service, and outlives the opening of the terminal in which it was.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "simulator/base/client_id.h"
#include "simulator/base/event_loop.h"
#include "simulator/carriers/linked_terminal.h"
#include "simulator/carriers/qmux_frame.h"
#include "simulator/modem/carrier.h"
#include "simulator/modem/service.h"
#include "simulator/modem/tlv.h"

namespace rbk::sim {

class QmuxTerminal final : public Carrier {
 public:
    // As LinkedTerminal::open has it. The rest of a frame that has begun is waited for that long.
    static std::unique_ptr<QmuxTerminal> open(const std::string& path, std::string& error,
                                              std::chrono::milliseconds patience = std::chrono::seconds(1));

    void serve(Modem& modem) override;
    void service_up(const Server&) override {}
    // Its client ids are gone, and the terminal is told so.
    void service_down(const Server& server) override;

 private:
    class IdLine;
    using Id = std::pair<std::uint8_t, std::uint8_t>;  // service, client id

    QmuxTerminal(std::unique_ptr<LinkedTerminal> terminal, std::chrono::milliseconds patience);
    void on_ready(std::uint32_t events);
    void take_frames();
    void on_frame(const QmuxFrame& frame);

    void on_control(std::uint8_t client, ByteView message);
    // Each answers a request: its TLVs go behind the result.
    QmiError run_control(std::uint16_t message, ByteView tlvs, TlvWriter& answer);
    QmiError tell_versions(TlvWriter& answer) const;
    QmiError set_instance(ByteView tlvs, TlvWriter& answer);
    QmiError allocate(ByteView tlvs, TlvWriter& answer);
    QmiError release(ByteView tlvs, TlvWriter& answer);
    QmiError set_data_format(ByteView tlvs, TlvWriter& answer);

    std::optional<Server> find_server(std::uint8_t service) const;
    void let_go(Id id);
    void revoke(Id id);
    void send_own(std::uint8_t service, std::uint8_t client, ByteView message);
    void write(ByteView head, ByteView message, ByteView rest);
    void write_unwritten();

    std::unique_ptr<LinkedTerminal> terminal_;
    const std::chrono::milliseconds patience_;
    Modem* modem_ = nullptr;
    EventLoop::WatchId watch_ = 0;
    QmuxReader reader_;
    std::optional<std::uint64_t> part_;  // of the reader's, that `part_timer_` looks after
    EventLoop::TimerId part_timer_;
    std::map<Id, IdLine*> ids_;     // that are given out; the modem's clients own the lines
    Bytes unwritten_;               // frames that the terminal has no room for yet
    std::deque<ClientId> waiting_;  // for room, in the order in which they asked
};

}  // namespace rbk::sim

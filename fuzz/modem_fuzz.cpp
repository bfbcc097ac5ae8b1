// Whatever clients send is answered or dropped, and the modem still tells of all its services afterwards. It never closes
// the connection of a client that reads.
//
// An input is a row of steps. The first byte of each says to whom: a service by its place in the lookup's answer, or one
// of the numbers of Step. Each input has a modem and a state directory of its own.
#include <sys/socket.h>

#include <cstdlib>
#include <map>

#include "fuzz/input.h"
#include "fuzz/scratch.h"
#include "link/diag_frame.h"
#include "simulator/carriers/seqpacket_carrier.h"
#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

using namespace rbk;

namespace {

enum Step : std::uint8_t {
    kRaw = 0x80,       // set: bytes as they are, else a request with a head of its own
    kRouter = 0xFF,    // a control packet, or what may be one
    kNameless = 0xFE,  // a datagram without a whole address
    kLeave = 0xFD,     // the client goes, and another one comes
    kDeaf = 0xFC,      // nothing is read from here on
};

// Everything at once, and rules that are met now and then: what the modem puts off is part of it.
constexpr char kScenario[] = R"(
[modem]
restart_ms = 0
[nas]
scan_ms = 0
[pdc]
indication_ms = 0
sub0 = { active = "0102030405", pending = "AABB" }
[[pdc.config]]
id = "0102030405"
description = "Net One"
version = 5
size = 8
[stats.sub0]
82 = { earfcn = 1850, pci = 7 }
[[diag.response]]
request = "4B"
packets = [ { bytes = "4B 01" }, { fill = 0xAB, size = 4096, processor = 1 } ]
[[indication]]
service = "extended"
message = 3
bytes = "01 04 00 04 00 00 00 02 04 00 00 00 00 00"
[[fault]]
service = "sar"
prefix = "01 04 00 07"
action = "down"
[[fault]]
service = "nas"
nth = 2
action = "raw"
bytes = "02 04 00 01 00 03 00"
[[fault]]
service = "pdc"
nth = 3
on = "indication"
action = "twice"
[[fault]]
service = "uim"
nth = 3
action = "indicate"
bytes = "01 01 00 01"
also = true
[[fault]]
service = "extended"
nth = 4
action = "result"
code = -5
[[fault]]
service = "diag"
call = "dci_signal"
action = "error"
code = 7
)";

class Session {
 public:
    Session(sim::Scenario scenario, const std::filesystem::path& folder, fuzz::Input input)
        : input_(input), modem_(std::move(scenario), folder / "state", complaints_, {64 * 1024})
    {
    }

    void run()
    {
        carrier_.serve(modem_);
        attach();
        ask();
        modem_.loop().after({}, [this] { take_turn(); });
        modem_.run();
    }

 private:
    static constexpr int kLastRounds = 8;      // turns in which what was put off comes
    static constexpr int kLongestWait = 1000;  // turns for the answer of a lookup

    // Turns with the modem, on its own thread: what it was sent is done before the next one.
    void take_turn()
    {
        if (!deaf_ || input_.empty()) drain();
        if (!input_.empty() && told_) {
            send();
        } else if (++rounds_ == kLastRounds) {
            if (deaf_) attach();
            deaf_ = false;
            ask();
        } else if (rounds_ > kLastRounds && told_ && services_.size() == sim::service_kinds().size()) {
            return modem_.stop();
        } else if (rounds_ > kLastRounds && told_) {
            ask();  // a restart is under way
        } else if (rounds_ > kLongestWait) {
            std::abort();  // no answer any more
        }
        modem_.loop().after({}, [this] { take_turn(); });
    }

    void attach()
    {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
        client_ = link::LinkSocket(ends[0], link::LinkSocket::Carrier::seqpacket);
        carrier_.attach({ends[1], link::LinkSocket::Carrier::seqpacket});
    }

    void ask()
    {
        told_ = false;
        services_.clear();
        client_.send(router_, link::pack_control({QRTR_TYPE_NEW_LOOKUP, 0, 0, {}}), {}, false);
    }

    void drain()
    {
        while (true) {
            bool closed = false;
            const auto datagram = client_.receive(room_, closed);
            if (closed && !deaf_) std::abort();
            if (closed) return;
            if (!datagram) return;
            const auto packet = link::parse_control(datagram->bytes);
            if (datagram->peer.port != QRTR_PORT_CTRL || !packet) continue;
            if (packet->type == QRTR_TYPE_NEW_SERVER && packet->service == 0) told_ = true;
            if (packet->type == QRTR_TYPE_NEW_SERVER && packet->service != 0)
                services_[packet->service] = packet->address;
            if (packet->type == QRTR_TYPE_DEL_SERVER) services_.erase(packet->service);
        }
    }

    void send()
    {
        const std::uint8_t step = input_.byte();
        switch (step) {
        case kRouter: client_.send(router_, input_.block(), {}, false); return;
        case kNameless: {
            const ByteView bytes = input_.take(input_.byte() % (link::kAddressSize + 1));
            // An empty datagram is the end of a connection.
            if (!bytes.empty()) ::send(client_.fd(), bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
            return;
        }
        case kLeave: return attach();
        case kDeaf: deaf_ = true; return;
        default: break;
        }
        if (services_.empty()) return;
        const auto place = std::next(services_.begin(), (step & ~kRaw) % static_cast<std::ptrdiff_t>(services_.size()));
        if ((step & kRaw) != 0) {
            client_.send(place->second, input_.block(), {}, false);
        } else if (place->first == link::kDiagService) {
            link::DiagHead head;
            head.what = input_.byte();
            head.client = input_.byte();
            client_.send(place->second, link::pack_diag(head), input_.block(), false);
        } else {
            link::QmiHead head{link::QmiKind::request, ++transaction_, input_.number<std::uint16_t>(), 0};
            const ByteView tlvs = input_.block();
            head.length = static_cast<std::uint16_t>(tlvs.size());
            std::array<std::uint8_t, link::kQmiHeadSize> bytes;
            link::store_qmi_head(bytes.data(), head);
            client_.send(place->second, bytes, tlvs, false);
        }
    }

    const link::Address router_{1, QRTR_PORT_CTRL};
    fuzz::Input input_;
    sim::Complaints complaints_{[](const std::string&) {}};
    sim::SeqpacketCarrier carrier_;
    sim::Modem modem_;
    link::LinkSocket client_;
    std::map<std::uint32_t, link::Address> services_;  // by number
    std::uint16_t transaction_ = 0;
    bool told_ = false;  // the answer to a lookup has come to its end
    bool deaf_ = false;
    int rounds_ = 0;
    Bytes room_ = Bytes(link::kLongestDatagram);
};

// Read once, since a file takes longer to parse than most inputs to run.
class ScenarioCopies {
 public:
    ScenarioCopies()
    {
        file_.fill({reinterpret_cast<const std::uint8_t*>(kScenario), sizeof kScenario - 1});
        model_ = sim::read_scenario(file_.path());
        root_ = sim::load_scenario_file(file_.path());
        model_.nv = {{{0, 550}, {0x08, 0x3A}}};  // what the built-in phone holds beside it is more of the same
        model_.efs.erase(std::next(model_.efs.begin()), model_.efs.end());
    }

    sim::Scenario make() const
    {
        sim::TableReader table("the scenario", root_);
        sim::Scenario copy;
        copy.services = model_.services;
        copy.restart = model_.restart;
        copy.nv = model_.nv;
        copy.efs = model_.efs;
        copy.indications = model_.indications;
        copy.faults = model_.faults;
        for (const sim::ServiceKind& kind : sim::service_kinds()) copy.settings.emplace(kind.name, kind.read(&table));
        return copy;
    }

 private:
    fuzz::MemoryFile file_;
    sim::Scenario model_;
    sim::ScenarioNode root_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::ScratchFolder folder;
    static const ScenarioCopies scenarios;
    Session(scenarios.make(), folder.path(), {data, size}).run();
    folder.empty();
    return 0;
}

// Whatever a client sends is answered or dropped, and the modem still tells of its services afterwards.
//
// An input is a row of datagrams: one byte for the addressee, one for the length, the bytes.
#include <poll.h>

#include <cstdlib>
#include <filesystem>

#include "simulator/embedded.h"

namespace {

using namespace rbk;

struct Bench {
    Bench()
    {
        folder = (std::filesystem::temp_directory_path() / "modem-fuzz-XXXXXX").string();
        if (::mkdtemp(folder.data()) == nullptr) std::abort();
        std::vector<std::string> complaints;
        modem = sim::start_embedded_modem({folder, std::nullopt}, client, complaints);
        if (modem == nullptr || !complaints.empty()) std::abort();
        services = drain();
    }

    ~Bench()
    {
        modem.reset();
        std::filesystem::remove_all(folder);
    }
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    // Asks for all services and takes what has come, up to the row that ends the answer; the servers' addresses.
    std::vector<link::Address> drain()
    {
        client.send(router, link::pack_control({QRTR_TYPE_NEW_LOOKUP, 0, 0, {}}), {}, true);
        std::vector<link::Address> found;
        while (true) {
            bool closed = false;
            pollfd ready{client.fd(), POLLIN, 0};
            ::poll(&ready, 1, -1);
            const auto datagram = client.receive(room, closed);
            if (closed) std::abort();
            if (!datagram || datagram->peer.port != QRTR_PORT_CTRL) continue;
            const auto packet = link::parse_control(datagram->bytes);
            if (!packet || packet->type != QRTR_TYPE_NEW_SERVER) continue;
            if (packet->service == 0) return found;
            found.push_back(packet->address);
        }
    }

    std::string folder;
    const link::Address router{1, QRTR_PORT_CTRL};
    link::LinkSocket client;
    std::unique_ptr<sim::EmbeddedModem> modem;
    std::vector<link::Address> services;
    Bytes room = Bytes(link::kLongestDatagram);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Bench bench;
    ByteView rest(data, size);
    while (rest.size() >= 2) {
        const bool to_router = rest[0] == 0xFF;
        const std::size_t length = std::min<std::size_t>(rest[1] * std::size_t{4}, rest.size() - 2);
        const link::Address service = bench.services[rest[0] % bench.services.size()];
        bench.client.send(to_router ? bench.router : service, rest.subspan(2, length), {}, true);
        rest = rest.subspan(2 + length);
    }
    // A restart may be under way, or have given the services other addresses.
    do {
        bench.services = bench.drain();
    } while (bench.services.empty());
    return 0;
}

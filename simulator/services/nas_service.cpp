#include "simulator/services/nas_service.h"

#include <span>
#include <string>

#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

using std::chrono::milliseconds;

constexpr std::size_t kNetworks = 40;  // that an answer has room for
constexpr std::size_t kLongestName = 255;

constexpr std::uint16_t kScan = 0x0021;
constexpr std::uint16_t kIncrementalScan = 0x0085;  // request and indication
enum IncrementalStatus : std::uint32_t { kPartial = 0, kComplete = 1 };

struct Network {
    std::uint16_t mcc = 0;
    std::uint16_t mnc = 0;
    std::uint8_t status = 0;
    std::uint8_t radio = 0;
    bool three_digits = false;  // of the network code
    std::string name;
};

struct NasSettings final : ServiceSettings {
    milliseconds scan{50};
    std::vector<Network> networks;
};

Network read_network(const ScenarioNode& node)
{
    TableReader table("networks", node);
    Network network;
    network.mcc = static_cast<std::uint16_t>(table.need("mcc").number("mcc", 0, 999));
    network.mnc = static_cast<std::uint16_t>(table.need("mnc").number("mnc", 0, 999));
    network.status = static_cast<std::uint8_t>(table.number("status", 0, 0xFF).value_or(0));
    network.radio = static_cast<std::uint8_t>(table.number("radio", 0, 0xFF).value_or(8));
    network.three_digits = table.flag("three_digits").value_or(network.mnc > 99);
    network.name = table.text("name").value_or("");
    if (network.name.size() > kLongestName) table.refuse("a name of at most 255 bytes");
    table.finish();
    return network;
}

// ---- What an answer's records hold ----

void append_codes(Bytes& to, const Network& network)
{
    append_le(to, network.mcc);
    append_le(to, network.mnc);
}

void append_name(Bytes& to, const Network& network)
{
    to.push_back(static_cast<std::uint8_t>(network.name.size()));
    to.insert(to.end(), network.name.begin(), network.name.end());
}

// A count, and a record for each network.
template <typename Append>
Bytes list_of(std::span<const Network> networks, Append append)
{
    Bytes list;
    append_le(list, static_cast<std::uint16_t>(networks.size()));
    for (const Network& network : networks) {
        append_codes(list, network);
        append(list, network);
    }
    return list;
}

Bytes incremental_result(IncrementalStatus status, std::span<const Network> networks)
{
    Bytes tlvs;
    TlvWriter writer(tlvs);
    writer.number(0x01, static_cast<std::uint32_t>(status));
    writer.bytes(0x10, list_of(networks, [](Bytes& to, const Network& network) {
                     to.push_back(network.status);
                     to.push_back(network.radio);
                     to.push_back(network.three_digits ? 1 : 0);
                     append_name(to, network);
                 }));
    return tlvs;
}

// ---- The service ----

class NasService final : public Service {
 public:
    NasService(Modem& modem, const NasSettings& settings)
        : Service({"nas", 3, ResultForm::halves}, modem), settings_(settings)
    {
    }

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void scan(Call& call);
    void scan_incrementally(Call& call);

    static const Message<NasService> kMessages[2];
    const NasSettings& settings_;
};

constexpr Message<NasService> NasService::kMessages[2] = {
    {kScan, &NasService::scan},
    {kIncrementalScan, &NasService::scan_incrementally},
};

// Answered when the scan has ended.
void NasService::scan(Call& call)
{
    const std::span<const Network> networks = settings_.networks;
    call.answer_after(settings_.scan);
    call.answer.bytes(0x10, list_of(networks, [](Bytes& to, const Network& network) {
                          to.push_back(network.status);
                          append_name(to, network);
                      }));
    call.answer.bytes(0x11, list_of(networks, [](Bytes& to, const Network& network) { to.push_back(network.radio); }));
    call.answer.bytes(
        0x12, list_of(networks, [](Bytes& to, const Network& network) { to.push_back(network.three_digits ? 1 : 0); }));
    call.answer.number(0x13, std::uint32_t{0});
}

// Answered at once; the first half of the networks comes at half-time, all of them at the end.
void NasService::scan_incrementally(Call& call)
{
    const std::span<const Network> networks = settings_.networks;
    call.indicate(kIncrementalScan, incremental_result(kPartial, networks.first(networks.size() / 2)),
                  settings_.scan / 2);
    call.indicate(kIncrementalScan, incremental_result(kComplete, networks), settings_.scan);
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_nas_settings(TableReader* file)
{
    auto settings = std::make_unique<NasSettings>();
    settings->networks = {{262, 1, 2, 8, false, "Net One"}, {310, 410, 2, 12, true, "Net Two"}};
    const ScenarioNode* node = file == nullptr ? nullptr : file->find("nas");
    if (node == nullptr) return settings;
    TableReader table("[nas]", *node);
    settings->scan = table.milliseconds("scan_ms").value_or(settings->scan);
    if (const ScenarioNode* networks = table.find("networks")) {
        settings->networks.clear();
        for (const ScenarioNode& network : networks->list("networks")) {
            settings->networks.push_back(read_network(network));
        }
        if (settings->networks.size() > kNetworks) networks->refuse("networks", "at most 40 networks");
    }
    table.finish();
    return settings;
}

std::unique_ptr<Service> make_nas_service(Modem& modem, const ServiceSettings* settings)
{
    return std::make_unique<NasService>(modem, *static_cast<const NasSettings*>(settings));
}

}  // namespace rbk::sim

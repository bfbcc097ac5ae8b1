// Diag: the library's calls, requests that are answered by the scenario's rows, and streams to DCI clients.
#include "simulator/services/diag_service.h"

#include <algorithm>
#include <map>
#include <set>

#include "link/diag_frame.h"
#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

using link::DiagCall;
using link::DiagHead;
using link::DiagKind;
using link::DiagPacket;
using std::chrono::milliseconds;

constexpr std::int32_t kMpssBit = 0x0002;    // of the peripherals that are up
constexpr std::int32_t kUnknownClient = -1;  // code of a DCI call
constexpr std::size_t kDciClients = 16;      // of one client of the link

// ---- What the scenario says ----

struct ResponsePacket {
    Bytes bytes;
    milliseconds after{0};  // the request
    std::int32_t processor = 0;
};

struct ResponseRow {
    Bytes request;  // how a request begins that it is for
    std::vector<ResponsePacket> packets;
};

struct Stream {
    DiagPacket kind = DiagPacket::dci_log;
    Bytes bytes;
    milliseconds every{0};
};

struct DiagSettings final : ServiceSettings {
    std::int32_t remote_mask = 0;
    bool mpss_up = true;
    std::vector<ResponseRow> responses;
    std::vector<Stream> streams;
};

// The built-in phone tells its build: command, version, two bytes of padding, the text.
ResponseRow build_row()
{
    constexpr std::string_view kBuild = "SIM.1.0";
    Bytes bytes{0x7C, 0x02, 0x00, 0x00};
    bytes.insert(bytes.end(), kBuild.begin(), kBuild.end());
    return {{0x7C}, {{std::move(bytes)}}};
}

ResponsePacket read_packet(const ScenarioNode& node)
{
    TableReader table("packets", node);
    ResponsePacket packet;
    if (const ScenarioNode* bytes = table.find("bytes")) {
        packet.bytes = bytes->bytes("bytes", link::kLongestDiagBytes);
    } else {
        const auto fill = static_cast<std::uint8_t>(table.need("fill").number("fill", 0, 0xFF));
        const auto size = table.need("size").number("size", 0, link::kLongestDiagBytes);
        packet.bytes.assign(static_cast<std::size_t>(size), fill);
    }
    packet.after = table.milliseconds("after_ms").value_or(packet.after);
    packet.processor = static_cast<std::int32_t>(table.number("processor", 0, kHighestProcessor).value_or(0));
    table.finish();
    return packet;
}

ResponseRow read_response(const ScenarioNode& node)
{
    TableReader table("[[diag.response]]", node);
    ResponseRow row{table.need("request").bytes("request", link::kLongestDiagBytes), {}};
    for (const ScenarioNode& packet : table.need("packets").list("packets")) row.packets.push_back(read_packet(packet));
    table.finish();
    return row;
}

Stream read_stream(const ScenarioNode& node)
{
    TableReader table("[[diag.stream]]", node);
    const ScenarioNode& kind = table.need("kind");
    const std::string& name = kind.text("kind");
    if (name != "log" && name != "event") kind.refuse("kind", "log or event");
    const ScenarioNode& every = table.need("every_ms");
    Stream stream{name == "log" ? DiagPacket::dci_log : DiagPacket::dci_event,
                  table.need("bytes").bytes("bytes", link::kLongestDiagBytes),
                  milliseconds(every.number("every_ms", 1, 24L * 60 * 60 * 1000))};
    table.finish();
    return stream;
}

// ---- The service ----

class DiagService final : public Service {
 public:
    DiagService(Modem& modem, const DiagSettings& settings)
        : Service({"diag", link::kDiagService, ResultForm::own}, modem), settings_(settings)
    {
    }

 private:
    using DciId = std::pair<ClientId, std::int32_t>;

    // Diag has frames of its own, and its faults are decided here: a request and its packets are no message and answer.
    bool handle_datagram(ClientId client, ByteView bytes) override;
    void handle(Call& call) override { call.fail(QmiError::invalid_command); }
    void tell_holdings(ClientId client, Holdings& held) const override;
    void client_gone(ClientId client) override;

    void run_call(ClientId client, const DiagHead& call, ByteView bytes);
    void run_request(ClientId client, const DiagHead& call, ByteView request);
    void start_dci_client(ClientId client, const DiagHead& call);
    void start_streams(DciId id);
    void run_stream(DciId id, std::uint64_t start, const Stream& stream);
    void answer(ClientId client, const DiagHead& call, std::int32_t code, std::int32_t value = 0);

    // The bytes are the scenario's, and outlive the service.
    void send_packet(ClientId client, const DiagHead& head, ByteView bytes, milliseconds after);
    void send_later(ClientId client, const DiagHead& head, ByteView bytes, milliseconds after);
    bool is_wanted(ClientId client, const DiagHead& head) const;

    const DiagSettings& settings_;
    std::set<ClientId> sessions_;  // whose library is started
    std::set<DciId> dci_clients_;
    std::map<DciId, std::uint64_t> streaming_;  // by which of all starts: the packets of an earlier one have ended
    std::uint64_t starts_ = 0;
};

std::int32_t success_of(DiagCall call)
{
    return call == DiagCall::lsm_init || call == DiagCall::send ? link::kDiagSuccess : link::kDciSuccess;
}

bool DiagService::handle_datagram(ClientId client, ByteView bytes)
{
    const auto frame = link::parse_diag(bytes);
    if (frame && frame->head.kind == DiagKind::call) run_call(client, frame->head, frame->bytes);
    return true;
}

void DiagService::tell_holdings(ClientId client, Holdings& held) const
{
    const auto of_client = [client](const DciId& id) { return id.first == client; };
    const auto streams = [&](const auto& row) { return of_client(row.first); };
    held.diag_sessions += sessions_.count(client);
    held.dci_clients += static_cast<std::size_t>(std::ranges::count_if(dci_clients_, of_client));
    held.dci_streams += static_cast<std::size_t>(std::ranges::count_if(streaming_, streams));
}

void DiagService::client_gone(ClientId client)
{
    sessions_.erase(client);
    const auto of_client = [client](const DciId& id) { return id.first == client; };
    std::erase_if(dci_clients_, of_client);
    std::erase_if(streaming_, [&](const auto& row) { return of_client(row.first); });
}

void DiagService::run_call(ClientId client, const DiagHead& call, ByteView bytes)
{
    if (call.what < link::kDiagCallNames.size()) {
        const FaultRule* fault = modem().faults().for_call(identity().name, link::kDiagCallNames[call.what]);
        if (fault != nullptr) return answer(client, call, fault->code);
    }
    const DciId id(client, call.client);
    const bool known = dci_clients_.contains(id);
    const auto what = static_cast<DiagCall>(call.what);
    switch (what) {
    case DiagCall::lsm_init:
        sessions_.insert(client);
        return answer(client, call, link::kDiagSuccess, settings_.remote_mask);
    case DiagCall::lsm_deinit: return client_gone(client);
    case DiagCall::send: return run_request(client, call, bytes);
    case DiagCall::dci_support: return answer(client, call, link::kDciSuccess, settings_.mpss_up ? kMpssBit : 0);
    case DiagCall::dci_register: return start_dci_client(client, call);
    case DiagCall::dci_signal: break;
    case DiagCall::dci_stream:
        if (known) start_streams(id);
        break;
    case DiagCall::dci_send:
        if (known) return run_request(client, call, bytes);
        break;
    case DiagCall::dci_release:
        dci_clients_.erase(id);
        streaming_.erase(id);
        break;
    default: return;
    }
    answer(client, call, known ? link::kDciSuccess : kUnknownClient);
}

void DiagService::start_dci_client(ClientId client, const DiagHead& call)
{
    const auto others = std::count_if(dci_clients_.begin(), dci_clients_.end(),
                                      [client](const DciId& id) { return id.first == client; });
    if (call.client <= 0 || static_cast<std::size_t>(others) >= kDciClients) {
        return answer(client, call, kUnknownClient);
    }
    dci_clients_.insert({client, call.client});
    answer(client, call, link::kDciSuccess);
}

void DiagService::answer(ClientId client, const DiagHead& call, std::int32_t code, std::int32_t value)
{
    const DiagHead head{DiagKind::answer, call.what, call.sequence, call.client, value, code};
    modem().send_datagram(*this, client, link::pack_diag(head), {});
}

// ---- A request and its packets ----

// The call is answered before the first packet leaves: the request has been taken, whatever becomes of it.
void DiagService::run_request(ClientId client, const DiagHead& call, ByteView request)
{
    const FaultRule* fault = modem().faults().for_request(*this, 0, request);
    const FaultAction action = fault == nullptr ? FaultAction::result : fault->action;
    if (action == FaultAction::down) return modem().restart(*this);
    if (action == FaultAction::error) return answer(client, call, fault->code);
    answer(client, call, success_of(static_cast<DiagCall>(call.what)));

    const bool dci = static_cast<DiagCall>(call.what) == DiagCall::dci_send;
    DiagHead head{DiagKind::packet, static_cast<std::uint8_t>(dci ? DiagPacket::dci_response : DiagPacket::response),
                  call.sequence, call.client};
    // A DCI client is for the modem's own processor.
    const auto is_heard = [&](std::int32_t processor) {
        head.value = processor;
        return !dci || processor == 0;
    };
    if (action == FaultAction::silent || action == FaultAction::raw) {
        if (action == FaultAction::raw && is_heard(fault->processor)) {
            send_later(client, head, fault->bytes, fault->delay);
        }
        for (const Following& each : fault->then) {
            if (is_heard(each.processor)) send_later(client, head, each.bytes, fault->delay + each.after);
        }
        return;
    }
    if (action == FaultAction::indicate) {
        send_later(client, head, fault->bytes, milliseconds{0});
        if (!fault->also) return;
    }

    const milliseconds delay = action == FaultAction::delay ? fault->delay : milliseconds{0};
    const auto row =
        std::find_if(settings_.responses.begin(), settings_.responses.end(), [&](const ResponseRow& candidate) {
            return candidate.request.size() <= request.size() &&
                   std::equal(candidate.request.begin(), candidate.request.end(), request.begin());
        });
    if (row == settings_.responses.end()) return;
    for (const ResponsePacket& packet : row->packets) {
        if (is_heard(packet.processor)) send_packet(client, head, packet.bytes, delay + packet.after);
    }
}

// One packet of the modem's own, as the fault rules have it.
void DiagService::send_packet(ClientId client, const DiagHead& head, ByteView bytes, milliseconds after)
{
    const FaultRule* fault = modem().faults().for_indication(*this, 0, bytes);
    switch (fault == nullptr ? FaultAction::result : fault->action) {
    case FaultAction::silent: return;
    case FaultAction::down: return this->after(client, after, [this] { modem().restart(*this); });
    case FaultAction::delay: after += fault->delay; break;
    case FaultAction::raw: return send_later(client, head, fault->bytes, after);
    case FaultAction::indicate:
        send_later(client, head, fault->bytes, after);
        if (!fault->also) return;
        break;
    case FaultAction::twice: send_later(client, head, bytes, after); break;
    case FaultAction::early: after = milliseconds{0}; break;
    case FaultAction::error:
    case FaultAction::result:
    case FaultAction::refuse:
    case FaultAction::pull: break;  // of requests alone
    }
    send_later(client, head, bytes, after);
}

void DiagService::send_later(ClientId client, const DiagHead& head, ByteView bytes, milliseconds after)
{
    const auto send = [this, client, head, bytes] {
        if (is_wanted(client, head)) modem().send_datagram(*this, client, link::pack_diag(head), bytes);
    };
    if (after.count() == 0) return send();
    this->after(client, after, send);
}

// A DCI client that has ended gets nothing more.
bool DiagService::is_wanted(ClientId client, const DiagHead& head) const
{
    return static_cast<DiagPacket>(head.what) == DiagPacket::response || dci_clients_.contains({client, head.client});
}

// ---- Streams ----

void DiagService::start_streams(DciId id)
{
    if (!streaming_.emplace(id, starts_ + 1).second) return;
    ++starts_;
    for (const Stream& stream : settings_.streams) run_stream(id, starts_, stream);
}

void DiagService::run_stream(DciId id, std::uint64_t start, const Stream& stream)
{
    after(id.first, stream.every, [this, id, start, &stream] {
        const auto row = streaming_.find(id);
        if (row == streaming_.end() || row->second != start) return;
        send_packet(id.first, {DiagKind::packet, static_cast<std::uint8_t>(stream.kind), 0, id.second}, stream.bytes,
                    milliseconds{0});
        run_stream(id, start, stream);
    });
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_diag_settings(TableReader* file)
{
    auto settings = std::make_unique<DiagSettings>();
    settings->responses.push_back(build_row());
    const ScenarioNode* node = file == nullptr ? nullptr : file->find("diag");
    if (node == nullptr) return settings;
    TableReader table("[diag]", *node);
    settings->remote_mask = static_cast<std::int32_t>(table.number("remote_mask", 0, 0xFFFF).value_or(0));
    settings->mpss_up = table.flag("mpss_up").value_or(true);
    if (const ScenarioNode* rows = table.find("response")) {
        settings->responses.clear();
        for (const ScenarioNode& row : rows->list("[[diag.response]]")) {
            settings->responses.push_back(read_response(row));
        }
    }
    if (const ScenarioNode* streams = table.find("stream")) {
        for (const ScenarioNode& stream : streams->list("[[diag.stream]]")) {
            settings->streams.push_back(read_stream(stream));
        }
    }
    table.finish();
    return settings;
}

std::unique_ptr<Service> make_diag_service(Modem& modem, const ServiceSettings* settings)
{
    return std::make_unique<DiagService>(modem, *static_cast<const DiagSettings*>(settings));
}

}  // namespace rbk::sim

#include "simulator/modem/modem.h"

#include <algorithm>
#include <utility>

#include "simulator/state/nv_limits.h"

namespace rbk::sim {
namespace {

constexpr std::uint32_t kFirstVersion = 1;  // of a service, as instance 0

// A fresh phone's memory.
bool fill_state(const Scenario& scenario, StateStore& fresh)
{
    for (const auto& [key, bytes] : scenario.nv) {
        if (fresh.write(nv_name(key.first, key.second), bytes) != 0) return false;
    }
    for (const auto& [place, bytes] : scenario.efs) {
        if (fresh.write_in(place.tree(), place.parts, bytes) != 0) return false;
    }
    return std::all_of(scenario.settings.begin(), scenario.settings.end(),
                       [&](const auto& row) { return row.second == nullptr || row.second->fill(fresh); });
}

}  // namespace

// ---- Switching on and off ----

Modem::Modem(Scenario scenario, const std::filesystem::path& state, Complaints& complaints, ClientLimits limits)
    : complaints_(complaints),
      limits_(limits),
      scenario_(std::move(scenario)),
      store_(state, complaints),
      faults_(std::move(scenario_.faults))
{
    store_.prepare([this](StateStore& fresh) { return fill_state(scenario_, fresh); });
    // What only a fresh state needs is the largest part of a scenario.
    scenario_.nv.clear();
    scenario_.efs.clear();

    for (const ServiceKind& kind : service_kinds()) {
        const auto& names = scenario_.services;
        if (kind.make == nullptr || std::find(names.begin(), names.end(), kind.name) == names.end()) continue;
        slots_.push_back({&kind, nullptr, {}});
    }
    for (Slot& slot : slots_) {
        if (scenario_.boot.count() == 0) {
            bring_up(slot);
        } else {
            bring_up_later(slot, scenario_.boot);
        }
    }
}

Modem::~Modem() = default;

void Modem::run()
{
    loop_.run();
    for (const auto& [id, client] : clients_) enter_in_ledger(id);
}

void Modem::restart()
{
    restart_asked_ = true;
}

void Modem::restart(Service& service)
{
    if (Slot* slot = find_slot(service)) go_down(*slot);
}

void Modem::bring_up(Slot& slot)
{
    if (slot.service != nullptr) return;
    const auto settings = scenario_.settings.find(std::string(slot.kind->name));
    slot.service = slot.kind->make(*this, settings == scenario_.settings.end() ? nullptr : settings->second.get());
    const auto given = scenario_.instances.find(std::string(slot.kind->name));
    slot.server = {slot.service->identity().id, given == scenario_.instances.end() ? kFirstVersion : given->second,
                   ++last_port_};
    for (Carrier* carrier : carriers_) carrier->service_up(slot.server);
}

void Modem::take_down(Slot& slot)
{
    ++slot.downs;
    if (slot.service == nullptr) return;
    for (Carrier* carrier : carriers_) carrier->service_down(slot.server);
    for (const auto& [id, client] : clients_) client->greeted.erase(slot.server.port);
    slot.service.reset();
}

// Once the handler that runs now has returned; comes back after restart_ms.
void Modem::go_down(Slot& slot)
{
    loop_.defer([this, &slot] {
        take_down(slot);
        bring_up_later(slot, scenario_.restart);
    });
}

void Modem::go_down_all(std::chrono::milliseconds delay)
{
    if (delay.count() == 0) {
        for (Slot& slot : slots_) go_down(slot);
    } else if (!std::exchange(restart_put_off_, true)) {  // one is enough, however many ask for it meanwhile
        loop_.after(delay, [this] {
            restart_put_off_ = false;
            go_down_all({});
        });
    }
}

void Modem::bring_up_later(Slot& slot, std::chrono::milliseconds delay)
{
    loop_.after(delay, [this, &slot, downs = slot.downs] {
        if (slot.downs == downs) bring_up(slot);
    });
}

// ---- Carriers ----

std::vector<Server> Modem::servers() const
{
    std::vector<Server> up;
    for (const Slot& slot : slots_) {
        if (slot.service != nullptr) up.push_back(slot.server);
    }
    return up;
}

ClientId Modem::attach(std::unique_ptr<Line> line)
{
    const ClientId id = ++last_client_;
    clients_.emplace(id, std::make_unique<Client>(id, std::move(line)));
    return id;
}

bool Modem::on_message(ClientId id, std::uint32_t port, ByteView bytes)
{
    Client* client = find_client(id);
    if (client == nullptr) return true;
    Slot* slot = find_slot(port);
    if (slot == nullptr) return false;
    if (slot->service->handle_datagram(id, bytes)) return true;
    const std::optional<link::QmiMessage> message = link::parse_qmi(bytes);
    if (message && message->head.kind == link::QmiKind::request) on_request(*client, *slot, *message);
    return true;
}

void Modem::on_room(ClientId id)
{
    Client* client = find_client(id);
    if (client == nullptr) return;
    client->send_unsent();
    if (client->has_unsent()) client->line().want_room();
}

void Modem::send(ClientId id, std::uint32_t port, ByteView head, ByteView body)
{
    if (Client* client = find_client(id)) send(*client, port, head, body);
}

void Modem::drop(ClientId id)
{
    if (Client* client = find_client(id)) drop(*client);
}

// ---- A request and its answer ----

void Modem::on_request(Client& client, Slot& slot, const link::QmiMessage& message)
{
    Service& service = *slot.service;
    // From its first request on, a client hears what the service says unasked.
    if (client.greeted.insert(slot.server.port).second) {
        for (const UnaskedIndication& said : scenario_.indications) {
            if (said.service == slot.kind->name) say_unasked(slot, client.id(), said, said.after);
        }
    }

    answer_.clear();
    Call call(service, client.id(), message.head.message, message.tlvs, answer_);
    if (!well_formed(message.tlvs)) {
        call.fail(QmiError::malformed_message);
        return answer(client, slot, message, call, nullptr);
    }
    const FaultRule* fault = faults_.for_request(service, call.message, call.tlvs);
    if (fault != nullptr && fault->action == FaultAction::silent) {
        return send_following(client, slot, {}, *fault, false);
    }
    if (fault != nullptr && fault->action == FaultAction::down) return go_down(slot);
    if (fault != nullptr && fault->action == FaultAction::error) {
        answer_.clear();
        service.write_result(call.message, fault->code, call.answer);
    } else if (fault != nullptr && fault->action == FaultAction::raw) {
        answer_ = fault->bytes;
    } else {
        if (fault != nullptr && fault->action == FaultAction::pull) service.pull_card(fault->slot);
        if (fault != nullptr && fault->action == FaultAction::refuse) {
            service.refuse(call, fault->code);
        } else {
            service.handle(call);
        }
    }
    answer(client, slot, message, call, fault);
}

void Modem::answer(Client& client, Slot& slot, const link::QmiMessage& message, Call& call, const FaultRule* fault)
{
    std::chrono::milliseconds delay = call.delay();
    if (fault != nullptr) delay += fault->delay;
    if (fault != nullptr && fault->action == FaultAction::result) {
        slot.service->set_result(call.tlvs, answer_, fault->code);
    }
    std::vector<Outgoing> planned;
    for (Indication& indication : call.indications()) plan(slot, std::move(indication), planned);
    if (fault != nullptr && fault->action == FaultAction::indicate) {
        const auto after = planned.empty() ? std::chrono::milliseconds{0} : planned.front().indication.after;
        if (!fault->also) {
            planned.clear();
            call.more() = {};
        }
        planned.insert(planned.begin(),
                       Outgoing{{fault->indication.value_or(call.message), fault->bytes, after}, false});
    }

    for (Outgoing& outgoing : planned) {
        if (!outgoing.early) continue;
        outgoing.indication.after = {};
        send_planned({}, client, slot, outgoing);
    }
    const link::QmiHead head{link::QmiKind::response, message.head.transaction, call.message, 0};
    if (fault != nullptr) send_following(client, slot, head, *fault, true);
    // All that follows from the request follows its answer, however late a rule makes that.
    send_after(delay, client, slot, head, answer_);
    if (fault != nullptr) send_following(client, slot, head, *fault, false);
    for (const Outgoing& outgoing : planned) {
        if (!outgoing.early) send_planned(delay, client, slot, outgoing);
    }
    if (call.more().task) put_off(*slot.service, client.id(), delay + call.more().after, call.more().task, 0);
    if (std::exchange(restart_asked_, false)) go_down_all(delay);
}

// What a rule itself sends, before the answer with this head or behind it.
void Modem::send_following(Client& client, Slot& slot, const link::QmiHead& answer, const FaultRule& fault, bool early)
{
    for (const Following& each : fault.then) {
        if (each.early != early) continue;
        const link::QmiHead indication{link::QmiKind::indication, 0, each.indication.value_or(0), 0};
        send_after(early ? each.after : fault.delay + each.after, client, slot, each.indication ? indication : answer,
                   each.bytes);
    }
}

void Modem::send_planned(std::chrono::milliseconds delay, Client& client, Slot& slot, const Outgoing& outgoing)
{
    delay += outgoing.indication.after;
    if (!outgoing.down) {
        const link::QmiHead head{link::QmiKind::indication, 0, outgoing.indication.message, 0};
        send_after(delay, client, slot, head, outgoing.indication.tlvs);
    } else if (delay.count() == 0) {
        go_down(slot);
    } else {
        put_off(
            *slot.service, client.id(), delay, [this, &slot] { go_down(slot); }, 0);
    }
}

void Modem::say_unasked(Slot& slot, ClientId id, const UnaskedIndication& said, std::chrono::milliseconds delay)
{
    slot.service->after(id, delay, [this, &slot, id, &said] {
        indicate(*slot.service, id, said.message, said.tlvs);
        if (said.every) say_unasked(slot, id, said, *said.every);
    });
}

void Modem::indicate(Service& service, ClientId id, std::uint16_t message, Bytes tlvs)
{
    Client* client = find_client(id);
    Slot* slot = find_slot(service);
    if (client == nullptr || slot == nullptr) return;
    std::vector<Outgoing> planned;
    plan(*slot, {message, std::move(tlvs)}, planned);
    for (const Outgoing& outgoing : planned) send_planned({}, *client, *slot, outgoing);
}

// What becomes of one indication of the modem's own: nothing, itself, or something else.
void Modem::plan(Slot& slot, Indication indication, std::vector<Outgoing>& planned)
{
    const FaultRule* fault = faults_.for_indication(*slot.service, indication.message, indication.tlvs);
    if (fault == nullptr) return planned.push_back({std::move(indication)});
    bool early = false;
    switch (fault->action) {
    case FaultAction::silent: return;
    case FaultAction::down: return planned.push_back({std::move(indication), false, true});
    case FaultAction::delay: indication.after += fault->delay; break;
    case FaultAction::raw: indication.tlvs = fault->bytes; break;
    case FaultAction::twice: planned.push_back({indication}); break;
    case FaultAction::early: early = true; break;
    case FaultAction::indicate:
        planned.push_back({{fault->indication.value_or(indication.message), fault->bytes, indication.after}, false});
        if (!fault->also) return;
        break;
    case FaultAction::error:
    case FaultAction::result:
    case FaultAction::refuse:
    case FaultAction::pull: break;  // of requests alone
    }
    planned.push_back({std::move(indication), early});
}

// ---- Sending ----

Modem::Slot* Modem::find_slot(std::uint32_t port)
{
    const auto found = std::find_if(slots_.begin(), slots_.end(), [&](const Slot& slot) {
        return slot.service != nullptr && slot.server.port == port;
    });
    return found == slots_.end() ? nullptr : &*found;
}

Modem::Slot* Modem::find_slot(const Service& service)
{
    const auto found =
        std::find_if(slots_.begin(), slots_.end(), [&](const Slot& slot) { return slot.service.get() == &service; });
    return found == slots_.end() ? nullptr : &*found;
}

Client* Modem::find_client(ClientId id)
{
    const auto found = clients_.find(id);
    return found == clients_.end() || found->second->leaving ? nullptr : found->second.get();
}

void Modem::send_datagram(Service& service, ClientId id, ByteView head, ByteView body)
{
    Client* client = find_client(id);
    const Slot* slot = find_slot(service);
    if (client != nullptr && slot != nullptr) send(*client, slot->server.port, head, body);
}

void Modem::send_message(Client& client, const Slot& slot, const link::QmiHead& head, ByteView tlvs)
{
    std::uint8_t bytes[link::kQmiHeadSize];
    link::QmiHead whole = head;
    whole.length = static_cast<std::uint16_t>(tlvs.size());
    link::store_qmi_head(bytes, whole);
    send(client, slot.server.port, bytes, tlvs);
}

void Modem::send_after(std::chrono::milliseconds delay, Client& client, Slot& slot, const link::QmiHead& head,
                       const Bytes& tlvs)
{
    if (delay.count() == 0) return send_message(client, slot, head, tlvs);
    const auto send_now = [this, id = client.id(), &slot, head, tlvs] {
        if (Client* later = find_client(id)) send_message(*later, slot, head, tlvs);
    };
    put_off(*slot.service, client.id(), delay, send_now, tlvs.size());
}

void Modem::put_off(Service& service, ClientId id, std::chrono::milliseconds delay, EventLoop::Task task,
                    std::size_t size)
{
    Client* client = find_client(id);
    if (client == nullptr) return;
    const EventLoop::TimerId timer = loop_.new_timer(delay);
    if (!client->put_off(limits_, timer, size)) return drop(*client);
    loop_.set(timer, [this, id, timer, alive = service.lifetime(), task = std::move(task)] {
        if (Client* later = find_client(id)) later->take_up(timer);
        if (!alive.expired()) task();
    });
}

void Modem::send(Client& client, std::uint32_t port, ByteView head, ByteView body)
{
    if (client.leaving) return;
    const bool waited = client.has_unsent();
    if (!client.send(limits_, port, head, body)) return drop(client);
    if (waited || !client.has_unsent()) return;
    client.line().want_room();
    if (!client.age_timer) check_unread_later(client, limits_.unsent_age);
}

void Modem::check_unread_later(Client& client, EventLoop::Clock::duration delay)
{
    client.age_timer = loop_.after(delay, [this, id = client.id()] {
        Client* waiting = find_client(id);
        if (waiting == nullptr) return;
        waiting->age_timer.reset();
        if (!waiting->has_unsent()) return;
        const auto age = EventLoop::Clock::now() - waiting->unsent_since();
        if (age >= limits_.unsent_age) return drop(*waiting);
        check_unread_later(*waiting, limits_.unsent_age - age);
    });
}

// The client may be in the hands of whoever called: it goes when they have returned.
void Modem::drop(Client& client)
{
    if (std::exchange(client.leaving, true)) return;
    for (const auto& [timer, size] : client.timers()) loop_.cancel(timer);
    if (client.age_timer) loop_.cancel(*client.age_timer);
    loop_.defer([this, id = client.id()] {
        enter_in_ledger(id);
        for (Slot& slot : slots_) {
            if (slot.service != nullptr) slot.service->client_gone(id);
        }
        clients_.erase(id);
    });
}

void Modem::enter_in_ledger(ClientId id)
{
    if (ledger_ == nullptr) return;
    Holdings held;
    for (const Slot& slot : slots_) {
        if (slot.service != nullptr) slot.service->tell_holdings(id, held);
    }
    const std::string problem = ledger_->write(id, held);
    if (!problem.empty()) complaints_.say(problem);
}

}  // namespace rbk::sim

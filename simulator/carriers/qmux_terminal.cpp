#include "simulator/carriers/qmux_terminal.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <algorithm>

#include "simulator/modem/modem.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kUnread = 64UL * 1024;  // bytes of the carrier's own messages; what comes on top of them is lost
constexpr std::size_t kReadAtOnce = 4096;
constexpr std::uint32_t kHighestService = 0xFF;  // that a frame has room for
constexpr std::uint8_t kHighestId = 254;         // 255 stands for all of them

enum : std::uint16_t {
    kSetInstance = 0x0020,
    kVersions = 0x0021,
    kAllocate = 0x0022,
    kRelease = 0x0023,
    kRevoke = 0x0024,
    kSetDataFormat = 0x0026,
    kSync = 0x0027,
};
enum : std::uint8_t { kFirst = 0x01, kResult = 0x02, kLinkProtocol = 0x10 };
constexpr std::uint16_t kControlVersion[] = {1, 5};

// The mandatory TLV of a request, or what is wrong with it.
QmiError take_argument(ByteView tlvs, std::size_t size, ByteView& value)
{
    const std::optional<ByteView> found = find_tlv(tlvs, kFirst);
    if (!found) return QmiError::missing_argument;
    value = *found;
    return value.size() == size ? QmiError::none : QmiError::malformed_message;
}

}  // namespace

// One client id. It is in `ids_` until it is given back or taken back; where the modem drops its client before, it goes
// from there with it.
class QmuxTerminal::IdLine final : public Line {
 public:
    IdLine(QmuxTerminal& terminal, Id own, std::uint32_t server_port) : id(own), port(server_port), terminal_(terminal)
    {
    }
    ~IdLine() override
    {
        std::erase(terminal_.waiting_, client);
        const auto held = terminal_.ids_.find(id);
        if (held == terminal_.ids_.end() || held->second != this) return;
        terminal_.ids_.erase(held);
        terminal_.revoke(id);
    }
    IdLine(const IdLine&) = delete;
    IdLine& operator=(const IdLine&) = delete;

    // A frame that has been begun is finished before anything else.
    link::SendResult send(std::uint32_t, ByteView head, ByteView body) override
    {
        if (!terminal_.unwritten_.empty()) return link::SendResult::would_block;
        terminal_.write(pack_qmux_head(id.first, id.second, head.size() + body.size()), head, body);
        return link::SendResult::sent;
    }
    void want_room() override { terminal_.waiting_.push_back(client); }

    const Id id;
    const std::uint32_t port;  // of the service
    ClientId client = 0;

 private:
    QmuxTerminal& terminal_;
};

std::unique_ptr<QmuxTerminal> QmuxTerminal::open(const std::string& path, std::string& error,
                                                 std::chrono::milliseconds patience)
{
    auto terminal = LinkedTerminal::open(path, error);
    if (terminal == nullptr) return nullptr;
    return std::unique_ptr<QmuxTerminal>(new QmuxTerminal(std::move(terminal), patience));
}

QmuxTerminal::QmuxTerminal(std::unique_ptr<LinkedTerminal> terminal, std::chrono::milliseconds patience)
    : terminal_(std::move(terminal)), patience_(patience)
{
}

void QmuxTerminal::serve(Modem& modem)
{
    modem_ = &modem;
    modem.add(*this);
    watch_ = modem.loop().watch(terminal_->fd(), EPOLLIN, [this](std::uint32_t events) { on_ready(events); });
}

void QmuxTerminal::service_down(const Server& server)
{
    if (server.service > kHighestService) return;
    const auto service = static_cast<std::uint8_t>(server.service);
    for (auto held = ids_.lower_bound({service, 0}); held != ids_.end() && held->first.first == service;) {
        const Id id = (held++)->first;
        let_go(id);
        revoke(id);
    }
}

// ---- What comes from the terminal ----

void QmuxTerminal::on_ready(std::uint32_t events)
{
    if ((events & EPOLLOUT) != 0) {
        write_unwritten();
        while (unwritten_.empty() && !waiting_.empty()) {
            const ClientId next = waiting_.front();
            waiting_.pop_front();
            modem_->on_room(next);
        }
        if (unwritten_.empty()) modem_->loop().change(watch_, EPOLLIN);
    }
    if ((events & EPOLLIN) == 0) return;
    std::uint8_t bytes[kReadAtOnce];
    const ssize_t size = ::read(terminal_->fd(), bytes, sizeof bytes);
    if (size <= 0) return;
    terminal_->keep_raw();  // else a host that has set it to be read by lines would never get through
    reader_.add({bytes, static_cast<std::size_t>(size)});
    take_frames();
}

void QmuxTerminal::take_frames()
{
    if (const std::optional<QmuxFrame> frame = reader_.next()) {
        on_frame(*frame);
        // What the modem puts off until its handler has returned comes before the next frame.
        return modem_->loop().defer([this] { take_frames(); });
    }
    // Whoever has begun a frame may be gone: the next one's frames aren't to be taken for the rest of it.
    const std::optional<std::uint64_t> part = reader_.part();
    if (part == part_) return;
    if (part_) modem_->loop().cancel(part_timer_);
    part_ = part;
    if (!part_) return;
    part_timer_ = modem_->loop().after(patience_, [this] {
        reader_.give_up();
        part_.reset();
        take_frames();
    });
}

void QmuxTerminal::on_frame(const QmuxFrame& frame)
{
    if (frame.service == kQmuxControl) return on_control(frame.client, frame.message);
    const auto held = ids_.find({frame.service, frame.client});
    if (held != ids_.end()) {
        modem_->on_message(held->second->client, held->second->port, frame.message);
        return;
    }
    const std::optional<link::QmiMessage> request = link::parse_qmi(frame.message);
    if (!request || request->head.kind != link::QmiKind::request) return;
    Bytes answer(link::kQmiHeadSize);
    TlvWriter(answer).number(kResult, std::uint32_t{1} | static_cast<std::uint32_t>(QmiError::invalid_client_id) << 16);
    const auto length = static_cast<std::uint16_t>(answer.size() - link::kQmiHeadSize);
    link::store_qmi_head(answer.data(),
                         {link::QmiKind::response, request->head.transaction, request->head.message, length});
    send_own(frame.service, frame.client, answer);
}

// ---- The control service ----

void QmuxTerminal::on_control(std::uint8_t client, ByteView message)
{
    const std::optional<QmuxControlHead> request = parse_qmux_request(message);
    if (!request) return;
    Bytes own;
    TlvWriter writer(own);
    QmiError error = QmiError::none;
    if (client != 0) {
        error = QmiError::invalid_client_id;
    } else if (!well_formed(message)) {
        error = QmiError::malformed_message;
    } else {
        error = run_control(request->message, message, writer);
    }
    Bytes tlvs;
    const auto failed = static_cast<std::uint32_t>(error == QmiError::none ? 0 : 1);
    TlvWriter(tlvs).number(kResult, failed | static_cast<std::uint32_t>(error) << 16);
    if (error == QmiError::none) tlvs.insert(tlvs.end(), own.begin(), own.end());
    const QmuxControlHead head{QmuxControlKind::response, request->transaction, request->message};
    send_own(kQmuxControl, client, pack_qmux_control(head, tlvs));
}

QmiError QmuxTerminal::run_control(std::uint16_t message, ByteView tlvs, TlvWriter& answer)
{
    switch (message) {
    case kVersions: return tell_versions(answer);
    case kSetInstance: return set_instance(tlvs, answer);
    case kAllocate: return allocate(tlvs, answer);
    case kRelease: return release(tlvs, answer);
    case kSetDataFormat: return set_data_format(tlvs, answer);
    case kSync:
        while (!ids_.empty()) let_go(ids_.begin()->first);
        return QmiError::none;
    default: return QmiError::invalid_command;
    }
}

QmiError QmuxTerminal::tell_versions(TlvWriter& answer) const
{
    Bytes list(1);
    const auto add = [&list](std::uint8_t service, std::uint16_t major, std::uint16_t minor) {
        list.push_back(service);
        append_le(list, major);
        append_le(list, minor);
        ++list[0];
    };
    add(kQmuxControl, kControlVersion[0], kControlVersion[1]);
    for (const Server& server : modem_->servers()) {
        if (server.service > kHighestService) continue;
        add(static_cast<std::uint8_t>(server.service), static_cast<std::uint8_t>(server.instance), 0);
    }
    answer.bytes(kFirst, list);
    return QmiError::none;
}

// The link has the number that its host gives it.
QmiError QmuxTerminal::set_instance(ByteView tlvs, TlvWriter& answer)
{
    ByteView instance;
    const QmiError error = take_argument(tlvs, 1, instance);
    if (error == QmiError::none) answer.number(kFirst, std::uint16_t{instance[0]});
    return error;
}

QmiError QmuxTerminal::allocate(ByteView tlvs, TlvWriter& answer)
{
    ByteView service;
    const QmiError error = take_argument(tlvs, 1, service);
    if (error != QmiError::none) return error;
    const std::optional<Server> server = find_server(service[0]);
    if (!server) return QmiError::invalid_service_type;
    Id id{service[0], 1};
    while (id.second <= kHighestId && ids_.contains(id)) ++id.second;
    if (id.second > kHighestId || ids_.size() >= modem_->client_ids()) return QmiError::client_ids_exhausted;
    auto line = std::make_unique<IdLine>(*this, id, server->port);
    IdLine* const held = line.get();
    held->client = modem_->attach(std::move(line));
    ids_.emplace(id, held);
    answer.bytes(kFirst, Bytes{id.first, id.second});
    return QmiError::none;
}

QmiError QmuxTerminal::release(ByteView tlvs, TlvWriter& answer)
{
    ByteView value;
    const QmiError error = take_argument(tlvs, 2, value);
    if (error != QmiError::none) return error;
    const Id id{value[0], value[1]};
    if (!find_server(id.first)) return QmiError::invalid_service_type;
    if (!ids_.contains(id)) return QmiError::invalid_client_id;
    let_go(id);
    answer.bytes(kFirst, value);
    return QmiError::none;
}

// There is no data to have a format: whatever is asked for is fine.
QmiError QmuxTerminal::set_data_format(ByteView tlvs, TlvWriter& answer)
{
    ByteView quality_of_service;
    const QmiError error = take_argument(tlvs, 1, quality_of_service);
    const std::optional<ByteView> protocol = find_tlv(tlvs, kLinkProtocol);
    if (error == QmiError::none && protocol) answer.bytes(kLinkProtocol, *protocol);
    return error;
}

std::optional<Server> QmuxTerminal::find_server(std::uint8_t service) const
{
    const std::vector<Server> servers = modem_->servers();
    const auto found = std::ranges::find(servers, std::uint32_t{service}, &Server::service);
    return found == servers.end() ? std::nullopt : std::optional(*found);
}

void QmuxTerminal::let_go(Id id)
{
    const auto held = ids_.find(id);
    const ClientId client = held->second->client;
    ids_.erase(held);
    modem_->drop(client);
}

// Tells whoever has it open that the id is no longer anybody's.
void QmuxTerminal::revoke(Id id)
{
    Bytes tlvs;
    TlvWriter(tlvs).bytes(kFirst, Bytes{id.first, id.second});
    send_own(kQmuxControl, 0, pack_qmux_control({QmuxControlKind::indication, 0, kRevoke}, tlvs));
}

// ---- What goes to the terminal ----

void QmuxTerminal::send_own(std::uint8_t service, std::uint8_t client, ByteView message)
{
    if (unwritten_.size() > kUnread) return;  // as on a line without a reader
    write(pack_qmux_head(service, client, message.size()), message, {});
}

void QmuxTerminal::write(ByteView head, ByteView message, ByteView rest)
{
    terminal_->keep_raw();
    const bool waited = !unwritten_.empty();
    for (const ByteView part : {head, message, rest}) unwritten_.insert(unwritten_.end(), part.begin(), part.end());
    if (waited) return;
    write_unwritten();
    if (!unwritten_.empty()) modem_->loop().change(watch_, EPOLLIN | EPOLLOUT);
}

void QmuxTerminal::write_unwritten()
{
    const ssize_t written = ::write(terminal_->fd(), unwritten_.data(), unwritten_.size());
    if (written > 0) unwritten_.erase(unwritten_.begin(), unwritten_.begin() + written);
}

}  // namespace rbk::sim

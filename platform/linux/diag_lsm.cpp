// The diag library over the link. A call is one datagram there and back, waited for on the caller's own stack; packets go
// through a queue to one callback thread, so that a callback never holds up an answer. While the library is started that
// thread reads the link between its callbacks: a packet is handed on by the thread that received it.
#include "diag_lsm.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <utility>

#include "link/diag_frame.h"
#include "platform/linux/callback_queue.h"
#include "platform/linux/environment.h"
#include "platform/linux/modem_link.h"

namespace rbk::platform {
namespace {

using link::DiagCall;
using link::DiagHead;
using link::DiagKind;
using link::DiagPacket;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

// The modem answers calls at once; one that doesn't within this time counts as gone.
constexpr milliseconds kAnswerBound{5000};

struct PacketCallback {
    diag_packet_cb callback = nullptr;
    void* context = nullptr;
};

struct DciClient {
    std::uint16_t peripherals = 0;
    std::int32_t os_params = 0;
    std::int32_t signal = 0;  // kept, never raised
    diag_dci_stream_cb log = nullptr;
    diag_dci_stream_cb event = nullptr;
    // Of the latest request.
    diag_dci_response_cb response = nullptr;
    void* context = nullptr;
    std::span<std::uint8_t> packet_room;
};

// From a start to the next stop.
struct Session {
    Server modem;
    bool gone = false;  // nothing brings this session back; packets that have come are still handed on
    std::uint16_t remote_mask = 0;
    std::int32_t logging_mode = USB_MODE;
    std::array<PacketCallback, DIAG_REMOTE_MAX + 1> callbacks{};  // by processor
    std::map<std::int32_t, DciClient> dci_clients;
};

// A call that waits for its answer, on its caller's stack.
struct Pending {
    DiagHead call;
    std::optional<DiagHead> answer;  // empty when the modem has gone
    std::atomic<bool> done = false;  // set last
};

struct Packet {
    DiagHead head;
    Bytes bytes;
    std::size_t size() const { return sizeof(Packet) + bytes.size(); }
};

class DiagLibrary final : public LinkListener {
 public:
    static DiagLibrary& get();

    bool start();
    bool stop_session();
    std::int32_t set_logging_mode(std::int32_t mode);
    std::int32_t set_callback(std::int32_t processor, diag_packet_cb callback, void* context);
    std::int32_t remote_mask(std::uint16_t& mask);
    std::int32_t send(ByteView request);

    std::int32_t register_client(std::int32_t& id, std::uint16_t peripherals, std::int32_t os_params);
    std::int32_t set_signal(std::int32_t id, std::int32_t signal);
    std::int32_t support_list(std::uint16_t& peripherals);
    std::int32_t start_streams(std::int32_t id, diag_dci_stream_cb log, diag_dci_stream_cb event);
    std::int32_t send_dci(std::int32_t id, ByteView request, std::span<std::uint8_t> packet_room,
                          diag_dci_response_cb callback, void* context);
    std::int32_t release_client(std::int32_t& id);

    void on_datagram(const Server& from, ByteView bytes) override;
    void on_server_gone(const Server& server) override;
    void on_process_end() override;

 private:
    DiagLibrary();
    std::optional<DiagHead> call(DiagHead head, ByteView bytes = {}) REQUIRES(mutex_);
    std::optional<DiagHead> exchange(const Server& modem, DiagHead head, ByteView bytes) REQUIRES(mutex_);
    DciClient* find_client(std::int32_t id) REQUIRES(mutex_);
    void finish(Pending& pending, std::optional<DiagHead> answer) REQUIRES(mutex_);
    void fail_pending() REQUIRES(mutex_);
    void call_callbacks() REQUIRES(mutex_);
    void await_callback_end() REQUIRES(mutex_);
    void run_callbacks();
    void deliver(Packet& packet) REQUIRES(mutex_);

    ModemLink& link_;

    Mutex mutex_;
    std::optional<Session> session_ GUARDED_BY(mutex_);
    std::vector<Pending*> pending_ GUARDED_BY(mutex_);
    std::uint16_t last_sequence_ GUARDED_BY(mutex_) = 0;
    std::int32_t last_client_ GUARDED_BY(mutex_) = 0;

    LibraryThread callbacks_;
    CallbackQueue<Packet> packets_ GUARDED_BY(mutex_);
    std::atomic<bool> called_ = false;  // the callback thread is to look around
    Condition session_came_;
    Condition callback_ended_;
    bool in_callback_ GUARDED_BY(mutex_) = false;
};

std::int32_t refused(int error)
{
    errno = error;
    return DIAG_REFUSED;
}

// ---- Life of the library ----

DiagLibrary& DiagLibrary::get()
{
    static DiagLibrary* const library = new DiagLibrary;  // never destroyed, as the link isn't
    return *library;
}

DiagLibrary::DiagLibrary() : link_(ModemLink::get())
{
    link_.add_listener(*this);
}

void DiagLibrary::on_process_end()
{
    {
        const MutexLock lock(mutex_);
        call_callbacks();
        callback_ended_.notify_all();
    }
    callbacks_.await_end();
}

// ---- Calls ----

// The modem's answer; nothing, with errno, when there is none to be had.
std::optional<DiagHead> DiagLibrary::call(DiagHead head, ByteView bytes)
{
    if (!session_ || session_->gone || process_ends() || callbacks_.is_current()) {
        errno = ENOTCONN;
        return std::nullopt;
    }
    return exchange(session_->modem, head, bytes);
}

std::optional<DiagHead> DiagLibrary::exchange(const Server& modem, DiagHead head, ByteView bytes)
{
    const Deadline deadline = steady_clock::now() + kAnswerBound;
    head.sequence = ++last_sequence_;
    Pending pending;
    pending.call = head;
    pending_.push_back(&pending);
    const link::Address address = modem.address;

    mutex_.unlock();
    const auto head_bytes = link::pack_diag(head);
    const std::int32_t sent = link_.send(address, head_bytes, bytes, deadline, [&](LinkTrace& trace) {
        trace.assert_locked();
        if (!bytes.empty()) trace.diag(Direction::to_modem, bytes);
    });
    const bool done = sent == 0 && link_.wait(pending.done, deadline);
    mutex_.lock();
    std::erase(pending_, &pending);
    if (!pending.answer) errno = done || sent == ModemLink::kModemGone ? ENOTCONN : ETIMEDOUT;
    return pending.answer;
}

void DiagLibrary::finish(Pending& pending, std::optional<DiagHead> answer)
{
    pending.answer = answer;
    pending.done.store(true, std::memory_order_release);
    link_.wake();  // under the lock: the caller's stack is gone soon after it
}

void DiagLibrary::fail_pending()
{
    for (Pending* each : pending_) {
        if (!each->done.load(std::memory_order_relaxed)) finish(*each, std::nullopt);
    }
}

bool DiagLibrary::start()
{
    const MutexLock lock(mutex_);
    if (process_ends() || callbacks_.is_current()) return false;
    if (session_ && !session_->gone) return true;
    std::vector<Server> servers;
    {
        const MutexUnlock unlocked(mutex_);
        if (link_.list_servers(link::kDiagService, servers) != 0 || servers.empty()) return false;
    }
    // Not yet a session: packets and calls of others are refused until the modem has agreed.
    const auto answer = exchange(servers.front(), {DiagKind::call, static_cast<std::uint8_t>(DiagCall::lsm_init)}, {});
    if (!answer || answer->code != link::kDiagSuccess) return false;
    if (session_ && !session_->gone) return true;  // another thread was quicker
    if (!callbacks_.start("diag callbacks", [this] { run_callbacks(); })) return false;
    packets_.clear();  // of a session that the modem has ended
    session_.emplace();
    session_->modem = servers.front();
    session_->remote_mask = static_cast<std::uint16_t>(answer->value);
    session_->gone = !link_.knows(session_->modem);  // it went in between, and nobody would tell
    session_came_.notify_one();
    return true;
}

bool DiagLibrary::stop_session()
{
    const MutexLock lock(mutex_);
    const bool started = session_.has_value();
    const std::optional<Session> ended = std::exchange(session_, std::nullopt);
    packets_.clear();
    fail_pending();
    call_callbacks();
    if (ended && !ended->gone && !process_ends()) {
        mutex_.unlock();
        const auto head = link::pack_diag({DiagKind::call, static_cast<std::uint8_t>(DiagCall::lsm_deinit)});
        link_.send(ended->modem.address, head, {}, steady_clock::now() + kAnswerBound, [](LinkTrace&) {});
        mutex_.lock();
    }
    await_callback_end();
    return started;
}

// ---- Callback mode ----

std::int32_t DiagLibrary::set_logging_mode(std::int32_t mode)
{
    const MutexLock lock(mutex_);
    if (!session_) return refused(ENOTCONN);
    session_->logging_mode = mode;
    return link::kDiagSuccess;
}

std::int32_t DiagLibrary::set_callback(std::int32_t processor, diag_packet_cb callback, void* context)
{
    const MutexLock lock(mutex_);
    if (!session_) return refused(ENOTCONN);
    session_->callbacks[static_cast<std::size_t>(processor)] = {callback, context};
    return link::kDiagSuccess;
}

std::int32_t DiagLibrary::remote_mask(std::uint16_t& mask)
{
    const MutexLock lock(mutex_);
    if (!session_) return refused(ENOTCONN);
    mask = session_->remote_mask;
    return link::kDiagSuccess;
}

std::int32_t DiagLibrary::send(ByteView request)
{
    const MutexLock lock(mutex_);
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::send)}, request);
    return answer ? answer->code : DIAG_REFUSED;
}

// ---- DCI ----

DciClient* DiagLibrary::find_client(std::int32_t id)
{
    if (!session_) {
        errno = ENOTCONN;
        return nullptr;
    }
    const auto found = session_->dci_clients.find(id);
    if (found != session_->dci_clients.end()) return &found->second;
    errno = EBADF;
    return nullptr;
}

std::int32_t DiagLibrary::register_client(std::int32_t& id, std::uint16_t peripherals, std::int32_t os_params)
{
    const MutexLock lock(mutex_);
    const std::int32_t wanted = ++last_client_;
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_register), 0, wanted});
    if (!answer) return DIAG_REFUSED;
    if (answer->code != link::kDciSuccess) return answer->code;
    if (!session_) return refused(ENOTCONN);  // stopped meanwhile
    DciClient& client = session_->dci_clients[wanted];
    client.peripherals = peripherals;
    client.os_params = os_params;
    id = wanted;
    return answer->code;
}

std::int32_t DiagLibrary::set_signal(std::int32_t id, std::int32_t signal)
{
    const MutexLock lock(mutex_);
    DciClient* client = find_client(id);
    if (client == nullptr) return DIAG_REFUSED;
    client->signal = signal;
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_signal), 0, id, signal});
    return answer ? answer->code : DIAG_REFUSED;
}

std::int32_t DiagLibrary::support_list(std::uint16_t& peripherals)
{
    const MutexLock lock(mutex_);
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_support)});
    if (!answer) return DIAG_REFUSED;
    if (answer->code == link::kDciSuccess) peripherals = static_cast<std::uint16_t>(answer->value);
    return answer->code;
}

std::int32_t DiagLibrary::start_streams(std::int32_t id, diag_dci_stream_cb log, diag_dci_stream_cb event)
{
    const MutexLock lock(mutex_);
    DciClient* client = find_client(id);
    if (client == nullptr) return DIAG_REFUSED;
    client->log = log;
    client->event = event;
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_stream), 0, id});
    return answer ? answer->code : DIAG_REFUSED;
}

std::int32_t DiagLibrary::send_dci(std::int32_t id, ByteView request, std::span<std::uint8_t> packet_room,
                                   diag_dci_response_cb callback, void* context)
{
    const MutexLock lock(mutex_);
    DciClient* client = find_client(id);
    if (client == nullptr) return DIAG_REFUSED;
    // Before the send: the answer's first packet may be here before the call's own answer is.
    client->response = callback;
    client->context = context;
    client->packet_room = packet_room;
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_send), 0, id}, request);
    return answer ? answer->code : DIAG_REFUSED;
}

std::int32_t DiagLibrary::release_client(std::int32_t& id)
{
    const MutexLock lock(mutex_);
    if (find_client(id) == nullptr) {
        id = 0;
        return DIAG_REFUSED;
    }
    const std::int32_t ended = std::exchange(id, 0);
    session_->dci_clients.erase(ended);
    await_callback_end();
    const auto answer = call({DiagKind::call, static_cast<std::uint8_t>(DiagCall::dci_release), 0, ended});
    return answer ? answer->code : DIAG_REFUSED;
}

// ---- What the modem says, on the thread that reads the link ----

void DiagLibrary::on_datagram(const Server& from, ByteView bytes)
{
    if (from.service != link::kDiagService) return;
    const auto frame = link::parse_diag(bytes);
    if (!frame || frame->head.kind == DiagKind::call) return;
    if (frame->head.kind == DiagKind::packet) {
        if (LinkTrace& trace = link_.trace(); trace.is_on()) {
            const MutexLock lock(trace.mutex());
            trace.diag(Direction::from_modem, frame->bytes);
        }
    }
    const MutexLock lock(mutex_);
    if (frame->head.kind == DiagKind::packet) {
        if (!session_ || session_->modem.address != from.address) return;
        packets_.push({frame->head, Bytes(frame->bytes.begin(), frame->bytes.end())});
        call_callbacks();
        return;
    }
    for (Pending* each : pending_) {
        if (each->call.sequence != frame->head.sequence || each->call.what != frame->head.what) continue;
        if (!each->done.load(std::memory_order_relaxed)) finish(*each, frame->head);
    }
}

void DiagLibrary::on_server_gone(const Server& server)
{
    if (server.service != link::kDiagService) return;
    const MutexLock lock(mutex_);
    fail_pending();
    if (session_ && session_->modem == server) session_->gone = true;
}

// ---- Callbacks ----

void DiagLibrary::await_callback_end()
{
    while (!callbacks_.is_current() && !process_ends() && in_callback_) callback_ended_.wait(mutex_);
}

void DiagLibrary::call_callbacks()
{
    called_.store(true, std::memory_order_release);
    session_came_.notify_one();
    link_.wake();
}

void DiagLibrary::run_callbacks()
{
    const MutexLock lock(mutex_);
    while (!process_ends()) {
        if (!packets_.empty()) {
            Packet packet = packets_.pop();
            deliver(packet);
        } else if (!session_) {
            session_came_.wait(mutex_);
        } else {
            called_.store(false, std::memory_order_relaxed);
            mutex_.unlock();
            link_.wait(called_, Deadline::max());
            mutex_.lock();
        }
    }
}

// To whom it is for now; a packet for nobody is dropped.
void DiagLibrary::deliver(Packet& packet)
{
    if (!session_) return;
    const auto call_back = [&](auto callback, auto... arguments) REQUIRES(mutex_) {
        in_callback_ = true;
        mutex_.unlock();
        callback(arguments...);
        mutex_.lock();
        in_callback_ = false;
        callback_ended_.notify_all();
    };
    static std::uint8_t no_bytes[1];
    std::uint8_t* const bytes = packet.bytes.empty() ? no_bytes : packet.bytes.data();
    const auto size = static_cast<std::int32_t>(packet.bytes.size());
    const auto what = static_cast<DiagPacket>(packet.head.what);
    if (what == DiagPacket::response) {
        const auto processor = static_cast<std::uint32_t>(packet.head.value);
        if (session_->logging_mode != CALLBACK_MODE || processor >= session_->callbacks.size()) return;
        const PacketCallback& target = session_->callbacks[processor];
        if (target.callback != nullptr) call_back(target.callback, bytes, size, target.context);
        return;
    }
    const DciClient* client = find_client(packet.head.client);
    if (client == nullptr) return;
    if (what == DiagPacket::dci_log || what == DiagPacket::dci_event) {
        const diag_dci_stream_cb stream = what == DiagPacket::dci_log ? client->log : client->event;
        if (stream != nullptr) call_back(stream, bytes, size);
        return;
    }
    const std::span<std::uint8_t> room = client->packet_room;
    if (client->response == nullptr || packet.bytes.size() > room.size()) return;
    std::copy(packet.bytes.begin(), packet.bytes.end(), room.begin());
    call_back(client->response, room.data(), size, client->context);
}

bool is_request(const uint8_t* data, int32_t len)
{
    if (data == nullptr || len <= 0) {
        errno = EINVAL;
        return false;
    }
    if (len > DIAG_REQUEST_MAX) {
        errno = EMSGSIZE;
        return false;
    }
    return true;
}

}  // namespace
}  // namespace rbk::platform

// ---- The seam ----

using rbk::platform::DiagLibrary;
using rbk::platform::is_request;
using rbk::platform::LibraryCall;
using rbk::platform::refused;

static_assert(DIAG_REQUEST_MAX == rbk::link::kLongestDiagBytes && DIAG_PACKET_MAX == rbk::link::kLongestDiagBytes);
static_assert(DIAG_DCI_NO_ERROR == rbk::link::kDciSuccess);

uint8_t Diag_LSM_Init(uint8_t* /*params*/)
{
    const LibraryCall call;
    return DiagLibrary::get().start() ? 1 : 0;
}

uint8_t Diag_LSM_DeInit(void)
{
    const LibraryCall call;
    return DiagLibrary::get().stop_session() ? 1 : 0;
}

int32_t diag_switch_logging(int32_t mode, char* /*proc_type*/)
{
    const LibraryCall call;
    return DiagLibrary::get().set_logging_mode(mode);
}

int32_t diag_register_callback(diag_packet_cb callback, void* context_data)
{
    const LibraryCall call;
    return DiagLibrary::get().set_callback(0, callback, context_data);
}

int32_t diag_has_remote_device(uint16_t* remote_mask)
{
    const LibraryCall call;
    if (remote_mask == nullptr) return refused(EINVAL);
    return DiagLibrary::get().remote_mask(*remote_mask);
}

int32_t diag_register_remote_callback(diag_packet_cb callback, int32_t processor, void* context_data)
{
    const LibraryCall call;
    if (processor < 1 || processor > DIAG_REMOTE_MAX) return refused(EINVAL);
    return DiagLibrary::get().set_callback(processor, callback, context_data);
}

int32_t diag_callback_send_data(int32_t processor, const uint8_t* data, int32_t len)
{
    const LibraryCall call;
    if (processor != 0) return refused(EINVAL);
    if (!is_request(data, len)) return DIAG_REFUSED;
    return DiagLibrary::get().send({data, static_cast<std::size_t>(len)});
}

int32_t diag_register_dci_client(int32_t* client_id, const uint16_t* peripherals, int32_t processor,
                                 const int32_t* os_params)
{
    const LibraryCall call;
    if (client_id == nullptr || peripherals == nullptr || processor != 0 || os_params == nullptr)
        return refused(EINVAL);
    return DiagLibrary::get().register_client(*client_id, *peripherals, *os_params);
}

int32_t diag_register_dci_signal_data(int32_t client_id, int32_t signal_number)
{
    const LibraryCall call;
    return DiagLibrary::get().set_signal(client_id, signal_number);
}

int32_t diag_get_dci_support_list_proc(int32_t processor, uint16_t* peripherals)
{
    const LibraryCall call;
    if (processor != 0 || peripherals == nullptr) return refused(EINVAL);
    return DiagLibrary::get().support_list(*peripherals);
}

int32_t diag_register_dci_stream_proc(int32_t client_id, diag_dci_stream_cb log_callback,
                                      diag_dci_stream_cb event_callback)
{
    const LibraryCall call;
    return DiagLibrary::get().start_streams(client_id, log_callback, event_callback);
}

int32_t diag_send_dci_async_req(int32_t client_id, const uint8_t* data, int32_t len, uint8_t* packet_buf,
                                int32_t packet_size, diag_dci_response_cb callback, void* context_data)
{
    const LibraryCall call;
    if (packet_buf == nullptr || packet_size <= 0 || callback == nullptr) return refused(EINVAL);
    if (!is_request(data, len)) return DIAG_REFUSED;
    return DiagLibrary::get().send_dci(client_id, {data, static_cast<std::size_t>(len)},
                                       {packet_buf, static_cast<std::size_t>(packet_size)}, callback, context_data);
}

int32_t diag_release_dci_client(int32_t* client_id)
{
    const LibraryCall call;
    if (client_id == nullptr) return refused(EINVAL);
    return DiagLibrary::get().release_client(*client_id);
}

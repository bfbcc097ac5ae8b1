// The QMI client library over the link. A request waits on its caller's own stack, and is answered by whichever thread
// reads the link, mostly the caller itself; indications and lost services go through a queue to one callback thread, so
// that a callback never holds up an answer.
#include "qmi_client.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <memory>
#include <optional>

#include "platform/linux/callback_queue.h"
#include "platform/linux/environment.h"
#include "platform/linux/idl_codec.h"
#include "platform/linux/modem_link.h"

namespace rbk::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::int32_t kInternal = -1;
constexpr std::int32_t kServiceGone = -2;
constexpr std::int32_t kTimeout = -3;

struct Client {
    qmi_idl_service_object_type service = nullptr;
    Server server;
    qmi_client_ind_cb ind_cb = nullptr;
    void* ind_data = nullptr;
    qmi_client_error_cb error_cb = nullptr;
    void* error_data = nullptr;
    bool is_notifier = false;
    bool gone = false;      // its server has gone; nothing brings this client back
    bool released = false;  // stays for the callback that its release waits for, and is unknown to callers
};

// A request that waits, on its caller's stack.
struct Transaction {
    qmi_client_handle client = nullptr;
    link::Address server;
    std::uint16_t id = 0;
    const idl_message* response = nullptr;
    void* structure = nullptr;
    std::int32_t result = kInternal;
    std::atomic<bool> done = false;  // set last: the result stands, and the structure is filled
    Transaction* next = nullptr;
};

struct Indication {
    std::uint32_t message = 0;
    Bytes tlvs;
};

// What a client's callback is to be told; each client has an event of its own, which its callback may spoil.
struct Event {
    qmi_client_handle client = nullptr;
    std::optional<Indication> indication;  // none: the service has gone
    std::size_t size() const { return indication ? sizeof(Event) + indication->tlvs.size() : 0; }
};

class ClientLibrary final : public LinkListener {
 public:
    static ClientLibrary& get();

    ModemLink& link() { return link_; }
    // A time-out that a caller gave, on the scale of this run.
    Deadline deadline(std::uint32_t timeout_ms) const;

    qmi_client_handle add(const Client& client);
    bool find(qmi_client_handle handle, Client& client);
    bool find_told(qmi_client_handle handle, Client& client);
    std::int32_t set_error_callback(qmi_client_handle handle, qmi_client_error_cb callback, void* data);
    std::int32_t release(qmi_client_handle handle);
    std::int32_t exchange(const Client& client, Transaction& transaction, const link::QmiHead& head, ByteView tlvs,
                          std::uint32_t timeout_ms);

    void on_datagram(const Server& from, ByteView bytes) override;
    void on_server_gone(const Server& server) override;
    void on_process_end() override;

    // Whether the caller is in a callback.
    bool is_calling_back() const { return callbacks_.is_current(); }

 private:
    ClientLibrary();
    Client* open_client(qmi_client_handle handle) REQUIRES(mutex_);
    void lose(qmi_client_handle handle, Client& client) REQUIRES(mutex_);
    bool is_due(qmi_client_handle handle) const REQUIRES(mutex_);
    void enqueue(Event event) REQUIRES(mutex_);
    void finish(Transaction& transaction, std::int32_t result) REQUIRES(mutex_);
    void start_transaction(Transaction& transaction) REQUIRES(mutex_);
    void end_transaction(Transaction& transaction) REQUIRES(mutex_);
    void run_callbacks();

    ModemLink& link_;
    const double timeout_scale_;

    Mutex mutex_;
    std::map<qmi_client_handle, Client> clients_ GUARDED_BY(mutex_);
    std::uintptr_t last_handle_ GUARDED_BY(mutex_) = 0;
    Transaction* waiting_ GUARDED_BY(mutex_) = nullptr;
    std::uint16_t last_transaction_ GUARDED_BY(mutex_) = 0;

    LibraryThread callbacks_;
    CallbackQueue<Event> events_ GUARDED_BY(mutex_);
    Condition event_came_;
    Condition callback_ended_;
    qmi_client_handle in_callback_ GUARDED_BY(mutex_) = nullptr;  // whose callback is running
    const Client* told_ GUARDED_BY(mutex_) = nullptr;             // the same client, as it was when the callback began
};

// ---- Life of the library ----

ClientLibrary& ClientLibrary::get()
{
    static ClientLibrary* const library = new ClientLibrary;  // never destroyed, as the link isn't
    return *library;
}

ClientLibrary::ClientLibrary() : link_(ModemLink::get()), timeout_scale_(environment().qmi_timeout_scale)
{
    link_.add_listener(*this);
}

void ClientLibrary::on_process_end()
{
    {
        const MutexLock lock(mutex_);
        event_came_.notify_all();
        callback_ended_.notify_all();
    }
    callbacks_.await_end();
}

Deadline ClientLibrary::deadline(std::uint32_t timeout_ms) const
{
    constexpr double kLongest = 1e15;  // microseconds: thirty years, and no overflow whatever the scale
    const double wait = std::min(timeout_ms * 1e3 * timeout_scale_, kLongest);
    return steady_clock::now() + std::chrono::microseconds(static_cast<std::int64_t>(wait));
}

// ---- Handles ----

qmi_client_handle ClientLibrary::add(const Client& client)
{
    const MutexLock lock(mutex_);
    const auto handle = reinterpret_cast<qmi_client_handle>(++last_handle_);
    clients_.emplace(handle, client);
    return handle;
}

// Null for a handle that is unknown or released.
Client* ClientLibrary::open_client(qmi_client_handle handle)
{
    const auto found = clients_.find(handle);
    return found == clients_.end() || found->second.released ? nullptr : &found->second;
}

bool ClientLibrary::find(qmi_client_handle handle, Client& client)
{
    const MutexLock lock(mutex_);
    const Client* found = open_client(handle);
    if (found == nullptr) return false;
    client = *found;
    return true;
}

// For a callback of the client: it is still there for it when another thread has begun to release it.
bool ClientLibrary::find_told(qmi_client_handle handle, Client& client)
{
    const MutexLock lock(mutex_);
    if (!is_calling_back() || in_callback_ != handle) return false;
    client = *told_;
    return true;
}

std::int32_t ClientLibrary::set_error_callback(qmi_client_handle handle, qmi_client_error_cb callback, void* data)
{
    const MutexLock lock(mutex_);
    Client* client = open_client(handle);
    if (client == nullptr || callback == nullptr) return kInternal;
    client->error_cb = callback;
    client->error_data = data;
    if (client->gone) enqueue({handle, std::nullopt});
    return 0;
}

// Its indications are dropped; that its service has gone is told first, before anything that waits for others.
std::int32_t ClientLibrary::release(qmi_client_handle handle)
{
    const MutexLock lock(mutex_);
    Client* client = open_client(handle);
    if (client == nullptr) return kInternal;
    client->released = true;
    for (Transaction* each = waiting_; each != nullptr; each = each->next)
        if (each->client == handle) finish(*each, kServiceGone);
    bool is_lost = false;
    events_.erase_if([&](const Event& event) {
        if (event.client != handle) return false;
        if (!event.indication) is_lost = true;
        return true;
    });
    if (!is_calling_back()) {
        if (is_lost) events_.push_front({handle, std::nullopt});
        while (!process_ends() && is_due(handle)) callback_ended_.wait(mutex_);
    }
    clients_.erase(handle);
    return 0;
}

// Whether a callback of the client runs or will run.
bool ClientLibrary::is_due(qmi_client_handle handle) const
{
    return in_callback_ == handle || events_.any([&](const Event& event) { return event.client == handle; });
}

// ---- Requests ----

void ClientLibrary::start_transaction(Transaction& transaction)
{
    const auto in_flight = [&](std::uint16_t id) REQUIRES(mutex_) {
        for (const Transaction* each = waiting_; each != nullptr; each = each->next)
            if (each->id == id) return true;
        return false;
    };
    do {
        ++last_transaction_;
    } while (last_transaction_ == 0 || in_flight(last_transaction_));
    transaction.id = last_transaction_;
    transaction.next = waiting_;
    waiting_ = &transaction;
}

void ClientLibrary::end_transaction(Transaction& transaction)
{
    Transaction** link = &waiting_;
    while (*link != &transaction) link = &(*link)->next;
    *link = transaction.next;
}

void ClientLibrary::finish(Transaction& transaction, std::int32_t result)
{
    if (transaction.done.load(std::memory_order_relaxed)) return;
    transaction.result = result;
    transaction.done.store(true, std::memory_order_release);
    link_.wake();
}

std::int32_t ClientLibrary::exchange(const Client& client, Transaction& transaction, const link::QmiHead& head,
                                     ByteView tlvs, std::uint32_t timeout_ms)
{
    const Deadline end = timeout_ms == 0 ? Deadline::max() : deadline(timeout_ms);
    const MutexLock lock(mutex_);
    const Client* opened = open_client(transaction.client);
    if (opened == nullptr) return kInternal;
    if (opened->gone || process_ends()) return kServiceGone;
    start_transaction(transaction);

    link::QmiHead sent_head = head;
    sent_head.transaction = transaction.id;
    std::array<std::uint8_t, link::kQmiHeadSize> head_bytes;
    link::store_qmi_head(head_bytes.data(), sent_head);

    mutex_.unlock();
    const std::int32_t sent = link_.send(client.server.address, head_bytes, tlvs, end, [&](LinkTrace& trace) {
        trace.assert_locked();
        trace.qmi(Direction::to_modem, client.server.service, sent_head, tlvs);
    });
    // Where a service sends a request's own message as an indication too, that is how it tells the outcome.
    const bool indicated = find_message(*client.service, INDICATION, head.message) != nullptr;
    const bool answered =
        sent == 0 && link_.wait(transaction.done, end, indicated ? Behind::indication : Behind::request);
    mutex_.lock();
    if (!answered) finish(transaction, sent != 0 ? sent : process_ends() ? kServiceGone : kTimeout);
    end_transaction(transaction);
    // Whoever hears of it here may release the client next, and the loss is then told before that.
    Client* lost = transaction.result == kServiceGone ? open_client(transaction.client) : nullptr;
    if (lost != nullptr) lose(transaction.client, *lost);
    return transaction.result;
}

// ---- What the modem says, on the thread that reads the link ----

void ClientLibrary::on_datagram(const Server& from, ByteView bytes)
{
    const auto message = link::parse_qmi(bytes);
    if (!message || message->head.kind == link::QmiKind::request) return;
    if (LinkTrace& trace = link_.trace(); trace.is_on()) {
        const MutexLock lock(trace.mutex());
        trace.qmi(Direction::from_modem, from.service, message->head, message->tlvs);
    }
    const MutexLock lock(mutex_);
    if (message->head.kind == link::QmiKind::indication) {
        // Told to whom it came: a service that goes away before a callback's turn takes nothing back.
        for (const auto& [handle, client] : clients_)
            if (client.server.address == from.address && client.ind_cb != nullptr && !client.gone && !client.released)
                enqueue({handle, Indication{message->head.message, Bytes(message->tlvs.begin(), message->tlvs.end())}});
        return;
    }
    for (Transaction* each = waiting_; each != nullptr; each = each->next) {
        if (each->id != message->head.transaction || each->server != from.address) continue;
        if (each->done.load(std::memory_order_relaxed)) return;  // failed already: its structure stays as it is
        const bool answers = each->response->id == message->head.message;
        finish(*each, answers && decode(*each->response, message->tlvs, each->structure) ? 0 : kInternal);
        return;
    }
}

void ClientLibrary::on_server_gone(const Server& server)
{
    const MutexLock lock(mutex_);
    for (Transaction* each = waiting_; each != nullptr; each = each->next)
        if (each->server == server.address) finish(*each, kServiceGone);
    for (auto& [handle, client] : clients_)
        if (client.server == server && !client.is_notifier && !client.released) lose(handle, client);
}

void ClientLibrary::lose(qmi_client_handle handle, Client& client)
{
    if (client.gone) return;
    client.gone = true;
    if (client.error_cb != nullptr) enqueue({handle, std::nullopt});
}

// ---- Callbacks ----

void ClientLibrary::enqueue(Event event)
{
    if (process_ends() || !callbacks_.start("QMI callbacks", [this] { run_callbacks(); })) return;
    events_.push(std::move(event));
    event_came_.notify_one();
}

void tell(const Client& client, Event& event)
{
    if (!event.indication) {
        client.error_cb(event.client, kServiceGone, client.error_data);
        return;
    }
    Bytes& tlvs = event.indication->tlvs;
    client.ind_cb(event.client, event.indication->message, tlvs.data(), static_cast<std::uint32_t>(tlvs.size()),
                  client.ind_data);
}

void ClientLibrary::run_callbacks()
{
    const MutexLock lock(mutex_);
    for (;;) {
        while (!process_ends() && events_.empty()) event_came_.wait(mutex_);
        if (process_ends()) return;
        Event event = events_.pop();
        const Client client = clients_.at(event.client);  // there: its release drops or awaits its events
        in_callback_ = event.client;
        told_ = &client;
        mutex_.unlock();
        tell(client, event);
        mutex_.lock();
        in_callback_ = nullptr;
        told_ = nullptr;
        callback_ended_.notify_all();
    }
}

// ---- Opening ----

qmi_service_info info_of(const Server& server)
{
    return {server.service, server.instance, server.address.node, server.address.port};
}

std::int32_t open_client(const Server& server, qmi_idl_service_object_type service, qmi_client_ind_cb ind_cb,
                         void* cb_data, qmi_client_handle* handle)
{
    ClientLibrary& library = ClientLibrary::get();
    Client client;
    client.service = service;
    client.server = server;
    client.ind_cb = ind_cb;
    client.ind_data = cb_data;
    const qmi_client_handle opened = library.add(client);
    if (!library.link().knows(server)) {
        library.release(opened);  // it went while the client was opened, and nobody would tell
        return kServiceGone;
    }
    *handle = opened;
    return 0;
}

}  // namespace
}  // namespace rbk::platform

// ---- The seam ----

using namespace rbk::platform;

int32_t qmi_client_notifier_init(qmi_idl_service_object_type service, qmi_client_os_params* os_params,
                                 qmi_client_handle* notifier)
{
    const LibraryCall call;
    if (service == nullptr || os_params == nullptr || notifier == nullptr) return kInternal;
    ClientLibrary& library = ClientLibrary::get();
    os_params->service_id = service->service_id;
    os_params->news_seen = library.link().news(service->service_id);
    Client client;
    client.service = service;
    client.is_notifier = true;
    *notifier = library.add(client);
    return 0;
}

int32_t qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info* table, uint32_t* num_entries,
                                    uint32_t* num_services)
{
    const LibraryCall call;
    if (service == nullptr || num_services == nullptr || (table != nullptr && num_entries == nullptr)) return kInternal;
    std::vector<Server> servers;
    const std::int32_t result = ClientLibrary::get().link().list_servers(service->service_id, servers);
    *num_services = static_cast<uint32_t>(servers.size());
    if (table != nullptr) {
        *num_entries = std::min(*num_entries, *num_services);
        std::transform(servers.begin(), servers.begin() + *num_entries, table, info_of);
    }
    if (result != 0) return result;
    return servers.empty() ? kServiceGone : 0;
}

int32_t qmi_cci_os_signal_wait(qmi_client_os_params* os_params, uint32_t timeout_ms)
{
    const LibraryCall call;
    if (os_params == nullptr) return 0;
    const Deadline deadline = steady_clock::now() + milliseconds(timeout_ms);
    return ClientLibrary::get().link().wait_for_news(os_params->service_id, os_params->news_seen, deadline) ? 1 : 0;
}

int32_t qmi_client_init(const qmi_service_info* entry, qmi_idl_service_object_type service, qmi_client_ind_cb ind_cb,
                        void* cb_data, qmi_client_os_params* /*os_params*/, qmi_client_handle* client)
{
    const LibraryCall call;
    if (entry == nullptr || service == nullptr || client == nullptr) return kInternal;
    const Server server{entry->service_id, entry->instance, {entry->node, entry->port}};
    if (server == Server{} || server.service != service->service_id) return kServiceGone;
    return open_client(server, service, ind_cb, cb_data, client);
}

int32_t qmi_client_init_instance(qmi_idl_service_object_type service, uint32_t instance, qmi_client_ind_cb ind_cb,
                                 void* cb_data, qmi_client_os_params* /*os_params*/, uint32_t timeout_ms,
                                 qmi_client_handle* client)
{
    const LibraryCall call;
    if (service == nullptr || client == nullptr) return kInternal;
    ClientLibrary& library = ClientLibrary::get();
    const Deadline deadline = library.deadline(timeout_ms);
    std::uint32_t seen = library.link().news(service->service_id);
    for (;;) {
        std::vector<Server> servers;
        const std::int32_t result = library.link().list_servers(service->service_id, servers);
        if (result != 0) return result;
        for (const Server& server : servers) {
            if (instance != QMI_CLIENT_INSTANCE_ANY && server.instance >> 8 != instance) continue;
            if (open_client(server, service, ind_cb, cb_data, client) == 0) return 0;
        }
        if (!library.link().wait_for_news(service->service_id, seen, deadline)) return kTimeout;
    }
}

int32_t qmi_client_register_error_cb(qmi_client_handle client, qmi_client_error_cb error_cb, void* cb_data)
{
    const LibraryCall call;
    return ClientLibrary::get().set_error_callback(client, error_cb, cb_data);
}

int32_t qmi_client_send_msg_sync(qmi_client_handle client, uint32_t msg_id, const void* request, uint32_t request_size,
                                 void* response, uint32_t response_size, uint32_t timeout_ms)
{
    const LibraryCall call;
    ClientLibrary& library = ClientLibrary::get();
    Client found;
    if (library.is_calling_back() || !library.find(client, found) || found.is_notifier) return kInternal;

    const idl_message* asked = find_message(*found.service, REQUEST, msg_id);
    Transaction transaction;
    transaction.client = client;
    transaction.server = found.server.address;
    transaction.response = find_message(*found.service, RESPONSE, msg_id);
    transaction.structure = response;
    if (asked == nullptr || transaction.response == nullptr || request_size != asked->size ||
        response_size != transaction.response->size || (request == nullptr && request_size != 0) ||
        (response == nullptr && response_size != 0))
        return kInternal;

    // On the stack, so that a send allocates nothing; only the message's own bytes of it are ever touched.
    std::array<std::uint8_t, rbk::link::kLongestTlvs> tlvs;
    const auto length = encode(*asked, request, tlvs);
    if (!length) return kInternal;
    const rbk::link::QmiHead head{rbk::link::QmiKind::request, 0, static_cast<std::uint16_t>(msg_id),
                                  static_cast<std::uint16_t>(*length)};
    return library.exchange(found, transaction, head, rbk::ByteView(tlvs).first(*length), timeout_ms);
}

int32_t qmi_client_message_decode(qmi_client_handle client, qmi_idl_type_of_message kind, uint32_t msg_id,
                                  const void* raw, uint32_t raw_len, void* structure, uint32_t size)
{
    const LibraryCall call;
    ClientLibrary& library = ClientLibrary::get();
    Client found;
    if (!library.find(client, found) && !library.find_told(client, found)) return kInternal;
    const idl_message* message = find_message(*found.service, kind, msg_id);
    if (message == nullptr || size != message->size || (raw == nullptr && raw_len != 0) ||
        (structure == nullptr && size != 0))
        return kInternal;
    return decode(*message, {static_cast<const std::uint8_t*>(raw), raw_len}, structure) ? 0 : kInternal;
}

int32_t qmi_client_release(qmi_client_handle client)
{
    const LibraryCall call;
    return ClientLibrary::get().release(client);
}

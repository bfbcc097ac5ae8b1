#include "platform/linux/modem_link.h"

#include <algorithm>
#include <cstdlib>

#include "platform/linux/environment.h"
#include "platform/linux/scenario_files.h"

namespace rbk::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// After an answer the next request often follows at once, from a thread that will read by itself: so long nobody reads in
// its stead.
constexpr milliseconds kIdle{2};

// A modem that takes a lookup and never ends its answer counts as one without the service after this long.
constexpr milliseconds kLookupBound{5000};

constexpr std::string_view kUnixPrefix = "unix:";

}  // namespace

// ---- Opening and closing ----

ModemLink& ModemLink::get()
{
    static ModemLink* const link = [] {
        auto* built = new ModemLink;
        std::atexit([] { get().end(); });
        return built;
    }();
    return *link;
}

ModemLink::ModemLink() : buffer_(link::kLongestDatagram)
{
    trace_ = std::make_unique<LinkTrace>(environment().trace);
}

void ModemLink::add_listener(LinkListener& listener)
{
    for (auto& slot : listeners_) {
        LinkListener* empty = nullptr;
        if (slot.compare_exchange_strong(empty, &listener)) return;
    }
    std::abort();  // a library more than the link was built for
}

bool ModemLink::connect()
{
    const std::string modem = environment().modem.value_or("embedded");
    const std::optional<std::string>& scenario = environment().scenario;
    link::LinkSocket socket;
    std::string error;
    if (modem == "embedded") {
        std::vector<std::string> complaints;
        std::string problem;
        const std::filesystem::path home = rbk_home(problem);
        if (!problem.empty()) complain(problem);
        problem.clear();
        std::optional<std::filesystem::path> file;
        if (scenario) file = find_scenario(*scenario, problem);
        if (!problem.empty()) complain(problem);
        modem_ = sim::start_embedded_modem({home.empty() ? home : home / "modem", file}, socket, complaints);
        for (const std::string& line : complaints) complain(line);
        error = "embedded modem: it could not be started";
    } else {
        if (scenario) complain("RBK_SCENARIO is for the embedded modem; ignored with RBK_MODEM=" + modem);
        if (modem.starts_with(kUnixPrefix) && modem.size() > kUnixPrefix.size())
            socket = link::LinkSocket::connect_unix(modem.substr(kUnixPrefix.size()), error);
        else if (modem == "qrtr")
            socket = link::LinkSocket::open_qrtr(error);
        else
            error = "expected embedded, unix:PATH or qrtr, not \"" + modem + "\"";
    }
    if (socket.is_open() && !socket.make_wakeable()) {
        error = "the system has no descriptor left";
        socket = {};
    }
    if (!socket.is_open()) {
        complain("RBK_MODEM: " + error);
        return false;
    }
    socket_ = std::make_shared<link::LinkSocket>(std::move(socket));
    return true;
}

std::int32_t ModemLink::open()
{
    if (state_ == State::open) return 0;
    if (state_ == State::stopped) return -4;
    modem_.reset();
    if (!connect()) return -4;
    if (!idle_reader_.start("the link to the modem", [this] { read_while_nobody_waits(); })) return -4;
    state_ = State::open;
    opened_.notify_all();
    return 0;
}

void ModemLink::end()
{
    begin_process_end();
    std::unique_ptr<sim::EmbeddedModem> modem;
    {
        const MutexLock lock(mutex_);
        if (state_ == State::open) socket_->shut_down();
        state_ = State::stopped;
        modem.swap(modem_);
    }
    opened_.notify_all();
    changed_.notify_all();
    for (const auto& slot : listeners_)
        if (LinkListener* listener = slot.load()) listener->on_process_end();
    idle_reader_.await_end();
}

// ---- Reading and waiting ----

template <typename Done>
bool ModemLink::wait_until(Deadline deadline, Done done, Behind behind)
{
    ++waiting_;
    while (!done() && state_ != State::stopped) {
        const Deadline now = steady_clock::now();
        if (now >= deadline) break;
        if (state_ == State::open && !is_read_)
            read(now, deadline);
        else if (deadline == Deadline::max())
            changed_.wait(mutex_);
        else
            changed_.wait_until(mutex_, deadline);
    }
    if (--waiting_ == 0 && state_ == State::open && !is_read_) {
        // What the modem said right behind the answer is here as well; and where it says much, there is no quiet.
        const Deadline now = steady_clock::now();
        quiet_until_ = now + kIdle;
        if (behind == Behind::indication || read(now, now)) {
            quiet_until_ = now;
            opened_.notify_one();
        }
    }
    return done();
}

// One turn: waits for something to come, and hands it on. Whether something came.
bool ModemLink::read(Deadline now, Deadline deadline)
{
    const auto socket = socket_;
    is_read_ = true;
    reader_ = std::this_thread::get_id();
    mutex_.unlock();
    bool waits = false;
    if (deadline == Deadline::max())
        socket->wait(-1);
    else if (deadline - now >= link::LinkSocket::kTurn)
        waits = true;
    else if (deadline > now)
        socket->wait(static_cast<int>(std::chrono::ceil<milliseconds>(deadline - now).count()));
    bool closed = false;
    const auto datagram = socket->receive(buffer_, closed, waits);
    if (datagram) dispatch(*datagram);
    if (closed) on_closed();
    mutex_.lock();
    is_read_ = false;
    changed_.notify_all();
    return datagram.has_value();
}

void ModemLink::read_while_nobody_waits()
{
    const MutexLock lock(mutex_);
    while (state_ != State::stopped) {
        const Deadline now = steady_clock::now();
        if (state_ != State::open)
            opened_.wait(mutex_);
        else if (is_read_ || waiting_ > 0)
            opened_.wait_until(mutex_, now + kIdle);
        else if (now < quiet_until_)
            opened_.wait_until(mutex_, quiet_until_);
        else
            read(now, Deadline::max());
    }
}

bool ModemLink::wait(const std::atomic<bool>& done, Deadline deadline, Behind behind)
{
    const MutexLock lock(mutex_);
    return wait_until(
        deadline, [&] { return done.load(std::memory_order_acquire); }, behind);
}

void ModemLink::wake()
{
    const MutexLock lock(mutex_);
    changed_.notify_all();
    if (is_read_ && reader_ != std::this_thread::get_id()) socket_->wake();
}

void ModemLink::dispatch(const link::Datagram& datagram)
{
    if (datagram.peer.port == QRTR_PORT_CTRL) {
        if (const auto packet = link::parse_control(datagram.bytes)) on_control(*packet);
        return;
    }
    Server from;
    {
        const MutexLock lock(mutex_);
        const auto server = std::find_if(servers_.begin(), servers_.end(),
                                         [&](const Server& known) { return known.address == datagram.peer; });
        if (server == servers_.end()) return;
        from = *server;
    }
    for (const auto& slot : listeners_)
        if (LinkListener* listener = slot.load()) listener->on_datagram(from, datagram.bytes);
}

void ModemLink::on_control(const link::ControlPacket& packet)
{
    const Server server{packet.service, packet.instance, packet.address};
    switch (packet.type) {
    case QRTR_TYPE_NEW_SERVER: {
        const MutexLock lock(mutex_);
        if (server == Server{}) {
            lookup_ = 0;
        } else if (std::find(servers_.begin(), servers_.end(), server) == servers_.end()) {
            servers_.push_back(server);
            ++news_[server.service];
        }
        changed_.notify_all();
        break;
    }
    case QRTR_TYPE_DEL_SERVER: on_server_lost(server); break;
    default: break;
    }
}

void ModemLink::on_server_lost(const Server& server)
{
    {
        const MutexLock lock(mutex_);
        if (std::erase(servers_, server) == 0) return;
        ++news_[server.service];
        changed_.notify_all();
    }
    for (const auto& slot : listeners_)
        if (LinkListener* listener = slot.load()) listener->on_server_gone(server);
}

// The far end has gone: all its servers are lost, and the next caller opens the link anew.
void ModemLink::on_closed()
{
    std::vector<Server> lost;
    {
        const MutexLock lock(mutex_);
        lost = servers_;
    }
    for (const Server& server : lost) on_server_lost(server);
    const MutexLock lock(mutex_);
    looked_up_.clear();
    lookup_ = 0;
    if (state_ == State::open) state_ = State::closed;
    changed_.notify_all();
}

// ---- Servers ----

std::int32_t ModemLink::list_servers(std::uint32_t service, std::vector<Server>& servers)
{
    servers.clear();
    const MutexLock lock(mutex_);
    const std::int32_t result = look_up(service);
    if (result != 0) return result;
    std::copy_if(servers_.begin(), servers_.end(), std::back_inserter(servers),
                 [&](const Server& known) { return known.service == service; });
    return 0;
}

// The end of an answer doesn't name its service, so lookups go one at a time.
std::int32_t ModemLink::look_up(std::uint32_t service)
{
    for (;;) {
        const std::int32_t opened = open();
        if (opened != 0) return opened;
        if (looked_up_.contains(service)) return 0;
        if (lookup_ == 0) break;
        // Once an answer's time has passed, nobody waits for it again: callers ask many times over.
        if (!wait_until(lookup_until_, [&]() REQUIRES(mutex_) { return lookup_ == 0; })) return -4;
    }
    const Deadline deadline = steady_clock::now() + kLookupBound;
    const std::uint32_t own = lookup_ = ++last_lookup_;
    lookup_until_ = deadline;
    const auto socket = socket_;
    const link::Address router{socket->local().node, QRTR_PORT_CTRL};
    const auto packet = link::pack_control({QRTR_TYPE_NEW_LOOKUP, service, 0, {}});

    mutex_.unlock();
    const std::int32_t sent = send_in_time(*socket, deadline, [&] { return socket->send(router, {}, packet, false); });
    mutex_.lock();
    if (sent != 0 && lookup_ == own) {
        lookup_ = 0;
        changed_.notify_all();
    }
    // The end of the connection ends a lookup too, and by now somebody may have opened the next one.
    const bool ended = sent == 0 && wait_until(deadline, [&]() REQUIRES(mutex_) { return lookup_ != own; });
    if (!ended || state_ != State::open || socket_ != socket) return -4;
    looked_up_.insert(service);
    return 0;
}

std::uint32_t ModemLink::news(std::uint32_t service)
{
    const MutexLock lock(mutex_);
    return news_[service];
}

bool ModemLink::wait_for_news(std::uint32_t service, std::uint32_t& seen, Deadline deadline)
{
    const MutexLock lock(mutex_);
    const bool changed = wait_until(deadline, [&]() REQUIRES(mutex_) { return news_[service] != seen; });
    seen = news_[service];
    return changed;
}

bool ModemLink::knows(const Server& server)
{
    const MutexLock lock(mutex_);
    return std::find(servers_.begin(), servers_.end(), server) != servers_.end();
}

// ---- Sending ----

// Null where the link isn't open.
ModemLink::Socket ModemLink::open_socket()
{
    const MutexLock lock(mutex_);
    return state_ == State::open ? socket_ : nullptr;
}

// A sender meets the end of the connection before a reader does: what was known of its servers goes before it returns.
// QRTR has no connection: there the router tells of a server that can't be reached.
void ModemLink::await_end(const Socket& socket)
{
    if (socket->carrier() == link::LinkSocket::Carrier::qrtr) return;
    const MutexLock lock(mutex_);
    wait_until(steady_clock::now() + kLookupBound,
               [&]() REQUIRES(mutex_) { return state_ != State::open || socket_ != socket; });
}

// A turn of it; false when the time has run out.
bool ModemLink::wait_for_room(const link::LinkSocket& socket, Deadline deadline)
{
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now()).count();
    if (left <= 0) return false;
    socket.wait_for_room(static_cast<int>(std::min<std::int64_t>(left, 1000)));
    return true;
}

}  // namespace rbk::platform

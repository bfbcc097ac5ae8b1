#include "platform/linux/modem_link.h"

#include <poll.h>

#include <algorithm>
#include <cstdlib>
#include <system_error>

#include "platform/linux/environment.h"

namespace rbk::platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// A modem that takes a lookup and never ends its answer counts as one without the service after this long.
constexpr milliseconds kLookupBound{5000};

constexpr std::string_view kUnixPrefix = "unix:";

// The link while it is being traced and read, and the modem of a process that has one, need threads; a process that
// can't have any more goes on without a modem.
template <typename Start>
bool start_thread(Start start)
{
    try {
        start();
        return true;
    } catch (const std::system_error& error) {
        complain(std::string("no thread for the link to the modem: ") + error.what());
        return false;
    }
}

}  // namespace

// ---- Opening and closing ----

ModemLink& ModemLink::get()
{
    static ModemLink* const link = [] {
        auto* built = new ModemLink;
        std::atexit([] { get().stop(); });
        return built;
    }();
    return *link;
}

ModemLink::ModemLink()
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
        modem_ = sim::start_embedded_modem({rbk_home() / "modem", scenario}, socket, complaints);
        for (const std::string& line : complaints) complain(line);
        error = "embedded modem: it could not be started";
    } else {
        if (scenario) complain("RBK_SCENARIO is for the embedded modem; ignored with RBK_MODEM=" + modem);
        if (modem.starts_with(kUnixPrefix))
            socket = link::LinkSocket::connect_unix(modem.substr(kUnixPrefix.size()), error);
        else if (modem == "qrtr")
            socket = link::LinkSocket::open_qrtr(error);
        else
            error = "expected embedded, unix:PATH or qrtr, not \"" + modem + "\"";
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
    if (reader_.joinable()) reader_.join();  // it has closed the link, and takes no lock any more
    modem_.reset();
    if (!connect() || !start_thread([this] { reader_ = std::thread([this, socket = socket_] { read(*socket); }); }))
        return -4;
    state_ = State::open;
    return 0;
}

void ModemLink::stop()
{
    std::thread reader;
    std::unique_ptr<sim::EmbeddedModem> modem;
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::open) socket_->shut_down();
        state_ = State::stopped;
        reader.swap(reader_);
        modem.swap(modem_);
    }
    changed_.notify_all();
    if (reader.joinable()) reader.join();
}

// ---- Reading ----

void ModemLink::read(const link::LinkSocket& socket)
{
    const auto buffer = std::make_unique<std::uint8_t[]>(link::kLongestDatagram);
    bool closed = false;
    while (!closed) {
        const auto datagram = socket.receive({buffer.get(), link::kLongestDatagram}, true, closed);
        if (!datagram) continue;
        if (datagram->peer.port == QRTR_PORT_CTRL) {
            if (const auto packet = link::parse_control(datagram->bytes)) on_control(*packet);
            continue;
        }
        Server from;
        {
            const std::lock_guard lock(mutex_);
            const auto server = std::find_if(servers_.begin(), servers_.end(),
                                             [&](const Server& known) { return known.address == datagram->peer; });
            if (server == servers_.end()) continue;
            from = *server;
        }
        for (const auto& slot : listeners_)
            if (LinkListener* listener = slot.load()) listener->on_datagram(from, datagram->bytes);
    }
    on_closed();
}

void ModemLink::on_control(const link::ControlPacket& packet)
{
    const Server server{packet.service, packet.instance, packet.address};
    switch (packet.type) {
    case QRTR_TYPE_NEW_SERVER: {
        const std::lock_guard lock(mutex_);
        if (server == Server{}) {
            looking_up_ = false;
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
        const std::lock_guard lock(mutex_);
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
        const std::lock_guard lock(mutex_);
        lost = servers_;
    }
    for (const Server& server : lost) on_server_lost(server);
    const std::lock_guard lock(mutex_);
    looked_up_.clear();
    looking_up_ = false;
    if (state_ == State::open) state_ = State::closed;
    changed_.notify_all();
}

// ---- Servers ----

std::int32_t ModemLink::list_servers(std::uint32_t service, std::vector<Server>& servers)
{
    servers.clear();
    std::unique_lock lock(mutex_);
    const std::int32_t result = look_up(lock, service);
    if (result != 0) return result;
    std::copy_if(servers_.begin(), servers_.end(), std::back_inserter(servers),
                 [&](const Server& known) { return known.service == service; });
    return 0;
}

// The end of an answer doesn't name its service, so lookups go one at a time.
std::int32_t ModemLink::look_up(std::unique_lock<std::mutex>& lock, std::uint32_t service)
{
    const Deadline deadline = steady_clock::now() + kLookupBound;
    for (;;) {
        const std::int32_t opened = open();
        if (opened != 0) return opened;
        if (looked_up_.contains(service)) return 0;
        if (!looking_up_) break;
        if (changed_.wait_until(lock, deadline) == std::cv_status::timeout) return -4;
    }
    looking_up_ = true;
    const auto socket = socket_;
    const link::Address router{socket->local().node, QRTR_PORT_CTRL};
    const auto packet = link::pack_control({QRTR_TYPE_NEW_LOOKUP, service, 0, {}});

    lock.unlock();
    const std::int32_t sent = send(router, {}, packet, deadline);
    lock.lock();
    if (sent == 0) changed_.wait_until(lock, deadline, [&] { return !looking_up_; });
    const bool ended = sent == 0 && !looking_up_ && state_ == State::open;
    looking_up_ = false;
    changed_.notify_all();
    if (!ended) return -4;
    looked_up_.insert(service);
    return 0;
}

std::uint32_t ModemLink::news(std::uint32_t service)
{
    const std::lock_guard lock(mutex_);
    return news_[service];
}

bool ModemLink::wait_for_news(std::uint32_t service, std::uint32_t& seen, Deadline deadline)
{
    std::unique_lock lock(mutex_);
    const bool changed = changed_.wait_until(lock, deadline, [&] { return news_[service] != seen; });
    seen = news_[service];
    return changed;
}

bool ModemLink::knows(const Server& server)
{
    const std::lock_guard lock(mutex_);
    return std::find(servers_.begin(), servers_.end(), server) != servers_.end();
}

// ---- Sending ----

std::int32_t ModemLink::send(link::Address to, ByteView head, ByteView body, Deadline deadline)
{
    std::shared_ptr<link::LinkSocket> socket;
    {
        const std::lock_guard lock(mutex_);
        if (state_ != State::open) return -2;
        socket = socket_;
    }
    for (;;) {
        switch (socket->send(to, head, body, false)) {
        case link::SendResult::sent: return 0;
        case link::SendResult::closed: return -2;
        case link::SendResult::would_block: break;
        }
        const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now()).count();
        if (left <= 0) return -3;
        pollfd ready{socket->fd(), POLLOUT, 0};
        ::poll(&ready, 1, static_cast<int>(std::min<std::int64_t>(left, 1000)));
    }
}

}  // namespace rbk::platform

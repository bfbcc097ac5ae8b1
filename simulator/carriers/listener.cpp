#include "simulator/carriers/listener.h"

#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "simulator/modem/modem.h"
#include "simulator/state/efs.h"

namespace rbk::sim {
namespace {

// Descriptors, all of them.
constexpr rlim_t kEnough = 65536;  // a hard limit may be many millions
// What no client gets: files that are half read, and what a request opens meanwhile.
constexpr rlim_t kReserved = Efs::kOpenReadsOfAll + 16;

std::string error_text(int error)
{
    return std::generic_category().message(error);
}

// Whether the kernel lists a process that listens there: for a socket that one may not connect to. Empty where there is
// no such list.
std::optional<bool> is_listed(const std::filesystem::path& path, const struct stat& socket)
{
    constexpr unsigned long kListening = 1UL << 16;
    std::ifstream list("/proc/net/unix");
    if (!list) return std::nullopt;
    for (std::string line; std::getline(list, line);) {
        std::istringstream row(line);
        std::string ignored;
        unsigned long flags = 0;
        std::string bound;
        row >> ignored >> ignored >> ignored >> std::hex >> flags >> ignored >> ignored >> ignored >> std::ws;
        if (!std::getline(row, bound) || (flags & kListening) == 0) continue;
        const std::filesystem::path other(bound);
        if (other.filename() != path.filename()) continue;
        struct stat there {};
        if (::stat(bound.c_str(), &there) == 0 && there.st_dev == socket.st_dev && there.st_ino == socket.st_ino)
            return true;
        if (other.is_relative()) return true;  // from wherever that process was: perhaps this one
    }
    return false;
}

// Why no server may take the place of what lies at a socket's address; empty when nothing lies there or a socket that its
// server has left.
std::string what_lies_at(const std::string& path, const sockaddr_un& address)
{
    struct stat there {};
    if (::lstat(path.c_str(), &there) != 0) return errno == ENOENT ? "" : error_text(errno);
    if (!S_ISSOCK(there.st_mode)) return "something that isn't a socket lies there";
    const Fd probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int error =
        ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0 : errno;
    switch (error) {
    case ECONNREFUSED:
    case ENOENT: return "";
    case 0:
    case EAGAIN:      // with so many before us that it hasn't taken in
    case EPROTOTYPE:  // of another kind
        return "a server listens there already";
    case EACCES: {
        const std::optional<bool> listed = is_listed(path, there);
        if (!listed) return "a socket of another user lies there";
        return *listed ? "a server of another user listens there" : "a dead socket of another user lies there";
    }
    default: return error_text(error);
    }
}

// Raises the process's limit of descriptors, for as many clients as may be. The limit then.
rlim_t raise_descriptor_limit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
    const rlim_t wanted = std::min(limit.rlim_max, kEnough);
    if (limit.rlim_cur >= wanted) return limit.rlim_cur;
    const rlimit raised{wanted, limit.rlim_max};
    return ::setrlimit(RLIMIT_NOFILE, &raised) == 0 ? wanted : limit.rlim_cur;
}

}  // namespace

std::unique_ptr<Listener> Listener::open(const std::string& path, std::string& error)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        error = path + ": a socket's path has 1 to " + std::to_string(sizeof address.sun_path - 1) + " bytes";
        return nullptr;
    }
    std::memcpy(address.sun_path, path.data(), path.size());

    std::optional<PathClaim> claim = PathClaim::take(path, error);
    // What lies there tells more than a claim that can't be had.
    const std::string refusal = what_lies_at(path, address);
    if (!refusal.empty()) error = path + ": " + refusal;
    if (!error.empty()) return nullptr;

    if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
        error = path + ": a dead socket lies there: " + error_text(errno);
        return nullptr;
    }
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0) {
        error = path + ": " + error_text(errno);
        return nullptr;
    }
    return std::unique_ptr<Listener>(new Listener(path, std::move(*claim), std::move(socket)));
}

Listener::Listener(std::string path, PathClaim claim, Fd socket)
    : path_(std::move(path)), claim_(std::move(claim)), socket_(std::move(socket))
{
    struct stat made {};
    if (::lstat(path_.c_str(), &made) == 0) {
        device_ = made.st_dev;
        inode_ = made.st_ino;
    }
}

Listener::~Listener()
{
    struct stat there {};
    if (::lstat(path_.c_str(), &there) == 0 && there.st_dev == device_ && there.st_ino == inode_) {
        ::unlink(path_.c_str());
    }
}

void Listener::serve(Modem& modem)
{
    SeqpacketCarrier::serve(modem);
    const rlim_t limit = raise_descriptor_limit();
    descriptors_ = limit - std::min(kReserved, limit / 2);
    watch_ = modem.loop().watch(socket_.get(), EPOLLIN, [this](std::uint32_t) { accept_clients(); });
}

void Listener::accept_clients()
{
    Fd client(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (client.is_open()) {
        // Numbers are given out from below: with this one, so many descriptors are open.
        if (static_cast<rlim_t>(client.get()) < descriptors_) {
            return attach({client.release(), link::LinkSocket::Carrier::seqpacket});
        }
        return modem().complaints().say("a client is turned away: the " + std::to_string(descriptors_) +
                                        " descriptors that clients may have are taken");
    }
    if (errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM) return;
    // The machine has none left: the caller stays in the queue, which would be reported again and again without a pause.
    modem().complaints().say("a client has to wait: " + error_text(errno));
    modem().loop().change(watch_, 0);
    modem().loop().after(std::chrono::milliseconds(100), [this] { modem().loop().change(watch_, EPOLLIN); });
}

}  // namespace rbk::sim

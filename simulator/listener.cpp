#include "simulator/listener.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "simulator/modem.h"

namespace rbk::sim {
namespace {

std::string error_text(int error)
{
    return std::generic_category().message(error);
}

// Whether a living server holds the address, be it one of another kind: a socket without one refuses.
bool is_served(const sockaddr_un& address)
{
    const Fd probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return ::connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
           (errno != ECONNREFUSED && errno != ENOENT);
}

// Servers that start at the same moment take their turns: without that, the second could remove the socket that the
// first has just made in the place of a dead one. The lock is on the directory itself and goes with the descriptor.
Fd lock_directory_of(const std::string& path)
{
    std::filesystem::path directory = std::filesystem::path(path).parent_path();
    if (directory.empty()) directory = ".";
    Fd locked(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (locked.is_open()) ::flock(locked.get(), LOCK_EX);
    return locked;
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
    const auto* bound_to = reinterpret_cast<const sockaddr*>(&address);

    const Fd turn = lock_directory_of(path);
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int bound = ::bind(socket.get(), bound_to, sizeof address);
    if (bound != 0 && errno == EADDRINUSE) {
        struct stat there {};
        if (::lstat(path.c_str(), &there) == 0 && !S_ISSOCK(there.st_mode)) {
            error = path + ": something that isn't a socket lies there";
            return nullptr;
        }
        if (is_served(address)) {
            error = path + ": a server listens there already";
            return nullptr;
        }
        ::unlink(path.c_str());
        bound = ::bind(socket.get(), bound_to, sizeof address);
    }
    if (bound != 0 || ::listen(socket.get(), SOMAXCONN) != 0) {
        error = path + ": " + error_text(errno);
        return nullptr;
    }
    return std::unique_ptr<Listener>(new Listener(path, std::move(socket)));
}

Listener::Listener(std::string path, Fd socket) : path_(std::move(path)), socket_(std::move(socket))
{
    struct stat made {};
    if (::lstat(path_.c_str(), &made) == 0) {
        device_ = made.st_dev;
        inode_ = made.st_ino;
    }
}

Listener::~Listener()
{
    const Fd turn = lock_directory_of(path_);
    struct stat there {};
    if (::lstat(path_.c_str(), &there) == 0 && there.st_dev == device_ && there.st_ino == inode_) {
        ::unlink(path_.c_str());
    }
}

void Listener::serve(Modem& modem)
{
    modem_ = &modem;
    watch_ = modem.loop().watch(socket_.get(), EPOLLIN, [this](std::uint32_t) { accept_clients(); });
}

void Listener::accept_clients()
{
    const int client = ::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (client >= 0) return modem_->attach({client, link::LinkSocket::Carrier::seqpacket});
    if (errno != EMFILE && errno != ENFILE && errno != ENOBUFS && errno != ENOMEM) return;
    // No descriptor left: the caller stays in the queue, which would be reported again and again without a pause.
    modem_->complaints().say("a client has to wait: " + error_text(errno));
    modem_->loop().change(watch_, 0);
    modem_->loop().after(std::chrono::milliseconds(100), [this] { modem_->loop().change(watch_, EPOLLIN); });
}

}  // namespace rbk::sim

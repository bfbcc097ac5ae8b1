#include "link/link_socket.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>

#if __has_include(<sanitizer/asan_interface.h>)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(start, size)
#define ASAN_UNPOISON_MEMORY_REGION(start, size)
#endif

namespace rbk::link {
namespace {

std::string error_text(int error)
{
    return std::generic_category().message(error);
}

// A client's address follows, in the place of a server.
bool is_of_client(std::uint32_t type)
{
    return type == QRTR_TYPE_DEL_CLIENT || type == QRTR_TYPE_BYE;
}

// The kernel's router doesn't say when a receiver has room again.
constexpr int kQrtrRetry_ms = 2;

}  // namespace

std::array<std::uint8_t, kControlPacketSize> pack_control(const ControlPacket& packet)
{
    std::array<std::uint8_t, kControlPacketSize> bytes{};
    store_le(&bytes[0], packet.type);
    if (is_of_client(packet.type)) {
        store_le(&bytes[4], packet.address.node);
        store_le(&bytes[8], packet.address.port);
        return bytes;
    }
    store_le(&bytes[4], packet.service);
    store_le(&bytes[8], packet.instance);
    store_le(&bytes[12], packet.address.node);
    store_le(&bytes[16], packet.address.port);
    return bytes;
}

std::optional<ControlPacket> parse_control(ByteView datagram)
{
    if (datagram.size() < kControlPacketSize) return std::nullopt;
    const auto word = [&](std::size_t at) { return load_le<std::uint32_t>(&datagram[at]); };
    if (is_of_client(word(0))) return ControlPacket{word(0), 0, 0, {word(4), word(8)}};
    return ControlPacket{word(0), word(4), word(8), {word(12), word(16)}};
}

LinkSocket::LinkSocket(LinkSocket&& other) noexcept
{
    *this = std::move(other);
}

LinkSocket& LinkSocket::operator=(LinkSocket&& other) noexcept
{
    std::swap(fd_, other.fd_);
    std::swap(wake_fd_, other.wake_fd_);
    std::swap(carrier_, other.carrier_);
    return *this;
}

LinkSocket::~LinkSocket()
{
    if (fd_ >= 0) ::close(fd_);
    if (wake_fd_ >= 0) ::close(wake_fd_);
}

LinkSocket LinkSocket::connect_unix(const std::string& path, std::string& error)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        error = path + ": a socket's path has 1 to " + std::to_string(sizeof address.sun_path - 1) + " bytes";
        return {};
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    LinkSocket socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0), Carrier::seqpacket);
    if (!socket.is_open() || ::connect(socket.fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = path + ": " + error_text(errno);
        return {};
    }
    return socket;
}

LinkSocket LinkSocket::open_qrtr(std::string& error)
{
    LinkSocket socket(::socket(AF_QIPCRTR, SOCK_DGRAM | SOCK_CLOEXEC, 0), Carrier::qrtr);
    if (!socket.is_open()) error = "qrtr: " + error_text(errno);
    return socket;
}

bool LinkSocket::take_port(std::string& error) const
{
    sockaddr_qrtr any{};
    any.sq_family = AF_QIPCRTR;
    any.sq_node = local().node;
    if (::bind(fd_, reinterpret_cast<const sockaddr*>(&any), sizeof any) == 0) return true;
    error = "qrtr: " + error_text(errno);
    return false;
}

Address LinkSocket::local() const
{
    sockaddr_qrtr address{};
    socklen_t size = sizeof address;
    if (carrier_ != Carrier::qrtr || ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
    return {address.sq_node, address.sq_port};
}

SendResult LinkSocket::send(Address peer, ByteView head, ByteView body, bool wait) const
{
    // The kernel's router refuses every flag but MSG_DONTWAIT, and signals nobody.
    const int flags = (carrier_ == Carrier::qrtr ? 0 : MSG_NOSIGNAL) | (wait ? 0 : MSG_DONTWAIT);
    while (send_once(peer, head, body, flags) < 0) {
        if (errno == EINTR) continue;
        // ENOSPC: a receiver on this node whose queue is full, as the kernel's router says it.
        const bool full =
            errno == EAGAIN || errno == EWOULDBLOCK || errno == ENOBUFS || errno == ENOSPC || errno == ENOMEM;
        return full ? SendResult::would_block : SendResult::closed;
    }
    return SendResult::sent;
}

ssize_t LinkSocket::send_once(Address peer, ByteView head, ByteView body, int flags) const
{
    const std::size_t size = kAddressSize + head.size() + body.size();
    std::uint8_t prefix[kAddressSize];
    store_le(prefix, peer.node);
    store_le(prefix + 4, peer.port);
    iovec pieces[] = {{prefix, sizeof prefix},
                      {const_cast<std::uint8_t*>(head.data()), head.size()},
                      {const_cast<std::uint8_t*>(body.data()), body.size()}};
    // Most datagrams are short, and cost less put together here than as pieces that the kernel has to look at.
    std::uint8_t whole[1024];
    if (carrier_ == Carrier::seqpacket && size <= sizeof whole) {
        std::uint8_t* end = whole;
        for (const iovec& piece : pieces)
            end = std::copy_n(static_cast<const std::uint8_t*>(piece.iov_base), piece.iov_len, end);
        return ::send(fd_, whole, size, flags);
    }

    msghdr message{};
    message.msg_iov = pieces;
    message.msg_iovlen = 3;
    sockaddr_qrtr address{};
    if (carrier_ == Carrier::qrtr) {
        address.sq_family = AF_QIPCRTR;
        address.sq_node = peer.node;
        address.sq_port = peer.port;
        message.msg_name = &address;
        message.msg_namelen = sizeof address;
        message.msg_iov = pieces + 1;
        message.msg_iovlen = 2;
    }
    return ::sendmsg(fd_, &message, flags);
}

std::optional<Datagram> LinkSocket::receive(std::span<std::uint8_t> buffer, bool& closed, bool wait) const
{
    Address peer;
    // Under the address sanitizer the room behind a datagram is out of bounds: an earlier one's bytes stand there, which
    // would hide a read past its end.
    ASAN_UNPOISON_MEMORY_REGION(buffer.data(), buffer.size());
    ssize_t received;
    do {
        received = receive_once(buffer, peer, wait ? 0 : MSG_DONTWAIT);
        // ECONNRESET, once: the far end has closed without reading all. What it sent before that still comes, and then its end.
    } while (received < 0 && (errno == EINTR || (errno == ECONNRESET && carrier_ == Carrier::seqpacket)));

    closed = received == 0 ? carrier_ == Carrier::seqpacket : received < 0 && errno != EAGAIN && errno != EWOULDBLOCK;
    if (received <= 0 || static_cast<std::size_t>(received) > buffer.size()) return std::nullopt;
    const ByteView bytes(buffer.data(), static_cast<std::size_t>(received));
    ASAN_POISON_MEMORY_REGION(bytes.data() + bytes.size(), buffer.size() - bytes.size());
    if (carrier_ == Carrier::qrtr) return Datagram{peer, bytes};
    if (bytes.size() < kAddressSize) return std::nullopt;
    return Datagram{{load_le<std::uint32_t>(&bytes[0]), load_le<std::uint32_t>(&bytes[4])},
                    bytes.subspan(kAddressSize)};
}

// The datagram's own length, also when the buffer has no room for all of it.
ssize_t LinkSocket::receive_once(std::span<std::uint8_t> buffer, Address& peer, int flags) const
{
    if (carrier_ == Carrier::seqpacket) return ::recv(fd_, buffer.data(), buffer.size(), flags | MSG_TRUNC);
    sockaddr_qrtr address{};
    iovec room{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_iov = &room;
    message.msg_iovlen = 1;
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    const ssize_t received = ::recvmsg(fd_, &message, flags);
    peer = {address.sq_node, address.sq_port};
    // QRTR tells of a cut, and not of the length.
    return received > 0 && (message.msg_flags & MSG_TRUNC) != 0 ? received + 1 : received;
}

void LinkSocket::wait_for_room(int timeout_ms) const
{
    pollfd ready{fd_, POLLOUT, 0};
    if (carrier_ == Carrier::qrtr)
        ::poll(nullptr, 0, std::min(timeout_ms, kQrtrRetry_ms));
    else
        ::poll(&ready, 1, timeout_ms);
}

void LinkSocket::wait(int timeout_ms) const
{
    pollfd events[] = {{fd_, POLLIN, 0}, {wake_fd_, POLLIN, 0}};
    ::poll(events, 2, timeout_ms);
    eventfd_t count;
    if (events[1].revents != 0) ::eventfd_read(wake_fd_, &count);
}

bool LinkSocket::make_wakeable()
{
    const timeval turn{0, std::chrono::microseconds(kTurn).count()};
    wake_fd_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return wake_fd_ >= 0 && ::setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &turn, sizeof turn) == 0;
}

void LinkSocket::wake() const
{
    if (wake_fd_ >= 0) ::eventfd_write(wake_fd_, 1);
}

void LinkSocket::shut_down() const
{
    ::shutdown(fd_, SHUT_RDWR);
    wake();
}

}  // namespace rbk::link

#include "platform/link/link_socket.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

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

}  // namespace

std::array<std::uint8_t, kControlPacketSize> pack_control(const ControlPacket& packet)
{
    std::array<std::uint8_t, kControlPacketSize> bytes{};
    store_le(&bytes[0], packet.type);
    if (packet.type == QRTR_TYPE_DEL_CLIENT) {
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
    if (word(0) == QRTR_TYPE_DEL_CLIENT) return ControlPacket{word(0), 0, 0, {word(4), word(8)}};
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

Address LinkSocket::local() const
{
    sockaddr_qrtr address{};
    socklen_t size = sizeof address;
    if (carrier_ != Carrier::qrtr || ::getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &size) != 0) return {};
    return {address.sq_node, address.sq_port};
}

SendResult LinkSocket::send(Address peer, ByteView head, ByteView body, bool wait) const
{
    std::uint8_t prefix[kAddressSize];
    store_le(prefix, peer.node);
    store_le(prefix + 4, peer.port);
    sockaddr_qrtr address{};
    address.sq_family = AF_QIPCRTR;
    address.sq_node = peer.node;
    address.sq_port = peer.port;

    iovec pieces[] = {{prefix, sizeof prefix},
                      {const_cast<std::uint8_t*>(head.data()), head.size()},
                      {const_cast<std::uint8_t*>(body.data()), body.size()}};
    msghdr message{};
    message.msg_iov = pieces;
    message.msg_iovlen = 3;
    if (carrier_ == Carrier::qrtr) {
        message.msg_name = &address;
        message.msg_namelen = sizeof address;
        message.msg_iov = pieces + 1;
        message.msg_iovlen = 2;
    }
    const int flags = MSG_NOSIGNAL | (wait ? 0 : MSG_DONTWAIT);
    while (::sendmsg(fd_, &message, flags) < 0) {
        if (errno == EINTR) continue;
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == ENOBUFS ? SendResult::would_block
                                                                           : SendResult::closed;
    }
    return SendResult::sent;
}

std::optional<Datagram> LinkSocket::receive(std::span<std::uint8_t> buffer, bool& closed) const
{
    sockaddr_qrtr address{};
    iovec room{buffer.data(), buffer.size()};
    msghdr message{};
    message.msg_iov = &room;
    message.msg_iovlen = 1;
    if (carrier_ == Carrier::qrtr) {
        message.msg_name = &address;
        message.msg_namelen = sizeof address;
    }
    // Under the address sanitizer the room behind a datagram is out of bounds: an earlier one's bytes stand there, which
    // would hide a read past its end.
    ASAN_UNPOISON_MEMORY_REGION(buffer.data(), buffer.size());
    ssize_t received;
    do {
        received = ::recvmsg(fd_, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    } while (received < 0 && errno == EINTR);

    closed = received == 0 ? carrier_ == Carrier::seqpacket : received < 0 && errno != EAGAIN && errno != EWOULDBLOCK;
    if (received <= 0 || (message.msg_flags & MSG_TRUNC) != 0) return std::nullopt;
    const ByteView bytes(buffer.data(), static_cast<std::size_t>(received));
    ASAN_POISON_MEMORY_REGION(bytes.data() + bytes.size(), buffer.size() - bytes.size());
    if (carrier_ == Carrier::qrtr) return Datagram{{address.sq_node, address.sq_port}, bytes};
    if (bytes.size() < kAddressSize) return std::nullopt;
    return Datagram{{load_le<std::uint32_t>(&bytes[0]), load_le<std::uint32_t>(&bytes[4])},
                    bytes.subspan(kAddressSize)};
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
    wake_fd_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return wake_fd_ >= 0;
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

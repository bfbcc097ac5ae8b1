// AF_QIPCRTR for machines whose kernel has none: sockets of that family, as the link uses them, carried by the seqpacket
// socket that RBK_TEST_QRTR names. The addresses that the kernel would keep beside a datagram stand in front of it there.
// Linked with --wrap for the six calls below. Of the receivers that a case plays, two are not as others: nobody has the
// port kNobody, and the queue behind kFull is full at first.
#include <linux/qrtr.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>

#ifndef AF_QIPCRTR
#define AF_QIPCRTR 42
#endif

extern "C" {
int __real_socket(int domain, int type, int protocol);
int __real_bind(int fd, const sockaddr* address, socklen_t size);
int __real_close(int fd);
int __real_getsockname(int fd, sockaddr* address, socklen_t* size);
ssize_t __real_sendmsg(int fd, const msghdr* message, int flags);
ssize_t __real_recvmsg(int fd, msghdr* message, int flags);
}

namespace {

constexpr std::uint32_t kOwnNode = 7;
constexpr std::uint32_t kNobody = 0x7001;
constexpr std::uint32_t kFull = 0x7002;

std::atomic<int> g_full_sends{2};
std::array<std::atomic<bool>, 1024> g_is_qrtr;  // by descriptor

bool is_qrtr(int fd)
{
    return fd >= 0 && static_cast<std::size_t>(fd) < g_is_qrtr.size() && g_is_qrtr[static_cast<std::size_t>(fd)];
}

sockaddr_qrtr address_of(std::uint32_t node, std::uint32_t port)
{
    sockaddr_qrtr address{};
    address.sq_family = AF_QIPCRTR;
    address.sq_node = node;
    address.sq_port = port;
    return address;
}

}  // namespace

extern "C" {

int __wrap_socket(int domain, int type, int protocol)
{
    const char* path = ::getenv("RBK_TEST_QRTR");
    if (domain != AF_QIPCRTR || path == nullptr) return __real_socket(domain, type, protocol);
    sockaddr_un peer{};
    peer.sun_family = AF_UNIX;
    std::strncpy(peer.sun_path, path, sizeof peer.sun_path - 1);
    const int fd = __real_socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) != 0) {
        ::close(fd);
        return -1;
    }
    if (fd >= 0) g_is_qrtr.at(static_cast<std::size_t>(fd)) = true;
    return fd;
}

int __wrap_bind(int fd, const sockaddr* address, socklen_t size)
{
    return is_qrtr(fd) ? 0 : __real_bind(fd, address, size);
}

int __wrap_close(int fd)
{
    if (is_qrtr(fd)) g_is_qrtr[static_cast<std::size_t>(fd)] = false;
    return __real_close(fd);
}

int __wrap_getsockname(int fd, sockaddr* address, socklen_t* size)
{
    if (!is_qrtr(fd)) return __real_getsockname(fd, address, size);
    const sockaddr_qrtr own = address_of(kOwnNode, 0x4000 + static_cast<std::uint32_t>(fd));
    std::memcpy(address, &own, sizeof own);
    *size = sizeof own;
    return 0;
}

ssize_t __wrap_sendmsg(int fd, const msghdr* message, int flags)
{
    if (!is_qrtr(fd)) return __real_sendmsg(fd, message, flags);
    sockaddr_qrtr to{};
    if (message->msg_namelen != sizeof to || message->msg_iovlen > 3) {
        errno = EDESTADDRREQ;
        return -1;
    }
    if ((flags & ~MSG_DONTWAIT) != 0) {
        errno = EINVAL;  // as the kernel's router has it
        return -1;
    }
    std::memcpy(&to, message->msg_name, sizeof to);
    if (to.sq_port == kNobody || (to.sq_port == kFull && g_full_sends-- > 0)) {
        errno = to.sq_port == kNobody ? ENODEV : ENOSPC;
        return -1;
    }
    std::uint32_t prefix[2] = {to.sq_node, to.sq_port};
    iovec pieces[4] = {{prefix, sizeof prefix}};
    std::memcpy(pieces + 1, message->msg_iov, message->msg_iovlen * sizeof(iovec));
    msghdr carried{};
    carried.msg_iov = pieces;
    carried.msg_iovlen = message->msg_iovlen + 1;
    const ssize_t sent = __real_sendmsg(fd, &carried, flags | MSG_NOSIGNAL);
    return sent < 0 ? sent : sent - static_cast<ssize_t>(sizeof prefix);
}

ssize_t __wrap_recvmsg(int fd, msghdr* message, int flags)
{
    if (!is_qrtr(fd)) return __real_recvmsg(fd, message, flags);
    std::uint32_t prefix[2] = {};
    iovec pieces[2] = {{prefix, sizeof prefix}, message->msg_iov[0]};
    msghdr carried{};
    carried.msg_iov = pieces;
    carried.msg_iovlen = 2;
    const ssize_t received = __real_recvmsg(fd, &carried, flags);
    message->msg_flags = carried.msg_flags;
    if (received == 0) {  // the kernel's network has no end of a connection; a socket that is shut down gives an error
        errno = ESHUTDOWN;
        return -1;
    }
    if (received < static_cast<ssize_t>(sizeof prefix)) return received;
    const sockaddr_qrtr from = address_of(prefix[0], prefix[1]);
    std::memcpy(message->msg_name, &from, sizeof from);
    message->msg_namelen = sizeof from;
    return received - static_cast<ssize_t>(sizeof prefix);
}

}  // extern "C"

// One end of the link: datagrams to and from addresses, over whichever socket carries them.
#pragma once

#include <linux/qrtr.h>
#include <sys/types.h>

#include <array>
#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "link/bytes.h"
#include "link/qmi_frame.h"

namespace rbk::link {

// A place on the link, as on a QRTR network. The port QRTR_PORT_CTRL of any node is the router's.
struct Address {
    std::uint32_t node = 0;
    std::uint32_t port = 0;
    auto operator<=>(const Address&) const = default;
};

// What the router says and is asked: QRTR_TYPE_NEW_LOOKUP, _NEW_SERVER, _DEL_SERVER, _DEL_CLIENT (then only the address
// counts) and _BYE (only the address's node). A NEW_SERVER packet with nothing but zeros ends the answer to a lookup.
struct ControlPacket {
    std::uint32_t type = 0;
    std::uint32_t service = 0;
    std::uint32_t instance = 0;  // version in the low byte, instance number above it; in a lookup 0 asks for all
    Address address;
};

inline constexpr std::size_t kControlPacketSize = 20;
std::array<std::uint8_t, kControlPacketSize> pack_control(const ControlPacket& packet);
std::optional<ControlPacket> parse_control(ByteView datagram);

// Bytes that a receiver needs for any datagram: the address that travels with it, and the longest message.
inline constexpr std::size_t kAddressSize = 8;
inline constexpr std::size_t kLongestDatagram = kAddressSize + kLongestMessage;

enum class SendResult { sent, would_block, closed };

struct Datagram {
    Address peer;    // client's end: the sender; modem's end: the addressee
    ByteView bytes;  // in the buffer that receive was given
};

// Owns a connected socket. On a Unix seqpacket socket each datagram begins with the address of its far end (node and
// port, four bytes each): the addressee on the way to the modem, the sender on the way back. On AF_QIPCRTR the kernel
// carries the addresses.
class LinkSocket {
 public:
    enum class Carrier { seqpacket, qrtr };
    static constexpr std::chrono::milliseconds kTurn{100};

    LinkSocket() = default;
    LinkSocket(int fd, Carrier carrier) : fd_(fd), carrier_(carrier) {}
    LinkSocket(LinkSocket&& other) noexcept;
    LinkSocket& operator=(LinkSocket&& other) noexcept;
    ~LinkSocket();

    // The client's end of each carrier. On failure the socket isn't open and `error` says why, for a person.
    static LinkSocket connect_unix(const std::string& path, std::string& error);
    static LinkSocket open_qrtr(std::string& error);

    bool is_open() const { return fd_ >= 0; }
    int fd() const { return fd_; }
    Carrier carrier() const { return carrier_; }
    // On AF_QIPCRTR: takes a port now, rather than with the first send. On failure `error` says why.
    bool take_port(std::string& error) const;
    // Where this end is reached; known on AF_QIPCRTR alone, where lookups go to the router of one's own node.
    Address local() const;

    // Sends head and body as one datagram. Blocks while the queue is full unless `wait` is false.
    SendResult send(Address peer, ByteView head, ByteView body, bool wait) const;
    // The next datagram. Empty when there is none, when the far end has closed (`closed` is set) or when the datagram
    // had no address or was longer than the buffer. With `wait` it waits for one, kTurn at the longest: that costs a
    // system call less than wait() and then receive(), but no wake-up ends it. The buffer is a block of the heap: under
    // the address sanitizer what lies behind the datagram is out of bounds until the next call, or the block's end.
    std::optional<Datagram> receive(std::span<std::uint8_t> buffer, bool& closed, bool wait = false) const;
    // Waits until a send that would have blocked is worth another attempt, at most `timeout_ms` milliseconds.
    void wait_for_room(int timeout_ms) const;
    // Waits for a datagram, an end or a wake-up, at most `timeout_ms` milliseconds.
    void wait(int timeout_ms) const;
    // Ends a wait() that another thread is in, or else the next one. Without effect before make_wakeable().
    void wake() const;
    // For the end that waits; false when the system has no descriptor left.
    bool make_wakeable();
    // Ends the connection for both ends, where the carrier has one.
    void shut_down() const;

 private:
    ssize_t send_once(Address peer, ByteView head, ByteView body, int flags) const;
    ssize_t receive_once(std::span<std::uint8_t> buffer, Address& peer, int flags) const;

    int fd_ = -1;
    int wake_fd_ = -1;  // an event beside the socket
    Carrier carrier_ = Carrier::seqpacket;
};

}  // namespace rbk::link

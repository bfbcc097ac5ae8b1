#include "simulator/carriers/qmux_frame.h"

namespace rbk::sim {
namespace {

constexpr std::uint8_t kMarker = 0x01;
constexpr std::uint8_t kFromHost = 0x00;
constexpr std::uint8_t kFromModem = 0x80;
constexpr std::size_t kControlHeadSize = 6;

// Offsets in a frame.
constexpr std::size_t kLength = 1;  // of all behind the marker, itself included
constexpr std::size_t kSender = 3;
constexpr std::size_t kService = 4;
constexpr std::size_t kClient = 5;

std::size_t message_head_size(std::uint8_t service)
{
    return service == kQmuxControl ? kControlHeadSize : link::kQmiHeadSize;
}

// The frame's size by its second and third byte.
std::size_t frame_size(ByteView frame)
{
    return 1UL + load_le<std::uint16_t>(&frame[kLength]);
}

// Whether a frame may begin so, as far as that can be seen.
bool may_begin(ByteView bytes)
{
    if (bytes[0] != kMarker) return false;
    if (bytes.size() < kSender) return true;
    const std::size_t size = frame_size(bytes);
    if (size > kLongestQmuxFrame || (bytes.size() > kSender && bytes[kSender] != kFromHost)) return false;
    if (bytes.size() <= kService) return true;
    // The message's own length stands at its head's end, and agrees with the frame's.
    const std::size_t head = kQmuxHeadSize + message_head_size(bytes[kService]);
    if (size < head) return false;
    return bytes.size() < head || load_le<std::uint16_t>(&bytes[head - 2]) == size - head;
}

}  // namespace

std::array<std::uint8_t, kQmuxHeadSize> pack_qmux_head(std::uint8_t service, std::uint8_t client, std::size_t size)
{
    std::array<std::uint8_t, kQmuxHeadSize> head{kMarker, 0, 0, kFromModem, service, client};
    store_le(&head[kLength], static_cast<std::uint16_t>(kQmuxHeadSize - 1 + size));
    return head;
}

void QmuxReader::add(ByteView bytes)
{
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(at_));
    forgotten_ += at_;
    at_ = given_up_ = 0;
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::optional<QmuxFrame> QmuxReader::next()
{
    for (; at_ < bytes_.size(); ++at_) {
        const ByteView rest = ByteView(bytes_).subspan(at_);
        if (!may_begin(rest)) continue;
        if (rest.size() > kClient && rest.size() >= frame_size(rest)) {
            const ByteView frame = rest.first(frame_size(rest));
            at_ += frame.size();
            return QmuxFrame{frame[kService], frame[kClient], frame.subspan(kQmuxHeadSize)};
        }
        if (at_ >= given_up_) break;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> QmuxReader::part() const
{
    return at_ < bytes_.size() ? std::optional(forgotten_ + at_) : std::nullopt;
}

// ---- Messages of the control service ----

Bytes pack_qmux_control(const QmuxControlHead& head, ByteView tlvs)
{
    Bytes message{static_cast<std::uint8_t>(head.kind), head.transaction};
    append_le(message, head.message);
    append_le(message, static_cast<std::uint16_t>(tlvs.size()));
    message.insert(message.end(), tlvs.begin(), tlvs.end());
    return message;
}

std::optional<QmuxControlHead> parse_qmux_request(ByteView& message)
{
    const auto kind = static_cast<QmuxControlKind>(message[0]);
    if (kind != QmuxControlKind::request) return std::nullopt;
    const QmuxControlHead head{kind, message[1], load_le<std::uint16_t>(&message[2])};
    message = message.subspan(kControlHeadSize);
    return head;
}

}  // namespace rbk::sim

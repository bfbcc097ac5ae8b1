#include "link/diag_frame.h"

namespace rbk::link {

std::array<std::uint8_t, kDiagHeadSize> pack_diag(const DiagHead& head)
{
    std::array<std::uint8_t, kDiagHeadSize> bytes{};
    bytes[0] = static_cast<std::uint8_t>(head.kind);
    bytes[1] = head.what;
    store_le(&bytes[2], head.sequence);
    store_le(&bytes[4], head.client);
    store_le(&bytes[8], head.value);
    store_le(&bytes[12], head.code);
    return bytes;
}

std::optional<DiagFrame> parse_diag(ByteView datagram)
{
    if (datagram.size() < kDiagHeadSize || datagram[0] < static_cast<std::uint8_t>(DiagKind::call) ||
        datagram[0] > static_cast<std::uint8_t>(DiagKind::packet))
        return std::nullopt;
    const DiagHead head{static_cast<DiagKind>(datagram[0]),   datagram[1],
                        load_le<std::uint16_t>(&datagram[2]), load_le<std::int32_t>(&datagram[4]),
                        load_le<std::int32_t>(&datagram[8]),  load_le<std::int32_t>(&datagram[12])};
    return DiagFrame{head, datagram.subspan(kDiagHeadSize)};
}

}  // namespace rbk::link

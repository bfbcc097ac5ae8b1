#include "link/qmi_frame.h"

namespace rbk::link {

void store_qmi_head(std::uint8_t* to, const QmiHead& head)
{
    to[0] = static_cast<std::uint8_t>(head.kind);
    store_le(to + 1, head.transaction);
    store_le(to + 3, head.message);
    store_le(to + 5, head.length);
}

std::optional<QmiMessage> parse_qmi(ByteView datagram)
{
    if (datagram.size() < kQmiHeadSize) return std::nullopt;
    const std::uint8_t kind = datagram[0];
    if (kind != 0 && kind != 2 && kind != 4) return std::nullopt;
    const QmiHead head{static_cast<QmiKind>(kind), load_le<std::uint16_t>(&datagram[1]),
                       load_le<std::uint16_t>(&datagram[3]), load_le<std::uint16_t>(&datagram[5])};
    if (head.length != datagram.size() - kQmiHeadSize) return std::nullopt;
    return QmiMessage{head, datagram.subspan(kQmiHeadSize)};
}

}  // namespace rbk::link

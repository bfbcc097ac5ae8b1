// The head of a QMI message: flags, transaction, message id, length; the TLVs stand behind it.
#pragma once

#include <cstdint>
#include <optional>

#include "link/bytes.h"

namespace rbk::link {

enum class QmiKind : std::uint8_t { request = 0, response = 2, indication = 4 };

inline constexpr std::size_t kQmiHeadSize = 7;

// TLV bytes of the longest message of any service (loading a configuration), and the longest message with its head.
inline constexpr std::size_t kLongestTlvs = 32920;
inline constexpr std::size_t kLongestMessage = kQmiHeadSize + kLongestTlvs;

struct QmiHead {
    QmiKind kind = QmiKind::request;
    std::uint16_t transaction = 0;
    std::uint16_t message = 0;
    std::uint16_t length = 0;  // bytes of TLVs behind the head
};

struct QmiMessage {
    QmiHead head;
    ByteView tlvs;
};

void store_qmi_head(std::uint8_t* to, const QmiHead& head);

// A whole message out of a datagram; empty when the head is cut, its kind is unknown or its length isn't what follows.
std::optional<QmiMessage> parse_qmi(ByteView datagram);

}  // namespace rbk::link

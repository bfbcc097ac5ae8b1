// Messages of QMI services between their structures in memory and their TLVs on the wire, by the services' tables.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "link/bytes.h"
#include "platform/include/qmi_idl.h"

namespace rbk::platform {

// The table's row for a message; null when the service has no such message.
const idl_message* find_message(const qmi_idl_service_object& service, qmi_idl_type_of_message kind,
                                std::uint32_t msg_id);

// Writes the message's TLVs into `room` and gives their length. Optional fields go out when their flag is set, a count
// above the array's room is refused, a text ends at its terminator. Empty when it is refused or `room` is too small.
std::optional<std::size_t> encode(const idl_message& message, const void* structure, std::span<std::uint8_t> room);

// Reads TLVs into `structure`, message.size bytes, which stays untouched when they are refused: a mandatory TLV is
// missing, or one is shorter than its own count says. Unknown TLVs and bytes behind a value are skipped; of two TLVs of
// one type the first counts. A count above the array's room is kept as sent, and the elements that have room are
// stored. After success flags are 0 or 1, texts are terminated, and what nothing filled is zero.
bool decode(const idl_message& message, ByteView tlvs, void* structure);

}  // namespace rbk::platform

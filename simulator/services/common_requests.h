// The modem's small commands through the envelope: the record of the request id 4.
#pragma once

#include <cstdint>
#include <span>

#include "link/bytes.h"

namespace rbk::sim {

struct DebugInfo;
class Modem;

// The answer's size, and where its result stands.
inline constexpr std::size_t kCommonAnswerSize = 508;
inline constexpr std::size_t kCommonResultAt = 4;

// Reads missing bytes of the request as 0 and fills `answer`, which has the size above and is all zero. What a command
// sets in motion is stored when it returns; a restart comes once the answer has left. A command that this modem doesn't
// know is refused with -EOPNOTSUPP, one with a length beyond its record with -EINVAL.
void run_common_request(Modem& modem, const DebugInfo& debug_info, ByteView request, std::span<std::uint8_t> answer);

}  // namespace rbk::sim

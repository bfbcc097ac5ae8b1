// NV items and EFS files through the envelope: the records of the request ids 1 and 2.
#pragma once

#include <cstdint>
#include <span>

#include "link/bytes.h"
#include "simulator/base/client_id.h"
#include "simulator/state/efs.h"
#include "simulator/state/state_store.h"

namespace rbk::sim {

// The answers' sizes, and where their result stands.
inline constexpr std::size_t kNvEfsAnswerSize = 444;
inline constexpr std::size_t kNvEfsResultAt = 16;
inline constexpr std::size_t kLegacyNvAnswerSize = 432;
inline constexpr std::size_t kLegacyNvResultAt = 4;

class NvEfsRequests {
 public:
    explicit NvEfsRequests(StateStore& store) : store_(store), efs_(store) {}

    // Both read missing bytes of a request as 0 and fill `answer`, which has the sizes above and is all zero.
    void run(ClientId client, ByteView request, std::span<std::uint8_t> answer);
    void run_legacy_read(ByteView request, std::span<std::uint8_t> answer);

    void tell_holdings(ClientId client, Holdings& held) const { efs_.tell_holdings(client, held); }
    void client_gone(ClientId client) { efs_.client_gone(client); }

 private:
    std::int32_t nv_read(ByteView request, std::span<std::uint8_t> answer);
    std::int32_t nv_write(ByteView request);
    std::int32_t nv_delete(ByteView request);
    std::int32_t efs_read(ClientId client, ByteView request, std::span<std::uint8_t> answer);
    std::int32_t efs_write(ClientId client, ByteView request);
    std::int32_t efs_delete(ByteView request);

    StateStore& store_;
    Efs efs_;
};

}  // namespace rbk::sim

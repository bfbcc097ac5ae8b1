// What the statistics engine says of itself, through the small commands of the extended service.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "link/bytes.h"
#include "simulator/scenario/service_kinds.h"

namespace rbk::sim {

struct DebugInfo final : ServiceSettings {
    Bytes record;                     // its first byte is the version
    std::vector<std::uint16_t> logs;  // that the engine wants upgraded
};

// The built-in phone's, or what [debug_info] of the scenario gives; `file` is null without one.
std::unique_ptr<const ServiceSettings> read_debug_info(TableReader* file);

}  // namespace rbk::sim

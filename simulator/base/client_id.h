// Who a request comes from.
#pragma once

#include <cstdint>

namespace rbk::sim {

using ClientId = std::uint64_t;  // one attached client; never given out twice

}  // namespace rbk::sim

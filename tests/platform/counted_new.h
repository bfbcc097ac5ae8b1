// How often this program has asked for memory with new, from any thread. In a file of its own, out of the compiler's
// sight: it pairs what it sees of new and delete.
#pragma once

#include <cstdint>

namespace rbk::test {

std::uint64_t allocations();

}  // namespace rbk::test

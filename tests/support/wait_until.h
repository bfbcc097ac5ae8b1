// Waiting for what comes on another thread or from another process.
#pragma once

#include <chrono>
#include <thread>

namespace rbk::test {

// Whether it came. A busy machine takes its time; what hasn't come after that never will.
template <typename Condition>
bool wait_until(Condition met)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!met() && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return met();
}

}  // namespace rbk::test

// The steady clock in the hands of a case: moved past bounds that nobody wants to sit out, or stopped. For programs that
// link wrapped_clock.cpp; what the system itself waits for (poll, sleeps) isn't touched.
#pragma once

#include <chrono>

namespace rbk::test::test_clock {

void move_on(std::chrono::nanoseconds by);
void stop();

}  // namespace rbk::test::test_clock

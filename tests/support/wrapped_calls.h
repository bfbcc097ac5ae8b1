// Calls of the device's code on which cases decide races: who holds one up decides which thread comes first.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace rbk::test {

// Runs on the caller's thread with a call's name and the lock that it is about. "timer_settime", "usleep", "lock" (of a
// QtiSharedMutex) and "Diag_LSM_DeInit" are told before they begin, "sem_wait" and "sem_post" once they are done.
using CallHook = std::function<void(std::string_view call, const void* lock)>;

// Installs a hook while it lives; one at a time. A call that is being told is told to its end.
class OnCalls {
 public:
    explicit OnCalls(CallHook hook);
    // Holds each such call up until a condition is met.
    OnCalls(std::string call, std::function<bool()> met);
    ~OnCalls();
    OnCalls(const OnCalls&) = delete;
    OnCalls& operator=(const OnCalls&) = delete;
};

// For the wrapped calls: tell the hook; write a line into the file that RBK_TEST_CALLS names.
void tell_call(std::string_view call, const void* lock = nullptr);
void write_down(const std::string& call);

}  // namespace rbk::test

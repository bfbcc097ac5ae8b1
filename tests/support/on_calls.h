// Calls of the device's code on which cases decide races: who holds one up decides which thread comes first.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "wait_until.h"

namespace rbk::test {

// Runs on the caller's thread with a call, "usleep 100000", and the lock that it is about. "sem_wait" and "sem_post" are
// told once they are done, all others before they begin.
using CallHook = std::function<void(std::string_view call, const void* lock)>;

namespace detail {
// Never destroyed: threads outlive the end of main.
struct InstalledHook {
    std::mutex mutex;
    CallHook call;
};
inline InstalledHook& installed_hook()
{
    static auto* const one = new InstalledHook;
    return *one;
}
}  // namespace detail

// Installs a hook while it lives; one at a time. A call that is being told is told to its end.
class OnCalls {
 public:
    explicit OnCalls(CallHook hook) { install(std::move(hook)); }
    // Holds each such call up until a condition is met.
    OnCalls(std::string held, std::function<bool()> met)
        : OnCalls([held = std::move(held), met = std::move(met)](std::string_view call, const void*) {
              if (call == held) wait_until(met);
          })
    {
    }
    ~OnCalls() { install(nullptr); }
    OnCalls(const OnCalls&) = delete;
    OnCalls& operator=(const OnCalls&) = delete;

 private:
    static void install(CallHook hook)
    {
        const std::lock_guard lock(detail::installed_hook().mutex);
        detail::installed_hook().call = std::move(hook);
    }
};

// For the wrapped calls.
inline void tell_call(std::string_view call, const void* lock = nullptr)
{
    CallHook told;
    {
        const std::lock_guard guard(detail::installed_hook().mutex);
        told = detail::installed_hook().call;
    }
    if (told) told(call, lock);
}

}  // namespace rbk::test

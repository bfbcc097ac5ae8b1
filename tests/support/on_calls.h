// Calls of the device's code on which cases decide races: who holds one up decides which thread comes first.
#pragma once

#include <condition_variable>
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
    std::condition_variable idle;
    int told = 0;  // calls under way
    CallHook call;
};
inline InstalledHook& installed_hook()
{
    static auto* const one = new InstalledHook;
    return *one;
}
}  // namespace detail

// Installs a hook while it lives; one at a time. Its end waits for calls that are being told.
class OnCalls {
 public:
    explicit OnCalls(CallHook hook)
    {
        const std::lock_guard lock(detail::installed_hook().mutex);
        detail::installed_hook().call = std::move(hook);
    }
    // Holds each such call up until a condition is met.
    OnCalls(std::string held, std::function<bool()> met)
        : OnCalls([held = std::move(held), met = std::move(met)](std::string_view call, const void*) {
              if (call == held) wait_until(met);
          })
    {
    }
    ~OnCalls()
    {
        detail::InstalledHook& hook = detail::installed_hook();
        std::unique_lock lock(hook.mutex);
        hook.call = nullptr;
        hook.idle.wait(lock, [&] { return hook.told == 0; });
    }
    OnCalls(const OnCalls&) = delete;
    OnCalls& operator=(const OnCalls&) = delete;
};

// For the wrapped calls.
inline void tell_call(std::string_view call, const void* lock = nullptr)
{
    detail::InstalledHook& hook = detail::installed_hook();
    std::unique_lock guard(hook.mutex);
    if (!hook.call) return;
    const CallHook told = hook.call;
    ++hook.told;
    guard.unlock();
    told(call, lock);
    guard.lock();
    if (--hook.told == 0) hook.idle.notify_all();
}

}  // namespace rbk::test

// The list of timers that haven't been stopped, where threads meet in it.
#pragma once

#include "qti_shared_mutex.h"
#include "support/embedded_run.h"
#include "support/wrapped_calls.h"
#include "velmor_utils_timer.h"

namespace rbk::test {

// The mutex that guards the list: the one that a stop locks, here of a timer that isn't there.
inline qtimutex::QtiSharedMutex& timer_list_mutex()
{
    const void* mutex = nullptr;
    const OnCalls hook([&](std::string_view call, const void* lock) {
        if (call == "lock") mutex = lock;
    });
    velmor_timer_stop(0);
    return *const_cast<qtimutex::QtiSharedMutex*>(static_cast<const qtimutex::QtiSharedMutex*>(mutex));
}

// A timer that fires at once may look for its node before that is listed. While this lives a stop begins only when each
// timer that was armed is listed; a stop is what locks the list without having armed one before.
class TimersAreListedFirst {
 public:
    explicit TimersAreListedFirst(const EmbeddedRun& run, std::string calls_file)
        : hook_([&run, calls_file, list = static_cast<const void*>(&timer_list_mutex())](std::string_view call,
                                                                                         const void* lock) {
              static thread_local bool arms = false;
              if (call == "lock" && lock == list && !arms) {
                  EXPECT_TRUE(wait_until([&] {
                      std::size_t armed = 0;
                      for (const std::string& line : lines_of(read_file(calls_file)))
                          armed += line.starts_with("timer_settime") && line != "timer_settime 0.000000000";
                      return run.log_count("Set timer with ID") >= armed;
                  }));
              }
              arms = call == "timer_settime";
          })
    {
    }

 private:
    OnCalls hook_;
};

}  // namespace rbk::test

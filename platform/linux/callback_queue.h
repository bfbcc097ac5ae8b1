// What a library's callback thread is still to hand on.
#pragma once

#include <algorithm>
#include <cstddef>
#include <deque>
#include <utility>

#include "platform/linux/environment.h"

namespace rbk::platform {

// In order. `Event` tells its size() in bytes. The queue takes what the modem says while a callback takes its time; what
// comes once it holds kMost is lost, after a complaint, since a callback that never returns would let it grow for good.
template <typename Event>
class CallbackQueue {
 public:
    static constexpr std::size_t kMost = 16UL * 1024 * 1024;  // bytes, as much as the modem itself keeps for a client

    bool empty() const { return events_.empty(); }
    bool any(auto predicate) const { return std::any_of(events_.begin(), events_.end(), predicate); }

    // An event without bytes is always taken.
    void push(Event event)
    {
        const std::size_t size = event.size();
        if (size > 0 && bytes_ + size > kMost)
            return complain("callbacks are too slow for what the modem says; some of it is lost");
        bytes_ += size;
        events_.push_back(std::move(event));
    }
    void push_front(Event event)
    {
        bytes_ += event.size();
        events_.push_front(std::move(event));
    }
    Event pop()
    {
        Event event = std::move(events_.front());
        events_.pop_front();
        bytes_ -= event.size();
        return event;
    }
    void erase_if(auto predicate)
    {
        std::erase_if(events_, predicate);
        bytes_ = 0;
        for (const Event& event : events_) bytes_ += event.size();
    }
    void clear() { *this = {}; }

 private:
    std::deque<Event> events_;
    std::size_t bytes_ = 0;
};

}  // namespace rbk::platform

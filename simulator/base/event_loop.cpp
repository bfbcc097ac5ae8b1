#include "simulator/base/event_loop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>
#include <system_error>
#include <utility>

namespace rbk::sim {
namespace {

int opened(int fd)
{
    if (fd < 0) throw std::system_error(errno, std::generic_category());
    return fd;
}

void control(int epoll, int operation, int fd, std::uint32_t events, std::uint64_t id)
{
    epoll_event event{};
    event.events = events;
    event.data.u64 = id;
    if (::epoll_ctl(epoll, operation, fd, &event) != 0) throw std::system_error(errno, std::generic_category());
}

}  // namespace

EventLoop::EventLoop()
    : epoll_(opened(::epoll_create1(EPOLL_CLOEXEC))), wake_(opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)))
{
    control(epoll_.get(), EPOLL_CTL_ADD, wake_.get(), EPOLLIN, 0);
}

EventLoop::WatchId EventLoop::watch(int fd, std::uint32_t events, Ready ready)
{
    control(epoll_.get(), EPOLL_CTL_ADD, fd, events, last_watch_ + 1);
    watched_.emplace(++last_watch_, Watched{fd, std::move(ready)});
    return last_watch_;
}

void EventLoop::change(WatchId watch, std::uint32_t events)
{
    control(epoll_.get(), EPOLL_CTL_MOD, watched_.at(watch).fd, events, watch);
}

void EventLoop::unwatch(WatchId watch)
{
    const auto found = watched_.find(watch);
    if (found == watched_.end()) return;
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, found->second.fd, nullptr);
    // The handler may be the one that is running: it stays where it is until it has returned.
    using Node = decltype(watched_)::node_type;
    defer([ended = std::make_shared<Node>(watched_.extract(found))] {});
}

EventLoop::TimerId EventLoop::after(Clock::duration delay, Task task)
{
    const TimerId timer = new_timer(delay);
    set(timer, std::move(task));
    return timer;
}

void EventLoop::run()
{
    epoll_event events[16];
    while (!stopped_.load(std::memory_order_acquire)) {
        const int ready = ::epoll_wait(epoll_.get(), events, static_cast<int>(std::size(events)), wait_ms());
        if (ready < 0 && errno != EINTR) return;
        for (int i = 0; i < ready; ++i) {
            // An earlier handler of this round may have ended the watch.
            const WatchId watch = events[i].data.u64;  // a copy: the kernel packs its events
            const auto found = watched_.find(watch);
            if (found == watched_.end()) continue;
            found->second.ready(events[i].events);
            run_deferred();
        }
        run_due_timers();
    }
}

void EventLoop::stop()
{
    stopped_.store(true, std::memory_order_release);
    const std::uint64_t one = 1;
    // A full counter is a wake-up that is already under way.
    [[maybe_unused]] const ssize_t written = ::write(wake_.get(), &one, sizeof one);
}

int EventLoop::wait_ms() const
{
    if (timers_.empty()) return -1;
    const auto left = timers_.begin()->first.first - Clock::now();
    if (left <= Clock::duration::zero()) return 0;
    // Rounded up: a timer that is waited for a little short would be polled for until it is due.
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return static_cast<int>(std::min<std::int64_t>(rounded, INT_MAX));
}

void EventLoop::run_due_timers()
{
    if (timers_.empty()) return;
    // By the time of one look at the clock: a task that sets itself again at once doesn't keep the descriptors waiting.
    const auto now = Clock::now();
    while (!timers_.empty() && timers_.begin()->first.first <= now) {
        auto timer = timers_.extract(timers_.begin());
        timer.mapped()();
        run_deferred();
    }
}

void EventLoop::run_deferred()
{
    while (!deferred_.empty()) {
        const std::vector<Task> tasks = std::exchange(deferred_, {});
        for (const Task& task : tasks) task();
    }
}

}  // namespace rbk::sim

#include "platform/linux/process_end.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/linux/environment.h"

namespace rbk::platform {
namespace {

constexpr std::chrono::milliseconds kGrace{1000};

std::atomic<std::thread::id> ending_thread;  // none until the end has begun
thread_local LibraryThread* current = nullptr;

}  // namespace

void begin_process_end()
{
    ending_thread.store(std::this_thread::get_id());
}

bool process_ends()
{
    return ending_thread.load() != std::thread::id();
}

LibraryCall::~LibraryCall()
{
    const std::thread::id ending = ending_thread.load(std::memory_order_relaxed);
    if (ending == std::thread::id() || ending == std::this_thread::get_id()) return;
    if (current != nullptr) current->ended();
    for (;;) ::pause();
}

bool LibraryThread::start(const char* what, std::function<void()> body)
{
    const MutexLock lock(mutex_);
    if (started_) return true;
    try {
        std::thread([this, body = std::move(body)] {
            current = this;
            body();
            ended();
        }).detach();
        started_ = true;
    } catch (const std::system_error& error) {
        complain(std::string("no thread for ") + what + ": " + error.what());
    }
    return started_;
}

bool LibraryThread::is_current() const
{
    return current == this;
}

void LibraryThread::ended()
{
    const MutexLock lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

void LibraryThread::await_end()
{
    const auto deadline = std::chrono::steady_clock::now() + kGrace;
    const MutexLock lock(mutex_);
    while (started_ && !ended_ && !is_current())
        if (!changed_.wait_until(mutex_, deadline)) return;
}

}  // namespace rbk::platform

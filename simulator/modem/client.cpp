#include "simulator/modem/client.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kKeeping = 256;  // bytes that it takes to keep a message or a timer, roughly

}  // namespace

bool Client::send(const ClientLimits& limits, std::uint32_t port, ByteView head, ByteView body)
{
    if (unsent_.empty()) {
        const link::SendResult result = line_->send(port, head, body);
        if (result != link::SendResult::would_block) return true;
    }
    const std::size_t size = head.size() + body.size();
    if (!reserve(limits, size)) return false;
    Bytes bytes(head.begin(), head.end());
    bytes.insert(bytes.end(), body.begin(), body.end());
    unsent_.push_back({port, std::move(bytes), EventLoop::Clock::now()});
    return true;
}

void Client::send_unsent()
{
    while (!unsent_.empty()) {
        const link::SendResult result = line_->send(unsent_.front().port, unsent_.front().bytes, {});
        if (result == link::SendResult::would_block) return;
        release(unsent_.front().bytes.size());
        unsent_.pop_front();
    }
}

bool Client::put_off(const ClientLimits& limits, EventLoop::TimerId timer, std::size_t size)
{
    if (!reserve(limits, size)) return false;
    timers_.emplace(timer, size);
    return true;
}

void Client::take_up(EventLoop::TimerId timer)
{
    const auto taken = timers_.extract(timer);
    if (!taken.empty()) release(taken.mapped());
}

bool Client::reserve(const ClientLimits& limits, std::size_t size)
{
    if (waiting_bytes_ + size + kKeeping > limits.waiting_bytes) return false;
    waiting_bytes_ += size + kKeeping;
    return true;
}

void Client::release(std::size_t size)
{
    waiting_bytes_ -= size + kKeeping;
}

}  // namespace rbk::sim

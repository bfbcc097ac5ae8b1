#include "simulator/client.h"

namespace rbk::sim {

bool Client::send(const ClientLimits& limits, link::Address from, ByteView head, ByteView body)
{
    if (unsent_.empty()) {
        const link::SendResult result = socket_.send(from, head, body, false);
        if (result != link::SendResult::would_block) return result == link::SendResult::sent;
    }
    const std::size_t size = head.size() + body.size();
    if (unsent_bytes_ + size > limits.unsent_bytes) return false;
    Bytes bytes(head.begin(), head.end());
    bytes.insert(bytes.end(), body.begin(), body.end());
    unsent_.push_back({from, std::move(bytes), EventLoop::Clock::now()});
    unsent_bytes_ += size;
    return true;
}

bool Client::send_unsent()
{
    while (!unsent_.empty()) {
        const link::SendResult result = socket_.send(unsent_.front().from, unsent_.front().bytes, {}, false);
        if (result == link::SendResult::would_block) return true;
        if (result == link::SendResult::closed) return false;
        unsent_bytes_ -= unsent_.front().bytes.size();
        unsent_.pop_front();
    }
    return true;
}

}  // namespace rbk::sim

// One input of a fuzzer, taken from the front; what isn't there any more reads as zero.
#pragma once

#include <algorithm>
#include <string>

#include "link/bytes.h"

namespace rbk::fuzz {

class Input {
 public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool empty() const { return rest_.empty(); }
    ByteView rest() const { return rest_; }

    template <typename Number>
    Number number()
    {
        const auto number = peek_le<Number>(rest_, 0);
        take(sizeof number);
        return number;
    }
    std::uint8_t byte() { return number<std::uint8_t>(); }
    ByteView take(std::size_t count)
    {
        const ByteView taken = rest_.first(std::min(count, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    // Two bytes of length, and what they say.
    ByteView block() { return take(number<std::uint16_t>()); }
    std::string text()
    {
        const ByteView bytes = block();
        return {bytes.begin(), bytes.end()};
    }

 private:
    ByteView rest_;
};

}  // namespace rbk::fuzz

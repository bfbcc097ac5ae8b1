// Little-endian numbers in byte sequences that come from elsewhere.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace rbk {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

static_assert(std::endian::native == std::endian::little, "numbers are copied as they stand in memory");

// The number at `from`; the caller has made sure that it is all there.
template <typename Number>
Number load_le(const std::uint8_t* from)
{
    Number number;
    std::memcpy(&number, from, sizeof number);
    return number;
}

template <typename Number>
void store_le(std::uint8_t* to, Number number)
{
    std::memcpy(to, &number, sizeof number);
}

template <typename Number>
void append_le(Bytes& to, Number number)
{
    const std::size_t at = to.size();
    to.resize(at + sizeof number);
    store_le(to.data() + at, number);
}

// The number at `offset`; what lies past the end reads as zero.
template <typename Number>
Number peek_le(ByteView bytes, std::size_t offset)
{
    std::uint8_t room[sizeof(Number)] = {};
    for (std::size_t i = 0; i < sizeof room && offset + i < bytes.size(); ++i) room[i] = bytes[offset + i];
    return load_le<Number>(room);
}

}  // namespace rbk

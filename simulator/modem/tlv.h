// The TLVs of a message, read and written by their type numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "link/bytes.h"

namespace rbk::sim {

struct Tlv {
    std::uint8_t type = 0;
    ByteView value;
};

// One TLV off the front of `rest`; empty, with `rest` untouched, when it does not fit.
std::optional<Tlv> take_tlv(ByteView& rest);

// Whether `tlvs` is nothing but whole TLVs.
bool well_formed(ByteView tlvs);

// The value of the first TLV of this type.
std::optional<ByteView> find_tlv(ByteView tlvs, std::uint8_t type);

// Appends TLVs to a message that somebody else owns.
class TlvWriter {
 public:
    explicit TlvWriter(Bytes& to) : to_(&to) {}

    template <typename Number>
    void number(std::uint8_t type, Number value)
    {
        head(type, sizeof value);
        append_le(*to_, value);
    }
    void bytes(std::uint8_t type, ByteView value);
    // A value of `size` zeros, to be filled in place; good until the next TLV is written.
    std::span<std::uint8_t> zeros(std::uint8_t type, std::size_t size);

 private:
    void head(std::uint8_t type, std::size_t size);

    Bytes* to_;
};

}  // namespace rbk::sim

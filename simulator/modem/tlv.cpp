#include "simulator/modem/tlv.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kTlvHeadSize = 3;

}  // namespace

std::optional<Tlv> take_tlv(ByteView& rest)
{
    if (rest.size() < kTlvHeadSize) return std::nullopt;
    const std::size_t size = load_le<std::uint16_t>(&rest[1]);
    if (size > rest.size() - kTlvHeadSize) return std::nullopt;
    const Tlv tlv{rest[0], rest.subspan(kTlvHeadSize, size)};
    rest = rest.subspan(kTlvHeadSize + size);
    return tlv;
}

bool well_formed(ByteView tlvs)
{
    while (!tlvs.empty()) {
        if (!take_tlv(tlvs)) return false;
    }
    return true;
}

std::optional<ByteView> find_tlv(ByteView tlvs, std::uint8_t type)
{
    while (const std::optional<Tlv> tlv = take_tlv(tlvs)) {
        if (tlv->type == type) return tlv->value;
    }
    return std::nullopt;
}

void TlvWriter::bytes(std::uint8_t type, ByteView value)
{
    head(type, value.size());
    to_->insert(to_->end(), value.begin(), value.end());
}

std::span<std::uint8_t> TlvWriter::zeros(std::uint8_t type, std::size_t size)
{
    head(type, size);
    to_->resize(to_->size() + size);
    return std::span(*to_).last(size);
}

void TlvWriter::head(std::uint8_t type, std::size_t size)
{
    to_->push_back(type);
    append_le(*to_, static_cast<std::uint16_t>(size));
}

}  // namespace rbk::sim

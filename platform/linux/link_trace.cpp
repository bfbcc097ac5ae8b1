#include "platform/linux/link_trace.h"

#include <cstdio>
#include <ctime>

namespace rbk::platform {
namespace {

const char* kind_text(link::QmiKind kind)
{
    switch (kind) {
    case link::QmiKind::request: return "req";
    case link::QmiKind::response: return "rsp";
    case link::QmiKind::indication: return "ind";
    }
    return "?";
}

}  // namespace

void LinkTrace::qmi(Direction direction, std::uint32_t service, const link::QmiHead& head, ByteView tlvs)
{
    begin(direction);
    char text[96];
    std::snprintf(text, sizeof text, "svc=0x%04X %s txn=%u msg=0x%04X len=%zu ", service, kind_text(head.kind),
                  head.transaction, head.message, tlvs.size());
    line_ += text;
    end(tlvs);
}

void LinkTrace::diag(Direction direction, ByteView bytes)
{
    begin(direction);
    line_ += "diag len=" + std::to_string(bytes.size()) + ' ';
    end(bytes);
}

void LinkTrace::begin(Direction direction)
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    char text[64];
    std::snprintf(text, sizeof text, "%lld.%06ld %c ", static_cast<long long>(now.tv_sec), now.tv_nsec / 1000,
                  static_cast<char>(direction));
    line_ = text;
}

void LinkTrace::end(ByteView bytes)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (const std::uint8_t byte : bytes) {
        line_ += kDigits[byte >> 4];
        line_ += kDigits[byte & 0xF];
    }
    line_ += '\n';
    output_.write(line_);
}

}  // namespace rbk::platform

#include "platform/linux/link_trace.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

#include "platform/linux/environment.h"

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

LinkTrace::LinkTrace(const std::optional<std::string>& path)
{
    if (!path) return;
    fd_ = ::open(path->c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd_ < 0) complain("RBK_TRACE=" + *path + ": " + std::generic_category().message(errno));
}

LinkTrace::~LinkTrace()
{
    if (fd_ >= 0) ::close(fd_);
}

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
    // A line that the disk has no room for is lost; the command it watches goes on.
    while (::write(fd_, line_.data(), line_.size()) < 0 && errno == EINTR) {
    }
}

}  // namespace rbk::platform

// RBK_TRACE: each message that goes over this process's link, a line a message.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "platform/link/qmi_frame.h"

namespace rbk::platform {

enum class Direction : char { to_modem = '>', from_modem = '<' };

// Appends whole lines, each with one write, so that they survive a kill and those of several processes stay apart.
// Threads: lock() orders a send and its line against the answer's line; the writers expect it to be held.
class LinkTrace {
 public:
    // Opens the file for appending; complains and stays silent when that fails. Without a path there is no trace.
    explicit LinkTrace(const std::optional<std::string>& path);
    ~LinkTrace();
    LinkTrace(const LinkTrace&) = delete;
    LinkTrace& operator=(const LinkTrace&) = delete;

    bool is_on() const { return fd_ >= 0; }
    std::unique_lock<std::mutex> lock() { return is_on() ? std::unique_lock(mutex_) : std::unique_lock<std::mutex>(); }

    void qmi(Direction direction, std::uint32_t service, const link::QmiHead& head, ByteView tlvs);
    void diag(Direction direction, ByteView bytes);

 private:
    void begin(Direction direction);
    void end(ByteView bytes);

    int fd_ = -1;
    std::mutex mutex_;
    std::string line_;
};

}  // namespace rbk::platform

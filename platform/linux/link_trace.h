// RBK_TRACE: each message that goes over this process's link, a line a message.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "link/qmi_frame.h"
#include "platform/linux/line_output.h"
#include "platform/linux/thread_safety.h"

namespace rbk::platform {

enum class Direction : char { to_modem = '>', from_modem = '<' };

// Appends whole lines, each with one write, so that they survive a kill and those of several processes stay apart.
// Threads: the mutex orders a send and its line against the answer's line; a sender holds it over both.
class LinkTrace {
 public:
    // Opens the file for appending. Without a path there is no trace.
    explicit LinkTrace(const std::optional<std::string>& path) : output_("RBK_TRACE", path.value_or("")) {}

    bool is_on() const { return output_.is_open(); }
    Mutex& mutex() RETURN_CAPABILITY(mutex_) { return mutex_; }

    // For a function that is handed the trace with the mutex held, where the analysis can't follow it.
    void assert_locked() ASSERT_CAPABILITY(mutex_) {}

    void qmi(Direction direction, std::uint32_t service, const link::QmiHead& head, ByteView tlvs) REQUIRES(mutex_);
    void diag(Direction direction, ByteView bytes) REQUIRES(mutex_);

 private:
    void begin(Direction direction) REQUIRES(mutex_);
    void end(ByteView bytes) REQUIRES(mutex_);

    LineOutput output_;
    Mutex mutex_;
    std::string line_ GUARDED_BY(mutex_);
};

}  // namespace rbk::platform

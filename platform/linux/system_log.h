// The platform's log on a host: the system's log where it listens, and a copy in a file for whoever looks over the
// shoulder of a run.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "platform/linux/line_output.h"

namespace rbk::platform {

// Has no lock and nothing to destroy: lines may come before main and after exit handlers, from any thread.
class SystemLog {
 public:
    // Connects to the datagram socket of the system's log at `socket_path`; without one there its lines go nowhere.
    // `copy` is RBK_LOGCAT: a file that is appended to, "stderr", or empty.
    SystemLog(const char* socket_path, const std::string& copy);

    // Sends one line to both ends, the copy in one write, with line feeds as "\n". Never blocks on the system's log: a
    // line that it has no room for is lost.
    void write(int priority, std::string_view text);

    // The process's own: at /dev/log, and as the environment says.
    static SystemLog& instance();

 private:
    int socket_ = -1;  // -1: nobody listens
    LineOutput copy_;
};

// Sends what a printf format and its arguments make, with `tag` before it, to the process's own log; keeps errno.
void write_formatted(int priority, const char* tag, const char* format, std::va_list arguments);

}  // namespace rbk::platform

#include "platform/linux/system_log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include "platform/linux/environment.h"

namespace rbk::platform {
namespace {

int connect_log(const char* path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (std::strlen(path) >= sizeof address.sun_path) return -1;
    std::strcpy(address.sun_path, path);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd >= 0 && connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return fd;
    if (fd >= 0) close(fd);
    return -1;
}

// What stands before a line on the way to the system's log: "<11>Nov 24 21:08:57 rbk: ".
std::string syslog_head(int priority)
{
    char head[64];
    std::tm local{};
    const std::time_t now = std::time(nullptr);
    localtime_r(&now, &local);
    char moment[32];
    std::strftime(moment, sizeof moment, "%b %e %T", &local);
    std::snprintf(head, sizeof head, "<%d>%s ", LOG_USER | priority, moment);
    return head + std::string(program_invocation_short_name) + ": ";
}

// The text that a printf format and its arguments make.
std::string format_text(const char* format, std::va_list arguments)
{
    char* text = nullptr;
    const int length = vasprintf(&text, format, arguments);
    if (length < 0) return {};
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    return {text, static_cast<std::size_t>(length)};
}

}  // namespace

SystemLog::SystemLog(const char* socket_path, const std::string& copy)
    : socket_(connect_log(socket_path)),
      copy_(copy == "stderr" ? LineOutput("RBK_LOGCAT", STDERR_FILENO) : LineOutput("RBK_LOGCAT", copy))
{
}

void SystemLog::write(int priority, std::string_view text)
{
    if (socket_ >= 0) {
        const std::string line = syslog_head(priority).append(text);
        send(socket_, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
    if (copy_.is_open()) {
        std::string line = std::to_string(priority) + ' ';
        for (const char c : text) {
            if (c == '\n') {
                line += "\\n";
            } else {
                line += c;
            }
        }
        line += '\n';
        copy_.write(line);
    }
}

SystemLog& SystemLog::instance()
{
    static SystemLog log("/dev/log", environment().logcat.value_or(""));
    return log;
}

// Callers log between an operation and a look at errno, so that stays as it was; and %m wants it untouched.
void write_formatted(int priority, const char* tag, const char* format, std::va_list arguments)
{
    const int error = errno;
    const std::string text = tag + format_text(format, arguments);
    SystemLog::instance().write(LOG_PRI(priority), text);
    errno = error;
}

}  // namespace rbk::platform

// The C library's own entries, taken over: plain builds call the first one, optimised ones with fortified headers the
// second.
extern "C" void vsyslog(int priority, const char* format, va_list arguments)
{
    rbk::platform::write_formatted(priority, "", format, arguments);
}

extern "C" void __vsyslog_chk(int priority, int flag, const char* format, va_list arguments);
extern "C" void __vsyslog_chk(int priority, int, const char* format, va_list arguments)
{
    rbk::platform::write_formatted(priority, "", format, arguments);
}

#include "platform/linux/line_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

#include "platform/linux/environment.h"

namespace rbk::platform {
namespace {

constexpr std::chrono::milliseconds kReaderWait{1000};
constexpr std::chrono::milliseconds kReaderPause{10};

// Blocks what a write can raise in the thread that writes, and takes it back. Process-wide nothing changes, so that a
// command whose standard output has no reader ends as any other does.
class NoWriteSignals {
 public:
    NoWriteSignals()
    {
        sigemptyset(&raised_);
        sigaddset(&raised_, SIGPIPE);
        sigaddset(&raised_, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &raised_, &before_);
    }
    ~NoWriteSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoWriteSignals(const NoWriteSignals&) = delete;
    NoWriteSignals& operator=(const NoWriteSignals&) = delete;

    // After a write that failed with EPIPE or EFBIG. One that was blocked before may have been pending, and stays.
    void take_back(int signal) const
    {
        if (sigismember(&before_, signal) == 1) return;
        sigset_t one;
        sigemptyset(&one);
        sigaddset(&one, signal);
        const timespec at_once{};
        while (sigtimedwait(&one, nullptr, &at_once) < 0 && errno == EINTR) {
        }
    }

 private:
    sigset_t raised_{};
    sigset_t before_{};
};

int open_for_lines(const std::string& path)
{
    const auto end = std::chrono::steady_clock::now() + kReaderWait;
    for (;;) {
        // Not blocking: the open of a pipe that nobody reads would wait for ever.
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
        if (fd >= 0) {
            // But a line waits for its reader's pace.
            ::fcntl(fd, F_SETFL, O_APPEND);
            return fd;
        }
        if (errno != ENXIO || std::chrono::steady_clock::now() >= end) return -1;
        std::this_thread::sleep_for(kReaderPause);
    }
}

}  // namespace

int write_without_signal(int fd, std::string_view text)
{
    const NoWriteSignals none;
    while (!text.empty()) {
        const ssize_t written = ::write(fd, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        const int error = errno;
        if (error == EINTR) continue;
        if (error == EPIPE) none.take_back(SIGPIPE);
        if (error == EFBIG) none.take_back(SIGXFSZ);
        return error;
    }
    return 0;
}

LineOutput::LineOutput(const char* variable, const std::string& path) : variable_(variable)
{
    if (path.empty()) return;
    const int fd = open_for_lines(path);
    if (fd >= 0) {
        fd_ = fd;
        return;
    }
    const std::string reason = errno == ENXIO ? "nobody reads it" : std::generic_category().message(errno);
    complain(std::string(variable) + "=" + path + ": " + reason);
}

void LineOutput::write(std::string_view line)
{
    const int fd = fd_.load(std::memory_order_relaxed);
    const int error = fd < 0 ? 0 : write_without_signal(fd, line);
    if (error == 0 || fd_.exchange(-1) < 0) return;
    complain(std::string(variable_) + ": " + std::generic_category().message(error) + "; given up");
}

}  // namespace rbk::platform

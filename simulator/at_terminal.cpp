#include "simulator/at_terminal.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace rbk::sim {
namespace {

constexpr std::size_t kLongestLine = 2048;  // longer ones are cut

std::string last_error()
{
    return std::generic_category().message(errno);
}

// Bytes as they are: no echo, which would come back as the next command, and no line editing.
bool make_raw(int terminal)
{
    termios settings{};
    if (::tcgetattr(terminal, &settings) != 0) return false;
    ::cfmakeraw(&settings);
    return ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

}  // namespace

std::unique_ptr<AtTerminal> AtTerminal::open(const std::string& path, Answers answers, std::string& error)
{
    Fd master(::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    char device[64];
    if (!master.is_open() || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0 ||
        ::ptsname_r(master.get(), device, sizeof device) != 0) {
        error = "no terminal: " + last_error();
        return nullptr;
    }
    Fd slave(::open(device, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!slave.is_open() || !make_raw(slave.get())) {
        error = std::string(device) + ": " + last_error();
        return nullptr;
    }
    std::error_code none;
    if (std::filesystem::is_symlink(std::filesystem::symlink_status(path, none))) ::unlink(path.c_str());
    if (::symlink(device, path.c_str()) != 0) {
        error = path + ": " + last_error();
        return nullptr;
    }
    return std::unique_ptr<AtTerminal>(
        new AtTerminal(path, device, std::move(master), std::move(slave), std::move(answers)));
}

AtTerminal::AtTerminal(std::string path, std::string device, Fd master, Fd slave, Answers answers)
    : path_(std::move(path)),
      device_(std::move(device)),
      master_(std::move(master)),
      slave_(std::move(slave)),
      answers_(std::move(answers))
{
}

AtTerminal::~AtTerminal()
{
    if (loop_ != nullptr) loop_->unwatch(watch_);
    std::error_code none;
    if (std::filesystem::read_symlink(path_, none) == device_) ::unlink(path_.c_str());
}

void AtTerminal::serve(EventLoop& loop)
{
    loop_ = &loop;
    watch_ = loop.watch(master_.get(), EPOLLIN, [this](std::uint32_t) { on_ready(); });
}

void AtTerminal::on_ready()
{
    char bytes[256];
    const ssize_t size = ::read(master_.get(), bytes, sizeof bytes);
    for (ssize_t i = 0; i < size; ++i) {
        if (bytes[i] == '\r' || bytes[i] == '\n') {
            answer(std::exchange(line_, {}));
        } else if (line_.size() < kLongestLine) {
            line_ += bytes[i];
        }
    }
}

void AtTerminal::answer(const std::string& command)
{
    if (command.empty()) return;  // between a carriage return and its line feed
    const auto known = answers_.find(command);
    std::string text = "\r\n";
    for (const char c : known == answers_.end() ? std::string("ERROR") : known->second) {
        text.append(c == '\n' ? "\r\n" : std::string(1, c));
    }
    text += "\r\n";
    // What nobody reads stays in the terminal's queue; when that is full the answer is lost, as on a line without a
    // reader.
    [[maybe_unused]] const ssize_t written = ::write(master_.get(), text.data(), text.size());
}

}  // namespace rbk::sim

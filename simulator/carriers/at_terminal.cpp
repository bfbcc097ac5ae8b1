#include "simulator/carriers/at_terminal.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "simulator/scenario/scenario.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kUnread = 64UL * 1024;  // bytes of answers; what comes on top of them is lost
constexpr std::string_view kUnknown = "ERROR";

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

// An opener's shell or terminal program may have switched it on.
void switch_echo_off(int terminal)
{
    termios settings{};
    if (::tcgetattr(terminal, &settings) != 0 || (settings.c_lflag & (ECHO | ECHONL)) == 0) return;
    settings.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHONL);
    ::tcsetattr(terminal, TCSANOW, &settings);
}

bool is_terminals_name(const std::string& name)
{
    constexpr std::string_view kFolder = "/dev/pts/";
    return name.starts_with(kFolder) && name.find_first_not_of("0123456789", kFolder.size()) == std::string::npos;
}

// Whether a link to a terminal may be made at the path: nothing lies there, or a link that an ended server has left. With
// the claim no living server has it. The number of an ended terminal is soon another's, so that the link alone tells
// nothing: the claim's file has what was made.
bool is_free(const std::string& path, const PathClaim& claim, std::string& error)
{
    std::error_code failed;
    const auto there = std::filesystem::symlink_status(path, failed);
    if (there.type() == std::filesystem::file_type::not_found) return true;
    if (!std::filesystem::is_symlink(there)) {
        error = path + ": " + (failed ? failed.message() : "something that isn't a link lies there");
        return false;
    }
    const std::string target = std::filesystem::read_symlink(path, failed).string();
    if (is_terminals_name(target) && (target == claim.made() || !std::filesystem::exists(target, failed))) return true;
    error = path + ": a link to " + target + " lies there, which isn't this program's to replace";
    return false;
}

bool begins_as_command(const std::string& line)
{
    return line.size() >= 2 && (line[0] == 'A' || line[0] == 'a') && (line[1] == 'T' || line[1] == 't');
}

}  // namespace

std::unique_ptr<AtTerminal> AtTerminal::open(const std::string& path, Answers answers, std::string& error)
{
    std::optional<PathClaim> claim = PathClaim::take(path, error);
    if (!claim || !is_free(path, *claim, error)) return nullptr;

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
    if (!claim->set_made(device) || (::unlink(path.c_str()) != 0 && errno != ENOENT) ||
        ::symlink(device, path.c_str()) != 0) {
        error = path + ": " + last_error();
        return nullptr;
    }
    return std::unique_ptr<AtTerminal>(
        new AtTerminal(path, std::move(*claim), device, std::move(master), std::move(slave), std::move(answers)));
}

AtTerminal::AtTerminal(std::string path, PathClaim claim, std::string device, Fd master, Fd slave, Answers answers)
    : path_(std::move(path)),
      claim_(std::move(claim)),
      device_(std::move(device)),
      master_(std::move(master)),
      slave_(std::move(slave)),
      answers_(std::move(answers))
{
    for (const auto& [command, text] : answers_) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) answer_lines_.insert(line);
    }
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

// ---- Commands ----

void AtTerminal::on_ready()
{
    if (!unwritten_.empty()) write_unwritten();
    char bytes[256];
    const ssize_t size = ::read(master_.get(), bytes, sizeof bytes);
    for (ssize_t i = 0; i < size; ++i) take(bytes[i]);
}

void AtTerminal::take(char byte)
{
    const bool is_second_half = byte == '\n' && last_byte_ == '\r';  // of one line's end
    last_byte_ = byte;
    if (is_second_half) return;
    if (byte == '\r' || byte == '\n') {
        on_line(std::exchange(line_, {}));
    } else if (line_.size() < kLongestAtCommand) {
        line_ += byte;
    }
}

// Who reads the terminal may send back what he reads: a loop-back plug, a terminal program, a shell that complains of
// each word. What can't be a command is therefore never answered, else the two would talk for ever.
void AtTerminal::on_line(const std::string& line)
{
    const auto known = answers_.find(line);
    if (is_echo(line) || line.empty() || (known == answers_.end() && !begins_as_command(line))) return;
    answer(known == answers_.end() ? std::string(kUnknown) : known->second);
}

// An answer begins with an empty line, which a command doesn't. That tells apart a command and its copy where a scenario's
// answers begin with one, as those of a modem with echo do.
bool AtTerminal::is_echo(const std::string& line)
{
    const bool echo = in_answer_ && answer_lines_.contains(line);
    in_answer_ = echo || line.empty();
    return echo;
}

// ---- Answers ----

void AtTerminal::answer(const std::string& text)
{
    switch_echo_off(slave_.get());
    if (unwritten_.size() > kUnread) return;  // as on a line without a reader
    unwritten_ += "\r\n";
    for (const char c : text) unwritten_.append(c == '\n' ? "\r\n" : std::string(1, c));
    unwritten_ += "\r\n";
    write_unwritten();
}

void AtTerminal::write_unwritten()
{
    const ssize_t written = ::write(master_.get(), unwritten_.data(), unwritten_.size());
    if (written > 0) unwritten_.erase(0, static_cast<std::size_t>(written));
    loop_->change(watch_, unwritten_.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT);
}

}  // namespace rbk::sim

#include "simulator/carriers/at_terminal.h"

#include <sys/epoll.h>
#include <unistd.h>

#include <sstream>
#include <string_view>
#include <utility>

#include "simulator/scenario/scenario.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kUnread = 64UL * 1024;  // bytes of answers; what comes on top of them is lost
constexpr std::string_view kUnknown = "ERROR";

bool begins_as_command(const std::string& line)
{
    return line.size() >= 2 && (line[0] == 'A' || line[0] == 'a') && (line[1] == 'T' || line[1] == 't');
}

}  // namespace

std::unique_ptr<AtTerminal> AtTerminal::open(const std::string& path, Answers answers, std::string& error)
{
    auto terminal = LinkedTerminal::open(path, error);
    if (terminal == nullptr) return nullptr;
    return std::unique_ptr<AtTerminal>(new AtTerminal(std::move(terminal), std::move(answers)));
}

AtTerminal::AtTerminal(std::unique_ptr<LinkedTerminal> terminal, Answers answers)
    : terminal_(std::move(terminal)), answers_(std::move(answers))
{
    for (const auto& [command, text] : answers_) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) answer_lines_.insert(line);
    }
}

AtTerminal::~AtTerminal()
{
    if (loop_ != nullptr) loop_->unwatch(watch_);
}

void AtTerminal::serve(EventLoop& loop)
{
    loop_ = &loop;
    watch_ = loop.watch(terminal_->fd(), EPOLLIN, [this](std::uint32_t) { on_ready(); });
}

// ---- Commands ----

void AtTerminal::on_ready()
{
    if (!unwritten_.empty()) write_unwritten();
    char bytes[256];
    const ssize_t size = ::read(terminal_->fd(), bytes, sizeof bytes);
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
    terminal_->switch_echo_off();
    if (unwritten_.size() > kUnread) return;  // as on a line without a reader
    unwritten_ += "\r\n";
    for (const char c : text) unwritten_.append(c == '\n' ? "\r\n" : std::string(1, c));
    unwritten_ += "\r\n";
    write_unwritten();
}

void AtTerminal::write_unwritten()
{
    const ssize_t written = ::write(terminal_->fd(), unwritten_.data(), unwritten_.size());
    if (written > 0) unwritten_.erase(0, static_cast<std::size_t>(written));
    loop_->change(watch_, unwritten_.empty() ? EPOLLIN : EPOLLIN | EPOLLOUT);
}

}  // namespace rbk::sim

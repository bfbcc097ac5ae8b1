// A terminal that answers AT commands, for those who write to the modem's AT device.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "simulator/base/event_loop.h"
#include "simulator/carriers/linked_terminal.h"

namespace rbk::sim {

class AtTerminal {
 public:
    using Answers = std::map<std::string, std::string>;  // by command

    // As LinkedTerminal::open has it.
    static std::unique_ptr<AtTerminal> open(const std::string& path, Answers answers, std::string& error);
    ~AtTerminal();
    AtTerminal(const AtTerminal&) = delete;
    AtTerminal& operator=(const AtTerminal&) = delete;

    // From now on commands are answered. On the loop's thread, or before it runs; the terminal goes before the loop.
    void serve(EventLoop& loop);

 private:
    AtTerminal(std::unique_ptr<LinkedTerminal> terminal, Answers answers);
    void on_ready();
    void take(char byte);
    void on_line(const std::string& line);
    bool is_echo(const std::string& line);
    void answer(const std::string& text);
    void write_unwritten();

    std::unique_ptr<LinkedTerminal> terminal_;
    Answers answers_;
    std::set<std::string> answer_lines_;
    EventLoop* loop_ = nullptr;
    EventLoop::WatchId watch_ = 0;
    char last_byte_ = 0;
    std::string line_;        // what has come since the last line's end
    bool in_answer_ = false;  // the last line may have been one of an answer that comes back
    std::string unwritten_;   // answers that the terminal has no room for yet
};

}  // namespace rbk::sim

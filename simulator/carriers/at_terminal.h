// A terminal that answers AT commands, for those who write to the modem's AT device.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "simulator/base/event_loop.h"
#include "simulator/base/fd.h"
#include "simulator/carriers/path_claim.h"

namespace rbk::sim {

class AtTerminal {
 public:
    using Answers = std::map<std::string, std::string>;  // by command

    // Makes a terminal and a link to it at `path`. A link that an ended server has left is replaced. Null, with the reason
    // in `error`, when a server has the path, when something else lies there or there is no terminal to be had.
    static std::unique_ptr<AtTerminal> open(const std::string& path, Answers answers, std::string& error);
    // Removes the link, unless it leads elsewhere by now.
    ~AtTerminal();
    AtTerminal(const AtTerminal&) = delete;
    AtTerminal& operator=(const AtTerminal&) = delete;

    // From now on commands are answered. On the loop's thread, or before it runs; the terminal goes before the loop.
    void serve(EventLoop& loop);

 private:
    AtTerminal(std::string path, PathClaim claim, std::string device, Fd master, Fd slave, Answers answers);
    void on_ready();
    void take(char byte);
    void on_line(const std::string& line);
    bool is_echo(const std::string& line);
    void answer(const std::string& text);
    void write_unwritten();

    std::string path_;
    PathClaim claim_;
    std::string device_;
    Fd master_;
    Fd slave_;  // held open: without an opener the terminal would be at its end between two commands
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

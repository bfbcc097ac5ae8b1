// A terminal that answers AT commands, for those who write to the modem's AT device.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "simulator/event_loop.h"
#include "simulator/fd.h"

namespace rbk::sim {

class AtTerminal {
 public:
    using Answers = std::map<std::string, std::string>;  // by command

    // Makes a terminal and a link to it at `path`, in the place of an older link. Null, with the reason in `error`, when
    // something else lies there or there is no terminal to be had.
    static std::unique_ptr<AtTerminal> open(const std::string& path, Answers answers, std::string& error);
    // Removes the link, unless it leads elsewhere by now.
    ~AtTerminal();
    AtTerminal(const AtTerminal&) = delete;
    AtTerminal& operator=(const AtTerminal&) = delete;

    // From now on commands are answered. On the loop's thread, or before it runs; the terminal goes before the loop.
    void serve(EventLoop& loop);

 private:
    AtTerminal(std::string path, std::string device, Fd master, Fd slave, Answers answers);
    void on_ready();
    void answer(const std::string& command);

    std::string path_;
    std::string device_;
    Fd master_;
    Fd slave_;  // held open: without an opener the terminal would be at its end between two commands
    Answers answers_;
    EventLoop* loop_ = nullptr;
    EventLoop::WatchId watch_ = 0;
    std::string line_;  // what has come since the last line's end
};

}  // namespace rbk::sim

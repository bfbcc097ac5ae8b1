// A terminal that answers AT commands, for those who write to the modem's AT device.
#pragma once

#include <memory>
#include <string>

#include "simulator/event_loop.h"
#include "simulator/fd.h"

namespace rbk::sim {

class AtTerminal {
 public:
    using Answers = std::map<std::string, std::string>;  // by command

    // Makes a terminal and a link to it at `path`, in the place of an older link. Null, with the reason in `error`, when
    // something else lies there or there is no terminal to be had. `answers` outlives the terminal.
    static std::unique_ptr<AtTerminal> open(const std::string& path, const Answers& answers, EventLoop& loop,
                                            std::string& error);
    // Removes the link, unless it leads elsewhere by now.
    ~AtTerminal();
    AtTerminal(const AtTerminal&) = delete;
    AtTerminal& operator=(const AtTerminal&) = delete;

 private:
    AtTerminal(std::string path, std::string device, Fd master, Fd slave, const Answers& answers, EventLoop& loop);
    void on_ready();
    void answer(const std::string& command);

    std::string path_;
    std::string device_;
    Fd master_;
    Fd slave_;  // held open: without an opener the terminal would be at its end between two commands
    const Answers& answers_;
    EventLoop& loop_;
    EventLoop::WatchId watch_ = 0;
    std::string line_;  // what has come since the last line's end
};

}  // namespace rbk::sim

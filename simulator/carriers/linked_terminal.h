// A terminal that a link leads to: what programs open as they would a modem's device.
#pragma once

#include <memory>
#include <string>

#include "simulator/base/fd.h"
#include "simulator/carriers/path_claim.h"

namespace rbk::sim {

class LinkedTerminal {
 public:
    // Makes a terminal that carries bytes as they are, and a link to it at `path`. A link that an ended server has left is
    // replaced. Null, with the reason in `error`, when a server has the path, when something else lies there or there is no
    // terminal to be had.
    static std::unique_ptr<LinkedTerminal> open(const std::string& path, std::string& error);
    // Removes the link, unless it leads elsewhere by now.
    ~LinkedTerminal();
    LinkedTerminal(const LinkedTerminal&) = delete;
    LinkedTerminal& operator=(const LinkedTerminal&) = delete;

    // The modem's end, which never blocks and never is at its end.
    int fd() const { return master_.get(); }
    // An opener's shell or terminal program may have changed what it began with.
    void switch_echo_off() const;
    void keep_raw() const;

 private:
    LinkedTerminal(std::string path, PathClaim claim, std::string device, Fd master, Fd slave);

    std::string path_;
    PathClaim claim_;
    std::string device_;
    Fd master_;
    Fd slave_;  // held open: without an opener the terminal would be at its end between two of them
};

}  // namespace rbk::sim

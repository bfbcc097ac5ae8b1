// The modem in one's own process: for the platform, which starts it at the first use of the link.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "link/link_socket.h"

namespace rbk::sim {

struct ModemOptions {
    std::filesystem::path
        state;  // state directory, filled from the scenario when fresh; empty: nothing is kept or found
    std::optional<std::filesystem::path> scenario;  // none: the built-in phone; empty: one that isn't to be had
};

// A running modem with one client attached. Destroying it stops and joins its threads.
class EmbeddedModem {
 public:
    virtual ~EmbeddedModem() = default;
};

// Starts a modem and attaches the far end of `client`, which receives this process's end of a socket pair.
// `complaints` receives a line for each thing that a person must hear of (a scenario that is refused, a state directory
// that can't be made); the modem runs all the same, as far as it can: without services when the scenario is refused.
// Null when no thread or socket can be had.
std::unique_ptr<EmbeddedModem> start_embedded_modem(const ModemOptions& options, link::LinkSocket& client,
                                                    std::vector<std::string>& complaints);

}  // namespace rbk::sim

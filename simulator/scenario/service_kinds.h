// The services that a modem can have: for each its name, what it reads of a scenario, and how it is made.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string_view>

namespace rbk::sim {

class Modem;
class Service;
class StateStore;
class TableReader;

// What a service keeps of the scenario, for as long as the modem's process runs.
class ServiceSettings {
 public:
    virtual ~ServiceSettings() = default;
    // Puts what the service remembers into a fresh state directory; false after a failed write.
    virtual bool fill(StateStore& fresh) const
    {
        static_cast<void>(fresh);
        return true;
    }
};

struct ServiceKind {
    std::string_view name;  // in scenario files
    // The file's tables that are its own, by their first name. `read` asks for them; without it they are passed over.
    std::array<std::string_view, 2> tables;
    // The built-in phone's settings with those of the file, whose reader is null without a file; null: none needed.
    std::unique_ptr<const ServiceSettings> (*read)(TableReader* file);
    // A service that has just been switched on; null: this modem doesn't have it.
    std::unique_ptr<Service> (*make)(Modem& modem, const ServiceSettings* settings);
};

std::span<const ServiceKind> service_kinds();

}  // namespace rbk::sim

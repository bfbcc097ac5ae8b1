#include "simulator/carriers/carriers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "simulator/carriers/listener.h"
#include "simulator/carriers/qmux_terminal.h"
#include "simulator/carriers/qrtr_carrier.h"

namespace rbk::sim {
namespace {

struct CarrierKind {
    std::string_view prefix;  // before a path where it ends with a colon, else the whole name
    std::unique_ptr<Carrier> (*open)(const std::string& path, std::string& error);
};

template <typename Kind>
std::unique_ptr<Carrier> open_kind(const std::string& path, std::string& error)
{
    return Kind::open(path, error);
}

constexpr CarrierKind kKinds[] = {
    {"unix:", open_kind<Listener>},
    {"qrtr", open_kind<QrtrCarrier>},
    {"qmux:", open_kind<QmuxTerminal>},
};

bool has_path(const CarrierKind& kind)
{
    return kind.prefix.ends_with(':');
}

const CarrierKind* find_kind(const std::string& name)
{
    const auto found = std::ranges::find_if(kKinds, [&](const CarrierKind& kind) {
        return has_path(kind) ? name.starts_with(kind.prefix) && name.size() > kind.prefix.size() : name == kind.prefix;
    });
    return found == std::end(kKinds) ? nullptr : found;
}

}  // namespace

std::string carrier_complaint(const std::string& name)
{
    return find_kind(name) != nullptr ? "" : "expected unix:PATH, qrtr or qmux:PATH, not " + name;
}

std::string carrier_path(const std::string& name)
{
    const CarrierKind* kind = find_kind(name);
    return kind != nullptr && has_path(*kind) ? name.substr(kind->prefix.size()) : "";
}

std::unique_ptr<Carrier> open_carrier(const std::string& name, std::string& error)
{
    return find_kind(name)->open(carrier_path(name), error);
}

}  // namespace rbk::sim

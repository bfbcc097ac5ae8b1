#include "simulator/service_kinds.h"

#include "simulator/debug_info.h"
#include "simulator/extended_service.h"
#include "simulator/vs_service.h"

namespace rbk::sim {
namespace {

constexpr ServiceKind kServiceKinds[] = {
    {"extended", {"debug_info"}, read_debug_info, make_extended_service},
    {"vs", {"stats"}, read_vs_settings, make_vs_service},
    {"nas", {"nas"}, nullptr, nullptr},
    {"uim", {"card"}, nullptr, nullptr},
    {"sar", {"sar"}, nullptr, nullptr},
    {"pdc", {"pdc"}, nullptr, nullptr},
    {"diag", {"diag"}, nullptr, nullptr},
};

}  // namespace

std::span<const ServiceKind> service_kinds()
{
    return kServiceKinds;
}

}  // namespace rbk::sim

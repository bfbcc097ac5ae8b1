#include "simulator/service_kinds.h"

#include "simulator/extended_service.h"
#include "simulator/pdc_service.h"

namespace rbk::sim {
namespace {

constexpr ServiceKind kServiceKinds[] = {
    {"extended", {"debug_info"}, nullptr, make_extended_service},
    {"vs", {"stats"}, nullptr, nullptr},
    {"nas", {"nas"}, nullptr, nullptr},
    {"uim", {"card"}, nullptr, nullptr},
    {"sar", {"sar"}, nullptr, nullptr},
    {"pdc", {"pdc"}, read_pdc_settings, make_pdc_service},
    {"diag", {"diag"}, nullptr, nullptr},
};

}  // namespace

std::span<const ServiceKind> service_kinds()
{
    return kServiceKinds;
}

}  // namespace rbk::sim

#include "simulator/scenario/service_kinds.h"

#include "simulator/services/cards.h"
#include "simulator/services/debug_info.h"
#include "simulator/services/diag_service.h"
#include "simulator/services/extended_service.h"
#include "simulator/services/nas_service.h"
#include "simulator/services/pdc_service.h"
#include "simulator/services/sar_service.h"
#include "simulator/services/uim_service.h"
#include "simulator/services/vs_service.h"

namespace rbk::sim {
namespace {

constexpr ServiceKind kServiceKinds[] = {
    {"extended", {"debug_info"}, read_debug_info, make_extended_service},
    {"vs", {"stats"}, read_vs_settings, make_vs_service},
    {"nas", {"nas"}, read_nas_settings, make_nas_service},
    {"uim", {"card"}, read_card_settings, make_uim_service},
    {"sar", {"sar"}, read_sar_settings, make_sar_service},
    {"pdc", {"pdc"}, read_pdc_settings, make_pdc_service},
    {"diag", {"diag"}, read_diag_settings, make_diag_service},
};

}  // namespace

std::span<const ServiceKind> service_kinds()
{
    return kServiceKinds;
}

}  // namespace rbk::sim

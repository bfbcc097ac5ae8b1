// Which transmit power table the modem works by.
#pragma once

#include <memory>

#include "simulator/scenario/service_kinds.h"

namespace rbk::sim {

std::unique_ptr<const ServiceSettings> read_sar_settings(TableReader* file);
std::unique_ptr<Service> make_sar_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

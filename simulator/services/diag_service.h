// Diag, over its private service of the link.
#pragma once

#include <memory>

#include "simulator/scenario/service_kinds.h"

namespace rbk::sim {

std::unique_ptr<const ServiceSettings> read_diag_settings(TableReader* file);
std::unique_ptr<Service> make_diag_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

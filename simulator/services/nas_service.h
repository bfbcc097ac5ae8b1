// What networks the modem hears.
#pragma once

#include <memory>

#include "simulator/scenario/service_kinds.h"

namespace rbk::sim {

std::unique_ptr<const ServiceSettings> read_nas_settings(TableReader* file);
std::unique_ptr<Service> make_nas_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

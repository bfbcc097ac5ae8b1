// The vendor's own service: envelopes of 550 bytes that carry NV items, EFS files and small commands.
#pragma once

#include <memory>

#include "simulator/modem/service.h"

namespace rbk::sim {

class ServiceSettings;

std::unique_ptr<Service> make_extended_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

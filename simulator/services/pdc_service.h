// The modem's configurations: what is stored in it, and what is active and pending on each subscription.
#pragma once

#include <memory>

#include "simulator/modem/service.h"

namespace rbk::sim {

class ServiceSettings;
class TableReader;

std::unique_ptr<const ServiceSettings> read_pdc_settings(TableReader* file);
std::unique_ptr<Service> make_pdc_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

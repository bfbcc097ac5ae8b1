// The modem's statistics service `vs`: switches its features and answers with samples.
#pragma once

#include <memory>

#include "simulator/modem/service.h"

namespace rbk::sim {

class ServiceSettings;
class TableReader;

std::unique_ptr<const ServiceSettings> read_vs_settings(TableReader* file);
std::unique_ptr<Service> make_vs_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

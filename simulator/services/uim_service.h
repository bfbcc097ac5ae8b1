// The card service: power and sides of the slots, card states, the EID, logical channels and APDUs.
#pragma once

#include <memory>

namespace rbk::sim {

class Modem;
class Service;
class ServiceSettings;

std::unique_ptr<Service> make_uim_service(Modem& modem, const ServiceSettings* settings);

}  // namespace rbk::sim

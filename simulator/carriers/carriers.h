// The carriers that people name on a command line.
#pragma once

#include <memory>
#include <string>

#include "simulator/modem/carrier.h"

namespace rbk::sim {

// What is wrong with a carrier's name; empty when there is such a carrier.
std::string carrier_complaint(const std::string& name);
// Where the carrier makes something: its path; empty where it makes nothing.
std::string carrier_path(const std::string& name);

// Makes ready what clients connect to; they are served from Carrier::serve on. Null, with the reason in `error`, when that
// can't be had.
std::unique_ptr<Carrier> open_carrier(const std::string& name, std::string& error);

}  // namespace rbk::sim

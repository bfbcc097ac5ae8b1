// The phone that stands in the modem when nothing else is said: its items, its files and its AT answers.
#pragma once

namespace rbk::sim {

struct Scenario;

void add_built_in_phone(Scenario& scenario);

}  // namespace rbk::sim

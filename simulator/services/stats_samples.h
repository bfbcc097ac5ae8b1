// Samples of the statistics: packed little-endian bytes, one for each subscription and parameter.
#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "link/bytes.h"

namespace rbk::sim {

class TableReader;

using StatsSamples = std::map<std::pair<std::uint16_t, std::uint32_t>, Bytes>;  // by subscription and parameter

// The built-in phone's samples, LTE on subscription 0 and NR5G on 1, with those of the scenario in their places: a row of
// [stats.sub<n>] is a parameter's bytes, or its fields by name, where those left out are 0. `file` is null without one.
StatsSamples read_stats_samples(TableReader* file);

}  // namespace rbk::sim

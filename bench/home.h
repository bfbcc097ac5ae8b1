// Where the benchmarks keep the state of the modems that they start; set up before the first one runs, gone at the end.
#pragma once

#include <string>

namespace rbk::bench {

const std::string& home();
// Where this process looks for its modem; the benchmarks of the link start one there.
std::string modem_address();

}  // namespace rbk::bench

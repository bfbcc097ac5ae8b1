// A run of rbk as a scenario: to the same requests, in the same order, the modem gives the same answers again.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "trace/talk.h"

namespace rbk::trace {

// Why there is no scenario, as a clause for a person.
struct NoScenario {
    std::string why;
};

// The scenario of one run, one that the modem takes. `source` is the trace's name, for the reader of the scenario. Nothing
// is masked: the bytes are what is to be repeated. Threads: any.
std::variant<std::string, NoScenario> scenario_of(const std::vector<Message>& messages, std::size_t run,
                                                  std::string_view source);

}  // namespace rbk::trace

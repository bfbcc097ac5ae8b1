// Which rule of the scenario decides about a request, an indication or a call. Each rule counts its own matches from the
// start of the modem's process, also those that an earlier rule decides.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "link/bytes.h"
#include "simulator/scenario/scenario.h"

namespace rbk::sim {

class Service;

class FaultRules {
 public:
    explicit FaultRules(std::vector<FaultRule> rules);

    // Null: nothing is wrong with it. A rule that is found stays where it is for the modem's life.
    const FaultRule* for_request(const Service& service, std::uint16_t message, ByteView tlvs);
    const FaultRule* for_indication(const Service& service, std::uint16_t message, ByteView tlvs);
    const FaultRule* for_call(std::string_view service, std::string_view call);

    // A line for each rule that never took effect.
    std::vector<std::string> unused() const;

 private:
    struct Counted {
        FaultRule rule;
        std::uint64_t matches = 0;
    };

    const FaultRule* for_message(const Service& service, std::uint16_t message, ByteView tlvs, bool on_indication);
    static bool applies(Counted& counted);

    std::vector<Counted> rules_;
};

}  // namespace rbk::sim

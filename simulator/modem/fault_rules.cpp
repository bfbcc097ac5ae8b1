#include "simulator/modem/fault_rules.h"

#include <algorithm>
#include <utility>

#include "simulator/modem/service.h"

namespace rbk::sim {

FaultRules::FaultRules(std::vector<FaultRule> rules)
{
    rules_.reserve(rules.size());
    for (FaultRule& rule : rules) rules_.push_back({std::move(rule)});
}

const FaultRule* FaultRules::for_request(const Service& service, std::uint16_t message, ByteView tlvs)
{
    return for_message(service, message, tlvs, false);
}

const FaultRule* FaultRules::for_indication(const Service& service, std::uint16_t message, ByteView tlvs)
{
    return for_message(service, message, tlvs, true);
}

const FaultRule* FaultRules::for_call(std::string_view service, std::string_view call)
{
    const FaultRule* decides = nullptr;
    for (Counted& counted : rules_) {
        if (counted.rule.service != service || counted.rule.call != call) continue;
        if (applies(counted) && decides == nullptr) decides = &counted.rule;
    }
    return decides;
}

std::vector<std::string> FaultRules::unused() const
{
    std::vector<std::string> lines;
    for (const Counted& counted : rules_) {
        const FaultRule& rule = counted.rule;
        if (counted.matches >= rule.first) continue;
        std::string line = rule.where + ": the fault rule for " + rule.service + " never matched";
        if (counted.matches > 0) {
            line +=
                " often enough: " + std::to_string(counted.matches) + " of " + std::to_string(rule.first) + " times";
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

const FaultRule* FaultRules::for_message(const Service& service, std::uint16_t message, ByteView tlvs,
                                         bool on_indication)
{
    const FaultRule* decides = nullptr;
    for (Counted& counted : rules_) {
        const FaultRule& rule = counted.rule;
        if (rule.service != service.identity().name || rule.on_indication != on_indication || !rule.call.empty() ||
            (rule.message && *rule.message != message) || (rule.qmi_id && rule.qmi_id != service.fault_qmi_id(tlvs))) {
            continue;
        }
        if (!rule.prefix.empty()) {
            const ByteView subject = service.fault_subject(tlvs);
            if (subject.size() < rule.prefix.size() ||
                !std::equal(rule.prefix.begin(), rule.prefix.end(), subject.begin())) {
                continue;
            }
        }
        if (applies(counted) && decides == nullptr) decides = &counted.rule;
    }
    return decides;
}

bool FaultRules::applies(Counted& counted)
{
    ++counted.matches;
    return counted.matches >= counted.rule.first && counted.matches <= counted.rule.last;
}

}  // namespace rbk::sim

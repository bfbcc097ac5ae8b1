// What a modem is made of: the built-in phone, with what a scenario file adds to it and puts in its place.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "link/bytes.h"
#include "simulator/scenario/service_kinds.h"
#include "simulator/state/efs.h"

namespace rbk::sim {

// What a service says unasked, to each of its clients.
struct UnaskedIndication {
    std::string service;
    std::uint16_t message = 0;
    Bytes tlvs;
    std::chrono::milliseconds after{0};              // after a client's first request
    std::optional<std::chrono::milliseconds> every;  // absent: once
};

enum class FaultAction { silent, delay, error, result, refuse, raw, indicate, twice, early, down, pull };

inline constexpr std::int64_t kHighestProcessor = 16;  // of diag; the primary one is 0

// What a rule sends beside the answer that it gives, or in its stead.
struct Following {
    std::optional<std::uint16_t> indication;  // absent: the answer comes once more; of diag a packet has no number
    Bytes bytes;
    std::chrono::milliseconds after{0};  // the answer; the request, where it is early or there is no answer
    bool early = false;                  // before the answer
    std::int32_t processor = 0;          // of diag
};

// A rule for answers and indications that go wrong.
struct FaultRule {
    std::string where;  // file and line, for a person
    std::string service;
    std::optional<std::uint16_t> message;
    std::optional<std::uint32_t> qmi_id;
    Bytes prefix;
    bool on_indication = false;
    std::string call;         // of the diag library; empty: the rule is for messages
    std::uint64_t first = 1;  // the first match that it applies to
    std::uint64_t last = UINT64_MAX;

    FaultAction action = FaultAction::silent;
    std::chrono::milliseconds delay{0};
    std::int32_t code = 0;
    Bytes bytes;
    std::optional<std::uint16_t> indication;
    bool also = false;
    std::uint8_t slot = 0;       // whose card is pulled
    std::int32_t processor = 0;  // of diag: whose packet the bytes are
    std::vector<Following> then;
};

inline constexpr std::size_t kLongestAtCommand = 2048;  // bytes; the terminal cuts longer lines

inline constexpr std::size_t kMostClientIds = 1000;

inline constexpr std::uint8_t kMostSlots = 5;  // for cards: as many as a card status tells of

struct Scenario {
    std::vector<std::string> services;
    std::chrono::milliseconds boot{0};
    std::chrono::milliseconds restart{300};
    std::map<std::string, std::uint32_t> instances;  // by service: version in the low byte, instance number above it
    std::size_t client_ids = 64;                     // that a carrier with client ids gives out, at most kMostClientIds

    std::map<std::pair<std::uint32_t, std::uint32_t>, Bytes> nv;  // by subscription and item
    std::map<EfsPlace, Bytes> efs;
    std::map<std::string, std::string> at;  // answer by command
    std::vector<UnaskedIndication> indications;
    std::vector<FaultRule> faults;
    std::map<std::string, std::unique_ptr<const ServiceSettings>> settings;  // by service
};

// The built-in phone, or what the file makes of it. Throws ScenarioError.
Scenario read_scenario(const std::optional<std::filesystem::path>& file);

// A modem without services: what is left when a scenario is refused.
Scenario empty_scenario();

}  // namespace rbk::sim

// Names for the numbers in a trace: services, messages, errors, enumerations; and how long rbk waits for whom.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/include/qmi_idl.h"

namespace rbk::trace {

// "nas", as scenario files call it; "0x0042" for a service that rbk doesn't use.
std::string service_name(std::uint32_t service);

// "network scan"; "0x0100" for a message that has no name.
std::string message_name(std::uint32_t service, std::uint16_t message);

// The client's own tables of a service; null for one that rbk doesn't use.
qmi_idl_service_object_type service_tables(std::uint32_t service);

// Whether a message of the extended service is an envelope.
bool is_envelope(std::uint16_t message);

// How long callers wait for an answer of this service, microseconds.
std::int64_t waits_us(std::uint32_t service);

// Whether a caller of this service asks only when the last question is done with.
bool asks_one_at_a_time(std::uint32_t service);

// Whether the answers of this service only acknowledge, and an indication tells what came of a request; how long callers
// wait for that, and whether they do: not for that of an activation, which ends a run.
bool tells_outcomes(std::uint32_t service);
inline constexpr std::int64_t kOutcomeWait_us = 5'000'000;
bool waits_for_outcome(std::uint16_t message);

// Whether several indications tell the outcome: of lists, reports, scans.
bool tells_in_parts(std::uint32_t service, std::uint16_t message);

// "device not ready (52)", or the bare number.
std::string qmi_error_name(std::uint32_t error);

// An error number of NV, EFS and common records: "No such file or directory (-2)"; a positive one bare.
std::string errno_name(std::int32_t error);

// What a number means in the field of this name: "present" for card_state 1. Empty for a mere number.
std::string_view value_name(std::string_view field, std::uint64_t value);

// Whether a field of this name identifies a person or a card, or may.
bool is_private_field(std::uint32_t service, std::string_view field);

// Whether what isn't decoded of a service's messages may be of that kind: of cards, of envelopes, of services that rbk
// doesn't use.
bool is_private_service(std::uint32_t service);

// Whether the NV item is: an IMEI, a phone number.
bool is_private_item(std::uint32_t item);

// Whether the EFS file is, as far as its name tells: "esim_eid".
bool is_private_file(std::string_view path);

// "LTE serving cell, PCC", or empty.
std::string_view sample_name(std::uint32_t parameter);

// The command of a common request; empty for one that has no name. `type` is that of a typed one.
std::string_view common_command_name(std::uint32_t command, std::uint32_t type);

// Whether `asked`, from a command line, means this name: capitals are as good as small letters, dashes as blanks, and its
// number does as well, in decimal or as 0x... `number` is empty for what has none.
bool is_named(std::string_view asked, std::string_view name, std::optional<std::uint32_t> number);

}  // namespace rbk::trace

#include "trace/names.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "modem_hydra_mgr.h"
#include "services/nas_v01.h"
#include "services/pdc_v01.h"
#include "services/sar_v01.h"
#include "services/uim_v01.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_v01.h"
#include "vs_v01.h"

namespace rbk::trace {
namespace {

std::string hex_number(std::uint32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%04X", number);
    return text;
}

// ---- Services ----

constexpr std::int64_t kSecond_us = 1'000'000;

constexpr std::uint32_t kNas = 3;
constexpr std::uint32_t kUim = 11;
constexpr std::uint32_t kSar = 17;

struct ServiceRow {
    std::uint32_t id;
    std::string_view name;
    qmi_idl_service_object_type (*tables)();
    std::int64_t waits_us;  // of the client's longest wait for an answer
    bool one_at_a_time;
};

// clang-format off
const ServiceRow kServices[] = {
    {EXTEND_SERVICE_ID, "extended", [] { return velmor_extend_get_service_object_internal_v01(EXTEND_VERSION, EXTEND_MINOR_VERSION, 6); },  3 * kSecond_us, true},
    {VS_SERVICE_ID,     "vs",       [] { return vs_get_service_object_internal_v01(VS_VERSION, VS_MINOR_VERSION, 6); },                    30 * kSecond_us, true},
    {kNas,              "nas",      [] { return nas_get_service_object_internal_v01(1, 388, 6); },                                         10 * kSecond_us, true},
    {kUim,              "uim",      [] { return uim_get_service_object_internal_v01(1, 103, 6); },                                          3 * kSecond_us, true},
    {kSar,              "sar",      [] { return sar_get_service_object_internal_v01(1, 15, 6); },                                          30 * kSecond_us, true},
    {PDC_SERVICE_ID,    "pdc",      [] { return pdc_get_service_object_internal_v01(PDC_VERSION, PDC_MINOR_VERSION, 6); },                 10 * kSecond_us, false},
};
// clang-format on

const ServiceRow* find_service(std::uint32_t id)
{
    const auto found = std::ranges::find(kServices, id, &ServiceRow::id);
    return found == std::end(kServices) ? nullptr : &*found;
}

// ---- Numbers with names ----

struct NumberRow {
    std::uint32_t number;
    std::string_view name;
};

template <std::size_t count>
std::string_view find_name(const NumberRow (&rows)[count], std::uint32_t number)
{
    const auto found = std::ranges::find(rows, number, &NumberRow::number);
    return found == std::end(rows) ? std::string_view{} : found->name;
}

std::string with_number(std::string_view name, std::int64_t number)
{
    const std::string text = std::to_string(number);
    return name.empty() ? text : std::string(name) + " (" + text + ")";
}

struct MessageRow {
    std::uint32_t service;
    std::uint16_t id;
    std::string_view name;
};
constexpr std::uint16_t kEnvelopeSaid = 3;  // an envelope that the modem sends unasked
constexpr MessageRow kMessages[] = {
    {EXTEND_SERVICE_ID, EXTEND_MSG_ENVELOPE, "envelope"},
    {EXTEND_SERVICE_ID, kEnvelopeSaid, "envelope"},
    {VS_SERVICE_ID, VS_MSG_SET_FEATURE_STATUS, "set feature status"},
    {VS_SERVICE_ID, VS_MSG_GET_STATS_PARAMETER, "get statistics"},
    {VS_SERVICE_ID, VS_IND_STATS, "statistics"},
    {kNas, QMI_NAS_PERFORM_NETWORK_SCAN_REQ_MSG_V01, "network scan"},
    {kNas, QMI_NAS_PERFORM_INCREMENTAL_NETWORK_SCAN_REQ_MSG_V01, "incremental network scan"},
    {kUim, QMI_UIM_GET_CARD_STATUS_REQ_V01, "get card status"},
    {kUim, QMI_UIM_POWER_DOWN_REQ_V01, "power down"},
    {kUim, QMI_UIM_POWER_UP_REQ_V01, "power up"},
    {kUim, QMI_UIM_SEND_APDU_REQ_V01, "send APDU"},
    {kUim, QMI_UIM_LOGICAL_CHANNEL_REQ_V01, "logical channel"},
    {kUim, QMI_UIM_OPEN_LOGICAL_CHANNEL_REQ_V01, "open logical channel"},
    {kUim, QMI_UIM_GET_EID_REQ_V01, "get EID"},
    {kUim, QMI_UIM_SET_SIM_TYPE_REQ_V01, "set SIM type"},
    {kSar, SAR_RF_SET_STATE_REQ_V01, "set SAR state"},
    {kSar, SAR_RF_GET_STATE_REQ_V01, "get SAR state"},
    {PDC_SERVICE_ID, PDC_GET_SELECTED_CONFIG_V01, "get selected configuration"},
    {PDC_SERVICE_ID, PDC_SET_SELECTED_CONFIG_V01, "set selected configuration"},
    {PDC_SERVICE_ID, PDC_LIST_CONFIGS_V01, "list configurations"},
    {PDC_SERVICE_ID, PDC_DELETE_CONFIG_V01, "delete configuration"},
    {PDC_SERVICE_ID, PDC_LOAD_CONFIG_V01, "load configuration"},
    {PDC_SERVICE_ID, PDC_ACTIVATE_CONFIG_V01, "activate configuration"},
    {PDC_SERVICE_ID, PDC_GET_CONFIG_INFO_V01, "configuration information"},
    {PDC_SERVICE_ID, PDC_GET_DEFAULT_CONFIG_INFO_V01, "default configuration information"},
    {PDC_SERVICE_ID, PDC_DEACTIVATE_CONFIG_V01, "deactivate configuration"},
    {PDC_SERVICE_ID, PDC_VALIDATE_CONFIG_V01, "validate configuration"},
    {PDC_SERVICE_ID, PDC_SET_FEATURE_V01, "set feature"},
};

constexpr NumberRow kErrors[] = {
    {0, "none"},
    {1, "malformed message"},
    {2, "no memory"},
    {3, "internal"},
    {4, "aborted"},
    {5, "client ids exhausted"},
    {7, "invalid client id"},
    {16, "no such id"},
    {17, "missing argument"},
    {25, "not available in this state"},
    {26, "no effect"},
    {31, "invalid service type"},
    {41, "invalid identifier"},
    {48, "invalid argument"},
    {52, "device not ready"},
    {71, "invalid QMI command"},
    {82, "card call control failed"},
    {94, "not supported"},
};

struct ValueRow {
    std::string_view field;
    std::uint64_t value;
    std::string_view name;
};
constexpr ValueRow kValues[] = {
    {"card_state", 0, "absent"},
    {"card_state", 1, "present"},
    {"card_state", 2, "error"},
    {"pin_state", 0, "unknown"},
    {"pin_state", 1, "enabled, not verified"},
    {"pin_state", 2, "enabled, verified"},
    {"pin_state", 3, "disabled"},
    {"pin_state", 4, "blocked"},
    {"pin_state", 5, "blocked for good"},
    {"app_type", 0, "unknown"},
    {"app_type", 1, "SIM"},
    {"app_type", 2, "USIM"},
    {"app_type", 3, "RUIM"},
    {"app_type", 4, "CSIM"},
    {"app_type", 5, "ISIM"},
    {"app_state", 0, "unknown"},
    {"app_state", 1, "detected"},
    {"app_state", 2, "PIN wanted"},
    {"app_state", 3, "PUK wanted"},
    {"app_state", 4, "personalisation to be checked"},
    {"app_state", 5, "PIN blocked"},
    {"app_state", 6, "illegal"},
    {"app_state", 7, "ready"},
    {"perso_state", 0, "unknown"},
    {"perso_state", 1, "in progress"},
    {"perso_state", 2, "ready"},
    {"perso_state", 3, "code wanted"},
    {"perso_state", 4, "PUK wanted"},
    {"perso_state", 5, "blocked for good"},
    {"error_code", 0, "unknown"},
    {"error_code", 1, "power down"},
    {"error_code", 2, "poll error"},
    {"error_code", 3, "no ATR"},
    {"error_code", 4, "voltage mismatch"},
    {"error_code", 5, "parity error"},
    {"error_code", 6, "possibly removed"},
    {"error_code", 7, "technical problems"},
    {"config_type", PDC_CONFIG_TYPE_MODEM_PLATFORM_V01, "platform"},
    {"config_type", PDC_CONFIG_TYPE_MODEM_SW_V01, "software"},
    {"activation_type", PDC_ACTIVATION_REGULAR_V01, "regular"},
    {"activation_type", PDC_ACTIVATION_REFRESH_V01, "refresh"},
    {"frame_index", PDC_LAST_FRAME, "last"},
    {"rat", 4, "GSM"},
    {"rat", 5, "UMTS"},
    {"rat", 8, "LTE"},
    {"rat", 12, "NR5G"},
    {"sample rat", HYDRA_RAT_LTE, "LTE"},
    {"sample rat", HYDRA_RAT_NR5G, "NR5G"},
    {"mnc_includes_pcs_digit", 0, "two digits"},
    {"mnc_includes_pcs_digit", 1, "three digits"},
    {"scan_result", 0, "done"},
    {"status", 0, "off"},
    {"status", 1, "on"},
};

constexpr std::string_view kPrivateCardFields[] = {"eid", "apdu", "select_response", "channel_data"};

// ESN, both MIN, IMSI, number of the subscriber, IMEI, MEID.
constexpr std::uint32_t kPrivateItems[] = {0, 32, 33, 176, 177, 178, 550, 1943};

// In the names of EFS files, small.
constexpr std::string_view kPrivateWords[] = {"eid", "imei", "imsi", "iccid", "msisdn", "phone", "dir_number"};

constexpr NumberRow kSamples[] = {
    {HYDRA_NR5G_SRV_MEAS_PCC, "NR5G serving cell, PCC"},
    {HYDRA_NR5G_SRV_MEAS_SCC1, "NR5G serving cell, SCC1"},
    {HYDRA_NR5G_SRV_MEAS_SCC2, "NR5G serving cell, SCC2"},
    {HYDRA_SYS_MODE, "system mode"},
    {HYDRA_LTE_SRV_MEAS_PCC, "LTE serving cell, PCC"},
    {HYDRA_NR5G_UL_POWER, "NR5G transmit power"},
    {HYDRA_NR5G_RX_AGC, "NR5G RSSI"},
    {HYDRA_LTE_PUSCH_POWER, "LTE transmit power"},
    {HYDRA_ASDIV, "antenna switch"},
    {HYDRA_LTE_SRV_MEAS_SCC1, "LTE serving cell, SCC1"},
    {HYDRA_LTE_SRV_MEAS_SCC2, "LTE serving cell, SCC2"},
    {HYDRA_LTE_SRV_MEAS_SCC3, "LTE serving cell, SCC3"},
    {HYDRA_LTE_SRV_MEAS_SCC4, "LTE serving cell, SCC4"},
    {HYDRA_LTE_SRV_MEAS_SCC5, "LTE serving cell, SCC5"},
    {HYDRA_LTE_SRV_MEAS_SCC6, "LTE serving cell, SCC6"},
    {HYDRA_WCDMA_RX_AGC, "WCDMA RSSI"},
    {HYDRA_GSM_RX_DIVERSITY, "GSM RSSI"},
    {HYDRA_NR5G_SERVING_SNR, "NR5G SNR"},
    {HYDRA_NR5G_ANT_SWITCH, "NR5G antenna diversity"},
};

constexpr NumberRow kCommands[] = {
    {COMMON_CMD_GPIO, "GPIO test"},
    {COMMON_CMD_TX, "fix transmit antenna"},
    {COMMON_CMD_DEBUG_INFO, "statistics debug record"},
    {COMMON_CMD_STATS_LACKED, "logs to upgrade"},
};
constexpr NumberRow kTypedCommands[] = {
    {COMMON_TYPE_SSR, "restart the modem"},
    {COMMON_TYPE_NV_SYNC, "NV sync"},
    {39, "card status query"},
    {55, "card status get"},
    {56, "card type query"},
    {57, "card status set"},
    {80, "hot-swap test"},
    {COMMON_TYPE_FULL_DUMP, "full dump"},
};

}  // namespace

std::string service_name(std::uint32_t service)
{
    const ServiceRow* row = find_service(service);
    return row == nullptr ? hex_number(service) : std::string(row->name);
}

std::string message_name(std::uint32_t service, std::uint16_t message)
{
    for (const MessageRow& row : kMessages) {
        if (row.service == service && row.id == message) return std::string(row.name);
    }
    return hex_number(message);
}

qmi_idl_service_object_type service_tables(std::uint32_t service)
{
    const ServiceRow* row = find_service(service);
    return row == nullptr ? nullptr : row->tables();
}

bool is_envelope(std::uint16_t message)
{
    return message == EXTEND_MSG_ENVELOPE || message == kEnvelopeSaid;
}

std::int64_t waits_us(std::uint32_t service)
{
    const ServiceRow* row = find_service(service);
    return row == nullptr ? INT64_MAX : row->waits_us;
}

bool asks_one_at_a_time(std::uint32_t service)
{
    const ServiceRow* row = find_service(service);
    return row != nullptr && row->one_at_a_time;
}

bool tells_outcomes(std::uint32_t service)
{
    return service == PDC_SERVICE_ID;
}

bool waits_for_outcome(std::uint16_t message)
{
    return message != PDC_ACTIVATE_CONFIG_V01;
}

bool tells_in_parts(std::uint32_t service, std::uint16_t message)
{
    return service != PDC_SERVICE_ID || message == PDC_LIST_CONFIGS_V01 || message == PDC_VALIDATE_CONFIG_V01;
}

std::string qmi_error_name(std::uint32_t error)
{
    return with_number(find_name(kErrors, error), error);
}

std::string errno_name(std::int32_t error)
{
    if (error >= 0) return std::to_string(error);
    const char* name = error > INT32_MIN ? ::strerrordesc_np(-error) : nullptr;
    return with_number(name == nullptr ? std::string_view{} : name, error);
}

std::string_view value_name(std::string_view field, std::uint64_t value)
{
    for (const ValueRow& row : kValues) {
        if (row.value == value && row.field == field) return row.name;
    }
    return {};
}

bool is_private_field(std::uint32_t service, std::string_view field)
{
    return service == kUim && std::ranges::find(kPrivateCardFields, field) != std::end(kPrivateCardFields);
}

bool is_private_service(std::uint32_t service)
{
    return service == kUim || service == EXTEND_SERVICE_ID || find_service(service) == nullptr;
}

bool is_private_item(std::uint32_t item)
{
    return std::ranges::find(kPrivateItems, item) != std::end(kPrivateItems);
}

bool is_private_file(std::string_view path)
{
    std::string name(path.substr(path.rfind('/') + 1));
    if (const auto end = name.find('\0'); end != name.npos) name.resize(end);  // a path ends there
    std::uint32_t item = 0;                                                    // an item's file is its number
    const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), item);
    if (error == std::errc() && stop == name.data() + name.size() && is_private_item(item)) return true;
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return std::ranges::any_of(kPrivateWords, [&](std::string_view word) { return name.find(word) != name.npos; });
}

std::string_view sample_name(std::uint32_t parameter)
{
    return find_name(kSamples, parameter);
}

std::string_view common_command_name(std::uint32_t command, std::uint32_t type)
{
    return command == COMMON_CMD_TYPED ? find_name(kTypedCommands, type) : find_name(kCommands, command);
}

bool is_named(std::string_view asked, std::string_view name, std::optional<std::uint32_t> number)
{
    const bool is_hex = asked.starts_with("0x") || asked.starts_with("0X");
    std::uint32_t value = 0;
    const char* end = asked.data() + asked.size();
    const auto [stop, error] = std::from_chars(asked.data() + (is_hex ? 2 : 0), end, value, is_hex ? 16 : 10);
    if (error == std::errc() && stop == end) return value == number;
    const auto letter = [](char c) {
        if (c == '-' || c == '_') return ' ';
        return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    };
    return std::ranges::equal(asked, name, {}, letter, letter);
}

}  // namespace rbk::trace

#include "simulator/services/stats_samples.h"

#include <cfloat>
#include <charconv>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

// More than the 700 bytes that clients take, for their tests; ten fit into an answer.
constexpr std::size_t kLongestSample = 3000;

// ---- What stands in a sample ----

enum class FieldKind { u8, u16, i16, u32, f32 };

struct Field {
    std::string_view name;
    FieldKind kind;
};
using enum FieldKind;

constexpr Field kLteServingCell[] = {
    {"version", u8},   {"version_ssmr", u8}, {"earfcn", u32},   {"pci", u16},      {"is_srv_cell", u8},
    {"rx_valid", u16}, {"rsrp_rx0", f32},    {"rsrq_rx0", f32}, {"rssi_rx0", f32}, {"snr_rx0", f32},
    {"rsrp_rx1", f32}, {"rsrq_rx1", f32},    {"rssi_rx1", f32}, {"snr_rx1", f32},  {"rsrp_rx2", f32},
    {"rsrq_rx2", f32}, {"rssi_rx2", f32},    {"snr_rx2", f32},  {"rsrp_rx3", f32}, {"rsrq_rx3", f32},
    {"rssi_rx3", f32}, {"snr_rx3", f32},
};
constexpr Field kNrServingCell[] = {
    {"version", u32}, {"rsrp_rx0", f32}, {"rsrp_rx1", f32}, {"rsrp_rx2", f32}, {"rsrp_rx3", f32}, {"rsrq", f32},
};
constexpr Field kSystemMode[] = {{"stack_max", u8}, {"rat", u32}};
constexpr Field kNrUplinkPower[] = {
    {"version_hook", u32},   {"tx_power_pusch", f32}, {"tx_power_pucch", u32}, {"tx_power_srs", u32},
    {"tx_power_prach", u32}, {"mtpl_pusch", u32},     {"mtpl_pucch", u32},     {"mtpl_srs", u32},
    {"mtpl_prach", u32},     {"pathloss0", u32},      {"pathloss1", u32},      {"pathloss2", u32},
    {"pathloss3", u32},
};
constexpr Field kNrReceiveGain[] = {{"version", u32}, {"rssi0", f32}, {"rssi1", f32}, {"rssi2", f32}, {"rssi3", f32}};
constexpr Field kLtePuschPower[] = {
    {"version", u8}, {"pusch_tx_power", i16}, {"dl_path_loss", u8}, {"max_power", u16}, {"pusch_ex_tx_power", u16},
};
constexpr Field kAntennaState[] = {
    {"version", u8},   {"ant_number", u8}, {"ant_switch_path", u16},
    {"sig_path", u16}, {"old_config", u8}, {"new_config", u8},
};
constexpr Field kWcdmaReceiveGain[] = {{"version", u8}, {"rx_agc_0", f32}, {"rx_agc_1", f32}};
constexpr Field kGsmDiversity[] = {{"version", u8}, {"rx_prx", f32}, {"rx_drx", f32}};
constexpr Field kNrServingSnr[] = {{"version", u32}, {"snr0", f32}, {"snr1", f32}, {"snr2", f32}, {"snr3", f32}};
constexpr Field kNrAntennaSwitch[] = {
    {"version", u32},     {"ant_rx_0_old", u8}, {"ant_rx_0_new", u8}, {"ant_rx_1_old", u8}, {"ant_rx_1_new", u8},
    {"ant_rx_2_old", u8}, {"ant_rx_2_new", u8}, {"ant_rx_3_old", u8}, {"ant_rx_3_new", u8}, {"ant_tx_0_old", u8},
    {"ant_tx_0_new", u8}, {"ant_tx_1_old", u8}, {"ant_tx_1_new", u8},
};

// Empty for a parameter that has no known form.
std::span<const Field> fields_of(std::uint32_t parameter)
{
    switch (parameter) {
    case 6:
    case 7:
    case 135: return kNrServingCell;
    case 44: return kSystemMode;
    case 82:
    case 103:
    case 104:
    case 105:
    case 106:
    case 107:
    case 108: return kLteServingCell;
    case 90: return kNrUplinkPower;
    case 94: return kNrReceiveGain;
    case 98: return kLtePuschPower;
    case 100: return kAntennaState;
    case 110: return kWcdmaReceiveGain;
    case 111: return kGsmDiversity;
    case 112: return kNrServingSnr;
    case 113: return kNrAntennaSwitch;
    default: return {};
    }
}

void append_field(Bytes& sample, FieldKind kind, double value)
{
    switch (kind) {
    case u8: return append_le(sample, static_cast<std::uint8_t>(value));
    case u16: return append_le(sample, static_cast<std::uint16_t>(value));
    case i16: return append_le(sample, static_cast<std::int16_t>(value));
    case u32: return append_le(sample, static_cast<std::uint32_t>(value));
    case f32: return append_le(sample, static_cast<float>(value));
    }
}

// ---- The built-in phone ----

struct BuiltInRow {
    std::uint16_t sub;
    std::uint32_t parameter;
    std::vector<double> values;  // in the order of the fields
};

// A serving cell whose carrier number moves each figure a little.
std::vector<double> lte_cell(double earfcn, double pci, double rsrp, double carrier)
{
    std::vector<double> values{1, 1, earfcn + 198 * carrier, pci + carrier, 1, 15};
    for (int chain = 0; chain < 4; ++chain) {
        const double loss = carrier + 1.25 * chain;
        values.insert(values.end(), {rsrp - loss, -10.5 - loss / 4, rsrp + 30.75 - loss, 14.5 - loss});
    }
    return values;
}

std::vector<BuiltInRow> built_in_rows()
{
    std::vector<BuiltInRow> rows{
        {0, 44, {1, 9}},   // LTE
        {1, 44, {1, 12}},  // NR5G
        {0, 135, {3, -101.5, -102.25, -103, -104.75, -12.5}},
        {1, 135, {3, -88.5, -89.25, -90, -91.75, -10.5}},
        {0, 6, {3, -103.5, -104.25, -105, -106.75, -13.5}},
        {1, 6, {3, -92.5, -93.25, -94, -95.75, -11.5}},
        {0, 7, {3, -105.5, -106.25, -107, -108.75, -14.5}},
        {1, 7, {3, -94.5, -95.25, -96, -97.75, -12.5}},
        {0, 90, {2, 15.5, 12, 10, 17, 23, 22, 21, 24, 101, 102, 103, 104}},
        {1, 90, {2, 17.5, 14, 11, 18, 25, 24, 23, 26, 91, 92, 93, 94}},
        {0, 94, {2, -68.5, -69.25, -70, -71.75}},
        {1, 94, {2, -58.5, -59.25, -60, -61.75}},
        {0, 98, {1, 13, 98, 23, 12}},
        {1, 98, {1, 11, 96, 24, 10}},
        {0, 100, {1, 4, 2, 3, 1, 2}},
        {1, 100, {1, 4, 5, 6, 3, 4}},
        {0, 110, {1, -71.5, -73.25}},
        {1, 110, {1, -75.5, -77.25}},
        {0, 111, {1, -74.5, -76.25}},
        {1, 111, {1, -78.5, -80.25}},
        {0, 112, {2, 18.5, 17.25, 16, 15.75}},
        {1, 112, {2, 24.5, 23.25, 22, 21.75}},
        {0, 113, {1, 0, 1, 1, 0, 2, 3, 3, 2, 0, 1, 1, 0}},
        {1, 113, {1, 1, 0, 0, 1, 3, 2, 2, 3, 1, 0, 0, 1}},
    };
    for (const std::uint16_t sub : {0, 1}) {
        const double earfcn = sub == 0 ? 1850 : 3050;
        const double pci = sub == 0 ? 7 : 211;
        const double rsrp = sub == 0 ? -93.5 : -97.25;
        rows.push_back({sub, 82, lte_cell(earfcn, pci, rsrp, 0)});
        for (std::uint32_t carrier = 1; carrier <= 6; ++carrier) {
            rows.push_back({sub, 102 + carrier, lte_cell(earfcn, pci, rsrp, carrier)});
        }
    }
    return rows;
}

// ---- The scenario's rows ----

// Whole and in range for the integers; a figure's NaN and infinities go through, a number beyond its width doesn't.
double read_field(const ScenarioNode& node, const Field& field)
{
    const std::string name(field.name);
    switch (field.kind) {
    case u8: return static_cast<double>(node.number(name, 0, UINT8_MAX));
    case u16: return static_cast<double>(node.number(name, 0, UINT16_MAX));
    case i16: return static_cast<double>(node.number(name, INT16_MIN, INT16_MAX));
    case u32: return static_cast<double>(node.number(name, 0, UINT32_MAX));
    case f32: break;
    }
    const double value = node.real(name);
    if (std::isfinite(value) && std::abs(value) > FLT_MAX) node.refuse(name, "a number that 32 bits can hold");
    return value;
}

Bytes read_sample(const std::string& key, std::uint32_t parameter, const ScenarioNode& node)
{
    const auto* row = std::get_if<ScenarioNode::Table>(&node.value);
    if (row == nullptr || row->contains("fill")) return node.bytes(key, kLongestSample);

    const std::span<const Field> fields = fields_of(parameter);
    if (fields.empty()) node.refuse(key, "bytes: this parameter has no fields with names");
    Bytes sample;
    TableReader table(key, node);
    for (const Field& field : fields) {
        const ScenarioNode* value = table.find(std::string(field.name));
        append_field(sample, field.kind, value != nullptr ? read_field(*value, field) : 0);
    }
    table.finish();
    return sample;
}

std::uint32_t read_parameter(const std::string& key, const ScenarioNode& node)
{
    std::uint32_t parameter = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), parameter);
    if (error != std::errc{} || end != key.data() + key.size()) node.refuse(key, "a parameter's number");
    return parameter;
}

}  // namespace

StatsSamples read_stats_samples(TableReader* file)
{
    StatsSamples samples;
    for (const BuiltInRow& row : built_in_rows()) {
        const std::span<const Field> fields = fields_of(row.parameter);
        Bytes& sample = samples[{row.sub, row.parameter}];
        for (std::size_t i = 0; i < fields.size(); ++i) append_field(sample, fields[i].kind, row.values[i]);
    }

    const ScenarioNode* node = file != nullptr ? file->find("stats") : nullptr;
    if (node == nullptr) return samples;
    TableReader stats("[stats]", *node);
    for (const std::uint16_t sub : {0, 1}) {
        const std::string name = "sub" + std::to_string(sub);
        const ScenarioNode* rows = stats.find(name);
        if (rows == nullptr) continue;
        EachOnce<std::uint32_t> once;
        for (const auto& [key, row] : rows->table("[stats." + name + "]")) {
            const std::uint32_t parameter = read_parameter(key, row);
            once.add(row, key, parameter);
            samples[{sub, parameter}] = read_sample(key, parameter, row);
        }
    }
    stats.finish();
    return samples;
}

}  // namespace rbk::sim

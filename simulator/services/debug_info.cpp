#include "simulator/services/debug_info.h"

#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kLongestRecord = 500;  // the room of one answer
constexpr std::size_t kLogsMax = 249;        // behind their count

// Version 4, its statistics on and nothing unsupported; every counter has another value.
Bytes built_in_record()
{
    constexpr std::uint8_t kWidths[] = {
        8, 8, 8, 8, 4, 4, 4, 4,                                            // the engine itself
        1, 4, 1, 4, 4, 4, 1, 8, 8, 4, 4, 8, 8, 4, 4, 4, 4, 4, 4, 4, 4, 4,  // its diag listeners
        1, 1, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4,                    // calls
        1, 1, 4, 4,                                                        // cards
    };
    Bytes record{4, 1};
    record.resize(record.size() + 8);  // versions not supported
    std::uint8_t counter = 0;
    for (const std::uint8_t width : kWidths) {
        record.push_back(++counter);
        record.resize(record.size() + width - 1U);
    }
    return record;
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_debug_info(TableReader* file)
{
    auto info = std::make_unique<DebugInfo>();
    info->record = built_in_record();
    info->logs = {0xB063, 0xB0A1};
    const ScenarioNode* node = file != nullptr ? file->find("debug_info") : nullptr;
    if (node == nullptr) return info;
    TableReader table("[debug_info]", *node);
    if (auto record = table.bytes("record", kLongestRecord)) info->record = *std::move(record);
    if (const ScenarioNode* logs = table.find("logs")) {
        info->logs.clear();
        for (const ScenarioNode& log : logs->list("logs")) {
            info->logs.push_back(static_cast<std::uint16_t>(log.number("logs", 0, UINT16_MAX)));
        }
        if (info->logs.size() > kLogsMax) logs->refuse("logs", "at most " + std::to_string(kLogsMax) + " numbers");
    }
    table.finish();
    return info;
}

}  // namespace rbk::sim

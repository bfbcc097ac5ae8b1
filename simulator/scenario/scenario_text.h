// A scenario's text, looked through in one pass before the TOML parser sees it.
//
// The parser recurses on the parts of a key and on nested values, searches all tables that it has seen at each header,
// and runs into undefined behaviour at letters outside ASCII wherever it looks for a blank. So values and their depth
// are counted here, and such letters pass only within texts and comments. All else is left to the parser.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace rbk::sim {

inline constexpr std::size_t kLongestScenario = 4UL * 1024 * 1024;  // bytes: several of the longest EFS files in hex
inline constexpr std::size_t kMostScenarioValues = 65536;           // a whole phone's NV items are 14468
inline constexpr std::size_t kMostFilled = 64UL * 1024 * 1024;      // bytes that fillings and "00*8" stand for, in all
inline constexpr std::size_t kDeepestScenario = 16;                 // parts of a key; lists and tables in each other

// Throws ScenarioError with `file`, the line and what was expected.
void check_scenario_text(std::string_view text, const std::string& file);

}  // namespace rbk::sim

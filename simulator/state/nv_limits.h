// Which NV items a modem can have.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace rbk::sim {

inline constexpr std::uint32_t kHighestNvItem = 7232;
inline constexpr std::size_t kLongestNvItem = 424;  // bytes; the room of one record

// Item 550 alone has a third subscription, for the customer's own number.
inline bool nv_exists(std::uint32_t sub, std::uint32_t item)
{
    return item <= kHighestNvItem && (sub <= 1 || (sub == 2 && item == 550));
}

inline std::string nv_name(std::uint32_t sub, std::uint32_t item)
{
    return "nv/" + std::to_string(sub) + "/" + std::to_string(item);
}

}  // namespace rbk::sim

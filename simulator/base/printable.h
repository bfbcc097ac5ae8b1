// Foreign text for a line on a person's screen.
#pragma once

#include <string>
#include <string_view>

namespace rbk::sim {

// With \xNN in the place of each byte of a control character, which could move the cursor or end the line.
std::string printable(std::string_view text);

}  // namespace rbk::sim

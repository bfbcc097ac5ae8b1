// The help as the shell prints it, out of the text that stands beside the tests.
#pragma once

#include <string>

namespace rbk::test {

// What show_help(group) prints: that group's lines between the two banners, or all of it for 0.
std::string help_of(int group);

}  // namespace rbk::test

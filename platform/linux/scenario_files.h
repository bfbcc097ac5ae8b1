// The scenarios that come with the programs: ../share/rbk/scenarios from the executable's folder, in a build as in an
// installation.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace rbk::platform {

// The file that a person means. A path, or a name that lies in the current folder, is that file; any other name without
// a slash is one of the scenarios that come with the programs, with or without its .toml. Empty, with a line for a person
// in `problem`, when it is nowhere.
std::filesystem::path find_scenario(const std::string& name, std::string& problem);

struct ScenarioList {
    std::vector<std::string> lines;  // by name: the name, and what the file says of itself in its first line
    std::string problem;             // a line for a person when the folder, or a file of it, can't be read; else empty
};
ScenarioList list_scenarios();

}  // namespace rbk::platform

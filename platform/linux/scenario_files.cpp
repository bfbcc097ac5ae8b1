#include "platform/linux/scenario_files.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>
#include <system_error>

#include "simulator/base/printable.h"

namespace rbk::platform {
namespace {

constexpr const char* kExecutable = "/proc/self/exe";
constexpr const char* kExtension = ".toml";

// Empty, with what is wrong in `error`, where the system doesn't tell.
std::filesystem::path scenario_folder(std::error_code& error)
{
    const std::filesystem::path program = std::filesystem::read_symlink(kExecutable, error);
    if (error) return {};
    return program.parent_path().parent_path() / "share/rbk/scenarios";
}

bool is_there(const std::filesystem::path& file)
{
    std::error_code ignored;
    return access(file.c_str(), F_OK) == 0 && !std::filesystem::is_directory(file, ignored);
}

// What stands behind the # of a file's first line.
std::string summary_of(const std::filesystem::path& file, std::string& problem)
{
    std::ifstream stream(file);
    std::string line;
    if (!stream || (!std::getline(stream, line) && !stream.eof())) {
        problem = file.string() + ": " + std::generic_category().message(errno);
        return "";
    }
    if (!line.starts_with('#')) return "";
    return sim::printable(line.substr(std::min(line.find_first_not_of("# "), line.size())));
}

}  // namespace

std::filesystem::path find_scenario(const std::string& name, std::string& problem)
{
    if (name.find('/') != std::string::npos || is_there(name)) return name;
    std::error_code error;
    const std::filesystem::path folder = scenario_folder(error);
    if (!error) {
        for (const std::string& file : {name, name + kExtension})
            if (is_there(folder / file)) return folder / file;
    }
    if (access(name.c_str(), F_OK) == 0 || errno != ENOENT) return name;  // whoever reads it says what is wrong with it
    problem = sim::printable(name) + ": expected a file that can be read: " + std::generic_category().message(ENOENT) +
              "; nor is it in " + (error ? kExecutable + (": " + error.message()) : folder.string());
    if (!error && access((folder / ".").c_str(), X_OK) != 0) problem += ": " + std::generic_category().message(errno);
    return {};
}

ScenarioList list_scenarios()
{
    std::error_code error;
    const std::filesystem::path folder = scenario_folder(error);
    if (error) return {{}, kExecutable + (": " + error.message())};
    ScenarioList list;
    std::map<std::string, std::string> summaries;
    std::size_t width = 0;
    for (std::filesystem::directory_iterator each(folder, error), end; !error && each != end; each.increment(error)) {
        const std::filesystem::path& file = each->path();
        std::error_code not_there;
        if (file.extension() != kExtension || !each->is_regular_file(not_there)) continue;
        const std::string name = sim::printable(file.stem().string());
        summaries[name] = summary_of(file, list.problem);
        width = std::max(width, name.size());
    }
    if (error) list.problem = folder.string() + ": " + error.message();
    for (const auto& [name, summary] : summaries) {
        std::string line = name;
        if (!summary.empty()) line.append(width + 2 - name.size(), ' ').append(summary);
        list.lines.push_back(std::move(line));
    }
    return list;
}

}  // namespace rbk::platform

// Text as lines.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace rbk::test {

using Lines = std::vector<std::string>;

// The lines as one text; the other way is lines_of.
inline std::string joined(const Lines& lines)
{
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

// Neighbours that are equal, each with how often it comes in a row.
inline std::vector<std::pair<std::string, std::size_t>> runs_of(const Lines& lines)
{
    std::vector<std::pair<std::string, std::size_t>> runs;
    for (const std::string& line : lines) {
        if (runs.empty() || runs.back().first != line) runs.emplace_back(line, 0);
        ++runs.back().second;
    }
    return runs;
}

inline std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

}  // namespace rbk::test

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

// Bytes in hex; eight or more that are equal stand there once, with their number: "A1 00*8".
inline std::string with_runs(const std::string& hex_text)
{
    Lines bytes;
    for (std::size_t at = 0; at < hex_text.size(); at += 2) bytes.push_back(hex_text.substr(at, 2));
    std::string text;
    for (const auto& [byte, count] : runs_of(bytes)) {
        const bool is_run = count >= 8;
        if (is_run && !text.empty() && text.back() != ' ') text += ' ';
        for (std::size_t i = is_run ? count : 1; i <= count; ++i) text += byte;
        if (is_run) text += "*" + std::to_string(count) + " ";
    }
    if (text.ends_with(' ')) text.pop_back();
    return text;
}

inline std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

}  // namespace rbk::test

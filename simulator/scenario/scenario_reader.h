// The scenario file as a tree of values that knows its lines, and the questions that are asked of it.
//
// Whatever isn't as expected throws ScenarioError with the file, the line and what was expected; so does a key that
// nobody asked for.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "link/bytes.h"

namespace rbk::sim {

class ScenarioError : public std::runtime_error {
 public:
    // The line may show what stands in the file: its control characters are escaped.
    explicit ScenarioError(const std::string& line);
};

// One value of the file. Lists and tables hold their values.
struct ScenarioNode {
    using List = std::vector<ScenarioNode>;
    using Table = std::map<std::string, ScenarioNode>;

    std::string where;  // "file:line", for a person
    std::variant<std::monostate, bool, std::int64_t, double, std::string, List, Table> value;

    [[noreturn]] void refuse(const std::string& key, const std::string& expected) const;

    // Each refuses a value of another kind, or out of range, in the name of `key`.
    bool flag(const std::string& key) const;
    std::int64_t number(const std::string& key, std::int64_t lowest, std::int64_t highest) const;
    double real(const std::string& key) const;  // a whole number will do
    const std::string& text(const std::string& key) const;
    const List& list(const std::string& key) const;
    const Table& table(const std::string& key) const;
    // Hex text with optional blanks and repetitions ("A1 00*8"), or { fill = byte, size = bytes }.
    Bytes bytes(const std::string& key, std::size_t longest) const;

    // The content of the regular file that this text names, beside the scenario.
    Bytes file(const std::string& key, std::size_t longest) const;
};

// Reads the file. An empty tree for one without content.
ScenarioNode load_scenario_file(const std::filesystem::path& file);

// Refuses a key that means the same as an earlier one of its table, though it is written in another way.
template <typename Meaning>
class EachOnce {
 public:
    void add(const ScenarioNode& value, const std::string& key, const Meaning& meaning)
    {
        const auto [first, is_new] = keys_.emplace(meaning, key);
        if (!is_new) value.refuse(key, "each one once, and " + first->second + " is the same");
    }

 private:
    std::map<Meaning, std::string> keys_;
};

// A table with the keys that are known in it. finish() refuses all that wasn't asked for.
class TableReader {
 public:
    // `name` is how the table is called in messages: "[modem]".
    TableReader(std::string name, const ScenarioNode& node);

    const std::string& where() const { return node_.where; }
    [[noreturn]] void refuse(const std::string& expected) const { node_.refuse(name_, expected); }

    // The value of a key; null when it isn't there. need() refuses its absence.
    const ScenarioNode* find(const std::string& key);
    const ScenarioNode& need(const std::string& key);

    // For the common kinds: the value, or nothing when the key is absent.
    std::optional<bool> flag(const std::string& key);
    std::optional<std::string> text(const std::string& key);
    std::optional<std::int64_t> number(const std::string& key, std::int64_t lowest, std::int64_t highest);
    std::optional<std::chrono::milliseconds> milliseconds(const std::string& key);
    std::optional<Bytes> bytes(const std::string& key, std::size_t longest);

    void finish() const;

 private:
    std::string name_;
    const ScenarioNode& node_;
    const ScenarioNode::Table& table_;
    std::vector<std::string> known_;  // in the order of asking, for the message
};

}  // namespace rbk::sim

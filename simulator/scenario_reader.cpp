#include "simulator/scenario_reader.h"

#include <stdexcept>

// Some broken files trip the parser's own assertions, which are undefined behaviour in a release build. Here they throw,
// and the file is refused like the others.
[[noreturn]] static void assertion_failed(const char* expression)
{
    throw std::logic_error(expression);
}
#undef NDEBUG
#define TOML_ASSERT(expression) ((expression) ? static_cast<void>(0) : assertion_failed(#expression))
#include <toml++/toml.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace rbk::sim {
namespace {

constexpr std::int64_t kLongestWaitMs = 24L * 60 * 60 * 1000;

ScenarioNode convert(const toml::node& from, const std::string& file)
{
    ScenarioNode node{file + ":" + std::to_string(from.source().begin.line), {}};
    if (const auto* flag = from.as_boolean()) node.value = flag->get();
    if (const auto* number = from.as_integer()) node.value = number->get();
    if (const auto* real = from.as_floating_point()) node.value = real->get();
    if (const auto* text = from.as_string()) node.value = text->get();
    if (const auto* list = from.as_array()) {
        ScenarioNode::List values;
        for (const toml::node& value : *list) values.push_back(convert(value, file));
        node.value = std::move(values);
    }
    if (const auto* table = from.as_table()) {
        ScenarioNode::Table values;
        for (const auto& [key, value] : *table) values.emplace(std::string(key.str()), convert(value, file));
        node.value = std::move(values);
    }
    return node;
}

int hex_digit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Blanks may stand between bytes, not within one.
std::optional<Bytes> parse_hex(std::string_view text)
{
    Bytes bytes;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r') {
            ++i;
            continue;
        }
        const int high = hex_digit(text[i]);
        const int low = i + 1 < text.size() ? hex_digit(text[i + 1]) : -1;
        if (high < 0 || low < 0) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
        i += 2;
    }
    return bytes;
}

std::string joined(const std::vector<std::string>& names)
{
    std::string line;
    for (const std::string& name : names) line.append(line.empty() ? "" : ", ").append(name);
    return line;
}

}  // namespace

void ScenarioNode::refuse(const std::string& key, const std::string& expected) const
{
    throw ScenarioError(where + ": " + key + ": expected " + expected);
}

bool ScenarioNode::flag(const std::string& key) const
{
    if (const bool* held = std::get_if<bool>(&value)) return *held;
    refuse(key, "true or false");
}

std::int64_t ScenarioNode::number(const std::string& key, std::int64_t lowest, std::int64_t highest) const
{
    const auto* held = std::get_if<std::int64_t>(&value);
    if (held != nullptr && *held >= lowest && *held <= highest) return *held;
    refuse(key, "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
}

double ScenarioNode::real(const std::string& key) const
{
    if (const auto* held = std::get_if<double>(&value)) return *held;
    if (const auto* held = std::get_if<std::int64_t>(&value)) return static_cast<double>(*held);
    refuse(key, "a number");
}

const std::string& ScenarioNode::text(const std::string& key) const
{
    if (const auto* held = std::get_if<std::string>(&value)) return *held;
    refuse(key, "a text");
}

const ScenarioNode::List& ScenarioNode::list(const std::string& key) const
{
    if (const auto* held = std::get_if<List>(&value)) return *held;
    refuse(key, "a list");
}

const ScenarioNode::Table& ScenarioNode::table(const std::string& key) const
{
    if (const auto* held = std::get_if<Table>(&value)) return *held;
    refuse(key, "a table");
}

Bytes ScenarioNode::bytes(const std::string& key, std::size_t longest) const
{
    const std::string size_text = "at most " + std::to_string(longest) + " bytes";
    if (const auto* held = std::get_if<std::string>(&value)) {
        std::optional<Bytes> parsed = parse_hex(*held);
        if (!parsed) refuse(key, "hex bytes, two digits each, with optional blanks between them");
        if (parsed->size() > longest) refuse(key, size_text);
        return *std::move(parsed);
    }
    if (!std::holds_alternative<Table>(value)) refuse(key, "hex text or { fill = byte, size = bytes }");
    TableReader reader(key, *this);
    const auto fill = static_cast<std::uint8_t>(reader.need("fill").number(key + ".fill", 0, 0xFF));
    const auto size = reader.need("size").number(key + ".size", 0, static_cast<std::int64_t>(longest));
    reader.finish();
    return Bytes(static_cast<std::size_t>(size), fill);
}

std::filesystem::path ScenarioNode::beside(const std::string& file) const
{
    return std::filesystem::path(where.substr(0, where.rfind(':'))).parent_path() / file;
}

ScenarioNode load_scenario_file(const std::filesystem::path& file)
{
    const std::string name = file.string();
    std::string content;
    try {
        std::ifstream stream;
        stream.exceptions(std::ios::failbit | std::ios::badbit);
        stream.open(file, std::ios::binary);
        content.assign(std::istreambuf_iterator<char>(stream), {});
    } catch (const std::ios_base::failure&) {
        throw ScenarioError(name + ": expected a file that can be read");
    }
    try {
        return convert(toml::parse(content, name), name);
    } catch (const toml::parse_error& error) {
        std::string line(error.description());
        std::replace(line.begin(), line.end(), '\n', ' ');
        throw ScenarioError(name + ":" + std::to_string(error.source().begin.line) + ": " + line);
    } catch (const std::logic_error&) {
        throw ScenarioError(name + ": expected TOML");
    }
}

TableReader::TableReader(std::string name, const ScenarioNode& node)
    : name_(std::move(name)), node_(node), table_(node.table(name_))
{
}

const ScenarioNode* TableReader::find(const std::string& key)
{
    known_.push_back(key);
    const auto found = table_.find(key);
    return found == table_.end() ? nullptr : &found->second;
}

const ScenarioNode& TableReader::need(const std::string& key)
{
    if (const ScenarioNode* node = find(key)) return *node;
    node_.refuse(name_, "the key " + key);
}

std::optional<bool> TableReader::flag(const std::string& key)
{
    const ScenarioNode* node = find(key);
    return node == nullptr ? std::nullopt : std::optional(node->flag(key));
}

std::optional<std::string> TableReader::text(const std::string& key)
{
    const ScenarioNode* node = find(key);
    return node == nullptr ? std::nullopt : std::optional(node->text(key));
}

std::optional<std::int64_t> TableReader::number(const std::string& key, std::int64_t lowest, std::int64_t highest)
{
    const ScenarioNode* node = find(key);
    return node == nullptr ? std::nullopt : std::optional(node->number(key, lowest, highest));
}

std::optional<std::chrono::milliseconds> TableReader::milliseconds(const std::string& key)
{
    const std::optional<std::int64_t> count = number(key, 0, kLongestWaitMs);
    return count ? std::optional(std::chrono::milliseconds(*count)) : std::nullopt;
}

std::optional<Bytes> TableReader::bytes(const std::string& key, std::size_t longest)
{
    const ScenarioNode* node = find(key);
    return node == nullptr ? std::nullopt : std::optional(node->bytes(key, longest));
}

void TableReader::finish() const
{
    for (const auto& [key, node] : table_) {
        if (std::find(known_.begin(), known_.end(), key) == known_.end()) {
            throw ScenarioError(node.where + ": unknown key " + key + " in " + name_ + ": expected " + joined(known_));
        }
    }
}

}  // namespace rbk::sim

#include "simulator/scenario/scenario_reader.h"

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

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "simulator/base/printable.h"
#include "simulator/scenario/scenario_text.h"
#include "simulator/state/stored_file.h"

namespace rbk::sim {
namespace {

constexpr std::int64_t kLongestWaitMs = 24L * 60 * 60 * 1000;

// ---- Hex text ----

int hex_digit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Hands each stretch of equal bytes to `take`, as byte and number. Blanks may stand between bytes, not within one; "00*8"
// is eight of them. False: the text is something else.
template <typename Take>
bool read_hex(std::string_view text, Take take)
{
    constexpr std::size_t kLongestCount = 9;  // digits: what a whole scenario counts still fits
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] == ' ' || text[i] == '\t' || text[i] == '\n' || text[i] == '\r') {
            ++i;
            continue;
        }
        const int high = hex_digit(text[i]);
        const int low = i + 1 < text.size() ? hex_digit(text[i + 1]) : -1;
        if (high < 0 || low < 0) return false;
        i += 2;
        std::size_t count = 1;
        if (i < text.size() && text[i] == '*') {
            count = 0;
            const std::size_t first = ++i;
            for (; i < text.size() && text[i] >= '0' && text[i] <= '9' && i - first < kLongestCount; ++i) {
                count = count * 10 + static_cast<std::size_t>(text[i] - '0');
            }
            // A digit that follows at once would be one of the count, or look like it.
            if (count == 0 || (i < text.size() && hex_digit(text[i]) >= 0)) return false;
        }
        take(static_cast<std::uint8_t>(high * 16 + low), count);
    }
    return true;
}

// How many bytes a hex text stands for; nothing for another one.
std::optional<std::size_t> hex_size(std::string_view text)
{
    std::size_t size = 0;
    return read_hex(text, [&](std::uint8_t, std::size_t count) { size += count; }) ? std::optional(size) : std::nullopt;
}

// ---- The file as a tree ----

// The parser's tree as one of our own.
class Conversion {
 public:
    explicit Conversion(const std::string& file) : file_(file) {}
    ScenarioNode convert(const toml::node& from);

 private:
    void count_filling(const toml::table& table, const ScenarioNode& node);
    void count_filling(const std::string& text, const ScenarioNode& node);
    void fill(std::uint64_t size, const std::string& key, const ScenarioNode& node);

    const std::string& file_;
    std::uint64_t room_ = kMostFilled;
};

ScenarioNode Conversion::convert(const toml::node& from)
{
    ScenarioNode node{file_ + ":" + std::to_string(from.source().begin.line), {}};
    if (const auto* flag = from.as_boolean()) node.value = flag->get();
    if (const auto* number = from.as_integer()) node.value = number->get();
    if (const auto* real = from.as_floating_point()) node.value = real->get();
    if (const auto* text = from.as_string()) {
        count_filling(text->get(), node);
        node.value = text->get();
    }
    if (const auto* list = from.as_array()) {
        ScenarioNode::List values;
        for (const toml::node& value : *list) values.push_back(convert(value));
        node.value = std::move(values);
    }
    if (const auto* table = from.as_table()) {
        count_filling(*table, node);
        ScenarioNode::Table values;
        for (const auto& [key, value] : *table) values.emplace(std::string(key.str()), convert(value));
        node.value = std::move(values);
    }
    return node;
}

// { fill = byte, size = bytes } and "00*8": a few letters that ask for much memory.
void Conversion::count_filling(const toml::table& table, const ScenarioNode& node)
{
    const auto* size = table.get_as<std::int64_t>("size");
    if (size == nullptr || !table.contains("fill") || size->get() <= 0) return;
    fill(static_cast<std::uint64_t>(size->get()), "size", node);
}

void Conversion::count_filling(const std::string& text, const ScenarioNode& node)
{
    if (text.find('*') == std::string::npos) return;
    if (const auto size = hex_size(text)) fill(*size, "bytes", node);
}

void Conversion::fill(std::uint64_t size, const std::string& key, const ScenarioNode& node)
{
    if (size > room_) node.refuse(key, "at most " + std::to_string(kMostFilled) + " bytes of fillings in all");
    room_ -= size;
}

// The parser tells of a failed assertion without a place. It is in the first line with which the text makes it fail.
std::size_t line_of_failed_assertion(std::string_view content)
{
    const auto fails = [&](std::size_t end) {
        try {
            static_cast<void>(toml::parse(content.substr(0, end)));
        } catch (const toml::parse_error&) {
        } catch (const std::logic_error&) {
            return true;
        }
        return false;
    };
    std::vector<std::size_t> ends;
    for (std::size_t at = 0; at < content.size(); ends.push_back(at)) {
        at = std::min(content.find('\n', at), content.size() - 1) + 1;
    }
    const auto line = std::partition_point(ends.begin(), ends.end(), [&](std::size_t end) { return !fails(end); });
    return static_cast<std::size_t>(line - ends.begin()) + 1;
}

// What is wrong with a file that couldn't be read whole.
std::string file_expected(int error, std::size_t longest)
{
    if (error == -EFBIG) return "expected at most " + std::to_string(longest) + " bytes";
    if (error == -EISDIR || error == kNoRegularFile) return file_error_text(kNoRegularFile);
    return "expected a file that can be read: " + file_error_text(error);
}

std::string joined(const std::vector<std::string>& names)
{
    std::string line;
    for (const std::string& name : names) line.append(line.empty() ? "" : ", ").append(name);
    return line;
}

}  // namespace

ScenarioError::ScenarioError(const std::string& line) : std::runtime_error(printable(line)) {}

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
        const std::optional<std::size_t> size = hex_size(*held);
        if (!size) refuse(key, "hex bytes, two digits each, with optional blanks between them; 00*8 for eight of 00");
        if (*size > longest) refuse(key, size_text);
        Bytes bytes;
        bytes.reserve(*size);
        read_hex(*held, [&](std::uint8_t byte, std::size_t count) { bytes.insert(bytes.end(), count, byte); });
        return bytes;
    }
    if (!std::holds_alternative<Table>(value)) refuse(key, "hex text or { fill = byte, size = bytes }");
    TableReader reader(key, *this);
    const auto fill = static_cast<std::uint8_t>(reader.need("fill").number(key + ".fill", 0, 0xFF));
    const auto size = reader.need("size").number(key + ".size", 0, static_cast<std::int64_t>(longest));
    reader.finish();
    return Bytes(static_cast<std::size_t>(size), fill);
}

Bytes ScenarioNode::file(const std::string& key, std::size_t longest) const
{
    const std::string& name = text(key);
    if (name.find('\0') != std::string::npos) refuse(key, "a file's name, without a zero byte");
    const std::filesystem::path folder = std::filesystem::path(where.substr(0, where.rfind(':'))).parent_path();
    StoredValue content = read_whole(open_regular(AT_FDCWD, folder / name, 0), longest);
    if (content.error != 0) throw ScenarioError(where + ": " + key + ": " + file_expected(content.error, longest));
    return std::move(content.bytes);
}

ScenarioNode load_scenario_file(const std::filesystem::path& file)
{
    const std::string& name = file.native();
    const StoredValue content = read_whole(open_regular(AT_FDCWD, name, 0), kLongestScenario);
    if (content.error != 0) throw ScenarioError(name + ": " + file_expected(content.error, kLongestScenario));
    const std::string_view text(reinterpret_cast<const char*>(content.bytes.data()), content.bytes.size());
    check_scenario_text(text, name);
    try {
        return Conversion(name).convert(toml::parse(text, name));
    } catch (const toml::parse_error& error) {
        // The parser's words about a repeated key show another one.
        const bool repeated = error.description().find("cannot redefine") != std::string_view::npos;
        const std::string words = repeated ? "each key and table once" : "TOML; " + std::string(error.description());
        throw ScenarioError(name + ":" + std::to_string(error.source().begin.line) + ": expected " + words);
    } catch (const std::logic_error&) {
        throw ScenarioError(name + ":" + std::to_string(line_of_failed_assertion(text)) + ": expected TOML");
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

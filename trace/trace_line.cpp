#include "trace/trace_line.h"

#include <charconv>
#include <optional>

namespace rbk::trace {
namespace {

// Words of a line, one blank between them, and the numbers in them.
class Words {
 public:
    explicit Words(std::string_view text) : rest_(text) {}

    std::string_view next()
    {
        const std::string_view word = rest_.substr(0, rest_.find(' '));
        rest_.remove_prefix(std::min(word.size() + 1, rest_.size()));
        return word;
    }

 private:
    std::string_view rest_;
};

template <typename Number>
std::optional<Number> number_of(std::string_view text, int base = 10)
{
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, base);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// The number of a word that begins with `key`, as "txn=1" or "svc=0xFFE4".
template <typename Number>
std::optional<Number> number_of(std::string_view word, std::string_view key)
{
    if (!word.starts_with(key)) return std::nullopt;
    word.remove_prefix(key.size());
    if (!word.starts_with("0x")) return number_of<Number>(word);
    return number_of<Number>(word.substr(2), 16);
}

// "12653.345038", in microseconds.
std::optional<std::int64_t> time_of(std::string_view word)
{
    constexpr std::int64_t kMostSeconds = 1'000'000'000'000;
    const std::size_t dot = word.find('.');
    if (dot == std::string_view::npos || word.size() - dot - 1 != 6) return std::nullopt;
    const auto seconds = number_of<std::int64_t>(word.substr(0, dot));
    const auto micros = number_of<std::uint32_t>(word.substr(dot + 1));
    if (!seconds || !micros || *seconds < 0 || *seconds > kMostSeconds) return std::nullopt;
    return *seconds * 1'000'000 + *micros;
}

std::optional<link::QmiKind> kind_of(std::string_view word)
{
    if (word == "req") return link::QmiKind::request;
    if (word == "rsp") return link::QmiKind::response;
    if (word == "ind") return link::QmiKind::indication;
    return std::nullopt;
}

std::optional<Bytes> bytes_of(std::string_view digits)
{
    if (digits.size() % 2 != 0) return std::nullopt;
    Bytes bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = number_of<std::uint8_t>(digits.substr(2 * i, 2), 16);
        if (!byte) return std::nullopt;
        bytes[i] = *byte;
    }
    return bytes;
}

}  // namespace

std::variant<TraceLine, std::string> parse_line(std::string_view text, std::uint64_t number)
{
    if (text.find('\0') != std::string_view::npos) return "it holds a zero byte";
    TraceLine line;
    line.number = number;
    Words words(text);

    const auto time = time_of(words.next());
    if (!time) return "it doesn't begin with a time as 12.345678";
    line.time_us = *time;
    const std::string_view direction = words.next();
    if (direction != ">" && direction != "<") return "behind its time stands neither > nor <";
    line.to_modem = direction == ">";

    const std::string_view carrier = words.next();
    line.is_diag = carrier == "diag";
    if (!line.is_diag) {
        const auto service = number_of<std::uint32_t>(carrier, "svc=");
        if (!service) return "it names neither a service as svc=0x0003 nor diag";
        line.service = *service;
        const auto kind = kind_of(words.next());
        if (!kind) return "behind its service stands neither req nor rsp nor ind";
        if ((*kind == link::QmiKind::request) != line.to_modem)
            return "requests go to the modem, all others come from it";
        const auto transaction = number_of<std::uint16_t>(words.next(), "txn=");
        if (!transaction) return "it has no transaction as txn=1";
        const auto message = number_of<std::uint16_t>(words.next(), "msg=");
        if (!message) return "it has no message as msg=0x0021";
        line.head = {*kind, *transaction, *message, 0};
    }

    const auto length = number_of<std::uint64_t>(words.next(), "len=");
    if (!length) return "it has no length as len=7";
    std::optional<Bytes> bytes = bytes_of(words.next());
    if (!bytes) return "its bytes aren't pairs of hex digits";
    if (bytes->size() != *length)
        return "it has " + std::to_string(bytes->size()) + " bytes, and its length says " + std::to_string(*length);
    if (!words.next().empty()) return "more stands behind its bytes";
    if (!line.is_diag && bytes->size() > UINT16_MAX) return "a message has 65535 bytes at most";
    line.head.length = static_cast<std::uint16_t>(bytes->size());
    line.bytes = *std::move(bytes);
    return line;
}

}  // namespace rbk::trace

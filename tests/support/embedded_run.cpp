#include "support/embedded_run.h"

#include <cstdlib>

namespace rbk::test {

EmbeddedRun::EmbeddedRun()
{
    setenv("RBK_TRACE", (home() / "trace").c_str(), 1);
}

void EmbeddedRun::scenario(const std::string& text) const
{
    write_file(home() / "scenario.toml", text);
    setenv("RBK_SCENARIO", (home() / "scenario.toml").c_str(), 1);
}

std::size_t EmbeddedRun::log_count(const std::string& words) const
{
    const std::string text = read_file(home() / "log");
    std::size_t count = 0;
    for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) ++count;
    return count;
}

std::vector<Traced> EmbeddedRun::trace() const
{
    return trace_in(home());
}

std::vector<Traced> EmbeddedRun::requests() const
{
    std::vector<Traced> messages = trace();
    std::erase_if(messages, [](const Traced& message) { return !message.to_modem; });
    return messages;
}

std::vector<std::uint8_t> pattern(std::size_t size)
{
    std::vector<std::uint8_t> bytes(size);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256 + 1);
    return bytes;
}

std::string hex(const std::vector<std::uint8_t>& bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::string le(std::uint64_t number, int width)
{
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    return hex(bytes);
}

std::string envelope(std::uint32_t qmi_id, std::uint32_t data_len, const std::string& data)
{
    return tlv(1, le(qmi_id, 4)) + tlv(2, le(data_len, 4)) + tlv(0x10, data + std::string(2 * 550 - data.size(), '0'));
}

std::string tlv(std::uint8_t type, const std::string& value)
{
    return le(type, 1) + le(value.size() / 2, 2) + value;
}

}  // namespace rbk::test

// A test that calls the device's code in its own process, against the embedded modem: a state directory of its own, a
// scenario, the trace of the link and the copy of the log. CTest runs a process for each case, so the environment and
// all file-scope state are fresh.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace rbk::test {

// One message on the link.
struct Traced {
    bool to_modem = false;
    std::string head;   // "svc=0xFFE4 req txn=1 msg=0x0002 len=567"
    std::string bytes;  // TLVs in hex
};

class EmbeddedRun : public testing::Test {
 public:
    EmbeddedRun()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "rbk-test-XXXXXX";
        home_ = mkdtemp(pattern.data());
        setenv("RBK_HOME", home_.c_str(), 1);
        setenv("RBK_MODEM", "embedded", 1);
        setenv("RBK_TRACE", (home_ / "trace").c_str(), 1);
        setenv("RBK_LOGCAT", (home_ / "logcat").c_str(), 1);
        unsetenv("RBK_SCENARIO");
        unsetenv("RBK_QMI_TIMEOUT_SCALE");
    }
    ~EmbeddedRun() override { std::filesystem::remove_all(home_); }

    // Before the first use of the link.
    void scenario(const std::string& text)
    {
        std::ofstream(home_ / "scenario.toml") << text;
        setenv("RBK_SCENARIO", (home_ / "scenario.toml").c_str(), 1);
    }
    static void scale_timeouts(const char* factor) { setenv("RBK_QMI_TIMEOUT_SCALE", factor, 1); }

    const std::filesystem::path& home() const { return home_; }

    std::string log() const
    {
        std::ostringstream text;
        text << std::ifstream(home_ / "logcat").rdbuf();
        return text.str();
    }
    std::size_t log_count(const std::string& words) const
    {
        const std::string text = log();
        std::size_t count = 0;
        for (std::size_t at = text.find(words); at != std::string::npos; at = text.find(words, at + 1)) ++count;
        return count;
    }

    std::vector<Traced> trace() const
    {
        std::vector<Traced> messages;
        std::ifstream file(home_ / "trace");
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string time;
            std::string way;
            std::string rest;
            words >> time >> way >> std::ws;
            std::getline(words, rest);
            const std::size_t bytes = rest.rfind(' ') + 1;
            messages.push_back({way == ">", rest.substr(0, bytes - 1), rest.substr(bytes)});
        }
        return messages;
    }
    std::vector<Traced> requests() const
    {
        std::vector<Traced> messages = trace();
        std::erase_if(messages, [](const Traced& message) { return !message.to_modem; });
        return messages;
    }

 private:
    std::filesystem::path home_;
};

inline std::string hex(const std::vector<std::uint8_t>& bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

// A number of `width` bytes as it stands on the wire.
inline std::string le(std::uint64_t number, int width)
{
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < width; ++i) bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
    return hex(bytes);
}

}  // namespace rbk::test

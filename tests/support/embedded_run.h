// A test that calls the device's code in its own process, against the embedded modem: a scenario for it, the trace of
// the link and the copy of the log.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "support/home.h"
#include "support/wait_until.h"
#include "support/watched.h"

namespace rbk::test {

class EmbeddedRun : public HomeTest {
 public:
    EmbeddedRun();

    // Both before the first use of the link: the environment is read once.
    void scenario(const std::string& text) const;
    static void scale_timeouts(const char* factor);

    // How often `words` stand in the log of the whole case.
    std::size_t log_count(const std::string& words) const;
    // The messages so far; the requests among them.
    std::vector<Traced> trace() const;
    std::vector<Traced> requests() const;
};

// Different bytes, also from one chunk of a file to the next.
std::vector<std::uint8_t> pattern(std::size_t size);

std::string hex(const std::vector<std::uint8_t>& bytes);

// A number of `width` bytes as it stands on the wire, in hex.
std::string le(std::uint64_t number, int width);

// One TLV, in hex.
std::string tlv(std::uint8_t type, const std::string& value);

// The TLVs of an envelope, in hex; `data` is hex too, filled up with zeros.
std::string envelope(std::uint32_t qmi_id, std::uint32_t data_len, const std::string& data);

// A rule of a scenario: the extended service answers its nth request, or each, with these TLVs.
std::string raw_answer(const std::string& tlvs, int nth = 0);

// One value of the statistics as it stands on the wire, in hex; `value_len` is what its count says, -1 for the truth.
std::string stats_parameter(std::uint16_t sub, std::uint16_t second_word, std::uint32_t id, const std::string& value,
                            int value_len = -1);

// A float's four bytes, in hex.
std::string f32(float value);

}  // namespace rbk::test

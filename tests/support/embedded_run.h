// A test that calls the device's code in its own process, against the embedded modem: a scenario for it, the trace of
// the link and the copy of the log.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/home.h"
#include "support/wait_until.h"
#include "support/watched.h"

namespace rbk::test {

class EmbeddedRun : public HomeTest {
 public:
    EmbeddedRun();

    // Before the first use of the link: the environment is read once.
    void scenario(const std::string& text) const;

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

}  // namespace rbk::test

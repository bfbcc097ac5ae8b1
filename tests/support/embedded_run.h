// A test that calls the device's code in its own process, against the embedded modem: a scenario for it, the trace of
// the link and the copy of the log.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/home.h"

namespace rbk::test {

// One message on the link.
struct Traced {
    bool to_modem = false;
    std::string head;   // "svc=0xFFE4 req txn=1 msg=0x0002 len=567"
    std::string bytes;  // its TLVs in hex
};

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

std::string hex(const std::vector<std::uint8_t>& bytes);

// A number of `width` bytes as it stands on the wire, in hex.
std::string le(std::uint64_t number, int width);

}  // namespace rbk::test

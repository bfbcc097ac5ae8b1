// A run of the shell of which everything is written down in its home: "trace" has the messages on its link, "log" those of
// the system's log, "calls" its waits.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace rbk::test {

// The variables for it; waits are a hundred times shorter.
std::map<std::string, std::string> watched_in(const std::filesystem::path& home);

// One message on the link.
struct Traced {
    bool to_modem = false;
    std::string head;                        // "svc=0xFFE4 req txn=1 msg=0x0002 len=567", "diag len=3"
    std::string bytes;                       // its TLVs, or the packet, in hex
    std::string service;                     // "0xFFE4", "diag"
    std::string kind, transaction, message;  // "req", "txn=1", "0x0002"; of diag none
};

std::vector<Traced> trace_in(const std::filesystem::path& home);

}  // namespace rbk::test

// What each client held in the modem when it went: a line in a file, for people and for tests.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

#include "simulator/base/client_id.h"
#include "simulator/base/fd.h"

namespace rbk::sim {

// What services keep for one client until it gives that back or goes.
struct Holdings {
    std::size_t channels = 0;       // logical channels to cards
    std::size_t efs_reads = 0;      // EFS files read in part
    std::size_t efs_writes = 0;     // EFS files sent in part
    std::size_t diag_sessions = 0;  // a diag library that is started
    std::size_t dci_clients = 0;    // registered
    std::size_t dci_streams = 0;    // DCI clients that are sent logs and events
    std::size_t pdc_lists = 0;      // lists of configurations told in part
    std::size_t pdc_loads = 0;      // configurations sent in part
    std::size_t stats = 0;          // 1: the statistics are on; they are the modem's, and stay so when the client goes
};

class Ledger {
 public:
    // Appends to the file, which is made where there is none. Null, with the reason in `error`, when it can't be opened;
    // a named pipe without a reader is no such file.
    static std::unique_ptr<Ledger> open(const std::string& path, std::string& error);

    // One whole line, at once: "client 3: channels=1 efs_reads=0 ...". What is wrong, or empty.
    std::string write(ClientId client, const Holdings& held) const;

 private:
    Ledger(std::string path, Fd file) : path_(std::move(path)), file_(std::move(file)) {}

    std::string path_;
    Fd file_;
};

}  // namespace rbk::sim

#include "simulator/base/ledger.h"

#include <fcntl.h>

#include <cerrno>
#include <string_view>
#include <system_error>
#include <utility>

namespace rbk::sim {
namespace {

// In the order of a line.
constexpr std::pair<std::string_view, std::size_t Holdings::*> kColumns[] = {
    {"channels", &Holdings::channels},
    {"efs_reads", &Holdings::efs_reads},
    {"efs_writes", &Holdings::efs_writes},
    {"diag_sessions", &Holdings::diag_sessions},
    {"dci_clients", &Holdings::dci_clients},
    {"dci_streams", &Holdings::dci_streams},
    {"pdc_lists", &Holdings::pdc_lists},
    {"pdc_loads", &Holdings::pdc_loads},
    {"stats", &Holdings::stats},
};

std::string trouble(const std::string& path, int error)
{
    return path + ": " + std::generic_category().message(error);
}

}  // namespace

// A reader that falls behind must not stall the modem: without O_NONBLOCK its pipe would.
std::unique_ptr<Ledger> Ledger::open(const std::string& path, std::string& error)
{
    Fd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666));
    if (!file.is_open()) {
        error = trouble(path, errno);
        return nullptr;
    }
    return std::unique_ptr<Ledger>(new Ledger(path, std::move(file)));
}

std::string Ledger::write(ClientId client, const Holdings& held) const
{
    std::string line = "client " + std::to_string(client) + ":";
    for (const auto& [name, count] : kColumns) {
        line.append(" ").append(name).append("=").append(std::to_string(held.*count));
    }
    line += '\n';
    const ssize_t written = ::write(file_.get(), line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) return "";
    return trouble(path_, written < 0 ? errno : ENOSPC);
}

}  // namespace rbk::sim

#include "simulator/embedded.h"

#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <system_error>
#include <thread>

#include "simulator/carriers/seqpacket_carrier.h"
#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

// Any thread but the modem's may not have its signals handled here.
class AllSignalsBlocked {
 public:
    AllSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

 private:
    sigset_t before_{};
};

Scenario scenario_or_nothing(const ModemOptions& options, Complaints& complaints)
{
    if (options.scenario && options.scenario->empty()) return empty_scenario();
    try {
        return read_scenario(options.scenario);
    } catch (const ScenarioError& error) {
        complaints.say(error.what());
        return empty_scenario();
    }
}

class ThreadedModem final : public EmbeddedModem {
 public:
    ThreadedModem(const ModemOptions& options, link::LinkSocket modem_end, std::vector<std::string>& lines)
        : complaints_([&lines](const std::string& line) { lines.push_back(line); }),
          modem_(scenario_or_nothing(options, complaints_), options.state, complaints_)
    {
        complaints_.turn_to([](const std::string& line) {
            const std::string whole = "rbk: " + line + "\n";
            [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, whole.data(), whole.size());
        });
        carrier_.serve(modem_);
        carrier_.attach(std::move(modem_end));
        const AllSignalsBlocked in_the_new_thread;
        thread_ = std::thread([this] { modem_.run(); });
    }
    ~ThreadedModem() override
    {
        modem_.stop();
        thread_.join();
    }

 private:
    Complaints complaints_;
    SeqpacketCarrier carrier_;
    Modem modem_;
    std::thread thread_;
};

}  // namespace

std::unique_ptr<EmbeddedModem> start_embedded_modem(const ModemOptions& options, link::LinkSocket& client,
                                                    std::vector<std::string>& complaints)
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return nullptr;
    link::LinkSocket client_end(ends[0], link::LinkSocket::Carrier::seqpacket);
    link::LinkSocket modem_end(ends[1], link::LinkSocket::Carrier::seqpacket);
    try {
        auto modem = std::make_unique<ThreadedModem>(options, std::move(modem_end), complaints);
        client = std::move(client_end);
        return modem;
    } catch (const std::system_error&) {
        return nullptr;
    }
}

}  // namespace rbk::sim

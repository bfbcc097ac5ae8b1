// A phone for commands: an rbk-modem with a ledger on a state of its own, the shell whose waits are shortened, and what can
// be seen of a run from outside.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/home.h"
#include "support/modem_process.h"

namespace rbk::test {

using Lines = std::vector<std::string>;
// What is stored, by its name within the home; times of day stand as T.
using State = std::map<std::string, std::string>;

// A line of the trace.
struct Message {
    bool to_modem = false;
    std::string what;         // "extended 2", "pdc 0x0022", "pdc indication 0x0022", "diag", "diag indication"
    std::string transaction;  // "txn=1"
    std::string bytes;        // hex
};

// How much a run is hurried: a factor for the time-outs of QMI requests, a divisor for all other waits.
struct Pace {
    double timeouts = 1;
    int waits = 100;
};

struct Run {
    int status = -1;  // exit status; 128 and the signal's number
    std::chrono::microseconds took{0};
    double waits_s = 0;  // that it asked for, unhurried
    std::string out, err;
    Lines log;  // "3 text"
    std::vector<Message> trace;
    State state;  // afterwards
};

class Phone {
 public:
    Phone(const std::string& scenario, const State& properties);

    // Runs a command; with a signal it is sent that when `wait` returns. One that hangs is killed.
    Run run(const Lines& words, Pace pace, int signal = 0, const std::function<void()>& wait = {}) const;
    std::vector<Message> trace() const;
    State state() const;
    // Puts back what was stored, behind the modem's back.
    void restore(const State& wanted) const;

    // Another modem in the place of the one that has ended.
    void start(const std::string& scenario);
    // Ends the modem: its exit status. What it has said on standard error, and what each client has left, are whole then.
    int end() { return modem_->end(SIGTERM); }
    std::string errors() const { return modem_->errors(); }
    Lines ledger() const;

 private:
    pid_t start_shell(const Lines& words, Pace pace) const;

    TempDir dir_;
    std::filesystem::path home_ = dir_.path();
    std::unique_ptr<ModemProcess> modem_;
};

}  // namespace rbk::test

// A phone for commands: an rbk-modem with a ledger on a state of its own, the shell whose waits are shortened, and what can
// be seen of a run from outside.
#pragma once

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <regex>

#include "support/home.h"
#include "support/lines.h"
#include "support/modem_process.h"
#include "support/program.h"
#include "support/watched.h"

namespace rbk::test {

// What is stored, by its name within the home; times of day stand as T.
using State = std::map<std::string, std::string>;

// How much a run is hurried: a factor for the time-outs of QMI requests, a divisor for all other waits.
struct Pace {
    double timeouts = 1;
    int waits = 100;
};

struct Run : RunResult {
    std::chrono::microseconds took{0};
    double waits_s = 0;  // that it asked for, unhurried
    Lines log;           // "3 text"
    std::vector<Traced> trace;
    State state;  // afterwards
};

class Phone {
 public:
    Phone(const std::string& scenario, const State& properties)
    {
        for (const auto& [name, value] : properties) write_file(home_ / "properties/kept" / name, value + "\n");
        start(scenario);
    }

    // Runs a command; with a signal it is sent that when `wait` returns. One that hangs is killed.
    Run run(const Lines& words, Pace pace, int signal = 0, const std::function<void()>& wait = {}) const
    {
        for (const char* name : {"log", "trace", "calls"}) std::filesystem::remove(home_ / name);
        RunOptions options{.variables = watched_in(home_)};
        options.variables["RBK_MODEM"] = modem_->address();
        options.variables["RBK_TEST_DIVISOR"] = std::to_string(pace.waits);
        options.variables["RBK_QMI_TIMEOUT_SCALE"] = std::to_string(pace.timeouts);
        Lines command{rbk_path()};
        command.insert(command.end(), words.begin(), words.end());

        const auto begun = std::chrono::steady_clock::now();
        const pid_t shell = test::start(command, options, home_ / "out", home_ / "err");
        if (wait) wait();
        if (signal != 0) ::kill(shell, signal);
        Run run;
        run.status = end_of(shell, std::chrono::seconds(100));
        run.took = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begun);
        run.out = read_file(home_ / "out");
        run.err = read_file(home_ / "err");
        run.log = lines_of(read_file(home_ / "log"));
        run.trace = trace();
        for (const std::string& call : lines_of(read_file(home_ / "calls"))) {
            const double time = std::atof(call.substr(call.find(' ') + 1).c_str());
            run.waits_s += call.starts_with("usleep") ? time / 1e6 : time;
        }
        run.state = state();
        return run;
    }

    std::vector<Traced> trace() const { return trace_in(home_); }

    State state() const
    {
        static const std::regex time("20\\d\\d-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\dZ");
        State state;
        for (const char* folder : {"modem", "properties"}) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(home_ / folder)) {
                if (!entry.is_regular_file()) continue;
                state[entry.path().lexically_relative(home_)] = std::regex_replace(read_file(entry.path()), time, "T");
            }
        }
        return state;
    }

    // Puts back what was stored, behind the modem's back.
    void restore(const State& wanted) const
    {
        const State is = state();
        for (const auto& [name, content] : is) {
            if (!wanted.contains(name)) std::filesystem::remove(home_ / name);
        }
        for (const auto& [name, content] : wanted) {
            if (!is.contains(name) || is.at(name) != content) write_file(home_ / name, content);
        }
    }

    // Another modem in the place of the one that has ended.
    void start(const std::string& scenario)
    {
        modem_.reset();
        std::filesystem::remove(home_ / "ledger");
        write_file(home_ / "scenario.toml", scenario);
        const Lines arguments{"--scenario", home_ / "scenario.toml", "--ledger", home_ / "ledger"};
        modem_ = std::make_unique<ModemProcess>(home_, arguments);
    }

    // Ends the modem: its exit status. What it has said on standard error, and what each client has left, are whole then.
    int end() { return modem_->end(SIGTERM); }
    std::string errors() const { return modem_->errors(); }
    Lines ledger() const
    {
        Lines lines;
        for (const std::string& line : lines_of(read_file(home_ / "ledger"))) {
            const std::string client = "client " + std::to_string(lines.size() + 1) + ": ";
            lines.push_back(line.starts_with(client) ? line.substr(client.size()) : "out of order: " + line);
        }
        return lines;
    }

 private:
    TempDir dir_;
    std::filesystem::path home_ = dir_.path();
    std::unique_ptr<ModemProcess> modem_;
};

}  // namespace rbk::test

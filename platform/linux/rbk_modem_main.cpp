// The simulated modem as a server, on as many carriers as it is given.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "platform/linux/environment.h"
#include "platform/linux/scenario_files.h"
#include "simulator/base/complaints.h"
#include "simulator/base/ledger.h"
#include "simulator/carriers/at_terminal.h"
#include "simulator/carriers/carriers.h"
#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace {

struct Arguments {
    std::vector<std::string> listen;  // carriers
    std::string state;
    std::string scenario;
    std::string at;
    std::string ledger;
    bool list_scenarios = false;
};

void say(const std::string& line)
{
    std::fprintf(stderr, "rbk-modem: %s\n", line.c_str());
}

// ---- Signals: they end the program at any moment of its life ----

constexpr unsigned kLongestEnd_s = 5;  // SIGALRM ends what hangs longer

std::atomic<bool> g_has_made_something = false;  // that its end has to remove
std::atomic<bool> g_asked_to_end = false;
std::atomic<rbk::sim::Modem*> g_modem = nullptr;  // the one that runs

void on_ending_signal(int)
{
    if (!g_has_made_something) ::_exit(0);
    const int error = errno;
    ::alarm(kLongestEnd_s);
    g_asked_to_end = true;
    if (rbk::sim::Modem* modem = g_modem) modem->stop();
    errno = error;
}

// Whatever the starter has blocked or ignored; but a SIGHUP that it ignores stays so, as nohup wants it. Without
// SA_RESTART: a signal ends what waits.
void handle_signals()
{
    struct sigaction ending {};
    ending.sa_handler = on_ending_signal;
    struct sigaction before {};
    ::sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) ::sigaction(SIGHUP, &ending, nullptr);
    ::sigaction(SIGTERM, &ending, nullptr);
    ::sigaction(SIGINT, &ending, nullptr);
    std::signal(SIGALRM, SIG_DFL);
    std::signal(SIGPIPE, SIG_IGN);  // whoever read the messages may be gone
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

int serve(const Arguments& arguments)
{
    namespace sim = rbk::sim;
    std::filesystem::path state = arguments.state;
    std::string problem;
    if (state.empty()) {
        state = rbk::platform::rbk_home(problem);
        if (!problem.empty()) {
            say(problem);
            return 1;
        }
        state /= "modem";
    }
    std::optional<std::filesystem::path> file;
    if (!arguments.scenario.empty()) file = rbk::platform::find_scenario(arguments.scenario, problem);
    if (!problem.empty()) {
        say(problem);
        return 1;
    }
    sim::Scenario scenario = sim::read_scenario(file);

    // What clients connect to first: a start that is refused must not touch the state, which another server may be using.
    g_has_made_something = true;
    std::string error;
    std::vector<std::unique_ptr<sim::Carrier>> carriers;
    for (const std::string& name : arguments.listen) {
        if (error.empty()) carriers.push_back(sim::open_carrier(name, error));
    }
    std::unique_ptr<sim::AtTerminal> terminal;
    if (error.empty() && !arguments.at.empty()) {
        terminal = sim::AtTerminal::open(arguments.at, scenario.at, error);
    }
    std::unique_ptr<sim::Ledger> ledger;
    if (error.empty() && !arguments.ledger.empty()) ledger = sim::Ledger::open(arguments.ledger, error);
    if (!error.empty()) {
        say(error);
        return 1;
    }

    sim::Complaints complaints(say);
    sim::Modem modem(std::move(scenario), state, complaints);
    if (!modem.store().is_usable()) return 1;  // it has said why
    if (ledger != nullptr) modem.keep_ledger(*ledger);
    for (const auto& carrier : carriers) carrier->serve(modem);
    if (terminal != nullptr) terminal->serve(modem.loop());
    g_modem = &modem;
    if (g_asked_to_end) {
        modem.stop();  // asked before there was one
    } else {
        std::puts("ready");
        std::fflush(stdout);
    }
    modem.run();
    g_modem = nullptr;
    terminal.reset();  // before the loop that it is watched by
    for (const std::string& line : modem.faults().unused()) say(line);
    return 0;
}

// Exit status: 0, or 1 once a problem has been told.
int list_scenarios()
{
    const rbk::platform::ScenarioList list = rbk::platform::list_scenarios();
    bool printed = true;
    for (const std::string& line : list.lines) printed = printed && std::puts(line.c_str()) >= 0;
    printed = std::fflush(stdout) == 0 && printed;
    const std::string loss = printed ? "" : std::string("standard output: ") + std::strerror(errno);
    for (const std::string& problem : {list.problem, loss})
        if (!problem.empty()) say(problem);
    return list.problem.empty() && printed ? 0 : 1;
}

constexpr char kHelp[] =
    R"(A carrier is one of
  unix:PATH   a socket: RBK_MODEM=unix:PATH rbk 4 1 0 550
  qrtr        the kernel's router: RBK_MODEM=qrtr rbk 4 1 0 550
  qmux:PATH   a terminal that speaks QMUX, linked at PATH: qmicli -d PATH --device-open-qmi --nas-network-scan
Prints "ready" once clients can connect.
A socket that no living server holds is taken over; the server's own is removed at the end, and so is PATH.lock
beside it, which keeps a second server away. The same holds for a terminal's link: one that an ended server has
left is replaced, and all else that lies there is refused. A folder that others may write to can be kept from you
by their files: take a private one.
A client is a connection over unix:PATH, a socket at one service over qrtr, and a client id over qmux:PATH; how many ids
there can be at the same time is the scenario's to say ([modem] client_ids).
A command on the AT terminal is a line that begins with AT, or that the scenario's [at] names; one that [at] doesn't
name is answered with ERROR. More than 64 KiB of answers that nobody reads are lost.
Clients that come when the descriptors run short are turned away; the hard limit (ulimit -Hn) says how many there
are, up to 65536.
A line of the ledger says what a client had not given back when it ended, or the server did:
client 3: channels=1 efs_reads=0 efs_writes=0 diag_sessions=0 dci_clients=0 dci_streams=0 pdc_lists=0 pdc_loads=0 stats=1
These are logical channels to cards, EFS files read or sent in part, a diag library that is started, DCI clients that
are registered and those of them with streams, and lists of configurations and configurations on their way in part; all
of it ends with the client. stats=1 says that the statistics are on, which they stay. A service that is down keeps nothing.
A fresh state directory is filled from the scenario over a built-in phone; one with content stays as it is.
What is wrong is told on standard error, each line once, and at most a hundred a minute.
Exit status: 0 after a signal, when fault rules that never matched are named on standard error (nohup keeps SIGHUP
away); 1 for wrong arguments, for a bad scenario, whose file and line are named, and for a folder of scenarios, a
socket, a terminal, a ledger, a home or a state directory that can't be had.)";

int run(int argc, char** argv)
{
    handle_signals();
    Arguments arguments;
    CLI::App app("A simulated modem that serves rbk and other clients until SIGTERM, SIGINT or SIGHUP.", "rbk-modem");
    app.footer(kHelp);
    // An empty word is what becomes of a script's variable that isn't set.
    const auto is_given = [](const std::string& value) { return std::string(value.empty() ? "expected a path" : ""); };
    app.add_option("--listen", arguments.listen, "where to listen; several times for several carriers at once")
        ->type_name("CARRIER")
        ->required()
        ->check(rbk::sim::carrier_complaint);
    app.add_option("--state", arguments.state,
                   "directory of NV items, EFS files and all else that lasts;\n"
                   "default: modem/ in the directory that RBK_HOME names,\n"
                   "else in $XDG_STATE_HOME/rbk, else in ~/.local/state/rbk")
        ->type_name("DIR")
        ->check(is_given);
    app.add_option("--scenario", arguments.scenario,
                   "TOML file: content, faults, indications; or the name\nof one that comes with this program")
        ->type_name("FILE")
        ->check(is_given);
    app.add_flag_callback(
        "--list-scenarios",
        [&arguments] {
            arguments.list_scenarios = true;
            throw CLI::Success();  // nothing else is asked for then
        },
        "print the scenarios that come with this program, and end");
    app.add_option("--at", arguments.at, "make a terminal that answers AT commands, with a link to it here")
        ->type_name("PATH")
        ->check(is_given);
    app.add_option("--ledger", arguments.ledger, "append a line for each client when it goes: what it held then")
        ->type_name("FILE")
        ->check(is_given);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (arguments.list_scenarios) return list_scenarios();
        return app.exit(error) == 0 ? 0 : 1;
    }
    std::vector<std::string> places = arguments.listen;
    for (std::string& place : places) {
        if (const std::string path = rbk::sim::carrier_path(place); !path.empty()) place = path;
    }
    if (!arguments.at.empty()) places.push_back(arguments.at);
    std::ranges::sort(places);
    if (const auto twice = std::ranges::adjacent_find(places); twice != places.end()) {
        say(*twice + ": given twice; each carrier and the terminal's link need a place of their own");
        return 1;
    }
    return serve(arguments);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        say(error.what());
        return 1;
    }
}

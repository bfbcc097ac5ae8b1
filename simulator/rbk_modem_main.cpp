// The simulated modem as a server: clients connect over a Unix socket.
#include <sys/epoll.h>
#include <sys/signalfd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>

#include "platform/linux/environment.h"
#include "simulator/at_terminal.h"
#include "simulator/complaints.h"
#include "simulator/listener.h"
#include "simulator/modem.h"
#include "simulator/scenario_reader.h"

namespace {

struct Arguments {
    std::string listen;  // path of the socket
    std::string state;
    std::string scenario;
    std::string at;
};

void say(const std::string& line)
{
    std::fprintf(stderr, "rbk-modem: %s\n", line.c_str());
}

// SIGTERM and SIGINT as a descriptor, for the modem's loop. Before any thread: they inherit the mask.
rbk::sim::Fd signals_to_end()
{
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    ::sigprocmask(SIG_BLOCK, &ending, nullptr);
    return rbk::sim::Fd(::signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
}

int serve(const Arguments& arguments)
{
    namespace sim = rbk::sim;
    std::signal(SIGPIPE, SIG_IGN);  // whoever read the messages may be gone
    const sim::Fd ending = signals_to_end();
    std::filesystem::path state = arguments.state;
    if (state.empty()) {
        std::string problem;
        state = rbk::platform::rbk_home(problem);
        if (!problem.empty()) {
            say(problem);
            return 1;
        }
        state /= "modem";
    }
    std::optional<std::filesystem::path> file;
    if (!arguments.scenario.empty()) file = arguments.scenario;
    sim::Scenario scenario = sim::read_scenario(file);

    // Socket and terminal first: a start that is refused must not touch the state, which another server may be using.
    std::string error;
    const std::unique_ptr<sim::Listener> listener = sim::Listener::open(arguments.listen, error);
    std::unique_ptr<sim::AtTerminal> terminal;
    if (listener != nullptr && !arguments.at.empty()) {
        terminal = sim::AtTerminal::open(arguments.at, scenario.at, error);
    }
    if (!error.empty()) {
        say(error);
        return 1;
    }

    sim::Complaints complaints(say);
    sim::Modem modem(std::move(scenario), state, complaints);
    modem.loop().watch(ending.get(), EPOLLIN, [&](std::uint32_t) { modem.stop(); });
    listener->serve(modem);
    if (terminal != nullptr) terminal->serve(modem.loop());
    std::puts("ready");
    std::fflush(stdout);
    modem.run();
    terminal.reset();  // before the loop that it is watched by
    for (const std::string& line : modem.faults().unused()) say(line);
    return 0;
}

int run(int argc, char** argv)
{
    Arguments arguments;
    CLI::App app("A simulated modem that serves rbk over a Unix socket until SIGTERM or SIGINT.", "rbk-modem");
    app.footer(
        "Prints \"ready\" once clients can connect: RBK_MODEM=unix:PATH rbk 4 1 0 550.\n"
        "A socket that no living server holds is taken over; the server's own is removed at the end.\n"
        "A fresh state directory is filled from the scenario over a built-in phone; one with content stays as it is.\n"
        "Exit status: 0 after a signal, when fault rules that never matched are named on standard error;\n"
        "1 for a bad scenario, whose file and line are named, and for a socket, a terminal or a home directory that\n"
        "can't be had.");
    app.add_option("--listen", arguments.listen, "where to listen")
        ->type_name("unix:PATH")
        ->required()
        ->check([](const std::string& value) {
            return value.rfind("unix:", 0) == 0 && value.size() > 5 ? "" : "expected unix:PATH, not " + value;
        });
    app.add_option("--state", arguments.state,
                   "directory of NV items, EFS files and all else that lasts;\n"
                   "default: modem/ in the directory that RBK_HOME names")
        ->type_name("DIR");
    app.add_option("--scenario", arguments.scenario, "TOML file: content, faults, indications")->type_name("FILE");
    app.add_option("--at", arguments.at, "make a terminal that answers AT commands, with a link to it here")
        ->type_name("PATH");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 1;
    }
    arguments.listen.erase(0, 5);
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

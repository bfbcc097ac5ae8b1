#include "support/modem_process.h"

#include <signal.h>
#include <sys/wait.h>

#include <atomic>
#include <iostream>

#include "support/home.h"
#include "support/program.h"
#include "support/wait_until.h"

namespace rbk::test {

ModemProcess::ModemProcess(const std::filesystem::path& home, const std::vector<std::string>& more_arguments,
                           Start start)
    : address_("unix:" + (home / "modem.sock").string()), errors_(home / "modem.errors")
{
    std::vector<std::string> command{bin_path("rbk-modem"), "--listen", address_, "--state", (home / "modem").string()};
    command.insert(command.end(), more_arguments.begin(), more_arguments.end());
    static std::atomic<int> started = 0;  // several may be on one home
    const std::string out = home / ("modem.out." + std::to_string(++started));
    pid_ = test::start(command, {}, out, errors_);
    siginfo_t ended{};
    const bool in_time = wait_until([&] {
        ::waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT);
        return ended.si_pid != 0 || read_file(out).ends_with('\n');
    });
    is_ready_ = read_file(out) == "ready\n";
    if (!is_ready_ && start == Start::succeeds)
        ADD_FAILURE() << "rbk-modem did not come up" << (in_time ? ": " : " in time: ") << errors();
}

ModemProcess::~ModemProcess()
{
    if (pid_ > 0) end(SIGKILL);
    if (testing::Test::HasFailure()) std::cerr << errors();  // what a sanitizer has found goes with the folder
}

std::string ModemProcess::errors() const
{
    return read_file(errors_);
}

int ModemProcess::end(int signal)
{
    int status = 0;
    ::kill(pid_, signal);
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return status_of(status);
}

}  // namespace rbk::test

#include "support/modem_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>
#include <system_error>

#include "support/home.h"
#include "support/program.h"

extern char** environ;

namespace rbk::test {

constexpr int kStartMs = 30'000;  // a busy machine takes its time, and a case has 120 s

ModemProcess::ModemProcess(const std::filesystem::path& home, const std::vector<std::string>& more_arguments,
                           Start start)
    : address_("unix:" + (home / "modem.sock").string()), errors_(home / "modem.errors")
{
    std::vector<std::string> command{bin_path("rbk-modem"), "--listen", address_, "--state", (home / "modem").string()};
    command.insert(command.end(), more_arguments.begin(), more_arguments.end());
    std::vector<char*> arguments;
    for (std::string& word : command) arguments.push_back(word.data());
    arguments.push_back(nullptr);

    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND,
                                     0600);
    // As from a terminal, also where the tests themselves run under nohup.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t hang_up;
    sigemptyset(&hang_up);
    sigaddset(&hang_up, SIGHUP);
    posix_spawnattr_setsigdefault(&attributes, &hang_up);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    const int failed = ::posix_spawn(&pid_, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    ::close(out[1]);
    char said[64] = {};
    pollfd ready{out[0], POLLIN, 0};
    const bool in_time = failed == 0 && ::poll(&ready, 1, kStartMs) == 1;
    const ssize_t got = in_time ? ::read(out[0], said, sizeof said - 1) : 0;
    ::close(out[0]);
    is_ready_ = got > 0 && std::string(said) == "ready\n";
    if (!is_ready_ && start == Start::succeeds) {
        ADD_FAILURE() << "rbk-modem did not come up" << (in_time ? ": " : " in time: ") << said << errors();
    }
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
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace rbk::test

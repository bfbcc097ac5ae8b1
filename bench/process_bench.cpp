// A whole run of rbk with the embedded modem, against the start and end of a process that links the same libraries.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "bench/home.h"
#include "bench/ratios.h"

namespace {

using rbk::bench::AddRatio;

// Runs a program, its name in front of its arguments, to its end with `out` as its output.
void run(std::vector<const char*> command, int out)
{
    const std::string home_variable = "RBK_HOME=" + rbk::bench::home();
    const char* environment[] = {home_variable.c_str(), nullptr};
    command.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
    pid_t pid;
    const int failed = ::posix_spawn(&pid, command[0], &actions, nullptr, const_cast<char**>(command.data()),
                                     const_cast<char**>(environment));
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failed != 0 || ::waitpid(pid, &status, 0) != pid || status != 0) std::abort();
}

double peak_mib(std::vector<const char*> command)
{
    command.insert(command.begin(), RBK_BIN_DIR "/rbk-peak");
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
    run(std::move(command), ends[1]);
    char kib[32] = {};
    if (::read(ends[0], kib, sizeof kib - 1) <= 0) std::abort();
    for (const int end : ends) ::close(end);
    return std::strtod(kib, nullptr) / 1024;
}

void process(benchmark::State& state, const std::vector<const char*>& command)
{
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    for (auto _ : state) run(command, nowhere);
    ::close(nowhere);
    state.counters["peak_MiB"] = peak_mib(command);
}

void process_empty(benchmark::State& state)
{
    process(state, {RBK_BIN_DIR "/rbk-empty"});
}
BENCHMARK(process_empty)->UseRealTime()->Unit(benchmark::kMillisecond);

void process_nv_read(benchmark::State& state)
{
    process(state, {RBK_BIN_DIR "/rbk", "4", "1", "0", "550"});
}
BENCHMARK(process_nv_read)->UseRealTime()->Unit(benchmark::kMillisecond);

void process_stats(benchmark::State& state)
{
    process(state, {RBK_BIN_DIR "/rbk", "9", "0", "0"});
}
BENCHMARK(process_stats)->UseRealTime()->Unit(benchmark::kMillisecond);

const AddRatio nv_row({"the process rbk 4 1 0 550 / an empty process", "process_nv_read", "process_empty", 2.5});
const AddRatio stats_row({"the process rbk 9 0 0 / an empty process", "process_stats", "process_empty", 3});

}  // namespace

// A whole run of rbk with the embedded modem, against the start and end of a process that links the same libraries.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "bench/home.h"
#include "bench/ratios.h"

namespace {

using rbk::bench::AddRatio;

// Runs a program to its end with its output thrown away, and gives its peak memory in KiB.
long run(const char* program, std::vector<const char*> arguments)
{
    const std::string home_variable = "RBK_HOME=" + rbk::bench::home();
    const char* environment[] = {home_variable.c_str(), nullptr};
    arguments.insert(arguments.begin(), program);
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid;
    const int failed = ::posix_spawn(&pid, program, &actions, nullptr, const_cast<char**>(arguments.data()),
                                     const_cast<char**>(environment));
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) std::abort();
    rusage usage{};
    int status = 0;
    if (::wait4(pid, &status, 0, &usage) != pid || status != 0) std::abort();
    return usage.ru_maxrss;
}

void process(benchmark::State& state, const char* program, const std::vector<const char*>& arguments)
{
    long peak_kib = 0;
    for (auto _ : state) peak_kib = run(program, arguments);
    state.counters["peak_MiB"] = static_cast<double>(peak_kib) / 1024;
}

void process_empty(benchmark::State& state)
{
    process(state, RBK_BIN_DIR "/rbk-empty", {});
}
BENCHMARK(process_empty)->UseRealTime()->Unit(benchmark::kMillisecond);

void process_nv_read(benchmark::State& state)
{
    process(state, RBK_BIN_DIR "/rbk", {"4", "1", "0", "550"});
}
BENCHMARK(process_nv_read)->UseRealTime()->Unit(benchmark::kMillisecond);

void process_stats(benchmark::State& state)
{
    process(state, RBK_BIN_DIR "/rbk", {"9", "0", "0"});
}
BENCHMARK(process_stats)->UseRealTime()->Unit(benchmark::kMillisecond);

const AddRatio nv_row({"the process rbk 4 1 0 550 / an empty process", "process_nv_read", "process_empty", 2.5});
const AddRatio stats_row({"the process rbk 9 0 0 / an empty process", "process_stats", "process_empty", 3});

}  // namespace

// Runs the benchmarks and prints the ratios that matter, with the absolute times beside them.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <vector>

#include "bench/home.h"
#include "bench/ratios.h"

namespace rbk::bench {
namespace {

std::vector<Ratio>& ratios()
{
    static std::vector<Ratio> rows;
    return rows;
}

// Keeps the median of each benchmark's repetitions, in nanoseconds.
class Medians : public benchmark::ConsoleReporter {
 public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred) failed = true;
            if (run.aggregate_name == "median")
                times[run.run_name.function_name] =
                    run.real_accumulated_time * 1e9 / static_cast<double>(run.iterations == 0 ? 1 : run.iterations);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    std::map<std::string, double> times;
    bool failed = false;
};

std::string time_text(double ns)
{
    char text[32];
    if (ns < 1e3)
        std::snprintf(text, sizeof text, "%.1f ns", ns);
    else if (ns < 1e6)
        std::snprintf(text, sizeof text, "%.1f us", ns / 1e3);
    else
        std::snprintf(text, sizeof text, "%.2f ms", ns / 1e6);
    return text;
}

void print(const Ratio& row, const std::map<std::string, double>& times)
{
    const auto time = times.find(row.benchmark);
    const auto floor = times.find(row.floor);
    if (time == times.end() || floor == times.end()) return;  // filtered out
    const bool is_ratio = row.bound == Bound::ratio;
    const double figure = is_ratio ? time->second / floor->second : time->second - floor->second;
    std::printf("%-64s %6.2f %-3s (at most %5.1f) %s   %s against %s\n", row.what.c_str(), figure,
                is_ratio ? "x" : "ns", row.limit, figure <= row.limit ? "met   " : "MISSED",
                time_text(time->second).c_str(), time_text(floor->second).c_str());
}

}  // namespace

const std::string& home()
{
    static const std::string path = [] {
        // In memory where there is such a place. On a disk whose files are replaced in a loop ext4 looks for an inode that
        // wasn't freed in the last seconds, longer for each one that was: no single write costs that.
        for (std::string name : {"/dev/shm/rbk-bench-XXXXXX", "/tmp/rbk-bench-XXXXXX"})
            if (::mkdtemp(name.data()) != nullptr) return name;
        std::abort();
    }();
    return path;
}

std::string modem_address()
{
    return "unix:" + home() + "/modem.sock";
}

AddRatio::AddRatio(const Ratio& ratio)
{
    ratios().push_back(ratio);
}

}  // namespace rbk::bench

int main(int argc, char** argv)
{
    std::vector<char*> arguments(argv, argv + argc);
    char repetitions[] = "--benchmark_repetitions=5";
    char aggregates[] = "--benchmark_report_aggregates_only=true";
    arguments.insert(arguments.begin() + 1, {repetitions, aggregates});
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;

    // Before anything of the platform runs: it reads its environment once.
    ::setenv("RBK_HOME", rbk::bench::home().c_str(), 1);
    ::setenv("RBK_MODEM", rbk::bench::modem_address().c_str(), 1);

    rbk::bench::Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    std::printf("\n");
    for (const rbk::bench::Ratio& row : rbk::bench::ratios()) rbk::bench::print(row, medians.times);
    std::filesystem::remove_all(rbk::bench::home());
    return medians.failed ? 1 : 0;
}

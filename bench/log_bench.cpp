// A message on closed channels against a call that does nothing.
#include <benchmark/benchmark.h>

#include "bench/ratios.h"
#include "velmor_utils_cmn.h"

namespace {

using rbk::bench::AddRatio;
using rbk::bench::Bound;

[[gnu::noinline]] void nothing(int value)
{
    benchmark::DoNotOptimize(value);
}

[[gnu::noinline]] void message(int value)
{
    benchmark::DoNotOptimize(value);
    LOG(4, "value = %d", value);
}

void log_closed(benchmark::State& state)
{
    velmor_hal_get_logcat_print_flag(1);
    velmor_hal_get_shell_print_flag(1);
    velmor_hal_close_print();
    for (auto _ : state) message(7);
}
BENCHMARK(log_closed);

void empty_call(benchmark::State& state)
{
    for (auto _ : state) nothing(7);
}
BENCHMARK(empty_call);

const AddRatio log_row({"LOG on closed channels - an empty call", "log_closed", "empty_call", 2, Bound::nanoseconds});

}  // namespace

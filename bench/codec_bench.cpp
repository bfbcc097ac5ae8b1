// Encode and decode against a memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/ratios.h"
#include "platform/linux/idl_codec.h"
#include "velmor_extend_v01.h"

namespace {

using rbk::bench::AddRatio;

void codec_envelope(benchmark::State& state)
{
    const auto& service = *velmor_extend_get_service_object_internal_v01(1, 1, 6);
    const idl_message& message = *rbk::platform::find_message(service, REQUEST, EXTEND_MSG_ENVELOPE);
    extend_envelope envelope{2, EXTEND_DATA_MAX, 1, {}};
    std::uint8_t wire[567];
    for (auto _ : state) {
        benchmark::DoNotOptimize(rbk::platform::encode(message, &envelope, wire));
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(rbk::platform::decode(message, wire, &envelope));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(codec_envelope);

void memcpy_envelope(benchmark::State& state)
{
    extend_envelope envelope{};
    std::uint8_t wire[567] = {};
    std::uint8_t structure_room[sizeof envelope];
    std::uint8_t wire_room[sizeof wire];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::memcpy(structure_room, &envelope, sizeof envelope));
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(std::memcpy(wire_room, wire, sizeof wire));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(memcpy_envelope);

const AddRatio codec_row({"encode and decode of an envelope / memcpy of its structure and bytes", "codec_envelope",
                          "memcpy_envelope", 6});

}  // namespace

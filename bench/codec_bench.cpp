// Encode and decode against a memcpy of the same bytes.
#include <benchmark/benchmark.h>

#include <cstring>

#include "bench/ratios.h"
#include "platform/linux/idl_codec.h"
#include "velmor_extend_v01.h"
#include "vs_v01.h"

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

// The longest answer of the statistics: ten parameters of 700 bytes.
void decode_stats(benchmark::State& state)
{
    const auto& service = *vs_get_service_object_internal_v01(1, 2, 6);
    const idl_message& message = *rbk::platform::find_message(service, RESPONSE, VS_MSG_GET_STATS_PARAMETER);
    static vs_get_stats_parameter_rsp answer{{}, 1, VS_PARAMETERS_MAX, {}};
    for (vs_stats_parameter& parameter : answer.parameters) parameter.value_len = VS_VALUE_MAX;
    std::uint8_t wire[7115];
    if (rbk::platform::encode(message, &answer, wire) != sizeof wire)
        return state.SkipWithError("not the longest form");
    for (auto _ : state) {
        benchmark::DoNotOptimize(rbk::platform::decode(message, wire, &answer));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(decode_stats);

// What any decoder of that answer has to copy: the result, the flag and the counts, and for each parameter its head and
// its bytes, by the lengths on the wire. The longest form leaves nothing to zero.
void copies_stats(benchmark::State& state)
{
    std::uint8_t wire[7115] = {};
    for (std::size_t i = 0; i < VS_PARAMETERS_MAX; ++i) wire[15 + 710 * i + 8] = VS_VALUE_MAX & 0xFF;
    for (std::size_t i = 0; i < VS_PARAMETERS_MAX; ++i) wire[15 + 710 * i + 9] = VS_VALUE_MAX >> 8;
    static vs_get_stats_parameter_rsp answer;
    for (auto _ : state) {
        const std::uint8_t* from = wire + 3;
        std::memcpy(&answer.resp, from, sizeof answer.resp);
        from += sizeof answer.resp + 3;
        answer.parameters_valid = 1;
        answer.parameters_len = *from++;
        for (vs_stats_parameter& parameter : answer.parameters) {
            std::memcpy(&parameter, from, 8);
            parameter.value_len = rbk::load_le<std::uint16_t>(from + 8);
            std::memcpy(parameter.value, from + 10, parameter.value_len);
            from += 10 + parameter.value_len;
        }
        benchmark::ClobberMemory();
    }
}
BENCHMARK(copies_stats);

const AddRatio stats_row({"decode of ten parameters of 700 bytes / its copies alone", "decode_stats", "copies_stats",
                          2.5});

}  // namespace

// The unpackers, each on bytes of the modem: the parser of a diag packet, the views of the statistics, and the reports of
// the debug record.
//
// An input is one byte for the unpacker, and the bytes.
#include <array>

#include "fuzz/device.h"
#include "modem_hydra_mgr.h"
#include "modem_stats_unpk.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_v01.h"
#include "velmor_rbk_groups.h"
#include "vs_v01.h"

using namespace rbk;

namespace {

constexpr std::size_t kPacket = 48;  // bytes of the longest layout

void parse_packet(fuzz::Input& input)
{
    g_unpk_print_flag = input.byte() & 1;
    const ByteView packet = input.take(kPacket);
    Bytes whole(kPacket + MODEM_STATS_UNPK_SLACK);
    std::copy(packet.begin(), packet.end(), whole.begin());
    velmor_test_modem_stats_parsing_process_do(kPacket, whole.data());
}

void run_group(int (*group)(int argc, char* argv[]), std::array<const char*, 4> words)
{
    std::array<std::string, 4> copies;
    char* arguments[5] = {};
    for (std::size_t i = 0; i < words.size(); ++i) {
        copies[i] = words[i];
        arguments[i] = copies[i].data();
    }
    group(static_cast<int>(words.size()), arguments);
}

// The answer carries what was asked for, with the input's bytes as its value.
std::int32_t tell_sample(std::uint32_t message, const void* request, void* response, ByteView value)
{
    if (message != VS_MSG_GET_STATS_PARAMETER) return 0;
    const auto& asked = *static_cast<const vs_get_stats_parameter_req*>(request);
    auto& told = *static_cast<vs_get_stats_parameter_rsp*>(response);
    told.parameters_valid = 1;
    told.parameters_len = 1;
    told.parameters[0].id = asked.parameters[0].id;
    told.parameters[0].sub = asked.sub;
    told.parameters[0].value_len = static_cast<std::uint32_t>(value.size());
    std::copy(value.begin(),
              value.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(value.size(), VS_VALUE_MAX)),
              told.parameters[0].value);
    return 0;
}

// The record of a common request, and another one for what is asked next.
std::int32_t tell_record(void* response, fuzz::Input& input)
{
    auto& told = *static_cast<extend_envelope*>(response);
    told.data_valid = 1;
    told.data_len = sizeof(common_rsp);
    const ByteView payload = input.block();
    std::copy(payload.begin(),
              payload.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(payload.size(), EXTEND_DATA_MAX - 8)),
              told.data + 8);
    return 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr const char* kViews[] = {"0", "1", "6", "7", "8", "9", "10", "11", "12", "20", "21", "30", "31"};
    fuzz::Input input(data, size);
    fuzz::Device& device = fuzz::Device::get();
    device.start(input);
    const std::uint8_t unpacker = input.byte() % (3 + std::size(kViews));
    if (unpacker == 0) {
        parse_packet(input);
    } else if (unpacker < 3) {
        device.answer_with(
            [&](std::uint32_t, std::uint32_t, const void*, void* response) { return tell_record(response, input); });
        run_group(velmor_test_modem_stats_do, {"rbk", "7", "1", unpacker == 1 ? "0" : "1"});
    } else {
        // The transmit power asks twice, and makes of the second answer what the first one says.
        device.answer_with([&](std::uint32_t, std::uint32_t message, const void* request, void* response) {
            return tell_sample(message, request, response,
                               message == VS_MSG_GET_STATS_PARAMETER ? input.block() : ByteView{});
        });
        run_group(velmor_test_qmi_modem_stats_do, {"rbk", "9", kViews[unpacker - 3], "0"});
    }
    return 0;
}

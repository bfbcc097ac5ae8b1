// Packets of any number and length, whole and joined, to a raw diag send of each mode.
//
// An input is one byte for the mode, one for the time-out, and what the modem does.
#include "fuzz/device.h"
#include "velmor_diag_send.h"

using namespace rbk;

namespace {

constexpr std::uint8_t kRequest[] = {0x7C, 0x01, 0xFF};

std::int32_t send_with_result(bool dci, std::uint32_t wait_time_ms, std::int32_t room)
{
    // Of its own size, so that a byte too many is seen.
    Bytes reply(static_cast<std::size_t>(room));
    std::int32_t reply_len = room;
    return (dci ? velmor_diag_cmd_send_with_result_by_dci_mode : velmor_diag_cmd_send_with_result_by_callback_mode)(
        kRequest, sizeof kRequest, wait_time_ms, reply.data(), &reply_len);
}

// Takes away what an earlier send has left. The length of an answer is never set back: it is this one's from here on,
// once no bytes of an earlier one stand before it.
void settle(fuzz::Device& device)
{
    static constexpr std::uint8_t kShortAnswer[] = {0, 0, 0, 0, 0, 0, 0x82, 0x7C};
    for (int i = 0; i < 2; ++i) {
        fuzz::Input input(kShortAnswer, sizeof kShortAnswer);
        device.start(input);
        send_with_result(true, 100, 1);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Device& device = fuzz::Device::get();
    settle(device);
    fuzz::Input input(data, size);
    device.start(input);
    const std::uint8_t mode = input.byte();
    const std::uint32_t wait_time_ms = input.byte() * 20;
    const std::int32_t room = 1 + input.byte() * 128;
    switch (mode % 4) {
    case 0: send_with_result(false, wait_time_ms, room); break;
    case 1: send_with_result(true, wait_time_ms, room); break;
    case 2: velmor_diag_cmd_send_without_result_by_callback_mode(kRequest, sizeof kRequest); break;
    default: velmor_diag_cmd_send_without_result_by_dci_mode(kRequest, sizeof kRequest); break;
    }
    return 0;
}

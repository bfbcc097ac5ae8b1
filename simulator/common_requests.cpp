#include "simulator/common_requests.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string>
#include <string_view>

#include "simulator/efs.h"
#include "simulator/modem.h"

namespace rbk::sim {
namespace {

// Request: command at 0, its payload from 8. Answer: the command again at 0, the result at 4, the answer's bytes from 8.
constexpr std::size_t kPayload = 8;

// The typed form of command 2, in both directions.
constexpr std::uint32_t kTyped = 2;
constexpr std::size_t kType = 8;
constexpr std::size_t kLength = 12;
constexpr std::size_t kValue = 16;
constexpr std::size_t kValueRoom = 496;

// Files of the state directory that tell of what was asked for last, for people and scripts.
constexpr std::string_view kRestartMark = "marks/restart";
constexpr std::string_view kNvSyncMark = "marks/nv_sync";
constexpr std::string_view kFullDump = "dump/full_dump.txt";

// One command's work. `request` holds its payload or value; the answer's bytes go into `answer`, and their number into
// `answer_len`, which only the typed form sends.
struct CommandCall {
    Modem& modem;
    ByteView request;
    std::span<std::uint8_t> answer;
    std::uint32_t answer_len = 0;
};

struct Command {
    std::uint32_t cmd;
    std::uint32_t type;  // of the typed form
    std::int32_t (*run)(CommandCall& call);
};

std::string utc_now()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    ::gmtime_r(&now.tv_sec, &parts);
    char text[40];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

std::int32_t store_text(Modem& modem, std::string_view name, const std::string& text)
{
    return modem.store().write(name, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

// "type 4096 at 2026-01-31T10:20:30Z": the payload's word says why.
std::string restart_line(const CommandCall& call)
{
    return "type " + std::to_string(peek_le<std::uint32_t>(call.request, 0)) + " at " + utc_now() + "\n";
}

std::int32_t restart_subsystem(CommandCall& call)
{
    const std::int32_t error = store_text(call.modem, kRestartMark, restart_line(call));
    if (error == 0) call.modem.restart();
    return error;
}

std::int32_t sync_nv(CommandCall& call)
{
    // Each value is stored before it is acknowledged: there is nothing left to write but that somebody asked.
    return store_text(call.modem, kNvSyncMark, "at " + utc_now() + "\n");
}

std::int32_t dump_and_restart(CommandCall& call)
{
    const std::int32_t error = store_text(call.modem, kFullDump, "full dump\n" + restart_line(call));
    return error != 0 ? error : restart_subsystem(call);
}

// Stores a test's values in its file on subscription 0. The file's layout is the modem's own: the words as they came.
std::int32_t store_test(CommandCall& call, std::string_view path, std::size_t size)
{
    Bytes bytes(size);
    std::copy_n(call.request.begin(), std::min(size, call.request.size()), bytes.begin());
    const auto place = EfsPlace::parse(0, {reinterpret_cast<const std::uint8_t*>(path.data()), path.size()});
    return call.modem.store().write_in(place->tree(), place->parts, bytes);
}

// Payload: a count, and that many values of 4 bytes, of which there is room for 50.
std::int32_t set_gpio_test(CommandCall& call)
{
    const std::uint32_t count = std::min(peek_le<std::uint32_t>(call.request, 0), 50U);
    return store_test(call, "/nv/item_files/modem/velmor/rf_ant_port_config", 4 + 4 * std::size_t{count});
}

// Payload: antenna and system of 4 bytes each, the bands of 8.
std::int32_t set_tx_test(CommandCall& call)
{
    return store_test(call, "/nv/item_files/modem/antenna/ant_tx_config", 16);
}

constexpr Command kCommands[] = {
    {0, 0, set_gpio_test},
    {1, 0, set_tx_test},
    {kTyped, 31, restart_subsystem},
    {kTyped, 35, sync_nv},
    {kTyped, 99, dump_and_restart},
};

std::int32_t run_command(std::uint32_t cmd, std::uint32_t type, CommandCall& call)
{
    for (const Command& command : kCommands) {
        if (command.cmd == cmd && command.type == type) return command.run(call);
    }
    return -EOPNOTSUPP;
}

}  // namespace

void run_common_request(Modem& modem, ByteView request, std::span<std::uint8_t> answer)
{
    const auto cmd = peek_le<std::uint32_t>(request, 0);
    const bool typed = cmd == kTyped;
    const auto type = typed ? peek_le<std::uint32_t>(request, kType) : 0;
    const auto length = typed ? peek_le<std::uint32_t>(request, kLength) : 0;
    store_le(&answer[0], cmd);
    if (length > kValueRoom) {
        store_le(&answer[kCommonResultAt], -EINVAL);
        return;
    }
    const std::size_t from = std::min(typed ? kValue : kPayload, request.size());
    const std::size_t left = request.size() - from;
    CommandCall call{modem, request.subspan(from, typed ? std::min<std::size_t>(length, left) : left),
                     answer.subspan(typed ? kValue : kPayload)};
    store_le(&answer[kCommonResultAt], run_command(cmd, type, call));
    if (!typed) return;
    store_le(&answer[kType], type);
    store_le(&answer[kLength], call.answer_len);
}

}  // namespace rbk::sim

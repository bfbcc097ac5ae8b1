#include "simulator/services/common_requests.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <string>
#include <string_view>

#include "simulator/modem/modem.h"
#include "simulator/services/cards.h"
#include "simulator/services/debug_info.h"
#include "simulator/state/efs.h"

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
constexpr std::string_view kHotswapMark = "marks/hotswap";
constexpr std::string_view kFullDump = "dump/full_dump.txt";

// One command's work. `request` holds its payload or value; the answer's bytes go into `answer`, and their number into
// `answer_len`, which only the typed form sends.
struct CommandCall {
    Modem& modem;
    const DebugInfo& debug_info;
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

// The statistics engine's record as it is.
std::int32_t tell_debug_record(CommandCall& call)
{
    std::ranges::copy(call.debug_info.record, call.answer.begin());
    return 0;
}

// A count and the numbers, 2 bytes each.
std::int32_t list_logs_to_upgrade(CommandCall& call)
{
    const std::vector<std::uint16_t>& logs = call.debug_info.logs;
    store_le(&call.answer[0], static_cast<std::uint16_t>(logs.size()));
    for (std::size_t i = 0; i < logs.size(); ++i) store_le(&call.answer[2 + 2 * i], logs[i]);
    return 0;
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

// ---- Cards: subscription 0 has slot 1, and so on ----

std::uint32_t word_of(const CommandCall& call, std::size_t index)
{
    return peek_le<std::uint32_t>(call.request, 4 * index);
}

std::int32_t answer_word(CommandCall& call, std::uint32_t word)
{
    store_le(&call.answer[0], word);
    call.answer_len = 4;
    return 0;
}

bool is_present(const Cards& cards, std::uint8_t slot)
{
    return cards.state(slot) == CardState::present;
}

// The slot that the first word asks for; 0 when there is none.
std::uint8_t slot_of(const CommandCall& call, const Cards& cards)
{
    const std::uint32_t sub = word_of(call, 0);
    return call.request.size() >= 4 && sub < cards.slot_count() ? static_cast<std::uint8_t>(sub + 1) : std::uint8_t{0};
}

// Whether there is a card in any slot.
std::int32_t query_cards(CommandCall& call)
{
    const Cards cards(call.modem.store());
    const std::uint8_t count = cards.slot_count();
    std::uint32_t present = 0;
    for (std::uint8_t slot = 1; slot <= count; ++slot) present |= is_present(cards, slot) ? 1 : 0;
    return answer_word(call, present);
}

std::int32_t get_card(CommandCall& call)
{
    const Cards cards(call.modem.store());
    const std::uint8_t slot = slot_of(call, cards);
    return slot == 0 ? -EINVAL : answer_word(call, is_present(cards, slot) ? 1 : 0);
}

// Words: subscription, mode, level of the line that tells of a card. Either mode drives the line.
std::int32_t set_card(CommandCall& call)
{
    Cards cards(call.modem.store());
    const std::uint8_t slot = slot_of(call, cards);
    if (slot == 0 || call.request.size() < 12) return -EINVAL;
    return cards.set_state(slot, word_of(call, 2) != 0 ? CardState::present : CardState::absent);
}

// 1 for a phone of one card, 2 for one of several.
std::int32_t query_card_type(CommandCall& call)
{
    const Cards cards(call.modem.store());
    return answer_word(call, std::min<std::uint32_t>(cards.slot_count(), 2));
}

// Words: on or off, seconds after a push, seconds after a pull, one that no one explains. A test that is on is a mark.
std::int32_t test_hotswap(CommandCall& call)
{
    if (word_of(call, 0) == 0) {
        const int error = call.modem.store().remove(kHotswapMark);
        return error == -ENOENT ? 0 : error;
    }
    if (call.request.size() < 16) return -EINVAL;
    return store_text(call.modem, kHotswapMark,
                      "push " + std::to_string(word_of(call, 1)) + " s, pull " + std::to_string(word_of(call, 2)) +
                          " s, option " + std::to_string(word_of(call, 3)) + "\n");
}

constexpr Command kCommands[] = {
    {0, 0, set_gpio_test},           {1, 0, set_tx_test},    {20, 0, tell_debug_record}, {27, 0, list_logs_to_upgrade},
    {kTyped, 31, restart_subsystem}, {kTyped, 35, sync_nv},  {kTyped, 39, query_cards},  {kTyped, 55, get_card},
    {kTyped, 56, query_card_type},   {kTyped, 57, set_card}, {kTyped, 80, test_hotswap}, {kTyped, 99, dump_and_restart},
};

std::int32_t run_command(std::uint32_t cmd, std::uint32_t type, CommandCall& call)
{
    for (const Command& command : kCommands) {
        if (command.cmd == cmd && command.type == type) return command.run(call);
    }
    return -EOPNOTSUPP;
}

}  // namespace

void run_common_request(Modem& modem, const DebugInfo& debug_info, ByteView request, std::span<std::uint8_t> answer)
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
    CommandCall call{modem, debug_info, request.subspan(from, typed ? std::min<std::size_t>(length, left) : left),
                     answer.subspan(typed ? kValue : kPayload)};
    store_le(&answer[kCommonResultAt], run_command(cmd, type, call));
    if (!typed) return;
    store_le(&answer[kType], type);
    store_le(&answer[kLength], call.answer_len);
}

}  // namespace rbk::sim

#include "simulator/services/cards.h"

#include <algorithm>
#include <charconv>
#include <utility>
#include <vector>

#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

// ---- Files ----

// Values of a slot, each a file of its own. Those for people's eyes are words; one that is missing has its first value.
constexpr std::string_view kState = "state";                 // absent, present, error
constexpr std::string_view kPower = "power";                 // up, down
constexpr std::string_view kSide = "side";                   // physical, esim
constexpr std::string_view kEid = "eid";                     // 16 bytes; no file: no eUICC
constexpr std::string_view kEidAfter = "eid_after";          // requests that go without the EID after each start
constexpr std::string_view kEidWaits = "eid_waits";          // those that are left
constexpr std::string_view kChannelsHeld = "channels_held";  // logical channels that others have open
constexpr std::string_view kProfiles = "profiles";           // 10 bytes each
constexpr std::string_view kEsimSwitch = "efs/1/nv/item_files/modem/uim/uimdrv/esim_enable";

constexpr std::string_view kStateWords[] = {"absent", "present", "error"};

std::string place(std::uint8_t slot, std::string_view name)
{
    return "card/" + std::to_string(slot) + "/" + std::string(name);
}

ByteView as_bytes(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The file of a command's answer is named by the command in hex. A long name goes on in folders, whose names no file has.
std::string answer_place(std::uint8_t slot, ByteView command)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    constexpr std::size_t kBytesInName = 100;
    std::string name = place(slot, "apdu/");
    for (std::size_t i = 0; i < command.size(); ++i) {
        if (i > 0 && i % kBytesInName == 0) name += "+/";
        name += kDigits[command[i] >> 4];
        name += kDigits[command[i] & 15];
    }
    return name;
}

unsigned number_in(std::string_view text)
{
    unsigned number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// ---- The scenario's tables ----

// One profile, as a phone that has been used for a while has.
constexpr std::uint8_t kFactoryProfile[] = {0x98, 0x94, 0x20, 0x10, 0x32, 0x54, 0x76, 0x98, 0x10, 0xF2};
constexpr std::int64_t kEidAfterDefault = 3;

struct Card {
    CardState state = CardState::present;
    Bytes eid;  // empty: no eUICC
    std::int64_t eid_after = kEidAfterDefault;
    std::int64_t channels_held = 0;
    std::vector<std::pair<Bytes, Bytes>> answers;  // command, answer
};

class CardSettings final : public ServiceSettings {
 public:
    bool fill(StateStore& fresh) const override;
    std::vector<Card> cards;
};

bool fill_card(StateStore& fresh, std::uint8_t slot, const Card& card)
{
    const auto write = [&](std::string_view name, ByteView bytes) {
        return fresh.write(place(slot, name), bytes) == 0;
    };
    bool written = write(kState, as_bytes(kStateWords[static_cast<std::size_t>(card.state)]));
    if (!card.eid.empty()) {
        written = written && write(kEid, card.eid) && write(kEidAfter, as_bytes(std::to_string(card.eid_after))) &&
                  write(kProfiles, kFactoryProfile);
    }
    if (card.channels_held > 0) written = written && write(kChannelsHeld, as_bytes(std::to_string(card.channels_held)));
    for (const auto& [command, answer] : card.answers) {
        written = written && fresh.write(answer_place(slot, command), answer) == 0;
    }
    return written;
}

bool CardSettings::fill(StateStore& fresh) const
{
    std::uint8_t slot = 0;
    return std::all_of(cards.begin(), cards.end(), [&](const Card& card) { return fill_card(fresh, ++slot, card); });
}

// Hex text as the tables' keys are.
Bytes command_of(const std::string& key, const ScenarioNode& value)
{
    ScenarioNode text{value.where, key};
    Bytes command = text.bytes(key, kLongestApdu);
    if (command.empty()) value.refuse(key, "a command of 1 byte or more");
    return command;
}

Card read_card(const ScenarioNode& node)
{
    TableReader table("[[card]]", node);
    Card card;
    if (const ScenarioNode* state = table.find("state")) {
        const auto word = std::find(std::begin(kStateWords), std::end(kStateWords), state->text("state"));
        if (word == std::end(kStateWords)) state->refuse("state", "absent, present or error");
        card.state = static_cast<CardState>(word - std::begin(kStateWords));
    }
    if (const auto eid = table.bytes("eid", Eid{}.size())) {
        if (eid->size() != Eid{}.size()) table.refuse("an eid of 16 bytes");
        card.eid = *eid;
    }
    card.eid_after = table.number("eid_after", 0, UINT16_MAX).value_or(card.eid_after);
    card.channels_held = table.number("channels_held", 0, kLastChannel).value_or(card.channels_held);
    if (const ScenarioNode* apdu = table.find("apdu")) {
        EachOnce<std::string> once;
        for (const auto& [key, value] : apdu->table("[card.apdu]")) {
            const Bytes command = command_of(key, value);
            once.add(value, key, {command.begin(), command.end()});
            card.answers.emplace_back(command, value.bytes(key, kLongestApdu));
        }
    }
    table.finish();
    return card;
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_card_settings(TableReader* file)
{
    auto settings = std::make_unique<CardSettings>();
    const ScenarioNode* list = file == nullptr ? nullptr : file->find("card");
    if (list == nullptr) {
        settings->cards.resize(2);
        settings->cards[1].eid = {0x89, 0x04, 0x90, 0x32, 0x12, 0x34, 0x51, 0x23,
                                  0x45, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x35};
        return settings;
    }
    for (const ScenarioNode& node : list->list("[[card]]")) {
        if (settings->cards.size() == kMostSlots) {
            node.refuse("[[card]]", "at most " + std::to_string(kMostSlots) + " slots");
        }
        settings->cards.push_back(read_card(node));
    }
    return settings;
}

// ---- What the modem remembers ----

// A file that people put in may end in a line feed.
std::string Cards::word(std::uint8_t slot, std::string_view name) const
{
    const Bytes bytes = store_.read(place(slot, name)).bytes;
    const auto end = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte <= ' '; });
    return {bytes.begin(), end};
}

int Cards::set_word(std::uint8_t slot, std::string_view name, std::string_view word)
{
    return store_.write(place(slot, name), as_bytes(word));
}

std::uint8_t Cards::slot_count() const
{
    std::uint8_t count = 0;
    while (count < kMostSlots && store_.read(place(static_cast<std::uint8_t>(count + 1), kState)).error == 0) ++count;
    return count;
}

CardState Cards::state(std::uint8_t slot) const
{
    const auto found = std::find(std::begin(kStateWords), std::end(kStateWords), word(slot, kState));
    return found == std::end(kStateWords) ? CardState::error : static_cast<CardState>(found - std::begin(kStateWords));
}

int Cards::set_state(std::uint8_t slot, CardState state)
{
    return set_word(slot, kState, kStateWords[static_cast<std::size_t>(state)]);
}

bool Cards::has_power(std::uint8_t slot) const
{
    return word(slot, kPower) != "down";
}

int Cards::power_down(std::uint8_t slot)
{
    return set_word(slot, kPower, "down");
}

int Cards::power_up(std::uint8_t slot)
{
    if (has_euicc(slot)) {
        const StoredValue esim_enable = store_.read(kEsimSwitch);
        const bool esim = esim_enable.error == 0 ? peek_le<std::uint32_t>(esim_enable.bytes, 0) != 0 : on_esim(slot);
        if (const int error = choose_side(slot, esim)) return error;
    }
    return set_word(slot, kPower, "up");
}

bool Cards::on_esim(std::uint8_t slot) const
{
    return word(slot, kSide) == "esim";
}

int Cards::choose_side(std::uint8_t slot, bool esim)
{
    if (const int error = set_word(slot, kEidWaits, word(slot, kEidAfter))) return error;
    return set_word(slot, kSide, esim ? "esim" : "physical");
}

std::optional<Eid> Cards::eid(std::uint8_t slot) const
{
    const StoredValue value = store_.read(place(slot, kEid));
    if (value.error != 0) return std::nullopt;
    Eid eid{};
    std::copy_n(value.bytes.begin(), std::min(eid.size(), value.bytes.size()), eid.begin());
    return eid;
}

bool Cards::eid_is_due(std::uint8_t slot)
{
    const unsigned left = number_in(word(slot, kEidWaits));
    if (left > 0) set_word(slot, kEidWaits, std::to_string(left - 1));
    return left == 0;
}

std::uint8_t Cards::channels_held(std::uint8_t slot) const
{
    return static_cast<std::uint8_t>(std::min<unsigned>(number_in(word(slot, kChannelsHeld)), kLastChannel));
}

Bytes Cards::profiles(std::uint8_t slot) const
{
    return store_.read(place(slot, kProfiles)).bytes;
}

int Cards::delete_profiles(std::uint8_t slot)
{
    return store_.remove(place(slot, kProfiles));
}

std::optional<Bytes> Cards::set_answer(std::uint8_t slot, ByteView command) const
{
    StoredValue answer = store_.read(answer_place(slot, command));
    return answer.error == 0 ? std::optional(std::move(answer.bytes)) : std::nullopt;
}

}  // namespace rbk::sim

#include "simulator/services/uim_service.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include "simulator/modem/modem.h"
#include "simulator/services/cards.h"

namespace rbk::sim {
namespace {

enum UimTlv : std::uint8_t {
    kSlot = 0x01,  // mandatory in all messages but the card status and the SIM types
    kSimTypes = 0x01,
    kApdu = 0x02,
    // Of responses.
    kChannel = 0x10,
    kCardResult = 0x11,
    kSelectResponse = 0x12,
};

// ---- What a card status says ----

enum CardError : std::uint8_t { kNoError = 0, kPoweredDown = 1 };
constexpr std::uint16_t kNoApplication = 0xFFFF;
constexpr std::uint8_t kExtendedStatus = 0x15;

// The one application of a card that has a subscription: USIM, ready, its PIN disabled.
// clang-format off
constexpr std::uint8_t kUsim[] = {
    2, 7, 2, 11, 0, 0,  // type, state, personalisation: state, feature, its two retries
    16, 0xA0, 0, 0, 0, 0x87, 0x10, 0x02, 0xFF, 0x49, 0xFF, 0xFF, 0x89, 0x02, 0x00, 0x00, 0xFF,  // AID
    0,                  // no universal PIN
    3, 3, 10,           // PIN 1: disabled, retries of PIN and PUK
    1, 3, 10,           // PIN 2: not verified
};
// clang-format on

// ---- What a card says ----

constexpr std::uint8_t kIsdR[] = {0xA0, 0x00, 0x00, 0x05, 0x59, 0x10, 0x10, 0xFF,
                                  0xFF, 0xFF, 0xFF, 0x89, 0x00, 0x00, 0x01, 0x00};
// STORE DATA with the function that resets the eUICC's memory, and its answers: deleted, nothing to delete.
constexpr std::uint8_t kReset[] = {0x80, 0xE2, 0x91, 0x00, 0x07, 0xBF, 0x34, 0x04, 0x82, 0x02, 0x05, 0xE0, 0x00};
constexpr std::uint8_t kDeleted[] = {0xBF, 0x34, 0x03, 0x80, 0x01, 0x00, 0x90, 0x00};
constexpr std::uint8_t kNothingToDelete[] = {0xBF, 0x34, 0x03, 0x80, 0x01, 0x01, 0x90, 0x00};

using StatusWord = std::array<std::uint8_t, 2>;
constexpr StatusWord kDone{0x90, 0x00};
constexpr StatusWord kNoSuchApplication{0x6A, 0x82};
constexpr StatusWord kNoChannelLeft{0x6A, 0x81};
constexpr StatusWord kUnknownInstruction{0x6D, 0x00};

enum SimType : std::uint32_t { kPhysicalSim = 1, kEsim = 3 };

// A counted array of bytes; nothing when the count says more, or less, than there is.
template <typename Count>
std::optional<ByteView> counted(ByteView value)
{
    if (value.size() < sizeof(Count) || load_le<Count>(value.data()) != value.size() - sizeof(Count)) {
        return std::nullopt;
    }
    return value.subspan(sizeof(Count));
}

template <typename Count>
Bytes with_count(ByteView bytes)
{
    Bytes value(sizeof(Count) + bytes.size());
    store_le(value.data(), static_cast<Count>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), value.begin() + sizeof(Count));
    return value;
}

class UimService final : public Service {
 public:
    explicit UimService(Modem& modem) : Service({"uim", 11}, modem), cards_(modem.store()) {}

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void tell_holdings(ClientId client, Holdings& held) const override
    {
        held.channels += static_cast<std::size_t>(
            std::ranges::count_if(channels_, [&](const auto& open) { return open.second == client; }));
    }
    // What a client has left open is closed for it.
    void client_gone(ClientId client) override
    {
        std::erase_if(channels_, [&](const auto& open) { return open.second == client; });
    }

    void pull_card(std::uint8_t slot) override
    {
        if (slot <= cards_.slot_count()) cards_.set_state(slot, CardState::absent);  // the store says when it can't
    }

    void card_status(Call& call);
    void power_down(Call& call);
    void power_up(Call& call);
    void send_apdu(Call& call);
    void logical_channel(Call& call);
    void open_channel(Call& call);
    void get_eid(Call& call);
    void set_sim_types(Call& call);

    std::uint8_t slot_of(Call& call) const;
    std::uint8_t euicc_slot_of(Call& call) const;
    bool stands_on_euicc(std::uint8_t slot) const;
    CardState state_of(std::uint8_t slot) const;
    bool has_application(std::uint8_t slot) const;
    std::uint16_t application_index(std::uint8_t slot) const;
    void append_card(std::uint8_t slot, Bytes& status) const;
    void close_channels(std::uint8_t slot);
    void select(Call& call, std::uint8_t slot, ByteView aid_value);
    Bytes answer_of_card(Call& call, std::uint8_t slot, ByteView command);

    static const Message<UimService> kMessages[8];
    Cards cards_;
    std::map<std::pair<std::uint8_t, std::uint8_t>, ClientId> channels_;  // by slot and channel: who opened it
};

constexpr Message<UimService> UimService::kMessages[8] = {
    {0x002F, &UimService::card_status},
    {0x0030, &UimService::power_down, {{{kSlot, 1}}}},
    {0x0031, &UimService::power_up, {{{kSlot, 1}}}},
    {0x003B, &UimService::send_apdu, {{{kSlot, 1}, {kApdu}}}},
    {0x003F, &UimService::logical_channel, {{{kSlot, 1}}}},
    {0x0042, &UimService::open_channel, {{{kSlot, 1}}}},
    {0x0065, &UimService::get_eid, {{{kSlot, 1}}}},
    {0x007A, &UimService::set_sim_types, {{{kSimTypes}}}},
};

// ---- Slots ----

// 0, and the call fails, for a slot that isn't there.
std::uint8_t UimService::slot_of(Call& call) const
{
    const auto slot = call.number<std::uint8_t>(kSlot);
    if (slot >= 1 && slot <= cards_.slot_count()) return slot;
    call.fail(QmiError::invalid_argument);
    return 0;
}

bool UimService::stands_on_euicc(std::uint8_t slot) const
{
    return cards_.on_esim(slot) && cards_.has_euicc(slot);
}

// 0 and a failed call also for a slot whose eUICC isn't there, has no power, or stands aside for the physical card.
std::uint8_t UimService::euicc_slot_of(Call& call) const
{
    const std::uint8_t slot = slot_of(call);
    if (slot == 0 || (stands_on_euicc(slot) && cards_.has_power(slot))) return slot;
    call.fail(QmiError::not_in_this_state);
    return 0;
}

void UimService::close_channels(std::uint8_t slot)
{
    std::erase_if(channels_, [&](const auto& open) { return open.first.first == slot; });
}

void UimService::power_down(Call& call)
{
    const std::uint8_t slot = slot_of(call);
    if (slot == 0) return;
    close_channels(slot);
    if (cards_.power_down(slot) != 0) call.fail(QmiError::internal);
}

void UimService::power_up(Call& call)
{
    const std::uint8_t slot = slot_of(call);
    if (slot == 0) return;
    close_channels(slot);
    if (cards_.power_up(slot) != 0) call.fail(QmiError::internal);
}

// A type for each slot, in order. All of them are looked at before the first one counts.
void UimService::set_sim_types(Call& call)
{
    const ByteView value = *call.find(kSimTypes);
    const std::size_t count = peek_le<std::uint8_t>(value, 0);
    if (value.size() != 1 + count * 4) return call.fail(QmiError::malformed_message);
    if (count > cards_.slot_count()) return call.fail(QmiError::invalid_argument);
    const auto type_of = [&](std::size_t index) { return peek_le<std::uint32_t>(value, 1 + index * 4); };
    for (std::size_t i = 0; i < count; ++i) {
        const bool euicc = cards_.has_euicc(static_cast<std::uint8_t>(i + 1));
        if (type_of(i) != kPhysicalSim && type_of(i) != kEsim) return call.fail(QmiError::invalid_argument);
        if (type_of(i) == kEsim && !euicc) return call.fail(QmiError::not_supported);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const auto slot = static_cast<std::uint8_t>(i + 1);
        if (!cards_.has_euicc(slot)) continue;
        close_channels(slot);
        if (cards_.choose_side(slot, type_of(i) == kEsim) != 0) return call.fail(QmiError::internal);
    }
}

// ---- Card states ----

// Of the side that the slot stands on. The eUICC is part of the phone, whatever lies in the tray.
CardState UimService::state_of(std::uint8_t slot) const
{
    return stands_on_euicc(slot) ? CardState::present : cards_.state(slot);
}

// A card with power has one, an eUICC only with a profile.
bool UimService::has_application(std::uint8_t slot) const
{
    return state_of(slot) == CardState::present && cards_.has_power(slot) &&
           (!stands_on_euicc(slot) || !cards_.profiles(slot).empty());
}

// Of a slot's first application, as the status names it: slot and application, a byte each, both counted from 0.
std::uint16_t UimService::application_index(std::uint8_t slot) const
{
    if (slot > cards_.slot_count() || !has_application(slot)) return kNoApplication;
    return static_cast<std::uint16_t>((slot - 1) << 8);
}

void UimService::append_card(std::uint8_t slot, Bytes& status) const
{
    CardState state = state_of(slot);
    CardError error = kNoError;
    if (state == CardState::present && !cards_.has_power(slot)) {
        state = CardState::error;
        error = kPoweredDown;
    }
    const bool subscribed = has_application(slot);
    const std::uint8_t head[] = {
        static_cast<std::uint8_t>(state), 0, 0, 0, error, static_cast<std::uint8_t>(subscribed ? 1 : 0)};
    status.insert(status.end(), std::begin(head), std::end(head));
    if (subscribed) status.insert(status.end(), std::begin(kUsim), std::end(kUsim));
}

void UimService::card_status(Call& call)
{
    Bytes status;
    // Of the primary and the secondary subscription, which the first two slots' cards have; neither has a 1X application.
    for (const std::uint8_t slot : {1, 2}) {
        append_le(status, application_index(slot));
        append_le(status, kNoApplication);
    }
    const std::uint8_t count = cards_.slot_count();
    status.push_back(count);
    for (std::uint8_t slot = 1; slot <= count; ++slot) append_card(slot, status);
    call.answer.bytes(0x10, status);
    if (call.number<std::uint8_t>(0x10) != 0) call.answer.bytes(kExtendedStatus, status);
}

void UimService::get_eid(Call& call)
{
    const std::uint8_t slot = euicc_slot_of(call);
    if (slot == 0 || !cards_.eid_is_due(slot)) return;
    const auto eid = cards_.eid(slot);  // read anew: a person may have taken the file
    if (eid) call.answer.bytes(0x10, with_count<std::uint8_t>(*eid));
}

// ---- Channels and APDUs ----

void UimService::select(Call& call, std::uint8_t slot, ByteView aid_value)
{
    const std::optional<ByteView> aid = counted<std::uint8_t>(aid_value);
    if (!aid) return call.fail(QmiError::malformed_message);
    if (!std::equal(aid->begin(), aid->end(), std::begin(kIsdR), std::end(kIsdR))) {
        call.fail(QmiError::no_such_id);
        return call.answer.bytes(kCardResult, kNoSuchApplication);
    }
    auto channel = static_cast<std::uint8_t>(1 + cards_.channels_held(slot));
    while (channel <= kLastChannel && channels_.contains({slot, channel})) ++channel;
    if (channel > kLastChannel) {
        call.fail(QmiError::no_memory);
        return call.answer.bytes(kCardResult, kNoChannelLeft);
    }
    channels_[{slot, channel}] = call.client;
    call.answer.number(kChannel, channel);
    call.answer.bytes(kCardResult, kDone);
    Bytes control{0x6F, 0x12, 0x84, 0x10};  // file control information: the name of what was selected
    control.insert(control.end(), aid->begin(), aid->end());
    call.answer.bytes(kSelectResponse, with_count<std::uint8_t>(control));
}

void UimService::open_channel(Call& call)
{
    const std::uint8_t slot = euicc_slot_of(call);
    if (slot == 0) return;
    const std::optional<ByteView> aid = call.find(0x10);
    if (!aid) return call.fail(QmiError::missing_argument);
    select(call, slot, *aid);
}

// Opens with an AID, closes with a channel.
void UimService::logical_channel(Call& call)
{
    const std::uint8_t slot = euicc_slot_of(call);
    if (slot == 0) return;
    if (const std::optional<ByteView> aid = call.find(0x10)) return select(call, slot, *aid);
    if (!call.find(0x11)) return call.fail(QmiError::missing_argument);
    if (channels_.erase({slot, call.number<std::uint8_t>(0x11)}) == 0) return call.fail(QmiError::invalid_argument);
    call.answer.bytes(kCardResult, kDone);
}

Bytes UimService::answer_of_card(Call& call, std::uint8_t slot, ByteView command)
{
    if (std::optional<Bytes> answer = cards_.set_answer(slot, command)) return *std::move(answer);
    if (!std::equal(command.begin(), command.end(), std::begin(kReset), std::end(kReset))) {
        return {kUnknownInstruction.begin(), kUnknownInstruction.end()};
    }
    const int error = cards_.delete_profiles(slot);
    if (error == -ENOENT) return {std::begin(kNothingToDelete), std::end(kNothingToDelete)};
    if (error != 0) call.fail(QmiError::internal);
    return {std::begin(kDeleted), std::end(kDeleted)};
}

void UimService::send_apdu(Call& call)
{
    const std::uint8_t slot = euicc_slot_of(call);
    if (slot == 0) return;
    const std::optional<ByteView> command = counted<std::uint16_t>(*call.find(kApdu));
    if (!command || command->empty() || command->size() > kLongestApdu) return call.fail(QmiError::malformed_message);
    const auto channel = call.number<std::uint8_t>(0x10);
    if (channel != 0 && !channels_.contains({slot, channel})) return call.fail(QmiError::invalid_argument);
    const Bytes answer = answer_of_card(call, slot, *command);
    if (!call.failed()) call.answer.bytes(0x10, with_count<std::uint16_t>(answer));
}

}  // namespace

std::unique_ptr<Service> make_uim_service(Modem& modem, const ServiceSettings*)
{
    return std::make_unique<UimService>(modem);
}

}  // namespace rbk::sim

// The phone's card slots as the modem remembers them: what lies in each, whether it has power, and, where the slot has an
// eUICC beside the physical card, which of the two it stands on.
//
// Everything is in the state directory, a small file a value under card/<slot>, and read at each question, so that the
// service uim and the common requests speak of the same cards. Slots count from 1.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "link/bytes.h"
#include "simulator/scenario/scenario.h"
#include "simulator/scenario/service_kinds.h"
#include "simulator/state/state_store.h"

namespace rbk::sim {

class TableReader;

inline constexpr std::uint8_t kLastChannel = 3;  // of an eUICC; channel 0 is always open
inline constexpr std::size_t kLongestApdu = 1024;
using Eid = std::array<std::uint8_t, 16>;

// As a card status tells it.
enum class CardState : std::uint8_t { absent = 0, present = 1, error = 2 };

// Changes answer 0, or a negative number of <errno.h>; they are stored when they return.
class Cards {
 public:
    explicit Cards(StateStore& store) : store_(store) {}

    // How many slots there are, at most kMostSlots. No other number than 1 to this one may be asked for below.
    std::uint8_t slot_count() const;

    // Of the card in the tray, with power or without; an eUICC beside it is there anyway.
    CardState state(std::uint8_t slot) const;
    int set_state(std::uint8_t slot, CardState state);

    bool has_power(std::uint8_t slot) const;
    int power_down(std::uint8_t slot);
    // A slot with an eUICC comes up on the side that the EFS file esim_enable names; without that file it stays.
    int power_up(std::uint8_t slot);

    bool has_euicc(std::uint8_t slot) const { return eid(slot).has_value(); }
    bool on_esim(std::uint8_t slot) const;
    // Stands the slot on one of its sides; the eUICC starts anew. Only for a slot with an eUICC.
    int choose_side(std::uint8_t slot, bool esim);

    // The eUICC's, whether the slot stands on it or not.
    std::optional<Eid> eid(std::uint8_t slot) const;
    // One request for the EID: whether the eUICC, since it last started, has been asked often enough to know it.
    bool eid_is_due(std::uint8_t slot);

    // Logical channels of the eUICC that others on the phone have open, whatever happens to it.
    std::uint8_t channels_held(std::uint8_t slot) const;

    // Profiles that the eUICC holds: 10 bytes each, as the card itself writes their ICCID.
    Bytes profiles(std::uint8_t slot) const;
    // -ENOENT when there are none.
    int delete_profiles(std::uint8_t slot);

    // What the slot's card was told to answer to this command; nothing: it answers by itself.
    std::optional<Bytes> set_answer(std::uint8_t slot, ByteView command) const;

 private:
    std::string word(std::uint8_t slot, std::string_view name) const;
    int set_word(std::uint8_t slot, std::string_view name, std::string_view word);

    StateStore& store_;
};

// The scenario's [[card]] tables, or the built-in phone's two slots.
std::unique_ptr<const ServiceSettings> read_card_settings(TableReader* file);

}  // namespace rbk::sim

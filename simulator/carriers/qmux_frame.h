// QMUX: QMI messages on a line of bytes. A frame is a marker, its length, who sends it, a service and one of its client
// ids, and a message; those of the control service, which gives the ids out, have a shorter head.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "link/bytes.h"
#include "link/qmi_frame.h"

namespace rbk::sim {

inline constexpr std::uint8_t kQmuxControl = 0;  // the control service
inline constexpr std::size_t kQmuxHeadSize = 6;
inline constexpr std::size_t kLongestQmuxFrame = kQmuxHeadSize + link::kLongestMessage;
static_assert(kLongestQmuxFrame <= 0x10000, "the length behind the marker has 16 bits");

struct QmuxFrame {
    std::uint8_t service = 0;
    std::uint8_t client = 0;
    ByteView message;  // its head and nothing but the TLVs that this counts
};

// The head of a frame from the modem.
std::array<std::uint8_t, kQmuxHeadSize> pack_qmux_head(std::uint8_t service, std::uint8_t client, std::size_t size);

// Finds the host's frames in bytes that come in any pieces. What can't begin a frame is passed over, byte by byte.
class QmuxReader {
 public:
    // After next() has come to an end, so that no more than one frame is ever kept.
    void add(ByteView bytes);
    // The next whole frame, good until add() is called; empty when there is none yet.
    std::optional<QmuxFrame> next();

    // Once next() has come to an end: where in all that was added a frame begins that isn't whole yet, if one does.
    std::optional<std::uint64_t> part() const;
    // That frame won't become whole any more. next() gives the whole ones that stand behind its beginning, another
    // client's, and passes over the rest.
    void give_up() { given_up_ = bytes_.size(); }

 private:
    Bytes bytes_;
    std::size_t at_ = 0;           // what is done with
    std::size_t given_up_ = 0;     // no frame that begins before is waited for
    std::uint64_t forgotten_ = 0;  // bytes that once stood before bytes_
};

// ---- Messages of the control service ----

enum class QmuxControlKind : std::uint8_t { request = 0, response = 1, indication = 2 };

struct QmuxControlHead {
    QmuxControlKind kind = QmuxControlKind::request;
    std::uint8_t transaction = 0;
    std::uint16_t message = 0;
};

Bytes pack_qmux_control(const QmuxControlHead& head, ByteView tlvs);
// A request out of a frame to the control service, whose TLVs are what remains of `message`; empty for anything else.
std::optional<QmuxControlHead> parse_qmux_request(ByteView& message);

}  // namespace rbk::sim

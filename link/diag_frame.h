// Diag over the link. It has no published carrier: it goes as a private service, in datagrams of a fixed head and bytes.
// The library's calls are answered at once, each with one code; packets come on their own.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "link/bytes.h"

namespace rbk::link {

inline constexpr std::uint32_t kDiagService = 0xFFD1;
inline constexpr std::size_t kLongestDiagBytes = 16384;  // of a request, and of a packet

// Above all kinds of QMI messages, so that neither end takes one for the other.
enum class DiagKind : std::uint8_t { call = 0x80, answer = 0x81, packet = 0x82 };

enum class DiagCall : std::uint8_t {
    lsm_init,  // answer's value: mask of remote processors
    send,      // bytes: the request
    dci_register,
    dci_signal,
    dci_support,  // answer's value: mask of peripherals that are up
    dci_stream,
    dci_send,  // bytes: the request
    dci_release,
    lsm_deinit,  // not answered
};
// As fault rules name them; the last one can't fail.
inline constexpr std::array<std::string_view, 8> kDiagCallNames{
    "lsm_init", "send", "dci_register", "dci_signal", "dci_support", "dci_stream", "dci_send", "dci_release"};

// Success of the first two calls, and of the DCI ones.
inline constexpr std::int32_t kDiagSuccess = 0;
inline constexpr std::int32_t kDciSuccess = 1001;

enum class DiagPacket : std::uint8_t { response, dci_response, dci_log, dci_event };

struct DiagHead {
    DiagKind kind = DiagKind::call;
    std::uint8_t what = 0;       // of a call and its answer the DiagCall, of a packet the DiagPacket
    std::uint16_t sequence = 0;  // of a call, given back with its answer
    std::int32_t client = 0;     // DCI client, from 1 up
    std::int32_t value = 0;      // call: signal number; answer: as above; packet: processor
    std::int32_t code = 0;       // answer: what the caller gets
};

struct DiagFrame {
    DiagHead head;
    ByteView bytes;
};

inline constexpr std::size_t kDiagHeadSize = 16;
std::array<std::uint8_t, kDiagHeadSize> pack_diag(const DiagHead& head);
// A whole frame out of a datagram; empty when the head is cut or its kind is unknown.
std::optional<DiagFrame> parse_diag(ByteView datagram);

}  // namespace rbk::link

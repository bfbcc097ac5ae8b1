// A message as fields with names, by the client's own message tables.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "trace/trace_line.h"

namespace rbk::trace {

// A value, or a group of them. `offset` and `size` tell from which of the message's bytes it was read.
struct Field {
    std::string name;
    std::string value;        // as people read it; empty for a group
    std::string note;         // what is wrong with it, or why it isn't decoded
    bool is_private = false;  // it identifies a person or a card, or may
    std::size_t offset = 0;
    std::size_t size = 0;
    std::vector<Field> parts = {};
    bool is_harmless = false;  // it is shown even where all around it is private: an item's number, a length
};

// Some of a message's bytes.
struct Stretch {
    std::size_t offset = 0;
    std::size_t size = 0;
};

struct Decoded {
    std::string service;    // "extended", "nas", "0x0042", "diag"
    std::string message;    // "envelope", "network scan", "0x0100"; for diag "request" or "packet"
    std::string content;    // what an envelope or a packet holds: "NV read"; else empty
    std::string result;     // of an answer or an outcome: "ok", "failed: device not ready (52)"; else empty
    std::string complaint;  // why the client refuses the message, or that rbk has no table for it; else empty
    bool is_fault = false;  // the result is a failure, or the client refuses the message
    std::vector<Field> fields;
    std::vector<Stretch> hidden;  // what identifies a person or a card, or may
};

// `request` is the message that this one answers or whose outcome it tells, null when there is none.
Decoded decode(const TraceLine& line, const TraceLine* request);

// A flag for each byte of the message: whether it has to stay hidden.
std::vector<bool> private_bytes(const TraceLine& line, const Decoded& decoded);

// How many bytes at the front are the same as the first one; 0 of none.
std::size_t equal_at_front(ByteView bytes);

// Bytes as two digits each, a byte that comes four times or more as 00*400.
std::string hex_text(ByteView bytes);

}  // namespace rbk::trace

// The lines of a trace, as RBK_TRACE has rbk write them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "link/bytes.h"
#include "link/qmi_frame.h"

namespace rbk::trace {

// One message. Of a diag packet only time, direction and bytes mean something.
struct TraceLine {
    std::uint64_t number = 0;  // of the line in its file, from 1
    std::int64_t time_us = 0;  // monotonic clock
    bool to_modem = false;
    bool is_diag = false;
    std::uint32_t service = 0;  // QMI number
    link::QmiHead head;
    Bytes bytes;  // the TLVs, or the packet

    bool is_request() const { return to_modem; }
    bool is_answer() const { return !is_diag && head.kind == link::QmiKind::response; }
    bool is_indication() const { return !is_diag && head.kind == link::QmiKind::indication; }
};

// Reads a line, without its end. For a broken one: what is wrong with it, as a clause for a person.
std::variant<TraceLine, std::string> parse_line(std::string_view text, std::uint64_t number);

}  // namespace rbk::trace

// What messages carry in fields that are bytes to their service: records of envelopes, samples of the statistics, packets.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace/fields.h"

namespace rbk::trace {

// Bytes of a message that make a record, and where in the message they stand.
struct Piece {
    ByteView bytes;
    std::size_t offset = 0;

    Piece cut(std::size_t from, std::size_t size) const;  // what there is of it
};

struct Content {
    std::string name;
    std::string result;
    bool is_fault = false;
    std::vector<Field> fields;
    bool is_private = false;  // all of its bytes may identify a person
};

// The data of an envelope that asks, and of one that the modem sends unasked.
Content read_request(std::uint32_t qmi_id, Piece data);
Content read_said(std::uint32_t qmi_id, Piece data);

// The data of an envelope that answers, `request` being what the one that asked carried. Null: nobody knows what it is.
struct Asked {
    std::uint32_t qmi_id;
    ByteView data;
};
Content read_answer(const Asked* asked, Piece data);

// The fields of a parameter's sample; empty for a parameter that rbk doesn't use.
std::vector<Field> read_sample(std::uint32_t parameter, Piece sample);

// A diag request or packet.
Content read_packet(Piece packet);

}  // namespace rbk::trace

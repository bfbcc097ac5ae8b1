#include "platform/linux/idl_codec.h"

#include <algorithm>
#include <cstring>

namespace rbk::platform {
namespace {

// ---- Numbers: as many low bytes as the wire has, zeros above them in memory ----

// For the few bytes of a number or two, without a call.
inline void copy_short(std::uint8_t* to, const std::uint8_t* from, std::size_t count)
{
    switch (count) {
    case 1: *to = *from; break;
    case 2: std::memcpy(to, from, 2); break;
    case 4: std::memcpy(to, from, 4); break;
    case 8: std::memcpy(to, from, 8); break;
    default: std::memcpy(to, from, count); break;
    }
}

void copy_numbers(std::uint8_t* to, std::size_t to_width, const std::uint8_t* from, std::size_t from_width,
                  std::size_t count)
{
    if (to_width == from_width) {
        copy_short(to, from, count * to_width);
        return;
    }
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(to + i * to_width, from + i * from_width, std::min(to_width, from_width));
}

// ---- Encoding ----

// Bytes that still fit, taken from the front.
class Room {
 public:
    explicit Room(std::span<std::uint8_t> bytes) : next_(bytes.data()), end_(bytes.data() + bytes.size()) {}

    std::uint8_t* take(std::size_t count)
    {
        if (count > static_cast<std::size_t>(end_ - next_)) return nullptr;
        std::uint8_t* taken = next_;
        next_ += count;
        return taken;
    }
    std::uint8_t* next() const { return next_; }

 private:
    std::uint8_t* next_;
    std::uint8_t* end_;
};

bool put_value(const idl_field& field, const std::uint8_t* structure, Room& room);

bool put_elements(const idl_field& field, const std::uint8_t* value, std::size_t count, Room& room)
{
    if (!idl_is_record(field)) {
        std::uint8_t* to = room.take(count * field.wire_width);
        if (to == nullptr) return false;
        copy_numbers(to, field.wire_width, value, field.memory_width, count);
        return true;
    }
    for (std::size_t i = 0; i < count; ++i)
        for (std::uint32_t f = 0; f < field.record->field_count; ++f)
            if (!put_value(field.record->fields[f], value + i * field.memory_width, room)) return false;
    return true;
}

bool put_count(const idl_field& field, std::size_t count, Room& room)
{
    std::uint8_t* to = room.take(field.count_width);
    if (to == nullptr) return false;
    std::memcpy(to, &count, field.count_width);
    return true;
}

bool put_value(const idl_field& field, const std::uint8_t* structure, Room& room)
{
    const std::uint8_t* value = structure + field.offset;
    switch (field.form) {
    case IDL_SINGLE: return put_elements(field, value, 1, room);
    case IDL_FIXED: return put_elements(field, value, field.limit, room);
    case IDL_COUNTED: {
        const auto count = load_le<std::uint32_t>(structure + field.count_offset);
        return count <= field.limit && put_count(field, count, room) && put_elements(field, value, count, room);
    }
    case IDL_CHARACTERS: {
        const std::size_t length = strnlen(reinterpret_cast<const char*>(value), field.limit);
        return (field.tlv != IN_RECORD || put_count(field, length, room)) && put_elements(field, value, length, room);
    }
    case IDL_RESERVED_BYTES: break;
    }
    return true;
}

// ---- Decoding ----

// Received bytes, taken from the front.
class Rest {
 public:
    explicit Rest(ByteView bytes) : bytes_(bytes) {}

    const std::uint8_t* take(std::size_t count)
    {
        if (count > bytes_.size()) return nullptr;
        const std::uint8_t* taken = bytes_.data();
        bytes_ = bytes_.subspan(count);
        return taken;
    }
    std::size_t size() const { return bytes_.size(); }

 private:
    ByteView bytes_;
};

// Both walks over the bytes are one piece of code: the first, with kCheck, proves that everything is there, and the
// second stores it, so that a refused message leaves the structure alone.
enum Walk { kCheck, kStore };

template <Walk walk>
bool take_value(const idl_field& field, Rest& rest, std::uint8_t* structure);

template <Walk walk>
bool take_record(const idl_record& record, Rest& rest, std::uint8_t* structure)
{
    const std::uint8_t* head = rest.take(record.head_size);
    if (head == nullptr) return false;
    if constexpr (walk == kStore) copy_short(structure, head, record.head_size);
    for (std::uint32_t f = record.head_count; f < record.field_count; ++f) {
        if (!take_value<walk>(record.fields[f], rest, structure)) return false;
    }
    return true;
}

template <Walk walk>
bool take_elements(const idl_field& field, std::size_t count, Rest& rest, std::uint8_t* structure)
{
    std::uint8_t* value = structure + field.offset;
    if (!idl_is_record(field)) {
        const std::uint8_t* from = rest.take(count * field.wire_width);
        if (from == nullptr) return false;
        if constexpr (walk == kStore)
            copy_numbers(value, field.memory_width, from, field.wire_width, std::min<std::size_t>(count, field.limit));
        return true;
    }
    const std::size_t stored = walk == kStore ? std::min<std::size_t>(count, field.limit) : 0;
    for (std::size_t i = 0; i < stored; ++i) {
        if (!take_record<kStore>(*field.record, rest, value + i * field.memory_width)) return false;
    }
    for (std::size_t i = stored; i < count; ++i) {
        if (!take_record<kCheck>(*field.record, rest, value)) return false;
    }
    return true;
}

bool take_count(const idl_field& field, Rest& rest, std::uint32_t& count)
{
    const std::uint8_t* from = rest.take(field.count_width);
    if (from == nullptr) return false;
    count = field.count_width == 1 ? *from : load_le<std::uint16_t>(from);
    return true;
}

template <Walk walk>
bool take_value(const idl_field& field, Rest& rest, std::uint8_t* structure)
{
    switch (field.form) {
    case IDL_SINGLE: return take_elements<walk>(field, 1, rest, structure);
    case IDL_FIXED: return take_elements<walk>(field, field.limit, rest, structure);
    case IDL_COUNTED: {
        std::uint32_t count;
        if (!take_count(field, rest, count)) return false;
        if constexpr (walk == kStore) store_le(structure + field.count_offset, count);
        return take_elements<walk>(field, count, rest, structure);
    }
    case IDL_CHARACTERS: {
        auto length = static_cast<std::uint32_t>(rest.size());
        if (field.tlv == IN_RECORD && !take_count(field, rest, length)) return false;
        return take_elements<walk>(field, length, rest, structure);
    }
    case IDL_RESERVED_BYTES: break;
    }
    return true;
}

// Walks all TLVs; `seen` has a bit for each row whose TLV was there.
template <Walk walk>
bool take_message(const idl_message& message, ByteView tlvs, std::uint8_t* structure)
{
    std::uint64_t seen = 0;
    static_assert(IDL_ROWS_MAX <= 64);
    std::uint32_t next_row = 0;  // TLVs mostly come in the order of the rows
    while (!tlvs.empty()) {
        if (tlvs.size() < 3) return false;
        const std::uint8_t type = tlvs[0];
        const std::size_t length = load_le<std::uint16_t>(&tlvs[1]);
        if (length > tlvs.size() - 3) return false;
        Rest value(tlvs.subspan(3, length));
        tlvs = tlvs.subspan(3 + length);

        for (std::uint32_t tried = 0; tried < message.field_count; ++tried, ++next_row) {
            if (next_row >= message.field_count) next_row = 0;
            const idl_field& field = message.fields[next_row];
            if (field.tlv != type || field.tlv == IN_RECORD) continue;
            const std::uint64_t row_bit = std::uint64_t{1} << next_row;
            if ((seen & row_bit) == 0) {
                seen |= row_bit;
                if (!take_value<walk>(field, value, structure)) return false;
                if (walk == kStore && field.optional) structure[field.flag_offset] = 1;
            }
            break;
        }
    }
    for (std::uint32_t i = 0; i < message.field_count; ++i) {
        const idl_field& field = message.fields[i];
        const bool mandatory = !field.optional && field.form != IDL_RESERVED_BYTES;
        if (mandatory && (seen >> i & 1) == 0) return false;
    }
    return true;
}

}  // namespace

const idl_message* find_message(const qmi_idl_service_object& service, qmi_idl_type_of_message kind,
                                std::uint32_t msg_id)
{
    for (std::uint32_t i = 0; i < service.message_count; ++i)
        if (service.messages[i].id == msg_id && service.messages[i].kind == kind) return &service.messages[i];
    return nullptr;
}

std::optional<std::size_t> encode(const idl_message& message, const void* structure, std::span<std::uint8_t> room)
{
    const auto* from = static_cast<const std::uint8_t*>(structure);
    Room rest(room);
    for (std::uint32_t i = 0; i < message.field_count; ++i) {
        const idl_field& field = message.fields[i];
        if (field.form == IDL_RESERVED_BYTES || (field.optional && from[field.flag_offset] == 0)) continue;
        std::uint8_t* head = rest.take(3);
        if (head == nullptr || !put_value(field, from, rest)) return std::nullopt;
        head[0] = field.tlv;
        store_le(head + 1, static_cast<std::uint16_t>(rest.next() - head - 3));
    }
    return static_cast<std::size_t>(rest.next() - room.data());
}

bool decode(const idl_message& message, ByteView tlvs, void* structure)
{
    auto* to = static_cast<std::uint8_t*>(structure);
    if (!take_message<kCheck>(message, tlvs, to)) return false;
    if (message.size > 0) std::memset(to, 0, message.size);
    return take_message<kStore>(message, tlvs, to);
}

}  // namespace rbk::platform

int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type service, qmi_idl_type_of_message kind,
                                         uint16_t msg_id, uint32_t* length)
{
    if (service == nullptr || length == nullptr) return -1;
    const idl_message* message = rbk::platform::find_message(*service, kind, msg_id);
    if (message == nullptr) return -1;
    *length = message->size;
    return 0;
}

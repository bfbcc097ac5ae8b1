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

[[gnu::noinline]] void copy_converted(std::uint8_t* to, std::size_t to_width, const std::uint8_t* from,
                                      std::size_t from_width, std::size_t count)
{
    if (to_width > from_width) std::memset(to, 0, count * to_width);
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(to + i * to_width, from + i * from_width, std::min(to_width, from_width));
}

inline void copy_numbers(std::uint8_t* to, std::size_t to_width, const std::uint8_t* from, std::size_t from_width,
                         std::size_t count)
{
    if (to_width == from_width)
        copy_short(to, from, count * to_width);
    else
        copy_converted(to, to_width, from, from_width, count);
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

// Both walks over the bytes are one piece of code: the first, with kCheck, proves that everything is there, and the
// second stores it, so that a refused message leaves the structure alone.
enum Walk { kCheck, kStore };

// How far a walk has come. It goes from hand to hand by value: as far as the compiler knows, a byte that is stored might be
// part of anything with an address, the tables' figures included.
struct Walker {
    const std::uint8_t* next;  // received bytes that come next; null: they aren't all there
    std::uint8_t* front;       // the structure's bytes before it are filled

    bool has(const std::uint8_t* end, std::size_t count) const { return count <= static_cast<std::size_t>(end - next); }

    // `count` bytes of the structure, for the caller to write. Those between them and the front are passed over, and
    // zeroed. A field that comes late, behind the front, finds zeros already.
    std::uint8_t* room(std::uint8_t* place, std::size_t count)
    {
        if (place < front) return place;
        zero_up_to(place);
        front = place + count;
        return place;
    }
    void zero_up_to(std::uint8_t* place)
    {
        if (place != front) std::memset(front, 0, static_cast<std::size_t>(place - front));
        front = place;
    }
};
constexpr Walker kCutShort{nullptr, nullptr};

bool is_counted(const idl_field& field)
{
    return field.form == IDL_COUNTED || (field.form == IDL_CHARACTERS && field.tlv == IN_RECORD);
}

template <Walk walk>
[[gnu::always_inline]] inline Walker take_count(const idl_field& field, Walker at, const std::uint8_t* end,
                                                std::uint8_t* structure, std::size_t& count)
{
    if (!at.has(end, field.count_width)) return kCutShort;
    count = field.count_width == 1 ? *at.next : load_le<std::uint16_t>(at.next);
    at.next += field.count_width;
    if (walk == kStore && field.form == IDL_COUNTED)
        store_le(at.room(structure + field.count_offset, 4), static_cast<std::uint32_t>(count));
    return at;
}

// A value that is no record: its count where it has one, and its numbers or characters.
template <Walk walk>
[[gnu::always_inline]] inline Walker take_numbers(const idl_field& field, Walker at, const std::uint8_t* end,
                                                  std::uint8_t* structure)
{
    std::size_t count = field.limit;  // of a single one, too
    if (is_counted(field)) {
        at = take_count<walk>(field, at, end, structure, count);
        if (at.next == nullptr) return at;
    } else if (field.form == IDL_CHARACTERS) {
        count = static_cast<std::size_t>(end - at.next);
    }
    const std::size_t size = count * field.wire_width;
    if (!at.has(end, size)) return kCutShort;
    if constexpr (walk == kStore) {
        const std::size_t stored = std::min<std::size_t>(count, field.limit);
        const std::size_t width = field.memory_width;
        copy_numbers(at.room(structure + field.offset, stored * width), width, at.next, field.wire_width, stored);
    }
    at.next += size;
    return at;
}

template <Walk walk>
Walker take_records(const idl_field& field, Walker at, const std::uint8_t* end, std::uint8_t* structure);

template <Walk walk>
Walker take_value(const idl_field& field, Walker at, const std::uint8_t* end, std::uint8_t* structure)
{
    if (field.form == IDL_RESERVED_BYTES) return at;
    return idl_is_record(field) ? take_records<walk>(field, at, end, structure)
                                : take_numbers<walk>(field, at, end, structure);
}

// `count` elements of a record's form; `take_tail` takes what stands behind an element's head.
template <Walk walk, typename TakeTail>
[[gnu::always_inline]] inline Walker take_elements(const idl_field& field, std::size_t count, Walker at,
                                                   const std::uint8_t* end, std::uint8_t* structure, TakeTail take_tail)
{
    const std::size_t head_size = field.record->head_size;
    const std::size_t width = field.memory_width;
    std::uint8_t* to = structure + field.offset;
    for (std::size_t i = 0; i < count; ++i) {
        if (!at.has(end, head_size)) return kCutShort;
        if constexpr (walk == kStore) copy_short(at.room(to, head_size), at.next, head_size);
        at.next += head_size;
        at = take_tail(at, to);
        if (at.next == nullptr) return at;
        if constexpr (walk == kStore) to += width;
    }
    return at;
}

template <Walk walk>
Walker take_elements(const idl_field& field, std::size_t count, Walker at, const std::uint8_t* end,
                     std::uint8_t* structure)
{
    const idl_record& record = *field.record;
    const idl_field* tail = record.fields + record.head_count;
    if (record.head_count + 1 == record.field_count && is_counted(*tail) && !idl_is_record(*tail)) {
        const idl_field only = *tail;  // a copy, whose figures stay in registers
        return take_elements<walk>(field, count, at, end, structure, [&only, end](Walker from, std::uint8_t* to) {
            return take_numbers<walk>(only, from, end, to);
        });
    }
    return take_elements<walk>(field, count, at, end, structure, [&record, tail, end](Walker from, std::uint8_t* to) {
        for (const idl_field* each = tail; each != record.fields + record.field_count && from.next != nullptr; ++each)
            from = take_value<walk>(*each, from, end, to);
        return from;
    });
}

template <Walk walk>
Walker take_records(const idl_field& field, Walker at, const std::uint8_t* end, std::uint8_t* structure)
{
    std::size_t count = field.limit;
    if (is_counted(field)) {
        at = take_count<walk>(field, at, end, structure, count);
        if (at.next == nullptr) return at;
    }
    const std::size_t stored = walk == kStore ? std::min<std::size_t>(count, field.limit) : 0;
    if (stored > 0) at = take_elements<walk>(field, stored, at, end, structure);
    // What has no room is passed over.
    return at.next == nullptr ? at : take_elements<kCheck>(field, count - stored, at, end, structure);
}

// Walks all TLVs; `seen` has a bit for each row whose TLV was there.
template <Walk walk>
bool take_message(const idl_message& message, ByteView tlvs, std::uint8_t* structure)
{
    Walker at{nullptr, structure};
    std::uint64_t seen = 0;
    static_assert(IDL_ROWS_MAX <= 64);
    std::uint32_t next_row = 0;  // TLVs mostly come in the order of the rows
    while (!tlvs.empty()) {
        if (tlvs.size() < 3) return false;
        const std::uint8_t type = tlvs[0];
        const std::size_t length = load_le<std::uint16_t>(&tlvs[1]);
        if (length > tlvs.size() - 3) return false;
        at.next = tlvs.data() + 3;
        tlvs = tlvs.subspan(3 + length);

        for (std::uint32_t tried = 0; tried < message.field_count; ++tried, ++next_row) {
            if (next_row >= message.field_count) next_row = 0;
            const idl_field& field = message.fields[next_row];
            if (field.tlv != type || field.tlv == IN_RECORD) continue;
            const std::uint64_t row_bit = std::uint64_t{1} << next_row;
            if ((seen & row_bit) == 0) {
                seen |= row_bit;
                if (walk == kStore && field.optional) *at.room(structure + field.flag_offset, 1) = 1;
                at = take_value<walk>(field, at, at.next + length, structure);
                if (at.next == nullptr) return false;
            }
            break;
        }
    }
    if constexpr (walk == kStore) at.zero_up_to(structure + message.size);
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
    return take_message<kCheck>(message, tlvs, to) && take_message<kStore>(message, tlvs, to);
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

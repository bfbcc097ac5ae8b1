/* Message tables of QMI services: what stands where in a message on the wire and in its structure in memory.
 *
 * A service is described by constant tables: one row a field, rows make records and messages, messages make the
 * service object that the client library wants. A row names the structure's member; offset, width, room, flag and
 * length follow from that name. IDL_PROVE holds each table against the figures that the service's description states,
 * and a wrong table doesn't build: the error names what is wrong and the message, as in idl_proof<LONGEST_DIFFERS, 2>.
 *
 * In memory an optional field `x` is a byte `x_valid` and the field behind it, a counted array `x` a word `x_len` and
 * the room behind it; a text is its characters and a terminator. On the wire everything is little-endian. */
#ifndef QMI_IDL_H
#define QMI_IDL_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

/* Kinds of a message, with the numbers that qmi_client_message_decode takes. */
enum qmi_idl_type_of_message : uint8_t { REQUEST = 0, RESPONSE = 1, INDICATION = 2 };

/* Result TLV of a response: `result` 0 for success, 1 for failure with `error` telling which. */
struct qmi_response_type {
    uint32_t result;
    uint32_t error;
};

/* ---- Rows ---- */

enum idl_form : uint8_t {
    IDL_SINGLE,         // one element
    IDL_FIXED,          // `limit` elements, always all of them, no count on the wire
    IDL_COUNTED,        // a count of count_width bytes, then that many elements
    IDL_CHARACTERS,     // text: alone in its TLV the TLV's length counts it, inside a record a byte does
    IDL_RESERVED_BYTES  // room in memory that nothing on the wire fills
};

struct idl_field;

/* A structure inside a message. */
struct idl_record {
    const idl_field *fields;
    uint32_t         field_count;
    uint32_t         size;        // bytes of the structure in memory
    uint32_t         alignment;   // of the structure in memory, bytes
    uint32_t         head_count;  // first fields that lie in memory as they do on the wire: one copy takes them all
    uint32_t         head_size;   // bytes of those
};

struct idl_field {
    const char       *name;          // as a trace for people prints it
    const idl_record *record;        // what each element is made of; null for numbers and characters
    uint32_t          offset;        // of the value, bytes from the start of its structure
    uint32_t          flag_offset;   // of x_valid, optional fields only
    uint32_t          count_offset;  // of x_len, counted arrays only
    uint32_t          limit;         // elements that there is room for
    uint32_t          memory_width;  // bytes of one element in memory
    uint8_t           wire_width;    // bytes of one element on the wire; 0 for records
    uint8_t           asked_width;   // bytes of one element in memory that the row's macro stands for; 0 for any
    uint8_t           count_width;   // bytes of the count on the wire: 1 or 2
    uint8_t           tlv;           // TLV type; IN_RECORD inside a record
    idl_form          form;
    bool              optional;
};

struct idl_message {
    const idl_field        *fields;
    uint32_t                field_count;
    uint32_t                size;            // bytes of the structure in memory
    uint32_t                alignment;       // of the structure in memory, bytes
    uint32_t                stated_longest;  // longest encoded form, bytes of TLVs, as the service states it
    uint32_t                stated_size;     // bytes of the structure, as the service states it
    uint16_t                id;
    qmi_idl_type_of_message kind;
};

/* The service object. Callers hand it on and never look inside. */
struct qmi_idl_service_object {
    uint32_t           service_id;
    uint32_t           idl_version;
    uint32_t           idl_minor_version;
    uint32_t           library_version;  // of the tables' form
    uint32_t           longest;          // bytes of TLVs of the longest message
    const idl_message *messages;
    uint32_t           message_count;
};
typedef const qmi_idl_service_object *qmi_idl_service_object_type;

/* The only library version of tables that this header writes. */
constexpr uint32_t IDL_LIBRARY_VERSION = 6;

/* Rows of one message at most: the decoder keeps a bit for each. */
constexpr uint32_t IDL_ROWS_MAX = 64;

/* TLV type of rows inside a record, which have none of their own. */
constexpr uint8_t IN_RECORD = 0;

// clang-format off
#define IDL_ROW_(tlv, T, m, form, optional, flag, count, count_width, limit, record, memory, wire, asked) \
    idl_field { #m, record, offsetof(T, m), flag, count, limit, memory, wire, asked, count_width, tlv, form, optional }
// clang-format on

#define IDL_ONE_(tlv, T, m, wire, asked) \
    IDL_ROW_(tlv, T, m, IDL_SINGLE, false, 0, 0, 0, 1, nullptr, sizeof(T::m), wire, asked)
#define IDL_OPT_ONE_(tlv, T, m, wire, asked) \
    IDL_ROW_(tlv, T, m, IDL_SINGLE, true, offsetof(T, m##_valid), 0, 0, 1, nullptr, sizeof(T::m), wire, asked)

/* One number: the same width on the wire and in memory. */
#define IDL_BYTE(tlv, T, m)     IDL_ONE_(tlv, T, m, 1, 1)
#define IDL_HALF(tlv, T, m)     IDL_ONE_(tlv, T, m, 2, 2)
#define IDL_WORD(tlv, T, m)     IDL_ONE_(tlv, T, m, 4, 4)
#define IDL_LONG(tlv, T, m)     IDL_ONE_(tlv, T, m, 8, 8)
#define IDL_OPT_BYTE(tlv, T, m) IDL_OPT_ONE_(tlv, T, m, 1, 1)
#define IDL_OPT_HALF(tlv, T, m) IDL_OPT_ONE_(tlv, T, m, 2, 2)
#define IDL_OPT_WORD(tlv, T, m) IDL_OPT_ONE_(tlv, T, m, 4, 4)

/* An enumeration: 32 bits in memory, one or two bytes on the wire. */
#define IDL_ENUM8(tlv, T, m)     IDL_ONE_(tlv, T, m, 1, 4)
#define IDL_ENUM16(tlv, T, m)    IDL_ONE_(tlv, T, m, 2, 4)
#define IDL_OPT_ENUM8(tlv, T, m) IDL_OPT_ONE_(tlv, T, m, 1, 4)

/* A fixed array of numbers: all of it on the wire, without a count. */
#define IDL_ARRAY(tlv, T, m)                                                                                \
    IDL_ROW_(tlv, T, m, IDL_FIXED, false, 0, 0, 0, std::extent_v<decltype(T::m)>, nullptr, sizeof(T::m[0]), \
             sizeof(T::m[0]), 0)
#define IDL_OPT_BYTES(tlv, T, m)                                                                               \
    IDL_ROW_(tlv, T, m, IDL_FIXED, true, offsetof(T, m##_valid), 0, 0, std::extent_v<decltype(T::m)>, nullptr, \
             sizeof(T::m[0]), 1, 1)

/* A counted array of numbers. Its count takes one byte where the room is below 256 elements, else two. */
#define IDL_COUNT_WIDTH_(T, m) (std::extent_v<decltype(T::m)> < 256 ? 1 : 2)
#define IDL_COUNTED_ARRAY(tlv, T, m)                                                         \
    IDL_ROW_(tlv, T, m, IDL_COUNTED, false, 0, offsetof(T, m##_len), IDL_COUNT_WIDTH_(T, m), \
             std::extent_v<decltype(T::m)>, nullptr, sizeof(T::m[0]), sizeof(T::m[0]), 0)
#define IDL_OPT_COUNTED_ARRAY(tlv, T, m)                                                                         \
    IDL_ROW_(tlv, T, m, IDL_COUNTED, true, offsetof(T, m##_valid), offsetof(T, m##_len), IDL_COUNT_WIDTH_(T, m), \
             std::extent_v<decltype(T::m)>, nullptr, sizeof(T::m[0]), sizeof(T::m[0]), 0)

/* A text: `char m[limit + 1]`. */
#define IDL_TEXT(tlv, T, m) \
    IDL_ROW_(tlv, T, m, IDL_CHARACTERS, false, 0, 0, 1, sizeof(T::m) - 1, nullptr, sizeof(T::m[0]), 1, 1)
#define IDL_OPT_TEXT(tlv, T, m)                                                                        \
    IDL_ROW_(tlv, T, m, IDL_CHARACTERS, true, offsetof(T, m##_valid), 0, 1, sizeof(T::m) - 1, nullptr, \
             sizeof(T::m[0]), 1, 1)

/* A nested structure, a fixed table of them, and counted tables. IDL_WIDE_ tables have a two-byte count whatever their
 * room. `record` is an idl_record made with idl_record_of. */
#define IDL_RECORD(tlv, T, m, record) IDL_ROW_(tlv, T, m, IDL_SINGLE, false, 0, 0, 0, 1, &(record), sizeof(T::m), 0, 0)
#define IDL_OPT_RECORD(tlv, T, m, record) \
    IDL_ROW_(tlv, T, m, IDL_SINGLE, true, offsetof(T, m##_valid), 0, 0, 1, &(record), sizeof(T::m), 0, 0)
#define IDL_TABLE(tlv, T, m, record) \
    IDL_ROW_(tlv, T, m, IDL_FIXED, false, 0, 0, 0, std::extent_v<decltype(T::m)>, &(record), sizeof(T::m[0]), 0, 0)
#define IDL_COUNTED_TABLE(tlv, T, m, record)                                                 \
    IDL_ROW_(tlv, T, m, IDL_COUNTED, false, 0, offsetof(T, m##_len), IDL_COUNT_WIDTH_(T, m), \
             std::extent_v<decltype(T::m)>, &(record), sizeof(T::m[0]), 0, 0)
#define IDL_OPT_COUNTED_TABLE(tlv, T, m, record)                                                                 \
    IDL_ROW_(tlv, T, m, IDL_COUNTED, true, offsetof(T, m##_valid), offsetof(T, m##_len), IDL_COUNT_WIDTH_(T, m), \
             std::extent_v<decltype(T::m)>, &(record), sizeof(T::m[0]), 0, 0)
#define IDL_OPT_WIDE_COUNTED_TABLE(tlv, T, m, record)                                       \
    IDL_ROW_(tlv, T, m, IDL_COUNTED, true, offsetof(T, m##_valid), offsetof(T, m##_len), 2, \
             std::extent_v<decltype(T::m)>, &(record), sizeof(T::m[0]), 0, 0)

/* Bytes of the structure that no TLV fills; they read as zero after a decode. */
#define IDL_RESERVED(T, m) IDL_ROW_(IN_RECORD, T, m, IDL_RESERVED_BYTES, false, 0, 0, 0, sizeof(T::m), nullptr, 1, 1, 0)

/* The result TLV of a published service's response: two bytes each on the wire, words in memory. */
#define IDL_RESULT(T, m) IDL_RECORD(0x02, T, m, idl_result_record)

template <typename T, std::size_t N>
constexpr idl_record idl_record_of(const idl_field (&fields)[N])
{
    idl_record record = {fields, N, sizeof(T), alignof(T), 0, 0};
    for (const idl_field &field : fields) {
        const bool as_on_the_wire = field.form == IDL_SINGLE && field.wire_width == field.memory_width;
        if (!as_on_the_wire || field.offset != record.head_size) break;
        record.head_size += field.wire_width;
        ++record.head_count;
    }
    return record;
}

template <typename T, std::size_t N>
constexpr idl_message idl_make(uint16_t id, qmi_idl_type_of_message kind, const idl_field (&fields)[N],
                               uint32_t longest, uint32_t size)
{
    return {fields, N, sizeof(T), alignof(T), longest, size, id, kind};
}

/* A message without fields: its structure has no bytes. */
constexpr idl_message idl_empty(uint16_t id, qmi_idl_type_of_message kind)
{
    return {nullptr, 0, 0, 1, 0, 0, id, kind};
}

inline constexpr idl_field idl_result_fields[] = {
    IDL_ENUM16(IN_RECORD, qmi_response_type, result),
    IDL_ENUM16(IN_RECORD, qmi_response_type, error),
};
inline constexpr idl_record idl_result_record = idl_record_of<qmi_response_type>(idl_result_fields);

/* ---- Proof ---- */

enum idl_fault {
    IDL_SOUND,
    LONGEST_DIFFERS,       // the rows make a longest form of another length than the service states
    SIZE_DIFFERS,          // the structure has another size than the service states
    MEMBER_WIDTH_DIFFERS,  // a member is wider or narrower than its row's macro says
    BYTES_UNCLAIMED,       // bytes of a structure that no row and no reserved block claims
    BYTES_OUT_OF_ORDER,    // a row claims bytes that an earlier row has, or rows don't follow the structure
    RECORD_SIZE_DIFFERS,   // a nested structure is described by the rows of another one
    COUNT_TOO_NARROW,      // the count's width can't tell the array's limit
    TLV_MISSING,           // a row of a message without a TLV type, or one of a record with it
    ROWS_TOO_MANY,         // more rows than the codec can tick off
    TLV_TWICE,             // two rows of a message with one TLV type
    MESSAGE_TWICE,         // two messages of one kind and id
    SERVICE_LONGEST_DIFFERS
};

struct idl_finding {
    idl_fault fault;
    uint16_t  message;
};

/* Told by the width: under the sanitizers an address compared with null is no constant. */
constexpr bool idl_is_record(const idl_field &field)
{
    return field.wire_width == 0;
}

constexpr uint32_t idl_longest_value(const idl_field &field);

constexpr uint32_t idl_longest_element(const idl_field &field)
{
    if (!idl_is_record(field)) return field.wire_width;
    uint32_t longest = 0;
    for (uint32_t i = 0; i < field.record->field_count; ++i) longest += idl_longest_value(field.record->fields[i]);
    return longest;
}

/* Bytes of a field's longest value, its count included and without the head of a TLV. */
constexpr uint32_t idl_longest_value(const idl_field &field)
{
    switch (field.form) {
    case IDL_SINGLE: return idl_longest_element(field);
    case IDL_FIXED: return field.limit * idl_longest_element(field);
    case IDL_COUNTED: return field.count_width + field.limit * idl_longest_element(field);
    case IDL_CHARACTERS: return (field.tlv == IN_RECORD ? field.count_width : 0) + field.limit;
    case IDL_RESERVED_BYTES: break;
    }
    return 0;
}

/* Bytes of TLVs of a message's longest form. */
constexpr uint32_t idl_longest(const idl_message &message)
{
    uint32_t longest = 0;
    for (uint32_t i = 0; i < message.field_count; ++i)
        if (message.fields[i].form != IDL_RESERVED_BYTES) longest += 3 + idl_longest_value(message.fields[i]);
    return longest;
}

/* Claims `width` bytes at `offset`; between the end of the last claim and this one lies nothing but the padding that
 * the alignment asks for. */
constexpr idl_fault idl_claim(uint32_t &end, uint32_t offset, uint32_t width, uint32_t alignment)
{
    if (offset < end) return BYTES_OUT_OF_ORDER;
    if (offset != (end + alignment - 1) / alignment * alignment) return BYTES_UNCLAIMED;
    end = offset + width;
    return IDL_SOUND;
}

constexpr idl_fault idl_check_fields(const idl_field *fields, uint32_t field_count, uint32_t size, uint32_t alignment,
                                     bool in_record)
{
    uint32_t end = 0;
    for (uint32_t i = 0; i < field_count; ++i) {
        const idl_field &field = fields[i];
        if (field.form != IDL_RESERVED_BYTES && in_record != (field.tlv == IN_RECORD)) return TLV_MISSING;
        if (field.asked_width != 0 && field.asked_width != field.memory_width) return MEMBER_WIDTH_DIFFERS;
        if (field.count_width == 1 && field.limit > 0xFF) return COUNT_TOO_NARROW;

        idl_fault fault = IDL_SOUND;
        if (idl_is_record(field)) {
            if (field.record->size != field.memory_width) return RECORD_SIZE_DIFFERS;
            fault = idl_check_fields(field.record->fields, field.record->field_count, field.record->size,
                                     field.record->alignment, true);
            if (fault != IDL_SOUND) return fault;
        }
        if (field.optional) fault = idl_claim(end, field.flag_offset, 1, 1);
        if (fault == IDL_SOUND && field.form == IDL_COUNTED) fault = idl_claim(end, field.count_offset, 4, 4);
        if (fault == IDL_SOUND) {
            const uint32_t characters = field.form == IDL_CHARACTERS ? field.limit + 1 : field.limit;
            fault = idl_claim(end, field.offset, characters * field.memory_width,
                              idl_is_record(field) ? field.record->alignment : field.memory_width);
        }
        if (fault != IDL_SOUND) return fault;
    }
    return (end + alignment - 1) / alignment * alignment == size ? IDL_SOUND : BYTES_UNCLAIMED;
}

constexpr idl_fault idl_check_message(const idl_message &message)
{
    if (message.field_count > IDL_ROWS_MAX) return ROWS_TOO_MANY;
    for (uint32_t i = 0; i < message.field_count; ++i)
        for (uint32_t j = 0; j < i; ++j)
            if (message.fields[i].tlv != IN_RECORD && message.fields[i].tlv == message.fields[j].tlv) return TLV_TWICE;
    const idl_fault fault =
        idl_check_fields(message.fields, message.field_count, message.size, message.alignment, false);
    if (fault != IDL_SOUND) return fault;
    if (idl_longest(message) != message.stated_longest) return LONGEST_DIFFERS;
    return message.size == message.stated_size ? IDL_SOUND : SIZE_DIFFERS;
}

/* The first fault of a table; the number of the message that has it. */
template <std::size_t N>
constexpr idl_finding idl_check(const idl_message (&messages)[N])
{
    for (std::size_t i = 0; i < N; ++i) {
        const idl_fault fault = idl_check_message(messages[i]);
        if (fault != IDL_SOUND) return {fault, messages[i].id};
        for (std::size_t j = 0; j < i; ++j)
            if (messages[i].id == messages[j].id && messages[i].kind == messages[j].kind)
                return {MESSAGE_TWICE, messages[i].id};
    }
    return {IDL_SOUND, 0};
}

/* Exists only for a sound table: the compiler's error on any other one carries the fault and the message's number. */
template <idl_fault fault, uint16_t message>
struct idl_proof;
template <uint16_t message>
struct idl_proof<IDL_SOUND, message> {
    static constexpr bool holds = true;
};

#define IDL_PROVE(messages) static_assert(idl_proof<idl_check(messages).fault, idl_check(messages).message>::holds)

/* Makes a service object of a proven table; `longest` is what the service states of all its messages. */
template <std::size_t N>
constexpr qmi_idl_service_object idl_service(uint32_t service_id, uint32_t version, uint32_t minor_version,
                                             const idl_message (&messages)[N], uint32_t longest)
{
    return {service_id, version, minor_version, IDL_LIBRARY_VERSION, longest, messages, N};
}

constexpr uint32_t idl_service_longest(const qmi_idl_service_object &service)
{
    uint32_t longest = 0;
    for (uint32_t i = 0; i < service.message_count; ++i)
        if (service.messages[i].stated_longest > longest) longest = service.messages[i].stated_longest;
    return longest;
}

#define IDL_PROVE_SERVICE(service)                                                                                     \
    static_assert(idl_proof < idl_service_longest(service) == (service).longest ? IDL_SOUND : SERVICE_LONGEST_DIFFERS, \
                  static_cast<uint16_t>((service).service_id) > ::holds)

/* ---- What the library offers ---- */

#ifdef __cplusplus
extern "C" {
#endif

/* Tells how many bytes the structure of a message has.
 *   service  service object
 *   kind     REQUEST, RESPONSE or INDICATION
 *   msg_id   message id
 *   length   receives the bytes; untouched on failure
 * Result: 0, or -1 for a null argument or a message that the service doesn't have.
 * Threads: any. */
int32_t qmi_idl_get_message_c_struct_len(qmi_idl_service_object_type service, qmi_idl_type_of_message kind,
                                         uint16_t msg_id, uint32_t *length);

#ifdef __cplusplus
}
#endif
#endif

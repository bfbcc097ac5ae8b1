// A sound table, and by one macro at a time a wrong one: the build's error has to name the fault and the message.
// Compiled by the tests for its errors, linked into nothing.
#include "qmi_idl.h"

#ifndef ID_ROW
#define ID_ROW IDL_WORD(0x01, sample, id),
#endif
#ifndef BYTES_ROW
#define BYTES_ROW IDL_OPT_BYTES(0x10, sample, bytes),
#endif
#ifndef PAIRS_ROW
#define PAIRS_ROW IDL_COUNTED_TABLE(0x02, sample, pairs, pair_record),
#endif
#ifndef TEXT_ROOM
#define TEXT_ROOM 8
#endif
#ifndef LONGEST
#define LONGEST 7 + (3 + 7) + (3 + 1 + 3 * 4) + (3 + 7)
#endif
#ifndef SIZE
#define SIZE 36
#endif
#ifndef SECOND_ID
#define SECOND_ID 3
#endif
#ifndef SERVICE_LONGEST
#define SERVICE_LONGEST LONGEST
#endif

struct pair {
    uint16_t first;
    uint16_t second;
};
constexpr idl_field pair_fields[] = {IDL_HALF(IN_RECORD, pair, first), IDL_HALF(IN_RECORD, pair, second)};
constexpr idl_record pair_record = idl_record_of<pair>(pair_fields);

struct lone {
    uint16_t only;
};
constexpr idl_field lone_fields[] = {IDL_HALF(IN_RECORD, lone, only)};
[[maybe_unused]] constexpr idl_record lone_record = idl_record_of<lone>(lone_fields);

struct sample {
    uint32_t id;
    uint8_t bytes_valid;
    uint8_t bytes[7];
    uint32_t pairs_len;
    pair pairs[3];
    char text[TEXT_ROOM];
};
constexpr idl_field sample_fields[] = {ID_ROW BYTES_ROW PAIRS_ROW IDL_TEXT(0x03, sample, text)};
constexpr idl_message messages[] = {
    idl_make<sample>(2, REQUEST, sample_fields, LONGEST, SIZE),
    idl_make<sample>(SECOND_ID, REQUEST, sample_fields, LONGEST, SIZE),
};
IDL_PROVE(messages);

constexpr qmi_idl_service_object service = idl_service(0x1234, 1, 1, messages, SERVICE_LONGEST);
IDL_PROVE_SERVICE(service);

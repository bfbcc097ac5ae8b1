// A sound table, and beside it one for each fault. Compiled by the tests, linked into nothing.
#include "qmi_idl.h"

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
constexpr idl_record lone_record = idl_record_of<lone>(lone_fields);

struct sample {
    uint32_t id;
    uint8_t bytes_valid;
    uint8_t bytes[7];
    uint32_t pairs_len;
    pair pairs[3];
    char text[8];
};
constexpr uint32_t kLongest = 7 + (3 + 7) + (3 + 1 + 3 * 4) + (3 + 7);
constexpr idl_field kId = IDL_WORD(0x01, sample, id);
constexpr idl_field kBytes = IDL_OPT_BYTES(0x10, sample, bytes);
constexpr idl_field kPairs = IDL_COUNTED_TABLE(0x02, sample, pairs, pair_record);
constexpr idl_field kText = IDL_TEXT(0x03, sample, text);
struct long_text {
    char text[300];
};

template <typename T = sample, std::size_t N>
constexpr idl_fault fault_of(const idl_field (&fields)[N], uint32_t longest = kLongest, uint32_t size = 36)
{
    return idl_check_message(idl_make<T>(2, REQUEST, fields, longest, size));
}
static_assert(fault_of({kId, kBytes, kPairs, kText}) == IDL_SOUND);
static_assert(fault_of({kId, kBytes, kPairs, kText}, kLongest + 1) == LONGEST_DIFFERS);
static_assert(fault_of({kId, kBytes, kPairs, kText}, kLongest, 40) == SIZE_DIFFERS);
static_assert(fault_of({IDL_HALF(0x01, sample, id), kBytes, kPairs, kText}) == MEMBER_WIDTH_DIFFERS);
static_assert(fault_of({kId, kPairs, kText}) == BYTES_UNCLAIMED);
static_assert(fault_of({kId, kBytes, kPairs}) == BYTES_UNCLAIMED);
static_assert(fault_of({kId, IDL_WORD(0x10, sample, id), kPairs, kText}) == BYTES_OUT_OF_ORDER);
static_assert(fault_of({kId, kBytes, IDL_COUNTED_TABLE(2, sample, pairs, lone_record), kText}) == RECORD_SIZE_DIFFERS);
static_assert(fault_of<long_text>({IDL_TEXT(0x03, long_text, text)}) == COUNT_TOO_NARROW);
static_assert(fault_of({IDL_WORD(IN_RECORD, sample, id), kBytes, kPairs, kText}) == TLV_MISSING);
static_assert(fault_of({kId, kBytes, IDL_COUNTED_TABLE(0x10, sample, pairs, pair_record), kText}) == TLV_TWICE);
constexpr idl_field many[IDL_ROWS_MAX + 1] = {};
static_assert(fault_of(many) == ROWS_TOO_MANY);

constexpr idl_field rows[] = {kId, kBytes, kPairs, kText};
constexpr idl_message one = idl_make<sample>(2, REQUEST, rows, kLongest, 36);
constexpr idl_message other = idl_make<sample>(3, REQUEST, rows, kLongest, 36);
constexpr idl_message answer = idl_make<sample>(2, RESPONSE, rows, kLongest, 36);
constexpr idl_message sound[] = {one, other, answer};
constexpr idl_message twice[] = {one, other, answer, other};
static_assert(idl_check(twice).fault == MESSAGE_TWICE && idl_check(twice).message == 3);
IDL_PROVE(sound);
constexpr qmi_idl_service_object service = idl_service(0x1234, 1, 1, sound, kLongest);
IDL_PROVE_SERVICE(service);

#ifdef WRONG
constexpr idl_message wrong[] = {other, idl_make<sample>(2, REQUEST, rows, 42, 36)};
IDL_PROVE(wrong);
constexpr qmi_idl_service_object wrong_service = idl_service(0x1234, 1, 1, sound, 42);
IDL_PROVE_SERVICE(wrong_service);
#endif

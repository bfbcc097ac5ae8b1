/* Message tables of the extended service. The figures beside the rows are the service's own: the longest form of each
 * message in bytes of TLVs, and the bytes of its structure. */
#include "velmor_extend_v01.h"

// clang-format off

// ---- Records of the statistics tables ----

static constexpr idl_field value_fields[] = {
    IDL_LONG (IN_RECORD, stat_value, value),
    IDL_ARRAY(IN_RECORD, stat_value, words),
};
static constexpr idl_record value_form = idl_record_of<stat_value>(value_fields);

static constexpr idl_field record_fields[] = {
    IDL_LONG (IN_RECORD, stat_record, value),
    IDL_ARRAY(IN_RECORD, stat_record, words),
};
static constexpr idl_record record_form = idl_record_of<stat_record>(record_fields);

static constexpr idl_field group_fields[] = {
    IDL_COUNTED_TABLE(IN_RECORD, stat_group, values, value_form),   // the count takes one byte on the wire
};
static constexpr idl_record group_form = idl_record_of<stat_group>(group_fields);

// ---- Messages ----

static constexpr idl_field envelope_fields[] = {
    IDL_WORD     (0x01, extend_envelope, qmi_id),
    IDL_WORD     (0x02, extend_envelope, data_len),
    IDL_OPT_BYTES(0x10, extend_envelope, data),
};
static constexpr idl_field envelope_ex_fields[] = {
    IDL_WORD     (0x01, extend_envelope_ex, qmi_id),
    IDL_WORD     (0x02, extend_envelope_ex, data_len),
    IDL_OPT_BYTES(0x10, extend_envelope_ex, data),
    IDL_OPT_BYTE (0x11, extend_envelope_ex, byte_11),
};
static constexpr idl_field words_2_fields[] = {
    IDL_WORD(0x01, extend_words_2, word_1),
    IDL_WORD(0x02, extend_words_2, word_2),
};
static constexpr idl_field records_fields[] = {
    IDL_WORD (0x01, extend_records_ind, word_1),
    IDL_WORD (0x02, extend_records_ind, word_2),
    IDL_TABLE(0x03, extend_records_ind, table, record_form),
};
static constexpr idl_field groups_fields[] = {
    IDL_WORD (0x01, extend_groups_ind, word_1),
    IDL_WORD (0x02, extend_groups_ind, word_2),
    IDL_TABLE(0x03, extend_groups_ind, table, group_form),
};
static constexpr idl_field value_ind_fields[] = {
    IDL_WORD  (0x01, extend_value_ind, word_1),
    IDL_RECORD(0x02, extend_value_ind, value, value_form),
};
static constexpr idl_field longs_fields[] = {
    IDL_WORD (0x01, extend_longs_ind, word_1),
    IDL_WORD (0x02, extend_longs_ind, word_2),
    IDL_ARRAY(0x03, extend_longs_ind, table),
};
static constexpr idl_field values_fields[] = {
    IDL_WORD (0x01, extend_values_req, word_1),
    IDL_WORD (0x02, extend_values_req, word_2),
    IDL_TABLE(0x03, extend_values_req, table, value_form),
};
static constexpr idl_field words_5_fields[] = {
    IDL_WORD(0x01, extend_words_5, word_1),
    IDL_WORD(0x02, extend_words_5, word_2),
    IDL_WORD(0x03, extend_words_5, word_3),
    IDL_WORD(0x04, extend_words_5, word_4),
    IDL_WORD(0x05, extend_words_5, word_5),
};
static constexpr idl_field byte_fields[] = {
    IDL_WORD(0x01, extend_byte_req, word_1),
    IDL_WORD(0x02, extend_byte_req, word_2),
    IDL_BYTE(0x03, extend_byte_req, byte_3),
};
static constexpr idl_field event_fields[] = {
    IDL_WORD(0x01, extend_event_ind, word_1),
    IDL_WORD(0x02, extend_event_ind, word_2),
    IDL_LONG(0x03, extend_event_ind, long_3),
    IDL_WORD(0x04, extend_event_ind, word_4),
};

static constexpr idl_message extend_messages[] = {
    idl_make<extend_envelope>   ( 2, REQUEST,    envelope_fields,     567,  560),
    idl_make<extend_envelope>   ( 2, RESPONSE,   envelope_fields,     567,  560),
    idl_make<extend_envelope>   ( 3, REQUEST,    envelope_fields,     567,  560),
    idl_make<extend_envelope>   ( 3, RESPONSE,   envelope_fields,     567,  560),
    idl_make<extend_envelope>   ( 3, INDICATION, envelope_fields,     567,  560),
    idl_make<extend_envelope_ex>( 4, REQUEST,    envelope_ex_fields,  571,  564),
    idl_make<extend_words_2>    ( 4, RESPONSE,   words_2_fields,       14,    8),
    idl_make<extend_records_ind>( 5, INDICATION, records_fields,     1137, 1128),
    idl_make<extend_groups_ind> ( 6, INDICATION, groups_fields,      1227, 1288),
    idl_make<extend_words_2>    ( 7, INDICATION, words_2_fields,       14,    8),
    idl_make<extend_value_ind>  ( 8, INDICATION, value_ind_fields,     34,   32),
    idl_make<extend_longs_ind>  ( 9, INDICATION, longs_fields,        417,  408),
    idl_make<extend_values_req> (10, REQUEST,    values_fields,      1553, 1544),
    idl_make<extend_words_2>    (10, RESPONSE,   words_2_fields,       14,    8),
    idl_make<extend_words_5>    (11, INDICATION, words_5_fields,       35,   20),
    idl_make<extend_byte_req>   (12, REQUEST,    byte_fields,          18,   12),
    idl_make<extend_words_2>    (12, RESPONSE,   words_2_fields,       14,    8),
    idl_make<extend_event_ind>  (13, INDICATION, event_fields,         32,   24),
};
// clang-format on
IDL_PROVE(extend_messages);

static constexpr qmi_idl_service_object extend_service =
    idl_service(EXTEND_SERVICE_ID, EXTEND_VERSION, EXTEND_MINOR_VERSION, extend_messages, EXTEND_LONGEST);
IDL_PROVE_SERVICE(extend_service);

qmi_idl_service_object_type velmor_extend_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                                          int32_t library_version)
{
    if (version != static_cast<int32_t>(EXTEND_VERSION) ||
        minor_version != static_cast<int32_t>(EXTEND_MINOR_VERSION) ||
        library_version != static_cast<int32_t>(IDL_LIBRARY_VERSION))
        return nullptr;
    return &extend_service;
}

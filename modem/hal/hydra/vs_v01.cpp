/* Message tables of the statistics service. The figures beside the rows are the longest form of each message in bytes of
 * TLVs, as the service states it, and the bytes of its structure. */
#include "vs_v01.h"

// clang-format off

// ---- Records ----

/* This service alone carries its result as two words. */
static constexpr idl_field result_fields[] = {
    IDL_WORD(IN_RECORD, qmi_response_type, result),
    IDL_WORD(IN_RECORD, qmi_response_type, error),
};
static constexpr idl_record result_form = idl_record_of<qmi_response_type>(result_fields);
#define VS_RESULT(T) IDL_RECORD(0x02, T, resp, result_form)

/* The room is 700 bytes, so the count has two. */
static constexpr idl_field parameter_fields[] = {
    IDL_HALF         (IN_RECORD, vs_stats_parameter, sub),
    IDL_HALF         (IN_RECORD, vs_stats_parameter, second_word),
    IDL_WORD         (IN_RECORD, vs_stats_parameter, id),
    IDL_COUNTED_ARRAY(IN_RECORD, vs_stats_parameter, value),
};
static constexpr idl_record parameter_form = idl_record_of<vs_stats_parameter>(parameter_fields);

static constexpr idl_field condition_fields[] = {
    IDL_WORD         (IN_RECORD, vs_condition, word),
    IDL_COUNTED_ARRAY(IN_RECORD, vs_condition, words),
    IDL_BYTE         (IN_RECORD, vs_condition, byte),
    IDL_ARRAY        (IN_RECORD, vs_condition, longs),
    IDL_BYTE         (IN_RECORD, vs_condition, last_byte),
};
static constexpr idl_record condition_form = idl_record_of<vs_condition>(condition_fields);

// ---- Requests and responses ----

static constexpr idl_field result_rsp_fields[] = {
    VS_RESULT(vs_result_rsp),
};
static constexpr idl_field bytes_512_req_fields[] = {
    IDL_COUNTED_ARRAY(0x01, vs_bytes_512_req, bytes_1),
};
static constexpr idl_field bytes_512_rsp_fields[] = {
    VS_RESULT(vs_bytes_512_rsp),
    IDL_COUNTED_ARRAY(0x03, vs_bytes_512_rsp, bytes_3),
};
static constexpr idl_field optional_bytes_fields[] = {
    IDL_OPT_BYTE(0x10, vs_optional_bytes_req, byte_10),
    IDL_OPT_BYTE(0x11, vs_optional_bytes_req, byte_11),
};
static constexpr idl_field word_fields[] = {
    IDL_WORD(0x01, vs_word_req, word_1),
};
static constexpr idl_field two_bytes_fields[] = {
    VS_RESULT(vs_two_bytes_rsp),
    IDL_BYTE(0x03, vs_two_bytes_rsp, byte_3),
    IDL_BYTE(0x04, vs_two_bytes_rsp, byte_4),
};
static constexpr idl_field set_feature_fields[] = {
    IDL_WORD    (0x01, vs_set_feature_status_req, feature),
    IDL_BYTE    (0x02, vs_set_feature_status_req, status),
    IDL_OPT_BYTE(0x10, vs_set_feature_status_req, value),
};
static constexpr idl_field bytes_256_rsp_fields[] = {
    VS_RESULT(vs_bytes_256_rsp),
    IDL_COUNTED_ARRAY(0x03, vs_bytes_256_rsp, bytes_3),
};
static constexpr idl_field word_byte_half_fields[] = {
    IDL_WORD(0x01, vs_word_byte_half_req, word_1),
    IDL_BYTE(0x02, vs_word_byte_half_req, byte_2),
    IDL_HALF(0x03, vs_word_byte_half_req, half_3),
};
static constexpr idl_field word_byte_half_bytes_fields[] = {
    IDL_WORD         (0x01, vs_word_byte_half_bytes_req, word_1),
    IDL_BYTE         (0x02, vs_word_byte_half_bytes_req, byte_2),
    IDL_HALF         (0x03, vs_word_byte_half_bytes_req, half_3),
    IDL_COUNTED_ARRAY(0x04, vs_word_byte_half_bytes_req, bytes_4),
};
static constexpr idl_field word_half_fields[] = {
    IDL_WORD(0x01, vs_word_half_req, word_1),
    IDL_HALF(0x02, vs_word_half_req, half_2),
};
static constexpr idl_field word_half_bytes_fields[] = {
    IDL_WORD         (0x01, vs_word_half_bytes_req, word_1),
    IDL_HALF         (0x02, vs_word_half_bytes_req, half_2),
    IDL_COUNTED_ARRAY(0x03, vs_word_half_bytes_req, bytes_3),
};
static constexpr idl_field text_half_byte_fields[] = {
    IDL_TEXT(0x01, vs_text_half_byte_req, text_1),
    IDL_HALF(0x02, vs_text_half_byte_req, half_2),
    IDL_BYTE(0x03, vs_text_half_byte_req, byte_3),
};
static constexpr idl_field text_half_byte_bytes_fields[] = {
    IDL_TEXT         (0x01, vs_text_half_byte_bytes_req, text_1),
    IDL_HALF         (0x02, vs_text_half_byte_bytes_req, half_2),
    IDL_BYTE         (0x03, vs_text_half_byte_bytes_req, byte_3),
    IDL_COUNTED_ARRAY(0x04, vs_text_half_byte_bytes_req, bytes_4),
};
static constexpr idl_field word_bytes_fields[] = {
    IDL_WORD         (0x01, vs_word_bytes_req, word_1),
    IDL_COUNTED_ARRAY(0x02, vs_word_bytes_req, bytes_2),
};
static constexpr idl_field byte_word_half_fields[] = {
    IDL_BYTE(0x01, vs_byte_word_half_req, byte_1),
    IDL_WORD(0x02, vs_byte_word_half_req, word_2),
    IDL_HALF(0x03, vs_byte_word_half_req, half_3),
};
static constexpr idl_field byte_optional_word_fields[] = {
    IDL_BYTE    (0x01, vs_byte_optional_word_req, byte_1),
    IDL_OPT_WORD(0x10, vs_byte_optional_word_req, word_10),
};
static constexpr idl_field optional_word_rsp_fields[] = {
    VS_RESULT(vs_optional_word_rsp),
    IDL_OPT_WORD(0x10, vs_optional_word_rsp, word_10),
};
static constexpr idl_field conditions_fields[] = {
    IDL_WORD         (0x01, vs_conditions_req, word_1),
    IDL_COUNTED_TABLE(0x02, vs_conditions_req, table_2, condition_form),
    IDL_OPT_HALF     (0x10, vs_conditions_req, half_10),
    IDL_OPT_HALF     (0x11, vs_conditions_req, half_11),
};
static constexpr idl_field words_fields[] = {
    IDL_WORD         (0x01, vs_words_req, word_1),
    IDL_COUNTED_ARRAY(0x02, vs_words_req, words_2),
    IDL_OPT_HALF     (0x10, vs_words_req, half_10),
    IDL_OPT_HALF     (0x11, vs_words_req, half_11),
};
static constexpr idl_field get_stats_req_fields[] = {
    IDL_HALF         (0x01, vs_get_stats_parameter_req, sub),
    IDL_HALF         (0x02, vs_get_stats_parameter_req, slot),
    IDL_COUNTED_TABLE(0x03, vs_get_stats_parameter_req, parameters, parameter_form),
};
static constexpr idl_field get_stats_rsp_fields[] = {
    VS_RESULT(vs_get_stats_parameter_rsp),
    IDL_OPT_COUNTED_TABLE(0x10, vs_get_stats_parameter_rsp, parameters, parameter_form),
};
static constexpr idl_field halves_words_fields[] = {
    IDL_HALF         (0x01, vs_halves_words_req, half_1),
    IDL_HALF         (0x02, vs_halves_words_req, half_2),
    IDL_COUNTED_ARRAY(0x03, vs_halves_words_req, words_3),
};

// ---- Indications ----

static constexpr idl_field ind_2_fields[] = {
    IDL_WORD(0x01, vs_ind_2, word_1),
    IDL_BYTE(0x02, vs_ind_2, byte_2),
    IDL_BYTE(0x03, vs_ind_2, byte_3),
};
static constexpr idl_field ind_stats_fields[] = {
    IDL_WORD             (0x01, vs_ind_stats, word_1),
    IDL_COUNTED_TABLE    (0x02, vs_ind_stats, table_2,  parameter_form),
    IDL_OPT_COUNTED_TABLE(0x10, vs_ind_stats, table_10, parameter_form),
    IDL_OPT_WORD         (0x11, vs_ind_stats, word_11),
};
static constexpr idl_field ind_bytes_fields[] = {
    IDL_WORD         (0x01, vs_ind_bytes, word_1),
    IDL_COUNTED_ARRAY(0x02, vs_ind_bytes, bytes_2),
    IDL_HALF         (0x03, vs_ind_bytes, half_3),
    IDL_HALF         (0x04, vs_ind_bytes, half_4),
};
static constexpr idl_field ind_byte_fields[] = {
    IDL_BYTE(0x01, vs_ind_byte, byte_1),
};

// ---- The service ----

static constexpr idl_message vs_messages[] = {
    idl_make<vs_bytes_512_req>           (0x0000, REQUEST,    bytes_512_req_fields,          517,   516),
    idl_make<vs_bytes_512_rsp>           (0x0000, RESPONSE,   bytes_512_rsp_fields,          528,   524),
    idl_make<vs_optional_bytes_req>      (0x0001, REQUEST,    optional_bytes_fields,           8,     4),
    idl_make<vs_result_rsp>              (0x0001, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_req>                (0x0002, REQUEST,    word_fields,                     7,     4),
    idl_make<vs_two_bytes_rsp>           (0x0002, RESPONSE,   two_bytes_fields,               19,    12),
    idl_make<vs_set_feature_status_req>  (0x0003, REQUEST,    set_feature_fields,             15,     8),
    idl_make<vs_result_rsp>              (0x0003, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_ind_2>                   (0x0004, INDICATION, ind_2_fields,                   15,     8),
    idl_make<vs_word_byte_half_req>      (0x0100, REQUEST,    word_byte_half_fields,          16,     8),
    idl_make<vs_bytes_256_rsp>           (0x0100, RESPONSE,   bytes_256_rsp_fields,          272,   268),
    idl_make<vs_word_byte_half_bytes_req>(0x0101, REQUEST,    word_byte_half_bytes_fields,   277,   268),
    idl_make<vs_result_rsp>              (0x0101, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_byte_half_req>      (0x0102, REQUEST,    word_byte_half_fields,          16,     8),
    idl_make<vs_result_rsp>              (0x0102, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_half_req>           (0x0103, REQUEST,    word_half_fields,               12,     8),
    idl_make<vs_bytes_256_rsp>           (0x0103, RESPONSE,   bytes_256_rsp_fields,          272,   268),
    idl_make<vs_word_half_bytes_req>     (0x0104, REQUEST,    word_half_bytes_fields,        273,   268),
    idl_make<vs_result_rsp>              (0x0104, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_half_req>           (0x0105, REQUEST,    word_half_fields,               12,     8),
    idl_make<vs_result_rsp>              (0x0105, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_text_half_byte_req>      (0x0106, REQUEST,    text_half_byte_fields,         112,   106),
    idl_make<vs_bytes_256_rsp>           (0x0106, RESPONSE,   bytes_256_rsp_fields,          272,   268),
    idl_make<vs_text_half_byte_bytes_req>(0x0107, REQUEST,    text_half_byte_bytes_fields,   373,   368),
    idl_make<vs_result_rsp>              (0x0107, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_text_half_byte_req>      (0x0108, REQUEST,    text_half_byte_fields,         112,   106),
    idl_make<vs_result_rsp>              (0x0108, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_req>                (0x0109, REQUEST,    word_fields,                     7,     4),
    idl_make<vs_bytes_256_rsp>           (0x0109, RESPONSE,   bytes_256_rsp_fields,          272,   268),
    idl_make<vs_word_bytes_req>          (0x010A, REQUEST,    word_bytes_fields,             268,   264),
    idl_make<vs_result_rsp>              (0x010A, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_word_req>                (0x010B, REQUEST,    word_fields,                     7,     4),
    idl_make<vs_result_rsp>              (0x010B, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_byte_word_half_req>      (0x010C, REQUEST,    byte_word_half_fields,          16,    12),
    idl_make<vs_result_rsp>              (0x010C, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_byte_optional_word_req>  (0x0200, REQUEST,    byte_optional_word_fields,      11,     8),
    idl_make<vs_optional_word_rsp>       (0x0200, RESPONSE,   optional_word_rsp_fields,       18,    16),
    idl_make<vs_conditions_req>          (0x0201, REQUEST,    conditions_fields,            4321,  5616),
    idl_make<vs_result_rsp>              (0x0201, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_words_req>               (0x0202, REQUEST,    words_fields,                  421,   416),
    idl_make<vs_result_rsp>              (0x0202, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_ind_stats>               (0x0203, INDICATION, ind_stats_fields,            10672, 10704),
    idl_make<vs_ind_bytes>               (0x0204, INDICATION, ind_bytes_fields,              121,   112),
    idl_make<vs_get_stats_parameter_req> (0x0207, REQUEST,    get_stats_req_fields,         7114,  7128),
    idl_make<vs_get_stats_parameter_rsp> (0x0207, RESPONSE,   get_stats_rsp_fields,         7115,  7136),
    idl_make<vs_halves_words_req>        (0x0208, REQUEST,    halves_words_fields,            54,    48),
    idl_make<vs_result_rsp>              (0x0208, RESPONSE,   result_rsp_fields,              11,     8),
    idl_empty                            (0x0400, REQUEST),
    idl_make<vs_result_rsp>              (0x0400, RESPONSE,   result_rsp_fields,              11,     8),
    idl_empty                            (0x0401, REQUEST),
    idl_make<vs_result_rsp>              (0x0401, RESPONSE,   result_rsp_fields,              11,     8),
    idl_make<vs_ind_byte>                (0x0601, INDICATION, ind_byte_fields,                 4,     1),
};
// clang-format on
IDL_PROVE(vs_messages);
static_assert(sizeof(vs_messages) / sizeof(vs_messages[0]) == 24 + 24 + 4);

static constexpr qmi_idl_service_object vs_service =
    idl_service(VS_SERVICE_ID, VS_VERSION, VS_MINOR_VERSION, vs_messages, VS_LONGEST);
IDL_PROVE_SERVICE(vs_service);

qmi_idl_service_object_type vs_get_service_object_internal_v01(int32_t version, int32_t minor_version,
                                                               int32_t library_version)
{
    if (version != static_cast<int32_t>(VS_VERSION) || minor_version != static_cast<int32_t>(VS_MINOR_VERSION) ||
        library_version != static_cast<int32_t>(IDL_LIBRARY_VERSION))
        return nullptr;
    return &vs_service;
}
